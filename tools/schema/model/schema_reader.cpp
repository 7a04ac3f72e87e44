// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "schema_reader.h"

#include "bus_limits.h"
#include "endpoint.h"
#include "input_file.h"
#include "json_reader.h"
#include "validation.h"

#include <QtCore/QSet>

#include <cmath>
#include <glib.h>
#include <optional>
#include <sysexits.h>

namespace Tarnvel::Schema {

using Tools::Diagnostics;
using Tools::JsonMember;
using Tools::JsonValue;
using Tools::ObjectReader;

namespace {

constexpr int maximumLevels = DBus::maximumContainerDepth / DBus::containersPerLevel;
constexpr qint64 maximumCount = std::numeric_limits<qint32>::max();

const QMap<QString, Type> &types()
{
    static const QMap<QString, Type> types {
        {QStringLiteral("array"), Type::List},      {QStringLiteral("boolean"), Type::Boolean},
        {QStringLiteral("integer"), Type::Integer}, {QStringLiteral("object"), Type::Object},
        {QStringLiteral("string"), Type::String},
    };
    return types;
}

// To JSON Schema, 1.0, 1e0 and 1 are the same integer.
void writeIntegersInOneWay(JsonValue *value)
{
    if (value->kind == JsonValue::Number) {
        const double number = value->text.toDouble();
        const bool isInt32 = number >= std::numeric_limits<qint32>::min()
            && number <= std::numeric_limits<qint32>::max() && number == std::trunc(number);
        if (isInt32)
            value->text = QString::number(static_cast<qint32>(number));
    }
    for (JsonValue &item : value->items)
        writeIntegersInOneWay(&item);
    for (JsonMember &member : value->members)
        writeIntegersInOneWay(&member.value);
}

// Reads one of the names of types; the default is not one of these.
std::optional<Type> readType(const JsonValue *value, bool isItem, Diagnostics *diagnostics)
{
    const QString name = Tools::readString(value, diagnostics);
    if (!value || value->kind != JsonValue::String)
        return {};
    const bool isKnown = types().contains(name);
    const Type type = types().value(name);
    if (isKnown && !(isItem && (type == Type::List || type == Type::Object)))
        return type;
    Tools::addUnexpected(
        *value,
        isItem ? QStringLiteral("\"boolean\", \"integer\" or \"string\"")
               : QStringLiteral("\"array\", \"boolean\", \"integer\", \"object\" or \"string\""),
        diagnostics);
    return {};
}

void readLimits(ObjectReader *object, const char *minimumName, const char *maximumName,
                qint64 lowest, qint32 *minimum, qint32 *maximum, Diagnostics *diagnostics)
{
    const JsonValue *const least = object->find(QLatin1String(minimumName));
    const JsonValue *const most = object->find(QLatin1String(maximumName));
    if (least)
        *minimum = static_cast<qint32>(
            Tools::readInteger(least, lowest, maximumCount, diagnostics));
    if (most)
        *maximum = static_cast<qint32>(Tools::readInteger(most, lowest, maximumCount, diagnostics));
    if (*minimum > *maximum)
        diagnostics->add((least ? least : most)->offset,
                         QStringLiteral("\"%1\" is greater than \"%2\"")
                             .arg(QLatin1String(minimumName), QLatin1String(maximumName)));
}

QRegularExpression readPattern(const JsonValue *value, Diagnostics *diagnostics)
{
    const QRegularExpression pattern(Tools::readString(value, diagnostics));
    if (pattern.isValid())
        return pattern;
    diagnostics->add(value->offset, QStringLiteral("invalid pattern: ") + pattern.errorString());
    return {};
}

// Adds what is wrong with a value in a schema, such as a default.
void checkValue(const Setting &setting, const JsonValue &value, Diagnostics *diagnostics)
{
    for (const Problem &problem : validate(setting, value)) {
        if (problem.kind != Problem::Deprecated)
            diagnostics->add(problem.offset, problem.message);
    }
}

std::vector<JsonValue> readEnumeration(const JsonValue *value, const Scalar &scalar,
                                       Diagnostics *diagnostics)
{
    const std::vector<JsonValue> &values = Tools::readList(value, diagnostics);
    if (value && value->kind == JsonValue::List && values.empty())
        diagnostics->add(value->offset, QStringLiteral("expected at least one value"));
    Setting setting;
    setting.type = scalar.type;
    setting.scalar = scalar;
    QSet<QString> texts;
    for (const JsonValue &one : values) {
        checkValue(setting, one, diagnostics);
        if (texts.contains(one.text))
            diagnostics->add(one.offset, QStringLiteral("duplicate value ") + toJson(one));
        texts.insert(one.text);
    }
    return values;
}

Scalar readScalar(ObjectReader *object, Type type, Diagnostics *diagnostics)
{
    Scalar scalar;
    scalar.type = type;
    if (type == Type::Integer)
        readLimits(object, "minimum", "maximum", std::numeric_limits<qint32>::min(),
                   &scalar.minimum, &scalar.maximum, diagnostics);
    if (type == Type::String) {
        readLimits(object, "minLength", "maxLength", 0, &scalar.minimumLength,
                   &scalar.maximumLength, diagnostics);
        if (const JsonValue *const pattern = object->find(QLatin1String("pattern")))
            scalar.pattern = readPattern(pattern, diagnostics);
    }
    if (type != Type::Boolean)
        scalar.values = readEnumeration(object->find(QLatin1String("enum")), scalar, diagnostics);
    return scalar;
}

void readItems(const JsonValue &items, Setting *setting, Diagnostics *diagnostics)
{
    ObjectReader object(items, diagnostics);
    const std::optional<Type> type = readType(object.require(QLatin1String("type")), true,
                                              diagnostics);
    if (!type)
        return;
    setting->scalar = readScalar(&object, *type, diagnostics);
    for (const char *const text : {"title", "description"})
        Tools::readString(object.find(QLatin1String(text)), diagnostics);
    object.addUnknownMembers(QStringLiteral("items of type \"%1\"").arg(types().key(*type)));
}

JsonValue zeroOf(Type type)
{
    JsonValue zero;
    if (type == Type::Integer) {
        zero.kind = JsonValue::Number;
        zero.text = QStringLiteral("0");
    } else {
        zero.kind = type == Type::Boolean ? JsonValue::Boolean
            : type == Type::String        ? JsonValue::String
                                          : JsonValue::List;
    }
    return zero;
}

// Without a default, the setting has the zero of its type, which must be allowed then.
void readDefault(const JsonValue *value, Setting *setting, Diagnostics *diagnostics)
{
    setting->defaultValue = value ? *value : zeroOf(setting->type);
    if (value) {
        checkValue(*setting, *value, diagnostics);
        return;
    }
    const std::vector<Problem> problems = validate(*setting, setting->defaultValue);
    for (const Problem &problem : problems) {
        if (problem.kind == Problem::Deprecated)
            continue;
        diagnostics->add(setting->offset,
                         QStringLiteral("\"default\" is missing: ") + problem.message);
    }
}

void readNames(const JsonValue *value, Setting *setting, Diagnostics *diagnostics)
{
    for (const JsonValue &name : Tools::readList(value, diagnostics))
        setting->valueNames.push_back(Tools::readString(&name, diagnostics));
    const auto expected = setting->scalar.values.size();
    if (value && value->kind == JsonValue::List && setting->valueNames.size() != expected)
        diagnostics->add(
            value->offset,
            QStringLiteral("%1 names for %2 values").arg(setting->valueNames.size()).arg(expected));
}

void readValue(ObjectReader *object, Setting *setting, Diagnostics *diagnostics)
{
    if (setting->type == Type::List) {
        if (const JsonValue *const items = object->require(QLatin1String("items")))
            readItems(*items, setting, diagnostics);
        readLimits(object, "minItems", "maxItems", 0, &setting->minimumItems,
                   &setting->maximumItems, diagnostics);
    } else {
        setting->scalar = readScalar(object, setting->type, diagnostics);
        if (setting->type == Type::String)
            readNames(object->find(QLatin1String("x-names")), setting, diagnostics);
    }
    readDefault(object->find(QLatin1String("default")), setting, diagnostics);
    if (const JsonValue *const examples = object->find(QLatin1String("examples")))
        setting->examples = Tools::readList(examples, diagnostics);
    for (const JsonValue &example : setting->examples)
        checkValue(*setting, example, diagnostics);
    if (const JsonValue *const restart = object->find(QLatin1String("x-restart")))
        setting->needsRestart = Tools::readBoolean(restart, diagnostics);
}

Setting readSetting(const JsonMember &member, const QString &parentPath, int level,
                    Diagnostics *diagnostics);

void readMembers(ObjectReader *object, Setting *setting, int level, Diagnostics *diagnostics)
{
    const JsonValue *const additional = object->require(QLatin1String("additionalProperties"));
    if (additional && Tools::readBoolean(additional, diagnostics))
        diagnostics->add(additional->offset, QStringLiteral("expected false"));
    const JsonValue *const properties = object->require(QLatin1String("properties"));
    if (!properties)
        return;
    if (properties->kind != JsonValue::Object)
        Tools::addUnexpected(*properties, Tools::describe(JsonValue::Object), diagnostics);
    for (const JsonMember &member : properties->members)
        setting->members.push_back(readSetting(member, setting->path, level + 1, diagnostics));
}

void readTexts(ObjectReader *object, Setting *setting, Diagnostics *diagnostics)
{
    setting->title = Tools::readString(object->find(QLatin1String("title")), diagnostics);
    setting->description = Tools::readString(object->find(QLatin1String("description")),
                                             diagnostics);
}

Setting readSetting(const JsonMember &member, const QString &parentPath, int level,
                    Diagnostics *diagnostics)
{
    Setting setting;
    setting.key = member.name;
    setting.path = parentPath.isEmpty() ? member.name : parentPath + QLatin1Char('/') + member.name;
    setting.offset = member.offset;
    if (member.name.isEmpty() || member.name.contains(QLatin1Char('/')))
        diagnostics->add(member.offset, QStringLiteral("a key cannot be empty or contain \"/\""));
    ObjectReader object(member.value, diagnostics);
    const auto type = readType(object.require(QLatin1String("type")), false, diagnostics);
    if (!type)
        return setting;
    setting.type = *type;
    readTexts(&object, &setting, diagnostics);
    setting.name = Tools::readString(object.find(QLatin1String("x-name")), diagnostics);
    const JsonValue *const deprecated = object.find(QLatin1String("x-deprecated"));
    setting.deprecated = Tools::readString(deprecated, diagnostics);
    if (deprecated && setting.deprecated.isEmpty())
        diagnostics->add(deprecated->offset,
                         QStringLiteral("expected a text that says what to use instead"));
    if (*type == Type::Object && level > maximumLevels) {
        diagnostics->add(member.offset,
                         QStringLiteral("more than %1 levels of objects").arg(maximumLevels));
        return setting;
    }
    if (*type == Type::Object)
        readMembers(&object, &setting, level, diagnostics);
    else
        readValue(&object, &setting, diagnostics);
    object.addUnknownMembers(QStringLiteral("a setting of type \"%1\"").arg(types().key(*type)));
    return setting;
}

void readIdentity(ObjectReader *object, Schema *schema, Diagnostics *diagnostics)
{
    const JsonValue *const organization = object->require(QLatin1String("x-organization"));
    const JsonValue *const application = object->require(QLatin1String("x-application"));
    schema->organization = Tools::readString(organization, diagnostics);
    schema->application = Tools::readString(application, diagnostics);
    const QString path = DBus::applicationPath(schema->organization, schema->application);
    if (organization && !g_variant_is_object_path(path.toUtf8().constData()))
        diagnostics->add(
            organization->offset,
            QStringLiteral("%1 is not a valid object path").arg(Tools::quotedExcerpt(path)));
}

} // namespace

Schema parseSchema(const QByteArray &text, Diagnostics *diagnostics)
{
    JsonValue document = Tools::parseJson(text, diagnostics);
    writeIntegersInOneWay(&document);
    Schema schema;
    if (!diagnostics->isEmpty())
        return schema;
    ObjectReader object(document, diagnostics);
    Tools::readString(object.find(QLatin1String("$schema")), diagnostics);
    const auto type = readType(object.require(QLatin1String("type")), false, diagnostics);
    if (type && *type != Type::Object)
        diagnostics->add(document.member(QStringLiteral("type"))->offset,
                         QStringLiteral("expected \"object\""));
    readTexts(&object, &schema.root, diagnostics);
    readIdentity(&object, &schema, diagnostics);
    readMembers(&object, &schema.root, 1, diagnostics);
    object.addUnknownMembers(QStringLiteral("a schema"));
    return schema;
}

QVector<Tools::Failure> readSchema(const QString &fileName, Schema *schema)
{
    QByteArray text;
    if (const Tools::Failure failure = Tools::readInputFile(fileName, &text, EX_NOINPUT))
        return {failure};
    Diagnostics diagnostics(fileName, text);
    *schema = parseSchema(text, &diagnostics);
    return diagnostics.failures(EX_DATAERR);
}

} // namespace Tarnvel::Schema
