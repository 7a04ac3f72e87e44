// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <glib.h>

namespace Tarnvel::Testing {

/*!
 * \brief The bytes that libFuzzer provides, read from front to back.
 *
 * Reading past their end gives zeros and empty texts.
 */
class FuzzerInput
{
public:
    FuzzerInput(const std::uint8_t *data, std::size_t size) : m_next(data), m_end(data + size) { }

    bool isEmpty() const
    {
        return m_next == m_end;
    }

    /*! \brief The next byte, which stays unread. */
    std::uint8_t peek() const
    {
        return isEmpty() ? 0 : *m_next;
    }

    std::uint8_t byte()
    {
        return isEmpty() ? 0 : *m_next++;
    }

    /*! \brief Reads the next byte if it is \a expected; true if it was. Not for null. */
    bool skip(char expected)
    {
        const bool isNext = char(peek()) == expected;
        m_next += isNext ? 1 : 0;
        return isNext;
    }

    /*! \brief The next byte if it is one of \a codes, otherwise one of them in its place. */
    char code(const char *codes)
    {
        const std::uint8_t code = byte();
        const bool isValid = code != 0 && std::strchr(codes, code) != nullptr;
        return isValid ? char(code) : codes[code % std::strlen(codes)];
    }

    /*! \brief An unsigned number of \a size bytes in little-endian order. */
    std::uint64_t number(int size)
    {
        std::uint64_t number = 0;
        for (int i = 0; i < size; ++i)
            number |= std::uint64_t(byte()) << (8 * i);
        return number;
    }

    /*! \brief The bytes up to the next line feed, which is read too. */
    QByteArray line()
    {
        const auto *const end = std::find(m_next, m_end, '\n');
        const QByteArray line(reinterpret_cast<const char *>(m_next), int(end - m_next));
        m_next = end;
        byte();
        return line;
    }

    /*!
     * \brief A line as UTF-8 without null characters; U+FFFD replaces what is not valid UTF-8.
     *
     * If the first byte is below 0x20, it selects one of several difficult texts instead.
     */
    QByteArray text()
    {
        static const QByteArray difficult[] = {"",
                                               QByteArray(300, 'k'),
                                               QByteArray(1000, 'x'),
                                               "\xef\xbb\xbf",
                                               "\xef\xbb\xbfmarked",
                                               "\xef\xbf\xbd",
                                               "\xef\xbf\xbe",
                                               "\xef\xbf\xbf",
                                               "\xef\xb7\x90",
                                               "\xf4\x8f\xbf\xbf",
                                               "a\n",
                                               "e\xcc\x81",
                                               "\xcc\x81",
                                               "\xf0\x9f\x98\x80",
                                               "\xe2\x80\xae",
                                               "\"\\\"",
                                               "%1%2",
                                               "a/b[2]",
                                               "12]",
                                               "\x01\x7f\xc2\x80"};
        if (!isEmpty() && peek() < 0x20 && peek() != '\n')
            return difficult[byte() % std::size(difficult)];

        const QByteArray raw = line();
        g_autofree gchar *valid = g_utf8_make_valid(raw.constData(), raw.size());
        return valid;
    }

private:
    const std::uint8_t *m_next;
    const std::uint8_t *m_end;
};

/*! \brief Ends the process: \a input led to \a actual, a value and warnings, not to \a expected. */
[[noreturn]] inline void fail(const QString &input, const QStringList &actual,
                              const QStringList &expected)
{
    std::fprintf(stderr, "\nFOUND: %s\n  actual: %s\n  expected: %s\n", qUtf8Printable(input),
                 qUtf8Printable(actual.join(u'\n')), qUtf8Printable(expected.join(u'\n')));
    std::abort();
}

} // namespace Tarnvel::Testing
