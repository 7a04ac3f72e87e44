// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QList>
#include <QtCore/QRegularExpression>
#include <QtCore/QString>
#include <QtCore/QStringList>

// Generated classes contain what follows, too, so it is C++11. Nothing is allocated for a value
// that is allowed, nor unless somebody asks why it is not.
namespace Tarnvel::Schema {

// Whether values of the right type are allowed. Where one is not, *why says why, unless it is null.
struct ValueChecks
{
    static QString shown(int number)
    {
        return QString::number(number);
    }

    static QString shown(const QString &text)
    {
        return QLatin1Char('"') + (text.size() > 80 ? text.left(80) + QStringLiteral("...") : text)
            + QLatin1Char('"');
    }

    template<typename Value>
    static bool isOneOf(const Value &value, const QList<Value> &values, QString *why)
    {
        if (values.contains(value))
            return true;
        QStringList all;
        for (int index = 0; why && index < values.size(); ++index)
            all.append(shown(values.at(index)));
        if (why)
            *why = QStringLiteral("%1 is not one of %2")
                       .arg(shown(value), all.join(QStringLiteral(", ")));
        return false;
    }

    static bool isInRange(int value, int minimum, int maximum, QString *why)
    {
        if (value >= minimum && value <= maximum)
            return true;
        if (why)
            *why = value < minimum ? QStringLiteral("%1 is below %2").arg(value).arg(minimum)
                                   : QStringLiteral("%1 is above %2").arg(value).arg(maximum);
        return false;
    }

    // What has the size: "the list", and what it consists of: "items".
    static QString sizeProblem(const QString &what, bool isTooSmall, int limit, const char *parts)
    {
        return QStringLiteral("%1 has %2 than %3 %4")
            .arg(what, isTooSmall ? QStringLiteral("fewer") : QStringLiteral("more"),
                 QString::number(limit), QLatin1String(parts));
    }

    // In Unicode code points.
    static bool hasLength(const QString &text, int minimum, int maximum, QString *why)
    {
        int length = 0;
        for (int index = 0; index < text.size(); ++index, ++length) {
            if (text.at(index).isHighSurrogate() && index + 1 < text.size()
                && text.at(index + 1).isLowSurrogate())
                ++index;
        }
        if (length >= minimum && length <= maximum)
            return true;
        if (why)
            *why = sizeProblem(shown(text), length < minimum, length < minimum ? minimum : maximum,
                               "characters");
        return false;
    }

    static bool hasSize(long long size, int minimum, int maximum, QString *why)
    {
        if (size >= minimum && size <= maximum)
            return true;
        if (why)
            *why = sizeProblem(QStringLiteral("the list"), size < minimum,
                               size < minimum ? minimum : maximum, "items");
        return false;
    }

    static bool doesMatch(const QString &text, const QRegularExpression &pattern, QString *why)
    {
        if (pattern.match(text).hasMatch())
            return true;
        if (why)
            *why = QStringLiteral("%1 does not match %2").arg(shown(text), pattern.pattern());
        return false;
    }
};

} // namespace Tarnvel::Schema
