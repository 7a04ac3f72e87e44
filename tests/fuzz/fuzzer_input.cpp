// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fuzzer_input.h"

#include <algorithm>
#include <array>
#include <glib.h>

namespace Tarnvel::Testing {

namespace {

const QByteArray &hostileText(int number)
{
    static const std::array<QByteArray, 20> texts {
        QByteArray(),
        QByteArray(300, 'k'),
        QByteArray(1000, 'x'),
        QByteArrayLiteral("\xef\xbb\xbf"),
        QByteArrayLiteral("\xef\xbb\xbfmarked"),
        QByteArrayLiteral("\xef\xbf\xbd"),
        QByteArrayLiteral("\xef\xbf\xbe"),
        QByteArrayLiteral("\xef\xbf\xbf"),
        QByteArrayLiteral("\xef\xb7\x90"),
        QByteArrayLiteral("\xf4\x8f\xbf\xbf"),
        QByteArrayLiteral("a\n"),
        QByteArrayLiteral("e\xcc\x81"),
        QByteArrayLiteral("\xcc\x81"),
        QByteArrayLiteral("\xf0\x9f\x98\x80"),
        QByteArrayLiteral("\xe2\x80\xae"),
        QByteArrayLiteral("\"\\\""),
        QByteArrayLiteral("%1%2"),
        QByteArrayLiteral("a/b[2]"),
        QByteArrayLiteral("12]"),
        QByteArrayLiteral("\x01\x7f\xc2\x80"),
    };
    return texts.at(number % texts.size());
}

} // namespace

Input::Input(const std::uint8_t *data, std::size_t size) : m_next(data), m_end(data + size) { }

bool Input::isEmpty() const
{
    return m_next == m_end;
}

std::uint8_t Input::peek() const
{
    return isEmpty() ? 0 : *m_next;
}

std::uint8_t Input::byte()
{
    return isEmpty() ? 0 : *m_next++;
}

std::uint64_t Input::number(int size)
{
    std::uint64_t number = 0;
    for (int i = 0; i < size; ++i)
        number |= std::uint64_t(byte()) << (8 * i);
    return number;
}

QByteArray Input::line()
{
    const auto *const end = std::find(m_next, m_end, '\n');
    const QByteArray line = bytes(int(end - m_next));
    byte();
    return line;
}

QByteArray Input::bytes(int size)
{
    const int available = int(std::min<std::ptrdiff_t>(size, m_end - m_next));
    const QByteArray bytes(reinterpret_cast<const char *>(m_next), available);
    m_next += available;
    return bytes;
}

QByteArray Input::text()
{
    if (!isEmpty() && peek() < 0x20 && peek() != '\n')
        return hostileText(byte());

    const QByteArray raw = line();
    gchar *const valid = g_utf8_make_valid(raw.constData(), raw.size());
    const QByteArray text(valid);
    g_free(valid);
    return text;
}

} // namespace Tarnvel::Testing
