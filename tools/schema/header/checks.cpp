// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "checks.h"

#include "checks_text.h"
#include "literals.h"
#include "names.h"

#include <algorithm>

namespace Tarnvel::Schema {

namespace {

// Calls of Checks for what an integer or a string must be, beside its type.
QStringList conditions(const Setting &setting, const QString &expression)
{
    const Scalar &scalar = setting.scalar;
    const QString call = QStringLiteral("Checks::%1(%2, %3, why)");
    const QString constant = constantName(setting);
    // The schema's other limits hold for each of the values.
    if (!scalar.values.empty())
        return {call.arg(QStringLiteral("isOneOf"), expression, constant)};
    const Scalar any;
    const QString limits = QStringLiteral("%1, %2");
    QStringList conditions;
    if (scalar.minimum != any.minimum || scalar.maximum != any.maximum)
        conditions.append(
            call.arg(QStringLiteral("isInRange"), expression,
                     limits.arg(toExpression(scalar.minimum), toExpression(scalar.maximum))));
    if (scalar.minimumLength != any.minimumLength || scalar.maximumLength != any.maximumLength)
        conditions.append(call.arg(
            QStringLiteral("hasLength"), expression,
            limits.arg(toExpression(scalar.minimumLength), toExpression(scalar.maximumLength))));
    if (hasPattern(scalar))
        conditions.append(call.arg(QStringLiteral("doesMatch"), expression, constant));
    return conditions;
}

bool hasItemLimits(const Setting &setting)
{
    const Setting any;
    return setting.minimumItems != any.minimumItems || setting.maximumItems != any.maximumItems;
}

bool isAllowedByFunction(const Setting &setting)
{
    return !conditions(setting, {}).isEmpty() || hasItemLimits(setting);
}

bool hasConstant(const Setting &setting)
{
    return !setting.scalar.values.empty() || hasPattern(setting.scalar);
}

void writeConstant(Code *code, const Setting &setting)
{
    const Scalar &scalar = setting.scalar;
    const char *const type = scalar.values.empty() ? "QRegularExpression"
        : scalar.type == Type::String              ? "QStringList"
                                                   : "QList<int>";
    code->blank();
    code->open("static const %1 &%2()", QLatin1String(type), getterName(setting));
    code->line("static const %1 constant {%2};", QLatin1String(type),
               scalar.values.empty() ? toStringLiteral(scalar.pattern.pattern())
                                     : toExpressions(scalar.type, scalar.values));
    code->line("return constant;");
    code->close();
}

void writeListCheck(Code *code, const Setting &setting)
{
    const CppType type = cppType(setting);
    const QStringList needed = conditions(setting, QStringLiteral("item"));
    code->line("if (!Checks::%1(value, why))", QLatin1String(type.check));
    code->line("    return false;");
    code->line("const %1 list = %2;", QLatin1String(type.type), QLatin1String(type.read));
    if (!needed.isEmpty()) {
        const bool isText = setting.scalar.type == Type::String;
        code->line(isText ? "for (const QString &item : list) {" : "for (const int item : list) {");
        code->line("    if (!%1)", needed.join(QLatin1String(" || !")));
        code->line("        return false;");
        code->line("}");
    }
    if (!hasItemLimits(setting))
        return code->line("return true;");
    code->line("return Checks::hasSize(list.size(), %1, %2, why);",
               toExpression(setting.minimumItems), toExpression(setting.maximumItems));
}

void writeCheck(Code *code, const Setting &setting)
{
    const CppType type = cppType(setting);
    code->blank();
    code->open("static bool %1(const QVariant &value, QString *why)", getterName(setting));
    if (setting.type == Type::List) {
        writeListCheck(code, setting);
    } else {
        code->line("return Checks::%1(value, why)", QLatin1String(type.check));
        code->line("    && %1;",
                   conditions(setting, QLatin1String(type.read)).join(QLatin1String(" && ")));
    }
    code->close();
}

// Writes the struct with what is written for each member that has it; none if no one has.
void writeStruct(Code *code, const char *name, const Setting &object,
                 bool (*has)(const Setting &setting),
                 void (*write)(Code *code, const Setting &setting))
{
    if (std::none_of(object.members.begin(), object.members.end(), has))
        return;
    code->blank();
    code->open("struct %1", QLatin1String(name));
    for (const Setting &setting : object.members) {
        if (has(setting))
            write(code, setting);
    }
    code->close("};");
}

} // namespace

void writeChecks(Code *code)
{
    for (const char *const file : checksTexts) {
        const QString text = QString::fromUtf8(file);
        // Without the includes and the namespace.
        const int begin = text.indexOf(QLatin1String("// Whether "));
        const int end = text.indexOf(QLatin1String("\n} // namespace"));
        code->blank();
        code->lines(text.mid(begin, end - begin));
    }
}

void writeAllowed(Code *code, const Setting &object)
{
    writeStruct(code, "Constants", object, hasConstant, writeConstant);
    writeStruct(code, "Allowed", object, isAllowedByFunction, writeCheck);
}

QString constantName(const Setting &setting)
{
    return QStringLiteral("Constants::%1()").arg(getterName(setting));
}

QString checkName(const Setting &setting)
{
    return isAllowedByFunction(setting)
        ? QStringLiteral("Allowed::") + getterName(setting)
        : QStringLiteral("Checks::") + QLatin1String(cppType(setting).check);
}

} // namespace Tarnvel::Schema
