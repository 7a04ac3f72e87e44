// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "path.h"

#include "json.h"

#include <QtCore/QtGlobal>

#include <algorithm>

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;

namespace {

// One message is enough, and it is ours.
void ignoreMessage(QtMsgType, const QMessageLogContext &, const QString &) { }

bool isUnclear(QChar character)
{
    static const QString marks = QStringLiteral("/[]=:\"");
    const bool isVisible = character.isPrint() || character.isSurrogate();
    return !isVisible || marks.contains(character);
}

Failure takeItem(QVariant *value, int index, const QString &place)
{
    if (!itemTypeOf(typeOf(*value)))
        return pathFailure(QStringLiteral("%1 is no list").arg(place));
    const auto items = value->value<QVariantList>();
    if (index >= items.size())
        return pathFailure(
            QStringLiteral("the items of %1 number %2").arg(place).arg(items.size()));
    *value = items.at(index);
    return {};
}

Failure takeEntry(QVariant *value, const QString &key, const QString &place)
{
    const QString owner = place.isEmpty() ? QStringLiteral("the configuration") : place;
    if (typeOf(*value) != ValueType::Configuration)
        return pathFailure(QStringLiteral("%1 has no keys").arg(owner));
    const Configuration configuration = Configuration::fromVariant(*value);
    if (!configuration.containsKey(key))
        return pathFailure(QStringLiteral("%1 has no key %2").arg(owner, compactText(key)));
    *value = configuration.get(key);
    return {};
}

} // namespace

Failure parsePath(const QString &path, Steps *steps)
{
    const QtMessageHandler previous = qInstallMessageHandler(ignoreMessage);
    *steps = Xpath(path).accesses();
    qInstallMessageHandler(previous);
    if (!steps->isEmpty())
        return {};
    return {EX_USAGE, QStringLiteral("\"%1\" is no path").arg(path),
            QStringLiteral("write keys with \"/\" between them, and \"[POSITION]\", counted from "
                           "0, behind the key of a list, such as window/sizes[0]")};
}

Failure findValue(const Configuration &configuration, const Steps &steps, QVariant *value)
{
    *value = QVariant::fromValue(configuration);
    for (int position = 0; position < steps.size(); ++position) {
        const XpathAccess &step = steps.at(position);
        const QString place = pathText(steps, position);
        const Failure failure = step.type() == XpathAccess::Index
            ? takeItem(value, step.toIndex(), place)
            : takeEntry(value, step.toKey(), place);
        if (failure)
            return failure;
    }
    return {};
}

Failure pathFailure(const QString &reason)
{
    return {EX_NOINPUT, QStringLiteral("no such path: ") + reason,
            QStringLiteral("\"get\" shows what there is; large and small letters differ")};
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
    const bool isClear = !key.isEmpty() && std::none_of(key.begin(), key.end(), isUnclear)
        && key.trimmed() == key;
    return isClear ? key : compactText(key);
}

} // namespace Tarnvel::Client
