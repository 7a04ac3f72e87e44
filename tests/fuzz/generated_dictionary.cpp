// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "generated_dictionary.h"

#include "bus_limits.h"

#include <cstring>
#include <vector>

namespace Tarnvel::Testing {

namespace {

constexpr char basicCodes[] = "ybnqiuxtdsogh";
constexpr char allCodes[] = "ybnqiuxtdsoghva(";

/*! \brief How much more D-Bus allows at a position in a signature. */
struct Room
{
    int length;
    int arrays;
    int structures;
    int containers;
};

QByteArray readType(FuzzerInput &input, Room room);

QByteArray readElementType(FuzzerInput &input, Room room)
{
    if (room.length < 4 || room.structures < 1 || room.containers < 1 || !input.skip('{'))
        return readType(input, room);
    const char key = input.code(basicCodes);
    const QByteArray value = readType(
        input, {room.length - 3, room.arrays, room.structures - 1, room.containers - 1});
    input.skip('}');
    return QByteArray("{") + key + value + '}';
}

QByteArray readMemberTypes(FuzzerInput &input, Room room)
{
    QByteArray members;
    do {
        const QByteArray member = readType(input, room);
        room.length -= member.size();
        members += member;
    } while (!input.skip(')') && room.length > 0 && !input.isEmpty());
    return members;
}

QByteArray readType(FuzzerInput &input, Room room)
{
    const char code = input.code(allCodes);
    if (std::strchr(basicCodes, code) != nullptr)
        return {1, code};
    const auto [length, arrays, structures, containers] = room;
    if (code == 'a' && length >= 2 && arrays > 0 && containers > 0)
        return 'a' + readElementType(input, {length - 1, arrays - 1, structures, containers - 1});
    if (code == '(' && length >= 3 && structures > 0 && containers > 0)
        return '(' + readMemberTypes(input, {length - 2, arrays, structures - 1, containers - 1})
            + ')';
    return {1, containers > 0 ? 'v' : 's'};
}

QByteArray readSignature(FuzzerInput &input, int containers)
{
    return readType(input,
                    {DBus::maximumSignatureSize, DBus::maximumArrayDepth,
                     DBus::maximumStructureDepth, containers});
}

GVariant *readValue(FuzzerInput &input, const GVariantType *type, int depth);

GVariant *readArray(FuzzerInput &input, const GVariantType *type, int depth)
{
    std::vector<GVariant *> elements(input.byte() % 16);
    const GVariantType *const elementType = g_variant_type_element(type);
    for (GVariant *&element : elements)
        element = readValue(input, elementType, depth + 1);
    return g_variant_new_array(elementType, elements.data(), elements.size());
}

GVariant *readMembers(FuzzerInput &input, const GVariantType *type, int depth)
{
    std::vector<GVariant *> members;
    for (const GVariantType *member = g_variant_type_first(type); member != nullptr;
         member = g_variant_type_next(member))
        members.push_back(readValue(input, member, depth + 1));
    return g_variant_type_is_dict_entry(type)
        ? g_variant_new_dict_entry(members.at(0), members.at(1))
        : g_variant_new_tuple(members.data(), members.size());
}

GVariant *readValue(FuzzerInput &input, const GVariantType *type, int depth)
{
    QByteArray signature;
    switch (*g_variant_type_peek_string(type)) {
    case 'b':
        return g_variant_new_boolean((input.byte() & 1) != 0);
    case 'y':
        return g_variant_new_byte(input.byte());
    case 'n':
        return g_variant_new_int16(gint16(input.number(2)));
    case 'q':
        return g_variant_new_uint16(guint16(input.number(2)));
    case 'i':
        return g_variant_new_int32(gint32(input.number(4)));
    case 'u':
        return g_variant_new_uint32(guint32(input.number(4)));
    case 'x':
        return g_variant_new_int64(gint64(input.number(8)));
    case 't':
        return g_variant_new_uint64(input.number(8));
    case 'd':
        return g_variant_new_double(double(gint64(input.number(8))) / 1000);
    case 's':
        return g_variant_new_string(input.text().constData());
    case 'o':
        return g_variant_new_object_path(('/' + input.text().toHex()).constData());
    case 'g':
        return g_variant_new_signature(
            readSignature(input, DBus::maximumContainerDepth).constData());
    case 'v':
        signature = readSignature(input, DBus::maximumContainerDepth - depth - 1);
        return g_variant_new_variant(
            readValue(input, G_VARIANT_TYPE(signature.constData()), depth + 1));
    case 'a':
        return readArray(input, type, depth);
    case '{':
    case '(':
        return readMembers(input, type, depth);
    default:
        return g_variant_new_handle(0);
    }
}

} // namespace

Value generateDictionary(FuzzerInput &input)
{
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
    while (!input.isEmpty())
        g_variant_builder_add_value(&entries, readMembers(input, G_VARIANT_TYPE("{sv}"), 1));
    return {g_variant_ref_sink(g_variant_builder_end(&entries)), g_variant_unref};
}

} // namespace Tarnvel::Testing
