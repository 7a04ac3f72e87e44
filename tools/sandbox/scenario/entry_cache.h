// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "variant.h"

#include <QtCore/QByteArray>
#include <QtCore/QHash>

#include <utility>

namespace Tarnvel::Sandbox {

/*!
 * \brief The entries of the configurations in a file, by their JSON text.
 *
 * When a file with 100,000 settings is edited, only the entries that are different are made again.
 */
class EntryCache
{
public:
    /*! \brief The entry that \a text was in the last valid file; null if there is none. */
    Variant reuse(const QByteArray &text)
    {
        const auto found = m_valid.constFind(text);
        if (found == m_valid.constEnd())
            return {};
        m_next.insert(found.key(), found.value());
        return found.value();
    }

    /*! \brief Adds the \a entry that \a text is in the file being read. */
    void add(const QByteArray &text, const Variant &entry)
    {
        // The text may be part of another.
        m_next.insert({text.constData(), text.size()}, entry);
    }

    /*! \brief The file has been read, and \a isValid. */
    void endFile(bool isValid)
    {
        if (isValid)
            m_valid = std::move(m_next);
        m_next = {};
    }

private:
    QHash<QByteArray, Variant> m_valid;
    QHash<QByteArray, Variant> m_next;
};

} // namespace Tarnvel::Sandbox
