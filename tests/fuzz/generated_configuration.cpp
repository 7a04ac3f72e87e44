// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "generated_configuration.h"

#include "configuration_p.h"

#include <QtCore/QDate>
#include <QtCore/QStringList>

#include <cstring>

namespace Tarnvel::Testing {

namespace {

constexpr char kinds[] = "{ibsIBSTdulyLMD0";
constexpr int deepestConfiguration = 30;

ValueTree readEntries(Input &input, int level);

char readKind(Input &input)
{
    const std::uint8_t byte = input.byte();
    return byte != 0 && std::strchr(kinds, byte) != nullptr ? char(byte)
                                                            : kinds[byte % std::strlen(kinds)];
}

int readInt(Input &input)
{
    return int(std::uint32_t(input.number(4)));
}

QString readString(Input &input)
{
    return QString::fromUtf8(input.text());
}

template<typename List, typename ReadItem>
ValueTree readList(Input &input, ReadItem readItem)
{
    ValueTree tree;
    tree.kind = ValueTree::List;
    List list;
    for (int count = input.byte() % 16; count > 0; --count) {
        list.append(readItem(input));
        tree.items.append(list.constLast());
    }
    tree.value = QVariant::fromValue(list);
    return tree;
}

ValueTree leaf(ValueTree::Kind kind, const QVariant &value)
{
    ValueTree tree;
    tree.kind = kind;
    tree.value = value;
    return tree;
}

ValueTree readRefused(Input &input, char kind)
{
    switch (kind) {
    case 'd':
        return leaf(ValueTree::Refused, readInt(input) / 8.0);
    case 'u':
        return leaf(ValueTree::Refused, uint(readInt(input)));
    case 'l':
        return leaf(ValueTree::Refused, qlonglong(input.number(8)));
    case 'y':
        return leaf(ValueTree::Refused, input.line());
    case 'L':
        return leaf(ValueTree::Refused, QVariantList {readInt(input), readString(input)});
    case 'M':
        return leaf(ValueTree::Refused, QVariantMap {{readString(input), readInt(input)}});
    case 'D':
        return leaf(ValueTree::Refused, QDate::fromJulianDay(input.byte()));
    default:
        return leaf(ValueTree::Refused, QVariant());
    }
}

ValueTree readValue(Input &input, int level)
{
    const char kind = readKind(input);
    switch (kind) {
    case '{':
        return level < deepestConfiguration ? readEntries(input, level + 1) : ValueTree();
    case 'i':
        return leaf(ValueTree::Scalar, readInt(input));
    case 'b':
        return leaf(ValueTree::Scalar, (input.byte() & 1) != 0);
    case 's':
        return leaf(ValueTree::Scalar, readString(input));
    case 'I':
        return readList<QList<int>>(input, readInt);
    case 'B':
        return readList<QList<bool>>(input, [](Input &in) { return (in.byte() & 1) != 0; });
    case 'S':
        return readList<QStringList>(input, readString);
    case 'T':
        return readList<QList<QString>>(input, readString);
    default:
        return readRefused(input, kind);
    }
}

ValueTree readEntries(Input &input, int level)
{
    ValueTree tree;
    while (!input.isEmpty() && input.peek() != '}') {
        const QString key = readString(input);
        tree.entries.insert(key, readValue(input, level));
    }
    input.byte();
    return tree;
}

} // namespace

ValueTree readConfiguration(Input &input)
{
    return readEntries(input, 1);
}

QVariant toVariant(const ValueTree &tree)
{
    using namespace Application::ManagedConfiguration;

    if (tree.kind != ValueTree::Configuration)
        return tree.value;
    QMap<QString, QVariant> entries;
    for (auto entry = tree.entries.cbegin(); entry != tree.entries.cend(); ++entry)
        entries.insert(entry.key(), toVariant(entry.value()));
    return QVariant::fromValue(
        Application::ManagedConfiguration::Configuration(new ConfigurationPrivate(entries)));
}

} // namespace Tarnvel::Testing
