// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "value_checks.h"

#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/Configuration>

// Generated classes contain what follows, too, so it is C++11. No other code uses it.
namespace Tarnvel::Schema {

using Application::ManagedConfiguration::Configuration;

// Whether entries of a configuration are allowed.
struct Checks : ValueChecks
{
    static const char *kindOf(const QVariant &value)
    {
        const int type = value.userType();
        return type == QMetaType::Int              ? "a number"
            : type == QMetaType::Bool              ? "a boolean"
            : type == QMetaType::QString           ? "a string"
            : type == qMetaTypeId<Configuration>() ? "an object"
                                                   : "a list";
    }

    static bool isExpected(bool isRight, const char *expected, const char *found, QString *why)
    {
        if (!isRight && why)
            *why = QStringLiteral("expected %1, found %2")
                       .arg(QLatin1String(expected), QLatin1String(found));
        return isRight;
    }

    static bool hasType(const QVariant &value, int type, const char *expected, QString *why)
    {
        return isExpected(value.userType() == type, expected, kindOf(value), why);
    }

    static bool isInteger(const QVariant &value, QString *why)
    {
        return hasType(value, QMetaType::Int, "an integer", why);
    }

    static bool isBoolean(const QVariant &value, QString *why)
    {
        return hasType(value, QMetaType::Bool, "a boolean", why);
    }

    static bool isString(const QVariant &value, QString *why)
    {
        return hasType(value, QMetaType::QString, "a string", why);
    }

    static bool isObject(const QVariant &value, QString *why)
    {
        return hasType(value, qMetaTypeId<Configuration>(), "an object", why);
    }

    template<typename Item>
    static bool holdsListOf(const QVariant &value)
    {
        return value.userType() == qMetaTypeId<QList<Item>>();
    }

    template<typename Item>
    static QList<Item> listOf(const QVariant &value)
    {
        return holdsListOf<Item>(value) ? value.value<QList<Item>>() : QList<Item>();
    }

    // With Qt 5, this type and QList<QString> are different.
    static QStringList strings(const QVariant &value)
    {
        return value.userType() == QMetaType::QStringList ? value.toStringList()
                                                          : QStringList(listOf<QString>(value));
    }

    // An empty list is one of any items.
    static bool isList(const QVariant &value, const char *item, bool hasSuchItems, QString *why)
    {
        const char *const found = !listOf<int>(value).isEmpty() ? "a number"
            : !listOf<bool>(value).isEmpty()                    ? "a boolean"
            : !strings(value).isEmpty()                         ? "a string"
                                                                : nullptr;
        if (found)
            return isExpected(hasSuchItems, item, found, why);
        const bool isEmpty = holdsListOf<int>(value) || holdsListOf<bool>(value)
            || holdsListOf<QString>(value) || value.userType() == QMetaType::QStringList;
        return isExpected(isEmpty, "a list", kindOf(value), why);
    }

    static bool isIntegerList(const QVariant &value, QString *why)
    {
        return isList(value, "an integer", !listOf<int>(value).isEmpty(), why);
    }

    static bool isBooleanList(const QVariant &value, QString *why)
    {
        return isList(value, "a boolean", !listOf<bool>(value).isEmpty(), why);
    }

    static bool isStringList(const QVariant &value, QString *why)
    {
        return isList(value, "a string", !strings(value).isEmpty(), why);
    }

    // With characters escaped that could hide what is wrong.
    static QString onOneLine(const QString &text)
    {
        const QString controls = QStringLiteral("\u061c\u200e\u200f\u202a\u202b\u202c\u202d"
                                                "\u202e\u2066\u2067\u2068\u2069");
        QString shown;
        for (const QChar character : text) {
            const QChar::Category category = character.category();
            if (category == QChar::Other_Control || category == QChar::Separator_Line
                || category == QChar::Separator_Paragraph || controls.contains(character))
                shown += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
            else
                shown += character;
        }
        return shown;
    }

    static void addProblem(const QVariant &value,
                           bool (*isAllowed)(const QVariant &value, QString *why), const char *path,
                           const char *used, QStringList *problems)
    {
        QString why;
        if (value.isValid() && !isAllowed(value, &why))
            problems->append(
                onOneLine(QStringLiteral("%1: %2; %3")
                              .arg(QString::fromUtf8(path), why, QString::fromUtf8(used))));
    }
};

} // namespace Tarnvel::Schema
