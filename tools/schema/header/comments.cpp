// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "comments.h"

#include "terminal.h"

namespace Tarnvel::Schema {

namespace {

// "From 25 to 400.": nothing if neither is a limit.
QString rangeOf(qint64 minimum, qint64 maximum, qint64 lowest, const QString &unit)
{
    const bool hasMinimum = minimum > lowest;
    const bool hasMaximum = maximum < std::numeric_limits<qint32>::max();
    if (hasMinimum && hasMaximum)
        return QStringLiteral("From %1 to %2%3. ").arg(minimum).arg(maximum).arg(unit);
    if (hasMinimum)
        return QStringLiteral("At least %1%2. ").arg(minimum).arg(unit);
    return hasMaximum ? QStringLiteral("At most %1%2. ").arg(maximum).arg(unit) : QString();
}

QString limitsOf(const Scalar &scalar)
{
    QStringList values;
    for (const Tools::JsonValue &value : scalar.values)
        values.append(escapedForComment(toJson(value)));
    QString limits = values.isEmpty()
        ? QString()
        : QStringLiteral("One of %1. ").arg(values.join(QLatin1String(", ")));
    limits += rangeOf(scalar.minimum, scalar.maximum, std::numeric_limits<qint32>::min(), {});
    limits += rangeOf(scalar.minimumLength, scalar.maximumLength, 0, QStringLiteral(" characters"));
    if (!scalar.pattern.isEmpty())
        limits += QStringLiteral("Each call costs a match with the pattern %1 . ")
                      .arg(escapedForComment(scalar.pattern));
    return limits;
}

QString valuesOf(const Setting &setting)
{
    QString values = limitsOf(setting.scalar);
    if (setting.type == Type::List) {
        if (!values.isEmpty())
            values.prepend(QStringLiteral("Each item: "));
        values += rangeOf(setting.minimumItems, setting.maximumItems, 0, QStringLiteral(" items"));
    }
    return values
        + QStringLiteral("The default is %1.").arg(escapedForComment(toJson(setting.defaultValue)));
}

} // namespace

QString escapedForComment(const QString &text)
{
    const QString shown = Tools::shownOnOneLine(text);
    QString escaped;
    for (const QChar character : shown) {
        // Two question marks could begin a trigraph.
        if (character == QLatin1Char('?') && escaped.endsWith(character))
            escaped += QStringLiteral("&#63;");
        else if (character == QLatin1Char('/') && escaped.endsWith(QLatin1Char('*')))
            escaped += QStringLiteral("&#47;");
        else if (character == QLatin1Char('*') && escaped.endsWith(QLatin1Char('/')))
            escaped += QStringLiteral("&#42;");
        else if (QStringLiteral("\\@<>&#").contains(character))
            escaped += QLatin1Char('\\') + QString(character);
        else
            escaped += character;
    }
    return escaped;
}

QStringList describe(const Setting &setting)
{
    const QString path = QStringLiteral("The setting \"%1\".").arg(setting.path);
    QStringList paragraphs {QStringLiteral("\\brief ")
                            + escapedForComment(setting.title.isEmpty() ? path : setting.title)};
    const QStringList texts = setting.description.split(QLatin1Char('\n'));
    for (const QString &text : texts)
        paragraphs.append(escapedForComment(text));
    if (setting.type != Type::Object)
        paragraphs.append(valuesOf(setting));
    if (setting.needsRestart)
        paragraphs.append(
            QStringLiteral("The application must be restarted to apply a new value."));
    if (!setting.deprecated.isEmpty())
        paragraphs.append(QStringLiteral("\\deprecated ") + escapedForComment(setting.deprecated));
    return paragraphs;
}

} // namespace Tarnvel::Schema
