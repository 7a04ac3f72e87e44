// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "generated_configuration.h"

#include "configuration_p.h"

#include <QtCore/QDate>
#include <QtCore/QStringList>

namespace Tarnvel::Testing {

using namespace Application::ManagedConfiguration;

namespace {

constexpr int deepestConfiguration = 30;

ValueTree readEntries(FuzzerInput &input, int level);

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

ValueTree leaf(ValueTree::Kind kind, const QVariant &value)
{
    ValueTree tree;
    tree.kind = kind;
    tree.value = value;
    return tree;
}

template<typename List, typename ReadItem>
ValueTree readList(FuzzerInput &input, ReadItem readItem)
{
    List list;
    QVector<ValueTree> items;
    for (int count = input.byte() % 16; count > 0; --count) {
        list.append(readItem(input));
        items.append(leaf(ValueTree::Scalar, list.constLast()));
    }
    ValueTree tree = leaf(ValueTree::List, QVariant::fromValue(list));
    tree.items = items;
    return tree;
}

QVariant readUnsupported(FuzzerInput &input, char code)
{
    switch (code) {
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

ValueTree readValue(FuzzerInput &input, int level)
{
    const char code = input.code("{ibsIBSTdulyLMD0");
    switch (code) {
    case '{':
        return level < deepestConfiguration ? readEntries(input, level + 1) : ValueTree();
    case 'i':
        return leaf(ValueTree::Scalar, readInt(input));
    case 'b':
        return leaf(ValueTree::Scalar, readBool(input));
    case 's':
        return leaf(ValueTree::Scalar, readString(input));
    case 'I':
        return readList<QList<int>>(input, readInt);
    case 'B':
        return readList<QList<bool>>(input, readBool);
    case 'S':
        return readList<QStringList>(input, readString);
    case 'T':
        return readList<QList<QString>>(input, readString);
    default:
        return leaf(ValueTree::Unsupported, readUnsupported(input, code));
    }
}

ValueTree readEntries(FuzzerInput &input, int level)
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

ValueTree generateConfiguration(FuzzerInput &input)
{
    return readEntries(input, 1);
}

QVariant toVariant(const ValueTree &tree)
{
    if (tree.kind != ValueTree::Configuration)
        return tree.value;
    QMap<QString, QVariant> entries;
    for (auto entry = tree.entries.cbegin(); entry != tree.entries.cend(); ++entry)
        entries.insert(entry.key(), toVariant(entry.value()));
    return QVariant::fromValue(Configuration(new ConfigurationPrivate(entries)));
}

} // namespace Tarnvel::Testing
