// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "header_writer.h"

#include "change_writer.h"
#include "checks.h"
#include "comments.h"
#include "literals.h"
#include "names.h"
#include "terminal.h"

#include <algorithm>

namespace Tarnvel::Schema {

namespace {

void writeEnumeration(Code *code, const Setting &setting)
{
    code->brief("The values of %1().", getterName(setting));
    code->open("enum class %1", typeName(setting));
    const std::vector<QString> names = enumeratorNames(setting);
    for (std::size_t index = 0; index < names.size(); ++index) {
        code->line("/*! %1 */", escapedForComment(toJson(setting.scalar.values[index])));
        code->line("%1,", names[index]);
    }
    code->close("};");
}

QString defaultExpression(const Setting &setting)
{
    if (!isEnumeration(setting))
        return toExpression(setting, setting.defaultValue);
    const std::vector<Tools::JsonValue> &values = setting.scalar.values;
    const auto isDefault = [&setting](const Tools::JsonValue &value) {
        return value.text == setting.defaultValue.text;
    };
    const auto index = std::find_if(values.begin(), values.end(), isDefault) - values.begin();
    return typeName(setting) + QLatin1String("::")
        + enumeratorNames(setting).at(static_cast<std::size_t>(index));
}

void writeGetter(Code *code, const Setting &setting)
{
    const QString name = getterName(setting);
    const QString key = toStringLiteral(setting.key);
    code->comment(describe(setting));
    if (setting.type == Type::Object) {
        code->open("%1 %2() const", typeName(setting), name);
        code->line("return %1(Configuration::fromVariant(m_configuration.get(%2)));",
                   typeName(setting), key);
        return code->close();
    }
    QString type = QLatin1String(cppType(setting).type);
    QString read = QLatin1String(cppType(setting).read);
    if (isEnumeration(setting)) {
        type = typeName(setting);
        read = QStringLiteral("static_cast<%1>(%2.indexOf(%3))")
                   .arg(type, constantName(setting), read);
    }
    code->open("%1 %2() const", type, name);
    code->line("const QVariant value = m_configuration.get(%1);", key);
    code->line("return %1(value, nullptr) ? %2 : %3;", checkName(setting), read,
               defaultExpression(setting));
    code->close();
}

void writeProblems(Code *code, const Setting &object)
{
    code->comment(
        {QStringLiteral("\\brief Returns which settings have a value that is not used, and why."),
         QStringLiteral("Such as \"zoom: 500 is above 400; 100 is used\". Settings that the schema "
                        "does not have are not seen.")});
    code->open("QStringList problems() const");
    code->line("QStringList problems;");
    for (const Setting &setting : object.members) {
        const bool isObject = setting.type == Type::Object;
        const QString used = isObject ? QStringLiteral("its defaults are used")
                                      : toJson(setting.defaultValue) + QLatin1String(" is used");
        code->line("Checks::addProblem(m_configuration.get(%1), %2,", toStringLiteral(setting.key),
                   checkName(setting));
        code->line("                   %1, %2, &problems);",
                   toLiteral(Tools::shownOnOneLine(setting.path)),
                   toLiteral(Tools::shownOnOneLine(used)));
        if (isObject)
            code->line("problems += this->%1().problems();", getterName(setting));
    }
    code->line("return problems;");
    code->close();
}

void writeChangedFrom(Code *code, const Setting &object, const QString &className)
{
    code->brief("Returns the paths of the settings whose values, or defaults, differ from those in "
                "\\a before.");
    code->open(object.members.empty() ? "QStringList changedFrom(const %1 &) const"
                                      : "QStringList changedFrom(const %1 &before) const",
               className);
    code->line("QStringList changed;");
    for (const Setting &setting : object.members) {
        const QString name = getterName(setting);
        if (setting.type == Type::Object) {
            code->line("changed += this->%1().changedFrom(before.%1());", name);
            continue;
        }
        code->line("if (this->%1() != before.%1())", name);
        code->line("    changed.append(%1);", toStringLiteral(setting.path));
    }
    code->line("return changed;");
    code->close();
}

void writeDefaults(Code *code, const Setting &object)
{
    code->brief("Returns the defaults by their keys, for the element of the QML module.");
    code->open("static QVariantMap defaults()");
    code->line("QVariantMap defaults;");
    for (const Setting &setting : object.members) {
        const char *const form = setting.type == Type::Object ? "%1::defaults()"
            : setting.type == Type::List                      ? "QVariant::fromValue(%1)"
                                                              : "%1";
        const QString value = setting.type == Type::Object
            ? typeName(setting)
            : toExpression(setting, setting.defaultValue);
        code->line("defaults.insert(%1, %2);", toStringLiteral(setting.key),
                   QString::fromLatin1(form).arg(value));
    }
    code->line("return defaults;");
    code->close();
}

void writeClass(Code *code, const Setting &object, const QString &className)
{
    const bool isNested = !object.key.isEmpty();
    code->open("class %1", className);
    code->label("public:");
    if (!isNested)
        code->line("using Configuration = "
                   "::Tarnvel::Application::ManagedConfiguration::Configuration;");
    for (const Setting &setting : object.members) {
        if (isEnumeration(setting))
            writeEnumeration(code, setting);
        if (setting.type != Type::Object)
            continue;
        code->brief("The settings in %1().", getterName(setting));
        writeClass(code, setting, typeName(setting));
    }
    code->brief("Constructs the settings in \\a configuration.");
    code->line("explicit %1(const Configuration &configuration)", className);
    code->line("    : m_configuration(configuration)");
    code->line("{ }");
    for (const Setting &setting : object.members)
        writeGetter(code, setting);
    writeProblems(code, object);
    writeChangedFrom(code, object, className);
    writeDefaults(code, object);
    writeChange(code, object, className);
    code->label("private:");
    if (!isNested)
        writeChecks(code);
    writeAllowed(code, object);
    code->blank();
    code->line("Configuration m_configuration;");
    code->close("};");
}

} // namespace

QString writeHeader(const Schema &schema, const QString &className, const QString &schemaName)
{
    const Setting &root = schema.root;
    const QString title = root.title.isEmpty()
        ? QStringLiteral("The settings of %1/%2.").arg(schema.organization, schema.application)
        : root.title;
    Code code;
    code.line("// Generated by managed-configuration-schema; do not edit.");
    code.blank();
    code.line("#pragma once");
    code.blank();
    for (const char *const header :
         {"QList", "QRegularExpression", "QString", "QStringList", "QVariant"})
        code.line("#include <QtCore/%1>", QLatin1String(header));
    code.line("#include <Tarnvel/ManagedConfiguration/Configuration>");
    code.comment({
        QStringLiteral("\\brief ") + escapedForComment(title),
        escapedForComment(root.description),
        QStringLiteral("Described by %1. A getter returns the default if the configuration has no "
                       "such entry, or one that is not allowed. Because a Configuration does not "
                       "keep an empty list of integers or booleans, such a list reads as the "
                       "default too.")
            .arg(escapedForComment(schemaName)),
    });
    writeClass(&code, root, className);
    return code.text();
}

} // namespace Tarnvel::Schema
