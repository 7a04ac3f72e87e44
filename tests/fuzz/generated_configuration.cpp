// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "generated_configuration.h"

#include "description.h"

#include <QtCore/QDate>

namespace Tarnvel::Testing {

using namespace Application::ManagedConfiguration;

namespace {

constexpr int maximumLevel = 30;

Configuration readEntries(FuzzerInput &input, int level);

bool readBool(FuzzerInput &input)
{
    return (input.byte() & 1) != 0;
}

int readInt(FuzzerInput &input)
{
    return int(std::uint32_t(input.number(4)));
}

QString readString(FuzzerInput &input)
{
    return QString::fromUtf8(input.text());
}

template<typename List, typename ReadItem>
QVariant readList(FuzzerInput &input, ReadItem readItem)
{
    List list;
    for (int count = input.byte() % 16; count > 0; --count)
        list.append(readItem(input));
    return QVariant::fromValue(list);
}

QVariant readValue(FuzzerInput &input, int level)
{
    switch (input.code("{ibsIBSTdulyLMD0")) {
    case '{':
        return QVariant::fromValue(level < maximumLevel ? readEntries(input, level + 1)
                                                        : Configuration());
    case 'i':
        return readInt(input);
    case 'b':
        return readBool(input);
    case 's':
        return readString(input);
    case 'I':
        return readList<QList<int>>(input, readInt);
    case 'B':
        return readList<QList<bool>>(input, readBool);
    case 'S':
        return readList<QStringList>(input, readString);
    case 'T':
        return readList<QList<QString>>(input, readString);
    case 'd':
        return readInt(input) / 8.0;
    case 'u':
        return uint(readInt(input));
    case 'l':
        return qlonglong(input.number(8));
    case 'y':
        return input.line();
    case 'L':
        return QVariantList {readInt(input), readString(input)};
    case 'M':
        return QVariantMap {{readString(input), readInt(input)}};
    case 'D':
        return QDate::fromJulianDay(input.byte());
    default:
        return {};
    }
}

Configuration readEntries(FuzzerInput &input, int level)
{
    QMap<QString, QVariant> entries;
    while (!input.isEmpty() && input.peek() != '}') {
        const QString key = readString(input);
        entries.insert(key, readValue(input, level));
    }
    input.byte();
    return makeConfiguration(entries);
}

} // namespace

Configuration generateConfiguration(FuzzerInput &input)
{
    return readEntries(input, 1);
}

} // namespace Tarnvel::Testing
