// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "checks_text.h"

namespace Tarnvel::Schema {

// Nothing is allocated for a value that is allowed, nor unless somebody asks why it is not. The
// messages are those of validate().
const char checksText[] =
    R"(    // Whether values are allowed. Where one is not, *why says why, unless it is null.
    struct Checks
    {
        static const char *kindOf(const QVariant &value)
        {
            const int type = value.userType();
            return type == QMetaType::Int                   ? "a number"
                : type == QMetaType::Bool                   ? "a boolean"
                : type == QMetaType::QString                ? "a string"
                : type == qMetaTypeId<Configuration>()      ? "an object"
                                                            : "a list";
        }

        static bool hasType(const QVariant &value, int type, const char *expected, QString *why)
        {
            if (value.userType() == type)
                return true;
            if (why)
                *why = QStringLiteral("expected %1, found %2")
                           .arg(QLatin1String(expected), QLatin1String(kindOf(value)));
            return false;
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
            return value.userType() == QMetaType::QStringList
                ? value.toStringList()
                : QStringList(listOf<QString>(value));
        }

        static bool isList(const QVariant &value, bool hasItemType, const char *item, QString *why)
        {
            const char *const found = holdsListOf<int>(value) ? "a number"
                : holdsListOf<bool>(value)                    ? "a boolean"
                : holdsListOf<QString>(value) || value.userType() == QMetaType::QStringList
                ? "a string"
                : nullptr;
            if (!found)
                return hasType(value, QMetaType::QStringList, "a list", why);
            // An empty list is one of any items.
            if (hasItemType
                || (listOf<int>(value).isEmpty() && listOf<bool>(value).isEmpty()
                    && strings(value).isEmpty()))
                return true;
            if (why)
                *why = QStringLiteral("expected %1, found %2")
                           .arg(QLatin1String(item), QLatin1String(found));
            return false;
        }

        static bool isIntegerList(const QVariant &value, QString *why)
        {
            return isList(value, holdsListOf<int>(value), "an integer", why);
        }

        static bool isBooleanList(const QVariant &value, QString *why)
        {
            return isList(value, holdsListOf<bool>(value), "a boolean", why);
        }

        static bool isStringList(const QVariant &value, QString *why)
        {
            return isList(value, !strings(value).isEmpty(), "a string", why);
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

        static bool isOneOf(int value, std::initializer_list<int> values, QString *why)
        {
            QStringList texts;
            for (const int one : values) {
                if (one == value)
                    return true;
                if (why)
                    texts.append(QString::number(one));
            }
            if (why)
                *why = QStringLiteral("%1 is not one of %2")
                           .arg(QString::number(value), texts.join(QStringLiteral(", ")));
            return false;
        }

        static QString quoted(const QString &text)
        {
            const QString shown = text.size() > 80 ? text.left(80) + QStringLiteral("...") : text;
            return QLatin1Char('"') + shown + QLatin1Char('"');
        }

        // -1 if the text is none of them.
        static int indexOf(const QString &text, const char16_t *const *texts, int count)
        {
            for (int index = 0; index < count; ++index) {
                if (QStringView(text) == QStringView(texts[index]))
                    return index;
            }
            return -1;
        }

        static bool isOneOf(const QString &text, const char16_t *const *texts, int count, QString *why)
        {
            if (indexOf(text, texts, count) >= 0)
                return true;
            QStringList all;
            for (int index = 0; why && index < count; ++index)
                all.append(quoted(QString::fromUtf16(texts[index])));
            if (why)
                *why = QStringLiteral("%1 is not one of %2")
                           .arg(quoted(text), all.join(QStringLiteral(", ")));
            return false;
        }

        // In Unicode code points.
        static bool hasLength(const QString &text, int minimum, int maximum, QString *why)
        {
            int length = 0;
            const QChar *const end = text.constData() + text.size();
            for (const QChar *at = text.constData(); at != end; ++at, ++length) {
                if (at->isHighSurrogate() && at + 1 != end && at[1].isLowSurrogate())
                    ++at;
            }
            if (length >= minimum && length <= maximum)
                return true;
            if (why)
                *why = QStringLiteral("%1 has %2 than %3 characters")
                           .arg(quoted(text),
                                length < minimum ? QStringLiteral("fewer") : QStringLiteral("more"),
                                QString::number(length < minimum ? minimum : maximum));
            return false;
        }

        static bool hasSize(long long size, int minimum, int maximum, QString *why)
        {
            if (size >= minimum && size <= maximum)
                return true;
            if (why)
                *why = QStringLiteral("the list has %1 than %2 items")
                           .arg(size < minimum ? QStringLiteral("fewer") : QStringLiteral("more"),
                                QString::number(size < minimum ? minimum : maximum));
            return false;
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
                    shown += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16,
                                                         QLatin1Char('0'));
                else
                    shown += character;
            }
            return shown;
        }

        static void addProblem(const QVariant &value,
                               bool (*isAllowed)(const QVariant &value, QString *why),
                               const QString &path, const QString &used, QStringList *problems)
        {
            QString why;
            if (value.isValid() && !isAllowed(value, &why))
                problems->append(onOneLine(QStringLiteral("%1: %2; %3").arg(path, why, used)));
        }
)";

const char patternCheckText[] = R"(
        static bool doesMatch(const QString &text, const QRegularExpression &pattern, QString *why)
        {
            if (pattern.match(text).hasMatch())
                return true;
            if (why)
                *why = QStringLiteral("%1 does not match %2").arg(quoted(text), pattern.pattern());
            return false;
        }
)";

} // namespace Tarnvel::Schema
