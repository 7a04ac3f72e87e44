// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QByteArray>

#include <cstddef>
#include <cstdint>

namespace Tarnvel::Testing {

/*!
 * \brief The bytes that libFuzzer provides, read from front to back.
 *
 * Reading past their end gives zeros and empty texts.
 */
class FuzzerInput
{
public:
    FuzzerInput(const std::uint8_t *data, std::size_t size);

    bool isEmpty() const;
    /*! \brief The next byte, which stays unread. */
    std::uint8_t peek() const;
    std::uint8_t byte();
    /*! \brief The next byte if it is one of \a codes, otherwise one of them in its place. */
    char code(const char *codes);
    /*! \brief An unsigned number of \a size bytes in little-endian order. */
    std::uint64_t number(int size);
    /*! \brief The bytes up to the next line feed, which is read too. */
    QByteArray line();

    /*!
     * \brief A line as UTF-8 without null characters; U+FFFD replaces what is not valid UTF-8.
     *
     * If the first byte is below 0x20, it selects one of several difficult texts instead.
     */
    QByteArray text();

private:
    const std::uint8_t *m_next;
    const std::uint8_t *m_end;
};

} // namespace Tarnvel::Testing
