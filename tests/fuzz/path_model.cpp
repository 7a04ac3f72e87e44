// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "path_model.h"

#include "description.h"

#include <QtCore/QDebug>

#include <algorithm>
#include <limits>
#include <variant>

namespace Tarnvel::Testing {

namespace {

// The key of an entry or the index of an item.
using Step = std::variant<QString, int>;

QString quoted(const QString &text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

// The number that \a text stands for, -1 if it is none. White space around it and a sign are
// allowed.
int indexFrom(const QString &text)
{
    constexpr qint64 most = std::numeric_limits<int>::max();
    QString digits = text.trimmed();
    const bool isNegative = digits.startsWith(u'-') || digits.startsWith(QChar(0x2212));
    if (isNegative || digits.startsWith(u'+'))
        digits.remove(0, 1);
    qint64 number = digits.isEmpty() ? -1 : 0;
    for (const QChar digit : qAsConst(digits)) {
        if (digit < u'0' || digit > u'9')
            return -1;
        number = std::min(10 * number + digit.unicode() - u'0', most + 1);
    }
    return number > most || (isNegative && number > 0) ? -1 : int(number);
}

// Appends the steps of \a part. Returns the warning if it is not valid, a null string otherwise.
QString parsePart(const QString &part, QVector<Step> &steps)
{
    const auto *const bracket = std::find_if(part.begin(), part.end(), [](QChar character) {
        return character == u'[' || character == u']';
    });
    if (bracket == part.end()) {
        steps.append(part);
        return {};
    }

    const bool isOpening = *bracket == u'[';
    const QString name = part.left(int(bracket - part.begin()));
    const QString rest = part.mid(name.size() + 1);
    const int close = isOpening ? rest.indexOf(u']') : -1;
    const QString index = isOpening ? rest.left(close) : name;
    const QString tail = rest.mid(close + 1);
    if (isOpening ? close == -1 : tail.contains(u'['))
        return QLatin1String("The xpath part has an invalid index format: ") + quoted(part);
    if (isOpening && name.isEmpty())
        return QString::fromUtf8("The xpath part cannot have the ‘[’ character at the beginning: ")
            + quoted(part);
    if (!tail.isEmpty())
        return QLatin1String("The ']' character can only be at the end of an xpath part: ")
            + quoted(part);
    if (indexFrom(index) == -1)
        return QLatin1String("The xpath part contains an invalid index: ") + quoted(index);
    // Without "[", the whole part is the key, and what comes before the "]" the index.
    steps << (isOpening ? name : part) << indexFrom(index);
    return {};
}

// Takes \a step from \a value. Returns the warning if that is not possible, a null string
// otherwise.
QString follow(const Step &step, const ValueTree *&value)
{
    if (const auto *const key = std::get_if<QString>(&step)) {
        if (value->kind != ValueTree::Configuration)
            return QLatin1String("The current value to be processed does not support an access by "
                                 "key (key=")
                + quoted(*key) + u')';
        if (!value->entries.contains(*key))
            return QLatin1String("The current value to be processed does not contain the ")
                + quoted(*key) + QLatin1String(" key");
        value = &*value->entries.constFind(*key);
        return {};
    }
    const int index = std::get<int>(step);
    if (value->kind != ValueTree::List)
        return QStringLiteral("The current value to be processed does not support an access by "
                              "index (index=%1)")
            .arg(index);
    if (index >= value->items.size())
        return QStringLiteral("The current sequence to be processed does not contain enough items "
                              "to access item at index %1")
            .arg(index);
    value = &value->items.at(index);
    return {};
}

// The steps of \a path, none if it is not valid.
QVector<Step> parse(const QString &path, QStringList &warnings)
{
    if (path.isEmpty())
        warnings.append(QStringLiteral("Attempt to process an empty xpath"));
    QVector<Step> steps;
    const QStringList parts = path.split(u'/', Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        const QString warning = parsePart(part, steps);
        if (!warning.isNull()) {
            warnings.append(warning + QLatin1String(" (xpath=") + quoted(path) + u')');
            return {};
        }
    }
    return steps;
}

} // namespace

QStringList expectedParse(const QString &path)
{
    QStringList warnings;
    QStringList texts;
    const QVector<Step> steps = parse(path, warnings);
    for (const Step &step : steps) {
        const auto *const key = std::get_if<QString>(&step);
        texts.append(key != nullptr ? QLatin1String("key ") + *key
                                    : QStringLiteral("index %1").arg(std::get<int>(step)));
    }
    return texts + warnings;
}

QStringList expectedLookup(const ValueTree &configuration, const QString &path)
{
    QStringList outcome {describe(QVariant())};
    const QVector<Step> steps = parse(path, outcome);
    if (steps.isEmpty())
        return outcome << QLatin1String("Attempt to use a non-valid xpath to get a value from the "
                                        "configuration (xpath=")
            + quoted(path) + u')';
    const ValueTree *value = &configuration;
    for (const Step &step : steps) {
        const QString warning = follow(step, value);
        if (!warning.isNull())
            return outcome << QLatin1String("Error when getting a value from configuration by the ")
                + quoted(path) + QLatin1String(" xpath. ") + warning;
    }
    return {describe(toVariant(*value))};
}

} // namespace Tarnvel::Testing
