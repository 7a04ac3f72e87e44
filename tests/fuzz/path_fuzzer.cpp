// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtCore/QDebug>
#include <Tarnvel/ManagedConfiguration/xpath.h>

#include "configuration_p.h"
#include "description.h"
#include "generated_configuration.h"
#include "message_log.h"

#include <algorithm>
#include <limits>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

constexpr int maximumPaths = 20;

// A line of UTF-8; after 'U' and a length, that many UTF-16 code units.
QString readPath(FuzzerInput &input)
{
    if (input.byte() != 'U')
        return QString::fromUtf8(input.line());
    QString path(input.byte(), Qt::Uninitialized);
    for (QChar &unit : path)
        unit = QChar(ushort(input.number(2)));
    return path;
}

bool isList(const QVariant &value)
{
    static const QVector<int> types {QMetaType::QStringList, qMetaTypeId<QList<int>>(),
                                     qMetaTypeId<QList<bool>>(), qMetaTypeId<QList<QString>>()};
    return types.contains(value.userType());
}

bool isSupported(const QVariant &value)
{
    static const QVector<int> types {QMetaType::Int, QMetaType::Bool, QMetaType::QString,
                                     qMetaTypeId<Configuration>()};
    return isList(value) || types.contains(value.userType());
}

// The model: parses and follows a path as the library should, without its code for that. A step is
// the key of an entry, a QString, or the index of an item, an int.

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
    constexpr qint64 maximum = std::numeric_limits<int>::max();
    QString digits = text.trimmed();
    const bool isNegative = digits.startsWith(u'-') || digits.startsWith(QChar(0x2212));
    if (isNegative || digits.startsWith(u'+'))
        digits.remove(0, 1);
    qint64 number = digits.isEmpty() ? -1 : 0;
    for (const QChar digit : qAsConst(digits)) {
        if (digit < u'0' || digit > u'9')
            return -1;
        number = std::min(10 * number + digit.unicode() - u'0', maximum + 1);
    }
    return number > maximum || (isNegative && number > 0) ? -1 : int(number);
}

// Appends the steps of \a part. Returns the warning if it is not valid, a null string otherwise.
QString parsePart(const QString &part, QVariantList &steps)
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

// The steps of \a path, none if it is not valid.
QVariantList parse(const QString &path, QStringList &warnings)
{
    if (path.isEmpty())
        warnings.append(QStringLiteral("Attempt to process an empty xpath"));
    QVariantList steps;
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

// Takes \a step from \a value. Returns the warning if that is not possible, a null string
// otherwise.
QString follow(const QVariant &step, QVariant &value)
{
    if (step.userType() == QMetaType::QString) {
        const QString key = step.toString();
        const auto entries = ConfigurationPrivate::data(value.value<Configuration>());
        if (value.userType() != qMetaTypeId<Configuration>())
            return QLatin1String("The current value to be processed does not support an access by "
                                 "key (key=")
                + quoted(key) + u')';
        if (!entries.contains(key))
            return QLatin1String("The current value to be processed does not contain the ")
                + quoted(key) + QLatin1String(" key");
        value = entries.value(key);
        return {};
    }
    const int index = step.toInt();
    const auto items = value.value<QVariantList>();
    if (!isList(value))
        return QStringLiteral("The current value to be processed does not support an access by "
                              "index (index=%1)")
            .arg(index);
    if (index >= items.size())
        return QStringLiteral("The current sequence to be processed does not contain enough items "
                              "to access item at index %1")
            .arg(index);
    value = items.at(index);
    return {};
}

// What \a path leads to from \a value, in the form of describe(), and the warnings.
QStringList expectedLookup(QVariant value, const QString &path)
{
    QStringList outcome {describe(QVariant())};
    const QVariantList steps = parse(path, outcome);
    if (steps.isEmpty())
        return outcome << QLatin1String("Attempt to use a non-valid xpath to get a value from the "
                                        "configuration (xpath=")
            + quoted(path) + u')';
    for (const QVariant &step : steps) {
        const QString warning = follow(step, value);
        if (!warning.isNull())
            return outcome << QLatin1String("Error when getting a value from configuration by the ")
                + quoted(path) + QLatin1String(" xpath. ") + warning;
    }
    return {describe(value)};
}

void checkParse(const QString &path)
{
    MessageLog log;
    const Xpath xpath(path);
    QStringList actual;
    for (const XpathAccess &access : xpath.accesses())
        actual.append(describe(access.type() == XpathAccess::Key ? QVariant(access.toKey())
                                                                 : QVariant(access.toIndex())));
    actual += log.take();
    QStringList expected;
    QStringList warnings;
    const auto steps = parse(path, warnings);
    for (const QVariant &step : steps)
        expected.append(describe(step));
    expected += warnings;
    if (actual != expected || xpath.toString() != path
        || xpath.isValid() == xpath.accesses().isEmpty())
        fail(path, actual, expected);
}

void checkLookup(const QVariant &configuration, const QString &path)
{
    MessageLog log;
    const QString value = describe(Configuration::fromVariant(configuration).getByXpath(path));
    const QStringList actual = QStringList(value) + log.take();
    const QStringList expected = expectedLookup(configuration, path);
    if (actual != expected)
        fail(path + QLatin1String(" in ") + describe(configuration), actual, expected);
}

// Paths to the values in \a value, and to items inside and past the end of its lists.
void appendPaths(const QVariant &value, const QString &prefix, QStringList &paths)
{
    const auto entries = ConfigurationPrivate::data(value.value<Configuration>());
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry) {
        const QString path = prefix + u'/' + entry.key();
        if (paths.size() >= maximumPaths)
            return;
        paths.append(path);
        const int size = isList(*entry) ? entry->value<QVariantList>().size() : 0;
        for (const int index : {0, size - 1, size})
            paths.append(path + u'[' + QString::number(index) + u']');
        appendPaths(*entry, path, paths);
    }
}

void checkStoring(const QMap<QString, QVariant> &entries)
{
    Configuration configuration;
    for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry) {
        if (configuration.set(entry.key(), *entry) != isSupported(*entry)
            || configuration.containsKey(entry.key()) != isSupported(*entry))
            fail(describe(*entry), {"stored, or refused"}, {"the opposite"});
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzerInput input(data, size);
    const QString path = readPath(input);
    const Configuration configuration = generateConfiguration(input);

    QStringList paths {path};
    appendPaths(QVariant::fromValue(configuration), QString(), paths);
    for (const QString &one : qAsConst(paths)) {
        checkParse(one);
        checkLookup(QVariant::fromValue(configuration), one);
    }
    checkStoring(ConfigurationPrivate::data(configuration));
    return 0;
}
