// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QByteArray>

#include <cstddef>
#include <cstdint>

namespace Tarnvel::Testing {

/*!
 * \brief The bytes that a fuzzer hands over, read from front to back.
 *
 * What is read behind their end is zero or empty.
 */
class Input
{
public:
    Input(const std::uint8_t *data, std::size_t size);

    bool isEmpty() const;
    /*! \brief The next byte, left unread. */
    std::uint8_t peek() const;
    std::uint8_t byte();
    /*! \brief An unsigned number of \a size bytes, the least significant first. */
    std::uint64_t number(int size);
    /*! \brief The bytes before the next line feed, which is read too. */
    QByteArray line();
    /*! \brief The next \a size bytes, or as many as there are. */
    QByteArray bytes(int size);

    /*!
     * \brief A line as UTF-8 without a null character; U+FFFD stands for what is no UTF-8.
     *
     * A first byte below 0x20 stands for one of a list of ready-made hostile texts instead.
     */
    QByteArray text();

private:
    const std::uint8_t *m_next;
    const std::uint8_t *m_end;
};

} // namespace Tarnvel::Testing
