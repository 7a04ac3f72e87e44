// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "path_model.h"

#include <QtCore/QDebug>

#include <limits>

namespace Tarnvel::Testing {

namespace {

/*! \brief A part of a path, taken apart one character after the other. */
struct Part
{
    enum Place { InName, InIndex, BehindIndex };

    QString whole;
    QString name;
    QString index;
    Place place = InName;
    bool hasOpening = false;
    bool opensAfterClosing = false;
    bool hasTail = false;

    void add(QChar character);
};

void Part::add(QChar character)
{
    const bool isOpening = character == u'[';
    whole += character;
    if (place == BehindIndex) {
        hasTail = true;
        opensAfterClosing = opensAfterClosing || (isOpening && !hasOpening);
    } else if (character == u']') {
        place = BehindIndex;
    } else if (place == InIndex) {
        index += character;
    } else if (isOpening) {
        place = InIndex;
        hasOpening = true;
    } else {
        name += character;
    }
}

QString quoted(const QString &text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

/*! \brief The number that \a text stands for, or -1. Blanks around it and a sign are no matter. */
int positionFrom(const QString &text)
{
    int begin = 0;
    int end = text.size();
    while (begin < end && text.at(begin).isSpace())
        ++begin;
    while (end > begin && text.at(end - 1).isSpace())
        --end;
    const bool isNegative = begin < end && (text.at(begin) == u'-' || text.at(begin) == u'\u2212');
    if (isNegative || (begin < end && text.at(begin) == u'+'))
        ++begin;
    if (begin == end)
        return -1;

    qint64 number = 0;
    for (; begin < end; ++begin) {
        const int digit = text.at(begin).unicode() - u'0';
        if (digit < 0 || digit > 9)
            return -1;
        number = number * 10 + digit;
        if (number > std::numeric_limits<int>::max())
            return -1;
    }
    return isNegative && number > 0 ? -1 : int(number);
}

/*! \brief The warning that \a part deserves, a null string if none. */
QString faultOf(const Part &part)
{
    const QString whole = quoted(part.whole);
    if (part.place == Part::InName)
        return {};
    if (part.place == Part::InIndex || part.opensAfterClosing)
        return QLatin1String("The xpath part has an invalid index format: ") + whole;
    if (part.hasOpening && part.name.isEmpty())
        return QString::fromUtf8("The xpath part cannot have the ‘[’ character at the beginning: ")
            + whole;
    if (part.hasTail)
        return QLatin1String("The ']' character can only be at the end of an xpath part: ") + whole;
    const QString index = part.hasOpening ? part.index : part.name;
    if (positionFrom(index) == -1)
        return QLatin1String("The xpath part contains an invalid index: ") + quoted(index);
    return {};
}

QVector<Step> stepsOf(const Part &part)
{
    if (part.place == Part::InName)
        return {{true, part.name, 0}};
    if (part.hasOpening)
        return {{true, part.name, 0}, {false, QString(), positionFrom(part.index)}};
    return {{true, part.whole, 0}, {false, QString(), positionFrom(part.name)}};
}

QVector<Part> partsOf(const QString &path)
{
    QVector<Part> parts;
    bool isInPart = false;
    for (const QChar character : path) {
        if (character != u'/' && !isInPart)
            parts.append(Part());
        isInPart = character != u'/';
        if (isInPart)
            parts.last().add(character);
    }
    return parts;
}

QString cannotGet(const QString &path)
{
    return QLatin1String("Error when getting a value from configuration by the ") + quoted(path)
        + QLatin1String(" xpath. ");
}

/*! \brief Follows \a step; the warning if that cannot be done, otherwise a null string. */
QString follow(const Step &step, Walk &walk)
{
    const bool isItem = walk.item.isValid();
    const auto kind = isItem ? ValueTree::Scalar : walk.value->kind;
    if (step.isKey && kind != ValueTree::Configuration)
        return QLatin1String(
                   "The current value to be processed does not support an access by key (key=")
            + quoted(step.key) + u')';
    if (step.isKey && !walk.value->entries.contains(step.key))
        return QLatin1String("The current value to be processed does not contain the ")
            + quoted(step.key) + QLatin1String(" key");
    if (step.isKey) {
        walk.value = &*walk.value->entries.constFind(step.key);
        return {};
    }
    if (kind != ValueTree::List)
        return QLatin1String(
                   "The current value to be processed does not support an access by index (index=")
            + QString::number(step.position) + u')';
    if (step.position >= walk.value->items.size())
        return QLatin1String("The current sequence to be processed does not contain enough items "
                             "to access item "
                             "at index ")
            + QString::number(step.position);
    walk.item = walk.value->items.at(step.position);
    return {};
}

} // namespace

bool Step::operator==(const Step &other) const
{
    return isKey == other.isKey && key == other.key && position == other.position;
}

Parse expectedParse(const QString &path)
{
    Parse parse;
    if (path.isEmpty())
        parse.warnings.append(QStringLiteral("Attempt to process an empty xpath"));
    const QVector<Part> parts = partsOf(path);
    for (const Part &part : parts) {
        const QString fault = faultOf(part);
        if (!fault.isNull())
            return {{}, {fault + QLatin1String(" (xpath=") + quoted(path) + u')'}};
        parse.steps += stepsOf(part);
    }
    return parse;
}

Walk expectedWalk(const ValueTree &configuration, const QString &path)
{
    const Parse parse = expectedParse(path);
    Walk walk;
    walk.warnings = parse.warnings;
    if (parse.steps.isEmpty()) {
        walk.warnings.append(
            QLatin1String("Attempt to use a non-valid xpath to get a value from the "
                          "configuration (xpath=")
            + quoted(path) + u')');
        return walk;
    }

    walk.value = &configuration;
    for (const Step &step : parse.steps) {
        const QString fault = follow(step, walk);
        if (fault.isNull())
            continue;
        walk.warnings.append(cannotGet(path) + fault);
        walk.value = nullptr;
        walk.item = QVariant();
        return walk;
    }
    return walk;
}

QString join(const QVector<Step> &steps)
{
    QString path;
    for (const Step &step : steps) {
        if (step.isKey)
            path += u'/' + step.key;
        // A key that ends with "]" has its position in itself.
        else if (!path.endsWith(u']'))
            path += u'[' + QString::number(step.position) + u']';
    }
    return path;
}

} // namespace Tarnvel::Testing
