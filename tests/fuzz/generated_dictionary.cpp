// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "generated_dictionary.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace Tarnvel::Testing {

namespace {

constexpr char basicCodes[] = "ybnqiuxtdsogh";
constexpr char allCodes[] = "ybnqiuxtdsoghva(";
constexpr int deepestContainer = 64;

/*! \brief What a signature may still hold at one place. */
struct Room
{
    int length;
    int arrays;
    int structures;
    int containers;
};

char readCode(Input &input, const char *codes)
{
    const std::uint8_t byte = input.byte();
    return byte != 0 && std::strchr(codes, byte) != nullptr ? char(byte)
                                                            : codes[byte % std::strlen(codes)];
}

QByteArray readType(Input &input, Room room);

QByteArray readArrayType(Input &input, Room room)
{
    --room.arrays;
    --room.containers;
    if (input.peek() != '{' || room.length < 5 || room.structures < 1 || room.containers < 1) {
        --room.length;
        return 'a' + readType(input, room);
    }
    input.byte();
    --room.structures;
    --room.containers;
    room.length -= 4;
    const char key = readCode(input, basicCodes);
    const QByteArray value = readType(input, room);
    if (input.peek() == '}')
        input.byte();
    return QByteArray("a{") + key + value + '}';
}

QByteArray readStructureType(Input &input, Room room)
{
    room.length -= 2;
    --room.structures;
    --room.containers;
    QByteArray members;
    do {
        const QByteArray member = readType(input, room);
        room.length -= member.size();
        members += member;
    } while (room.length > 0 && !input.isEmpty() && input.peek() != ')');
    if (input.peek() == ')')
        input.byte();
    return '(' + members + ')';
}

QByteArray readType(Input &input, Room room)
{
    const char code = readCode(input, allCodes);
    if (std::strchr(basicCodes, code) != nullptr)
        return {1, code};
    if (code == 'a' && room.length >= 2 && room.arrays > 0 && room.containers > 0)
        return readArrayType(input, room);
    if (code == '(' && room.length >= 3 && room.structures > 0 && room.containers > 0)
        return readStructureType(input, room);
    return {1, room.containers > 0 ? 'v' : 's'};
}

QByteArray readSignature(Input &input, int containers)
{
    return readType(input, {255, 32, 32, containers});
}

QByteArray readObjectPath(Input &input)
{
    QByteArray name = input.text();
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !g_ascii_isalnum(c); }, '_');
    return '/' + name;
}

class ValueReader
{
public:
    explicit ValueReader(Input &input) : m_input(input) { }

    bool hasHandles() const
    {
        return m_hasHandles;
    }

    GVariant *readEntries();

private:
    GVariant *readValue(const GVariantType *type, int depth);
    GVariant *readNumber(const GVariantType *type);
    GVariant *readText(const GVariantType *type);
    GVariant *readVariant(int depth);
    GVariant *readArray(const GVariantType *type, int depth);
    GVariant *readEntry(const GVariantType *type, int depth);
    GVariant *readStructure(const GVariantType *type, int depth);

    Input &m_input;
    bool m_hasHandles = false;
};

GVariant *ValueReader::readEntries()
{
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
    while (!m_input.isEmpty())
        g_variant_builder_add_value(&entries, readEntry(G_VARIANT_TYPE("{sv}"), 1));
    return g_variant_builder_end(&entries);
}

GVariant *ValueReader::readValue(const GVariantType *type, int depth)
{
    switch (*g_variant_type_peek_string(type)) {
    case 's':
    case 'o':
    case 'g':
        return readText(type);
    case 'v':
        return readVariant(depth);
    case 'a':
        return readArray(type, depth);
    case '{':
        return readEntry(type, depth);
    case '(':
        return readStructure(type, depth);
    default:
        return readNumber(type);
    }
}

GVariant *ValueReader::readNumber(const GVariantType *type)
{
    switch (*g_variant_type_peek_string(type)) {
    case 'b':
        return g_variant_new_boolean((m_input.byte() & 1) != 0);
    case 'y':
        return g_variant_new_byte(m_input.byte());
    case 'n':
        return g_variant_new_int16(gint16(m_input.number(2)));
    case 'q':
        return g_variant_new_uint16(guint16(m_input.number(2)));
    case 'i':
        return g_variant_new_int32(gint32(m_input.number(4)));
    case 'u':
        return g_variant_new_uint32(guint32(m_input.number(4)));
    case 'x':
        return g_variant_new_int64(gint64(m_input.number(8)));
    case 't':
        return g_variant_new_uint64(m_input.number(8));
    case 'd':
        return g_variant_new_double(double(gint64(m_input.number(8))) / 1000);
    default:
        m_hasHandles = true;
        return g_variant_new_handle(0);
    }
}

GVariant *ValueReader::readText(const GVariantType *type)
{
    switch (*g_variant_type_peek_string(type)) {
    case 'o':
        return g_variant_new_object_path(readObjectPath(m_input).constData());
    case 'g':
        return g_variant_new_signature(readSignature(m_input, deepestContainer).constData());
    default:
        return g_variant_new_string(m_input.text().constData());
    }
}

GVariant *ValueReader::readVariant(int depth)
{
    const QByteArray signature = readSignature(m_input, deepestContainer - depth - 1);
    GVariantType *const type = g_variant_type_new(signature.constData());
    GVariant *const value = readValue(type, depth + 1);
    g_variant_type_free(type);
    return g_variant_new_variant(value);
}

GVariant *ValueReader::readArray(const GVariantType *type, int depth)
{
    std::vector<GVariant *> elements(m_input.byte() % 16);
    const GVariantType *const elementType = g_variant_type_element(type);
    for (GVariant *&element : elements)
        element = readValue(elementType, depth + 1);
    return g_variant_new_array(elementType, elements.data(), elements.size());
}

GVariant *ValueReader::readEntry(const GVariantType *type, int depth)
{
    GVariant *const key = readValue(g_variant_type_key(type), depth + 1);
    GVariant *const value = readValue(g_variant_type_value(type), depth + 1);
    return g_variant_new_dict_entry(key, value);
}

GVariant *ValueReader::readStructure(const GVariantType *type, int depth)
{
    std::vector<GVariant *> members;
    for (const GVariantType *member = g_variant_type_first(type); member != nullptr;
         member = g_variant_type_next(member))
        members.push_back(readValue(member, depth + 1));
    return g_variant_new_tuple(members.data(), members.size());
}

} // namespace

Body readBody(Input &input)
{
    ValueReader reader(input);
    GVariant *const argument = g_variant_ref_sink(reader.readEntries());
    return {{argument, g_variant_unref}, reader.hasHandles()};
}

QString textOf(const Body &body)
{
    gchar *const text = g_variant_print(body.argument.get(), TRUE);
    const QString result = QString::fromUtf8(text);
    g_free(text);
    return result;
}

} // namespace Tarnvel::Testing
