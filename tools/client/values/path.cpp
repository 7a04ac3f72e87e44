// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "path.h"

#include "json.h"
#include "usage_failure.h"

#include <algorithm>
#include <sysexits.h>

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;
using Tools::Failure;

namespace {

bool isAmbiguous(QChar character)
{
    static const QString marks = QStringLiteral("/[]=:\"");
    const bool isVisible = character.isPrint() || character.isSurrogate();
    return !isVisible || marks.contains(character);
}

Failure noValue(const QString &reason)
{
    return {EX_NOINPUT, QStringLiteral("no such path: ") + reason,
            QStringLiteral("\"get\" shows what exists; keys are case-sensitive")};
}

Failure takeItem(int index, const QString &path, QVariant *value)
{
    if (!itemTypeOf(typeOf(*value)))
        return noValue(QStringLiteral("%1 is not a list").arg(path));
    const auto items = value->value<QVariantList>();
    if (index >= items.size())
        return noValue(
            QStringLiteral("%1 has only %2 %3")
                .arg(path, QString::number(items.size()),
                     items.size() == 1 ? QStringLiteral("item") : QStringLiteral("items")));
    *value = items.at(index);
    return {};
}

Failure takeEntry(const QString &key, const QString &path, QVariant *value)
{
    const QString owner = path.isEmpty() ? QStringLiteral("the configuration") : path;
    if (typeOf(*value) != ValueType::Configuration)
        return noValue(QStringLiteral("%1 has no keys").arg(owner));
    const Configuration configuration = Configuration::fromVariant(*value);
    if (!configuration.containsKey(key))
        return noValue(QStringLiteral("%1 has no key %2").arg(owner, compactText(key)));
    *value = configuration.get(key);
    return {};
}

} // namespace

Failure parsePath(const QString &path, Steps *steps)
{
    *steps = Xpath(path).accesses();
    if (!steps->isEmpty())
        return {};
    return {EX_USAGE, QStringLiteral("\"%1\" is not a path").arg(path),
            QStringLiteral("separate keys with \"/\"; an item of a list is its key and "
                           "\"[POSITION]\", counted from 0: window/sizes[0]")};
}

Failure parsePathArgument(const CommandLine &commandLine, Steps *steps)
{
    const QStringList &arguments = commandLine.arguments;
    if (arguments.size() > 1)
        return usageFailure(QStringLiteral("%1 takes at most one path").arg(commandLine.command));
    return arguments.isEmpty() ? Failure() : parsePath(arguments.first(), steps);
}

Failure findValue(const Configuration &configuration, const Steps &steps, QVariant *value)
{
    *value = QVariant::fromValue(configuration);
    for (int position = 0; position < steps.size(); ++position) {
        const XpathAccess &step = steps.at(position);
        const QString path = pathText(steps, position);
        const Failure failure = step.type() == XpathAccess::Index
            ? takeItem(step.toIndex(), path, value)
            : takeEntry(step.toKey(), path, value);
        if (failure)
            return failure;
    }
    return {};
}

QString pathText(const Steps &steps, int count)
{
    QString text;
    const Steps taken = steps.mid(0, count);
    for (const XpathAccess &step : taken) {
        if (step.type() == XpathAccess::Index)
            text += QStringLiteral("[%1]").arg(step.toIndex());
        else
            text += (text.isEmpty() ? QString() : QStringLiteral("/")) + keyText(step.toKey());
    }
    return text;
}

QString keyText(const QString &key)
{
    const bool isClear = !key.isEmpty() && std::none_of(key.begin(), key.end(), isAmbiguous)
        && key.trimmed() == key;
    return isClear ? key : compactText(key);
}

} // namespace Tarnvel::Client
