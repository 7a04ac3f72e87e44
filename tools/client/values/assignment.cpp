// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "assignment.h"

#include "json.h"
#include "usage_failure.h"

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;
using Tools::Failure;

namespace {

Failure makeValue(const Assignment &assignment, std::optional<ValueType> presentType,
                  QVariant *value)
{
    const QString path = pathText(assignment.steps);
    const std::optional<ValueType> type = assignment.type ? assignment.type : presentType;
    if (!type)
        return {EX_USAGE, QStringLiteral("%1 has no value yet, so its type is not known").arg(path),
                QStringLiteral("give the type, %1:TYPE=VALUE; --help lists the types").arg(path)};
    Failure failure = parseValue(*type, assignment.value, value);
    failure.location = path;
    return failure;
}

// \a list is at the step before the last, which is the position of the item.
Failure replaceItem(const Assignment &assignment, QVariant *list)
{
    const Steps &steps = assignment.steps;
    const ValueType listType = typeOf(*list);
    QVariant item;
    if (const Failure failure = makeValue(assignment, itemTypeOf(listType), &item))
        return failure;
    if (typeOf(item) != itemTypeOf(listType))
        return usageFailure(QStringLiteral("%1 holds %2; this item has another type")
                                .arg(pathText(steps, steps.size() - 1), typeName(listType)));
    auto items = list->value<QVariantList>();
    items[steps.last().toIndex()] = item;
    *list = makeList(listType, items);
    return {};
}

Failure assignFrom(int position, const Assignment &assignment, Configuration *configuration)
{
    const Steps &steps = assignment.steps;
    const QString key = steps.at(position).toKey();
    QVariant value = configuration->get(key);
    // A value that does not exist is as good as an empty configuration.
    const bool canNest = typeOf(value) == ValueType::Configuration;

    Failure failure;
    if (position + 1 == steps.size()) {
        failure = makeValue(assignment,
                            value.isValid() ? std::optional(typeOf(value)) : std::nullopt, &value);
    } else if (canNest && steps.at(position + 1).type() == XpathAccess::Key) {
        Configuration nested = Configuration::fromVariant(value);
        failure = assignFrom(position + 1, assignment, &nested);
        value = QVariant::fromValue(nested);
    } else {
        // Only an item that exists, at the last step, can follow.
        QVariant present;
        failure = findValue(*configuration, steps.mid(position), &present);
        if (!failure)
            failure = replaceItem(assignment, &value);
    }
    if (!failure)
        configuration->set(key, value);
    return failure;
}

} // namespace

Failure parseAssignment(const QString &text, Assignment *assignment)
{
    const int equals = text.indexOf(QLatin1Char('='));
    if (equals < 0)
        return usageFailure(
            QStringLiteral("expected PATH=VALUE or PATH:TYPE=VALUE, found \"%1\"").arg(text));
    QString path = text.left(equals);
    const int colon = path.lastIndexOf(QLatin1Char(':'));
    if (colon >= 0)
        assignment->type = typeFromName(path.mid(colon + 1));
    if (assignment->type)
        path.truncate(colon);
    assignment->value = text.mid(equals + 1);
    return parsePath(path, &assignment->steps);
}

Failure assign(const Assignment &assignment, Configuration *configuration)
{
    return assignFrom(0, assignment, configuration);
}

} // namespace Tarnvel::Client
