// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "qt_version_p.h"

#include <QtCore/QDebug>
#include <Tarnvel/ManagedConfiguration/xpath.h>

#include <algorithm>

namespace Tarnvel::Application::ManagedConfiguration {

namespace {

void warn(const char *fault, const QString &culprit, const QString &xpath)
{
    qWarning().nospace() << fault << culprit << " (xpath=" << xpath << ")";
}

bool isSpecial(QChar character)
{
    return character == QLatin1Char('/') || character == QLatin1Char('[')
        || character == QLatin1Char(']');
}

bool appendIndexedPart(const QString &part, const QString &xpath, QList<XpathAccess> &accesses)
{
    const int open = part.indexOf(QLatin1Char('['));
    const int close = part.indexOf(QLatin1Char(']'));
    if (open > close) {
        warn("The xpath part has an invalid index format: ", part, xpath);
        return false;
    }
    if (open == 0) {
        warn("The xpath part cannot have the ‘[’ character at the beginning: ", part, xpath);
        return false;
    }
    if (close != part.size() - 1) {
        warn("The ']' character can only be at the end of an xpath part: ", part, xpath);
        return false;
    }

    // A part such as "12]" has no "[": mid() then returns the whole part as the key, and the text
    // before the "]" as the index. Applications may rely on that.
    const QString key = part.mid(0, open);
    const QString indexText = part.mid(open + 1, close - open - 1);
    bool isNumber = false;
    const int index = toInt(indexText, &isNumber);
    if (!isNumber || index < 0) {
        warn("The xpath part contains an invalid index: ", indexText, xpath);
        return false;
    }
    accesses.append(XpathAccess(key));
    accesses.append(XpathAccess(index));
    return true;
}

QList<XpathAccess> parseXpathAccesses(const QString &xpath)
{
    if (xpath.isEmpty()) {
        qWarning() << "Attempt to process an empty xpath";
        return {};
    }

    QList<XpathAccess> accesses;
    // Enough for most paths. A path may have millions of separators and no steps.
    accesses.reserve(8);
    // One pass without QString::split(): a lookup spends most of its time here.
    const QChar *end = xpath.begin();
    for (const QChar *begin = end; begin < xpath.end(); begin = end + 1) {
        const QChar *const special = std::find_if(begin, xpath.end(), isSpecial);
        end = std::find(special, xpath.end(), QLatin1Char('/'));
        const QString part(begin, static_cast<int>(end - begin));
        if (special != end && !appendIndexedPart(part, xpath, accesses))
            return {};
        if (special == end && !part.isEmpty())
            accesses.append(XpathAccess(part));
    }
    return accesses;
}

} // namespace

XpathAccess::XpathAccess(int index) : m_type(Index), m_index(index) { }

XpathAccess::XpathAccess(const QString &key) : m_type(Key), m_index(0), m_key(key) { }

XpathAccess::Type XpathAccess::type() const
{
    return m_type;
}

int XpathAccess::toIndex() const
{
    return m_index;
}

const QString &XpathAccess::toKey() const
{
    return m_key;
}

Xpath::Xpath(const QString &xpath) : m_text(xpath), m_accesses(parseXpathAccesses(xpath)) { }

bool Xpath::isValid() const
{
    return !m_accesses.isEmpty();
}

const QString &Xpath::toString() const
{
    return m_text;
}

const QList<XpathAccess> &Xpath::accesses() const
{
    return m_accesses;
}

} // namespace Tarnvel::Application::ManagedConfiguration
