// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "variant.h"

#include <QtCore/QByteArray>
#include <QtCore/QHash>

#include <iterator>

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
        const auto found = m_valid.find(text);
        if (found == m_valid.end())
            return {};
        found->file = m_file;
        return found->entry;
    }

    /*! \brief Adds the \a entry that \a text is in the file being read. */
    void add(const QByteArray &text, const Variant &entry)
    {
        // The text may be part of another.
        m_added.insert({text.constData(), text.size()}, {entry, m_file});
    }

    /*! \brief The file has been read, and \a isValid. */
    void endFile(bool isValid)
    {
        if (isValid) {
            for (auto entry = m_valid.begin(); entry != m_valid.end();)
                entry = entry->file == m_file ? std::next(entry) : m_valid.erase(entry);
            for (auto entry = m_added.begin(); entry != m_added.end(); ++entry)
                m_valid.insert(entry.key(), entry.value());
        }
        m_added.clear();
        ++m_file;
    }

private:
    struct CachedEntry
    {
        Variant entry;
        // The number of the last file with it.
        int file;
    };

    QHash<QByteArray, CachedEntry> m_valid;
    QHash<QByteArray, CachedEntry> m_added;
    int m_file = 0;
};

} // namespace Tarnvel::Sandbox
