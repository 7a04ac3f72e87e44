// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "change_writer.h"

#include "checks.h"
#include "literals.h"
#include "names.h"

namespace Tarnvel::Schema {

namespace {

void writeConstructor(Code *code, const Setting &object, const QString &className)
{
    QStringList initializers;
    if (!object.key.isEmpty())
        initializers.append(QStringLiteral("m_configuration(settings.m_configuration)"));
    for (const Setting &setting : object.members) {
        if (setting.type == Type::Object)
            initializers.append(QStringLiteral("m_%1(settings.%1())").arg(getterName(setting)));
    }
    const bool isEmpty = initializers.isEmpty();
    code->brief("Constructs a change of these settings in which nothing is set.");
    code->line(isEmpty ? "explicit Change(const %1 &)" : "explicit Change(const %1 &settings)",
               className);
    if (!isEmpty)
        code->line("    : %1", initializers.join(QLatin1String(", ")));
    code->line("{ }");
}

void writeSetter(Code *code, const Setting &setting)
{
    const QString name = getterName(setting);
    if (setting.type == Type::Object) {
        code->brief("Changes settings in %1().", name);
        code->line("%1::Change &%2() { return m_%2; }", typeName(setting), name);
        return;
    }
    QString parameter = QLatin1String(cppType(setting).parameter);
    QString stored = QStringLiteral("value");
    if (isEnumeration(setting)) {
        parameter = typeName(setting) + QLatin1Char(' ');
        stored = constantName(setting) + QLatin1String(".at(static_cast<int>(value))");
    } else if (setting.type == Type::List) {
        stored = QStringLiteral("QVariant::fromValue(value)");
    }
    code->brief("Sets %1().", name);
    code->open("void %1(%2value)", setterName(setting), parameter);
    code->line("m_configuration.set(%1, %2);", toStringLiteral(setting.key), stored);
    code->line("m_isChanged = true;");
    code->close();
}

void writeIsChanged(Code *code, const Setting &object)
{
    QString isChanged = QStringLiteral("m_isChanged");
    for (const Setting &setting : object.members) {
        if (setting.type == Type::Object)
            isChanged += QStringLiteral(" || m_%1.isChanged()").arg(getterName(setting));
    }
    code->brief("Returns true if something has been set.");
    code->line("bool isChanged() const { return %1; }", isChanged);
}

void writeConfiguration(Code *code, const Setting &object)
{
    code->brief(object.key.isEmpty() ? "Returns the entries that have been set."
                                     : "Returns all entries, also those that have not been set.");
    code->open("Configuration configuration() const");
    code->line("Configuration all(m_configuration);");
    for (const Setting &setting : object.members) {
        if (setting.type != Type::Object)
            continue;
        code->line("if (m_%1.isChanged())", getterName(setting));
        code->line("    all.set(%1, QVariant::fromValue(m_%2.configuration()));",
                   toStringLiteral(setting.key), getterName(setting));
    }
    code->line("return all;");
    code->close();
}

} // namespace

void writeChange(Code *code, const Setting &object, const QString &className)
{
    code->comment(
        {QStringLiteral("\\brief New values, for ConfigurationManager::changeConfiguration()."),
         QStringLiteral(
             "They are not checked: the service decides. A nested configuration in which "
             "something has been set is sent whole, with its other entries as they were read.")});
    code->open("class Change");
    code->label("public:");
    writeConstructor(code, object, className);
    for (const Setting &setting : object.members)
        writeSetter(code, setting);
    writeIsChanged(code, object);
    writeConfiguration(code, object);
    code->label("private:");
    code->line("Configuration m_configuration;");
    for (const Setting &setting : object.members) {
        if (setting.type == Type::Object)
            code->line("%1::Change m_%2;", typeName(setting), getterName(setting));
    }
    code->line("bool m_isChanged = false;");
    code->close("};");
}

} // namespace Tarnvel::Schema
