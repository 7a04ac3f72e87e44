// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fuzzer_input.h"

#include <algorithm>
#include <cstring>
#include <glib.h>

namespace Tarnvel::Testing {

FuzzerInput::FuzzerInput(const std::uint8_t *data, std::size_t size)
    : m_next(data), m_end(data + size)
{
}

bool FuzzerInput::isEmpty() const
{
    return m_next == m_end;
}

std::uint8_t FuzzerInput::peek() const
{
    return isEmpty() ? 0 : *m_next;
}

std::uint8_t FuzzerInput::byte()
{
    return isEmpty() ? 0 : *m_next++;
}

char FuzzerInput::code(const char *codes)
{
    const std::uint8_t code = byte();
    const bool isValid = code != 0 && std::strchr(codes, code) != nullptr;
    return isValid ? char(code) : codes[code % std::strlen(codes)];
}

std::uint64_t FuzzerInput::number(int size)
{
    std::uint64_t number = 0;
    for (int i = 0; i < size; ++i)
        number |= std::uint64_t(byte()) << (8 * i);
    return number;
}

QByteArray FuzzerInput::line()
{
    const auto *const end = std::find(m_next, m_end, '\n');
    const QByteArray line(reinterpret_cast<const char *>(m_next), int(end - m_next));
    m_next = end;
    byte();
    return line;
}

QByteArray FuzzerInput::text()
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

} // namespace Tarnvel::Testing
