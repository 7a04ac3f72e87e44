// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "assignment.h"

#include "json.h"

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;

namespace {

Failure makeValue(const Assignment &assignment, std::optional<ValueType> presentType,
                  QVariant *value)
{
    const QString path = pathText(assignment.steps, assignment.steps.size());
    const std::optional<ValueType> type = assignment.type ? assignment.type : presentType;
    if (!type)
        return {EX_USAGE, QStringLiteral("%1 has no value yet that would tell its type").arg(path),
                QStringLiteral("give the type, %1:TYPE=VALUE, which is one of %2")
                    .arg(path, allTypeNames())};
    QString mistake;
    *value = valueFromText(*type, assignment.value, &mistake);
    return value->isValid() ? Failure() : usageFailure(QStringLiteral("%1: %2").arg(path, mistake));
}

// \a list is what stands before the item that is the last step.
Failure replaceItem(const Assignment &assignment, QVariant *list)
{
    const Steps &steps = assignment.steps;
    QVariant item;
    const Failure failure = makeValue(assignment, itemTypeOf(typeOf(*list)), &item);
    if (failure)
        return failure;
    if (typeOf(item) != itemTypeOf(typeOf(*list)))
        return usageFailure(QStringLiteral("%1 is of type %2, and its items are no others")
                                .arg(pathText(steps, steps.size() - 1), typeName(typeOf(*list))));
    auto items = list->value<QVariantList>();
    items[steps.last().toIndex()] = item;
    *list = makeList(typeOf(*list), items);
    return {};
}

Failure assignBehind(const Assignment &assignment, int position, Configuration *configuration)
{
    const Steps &steps = assignment.steps;
    const QString key = steps.at(position).toKey();
    QVariant value = configuration->get(key);
    const bool isPresent = value.isValid();
    const bool isConfiguration = isPresent && typeOf(value) == ValueType::Configuration;

    Failure failure;
    if (position + 1 == steps.size()) {
        failure = makeValue(assignment,
                            isPresent ? std::make_optional(typeOf(value)) : std::nullopt, &value);
    } else if (steps.at(position + 1).type() == XpathAccess::Key
               && (isConfiguration || !isPresent)) {
        Configuration nested = Configuration::fromVariant(value);
        failure = assignBehind(assignment, position + 1, &nested);
        value = QVariant::fromValue(nested);
    } else {
        // Only the last step can be an item, and it must be there.
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

QString Assignment::topLevelKey() const
{
    return steps.first().toKey();
}

Failure parseAssignment(const QString &text, Assignment *assignment)
{
    const int equals = text.indexOf(QLatin1Char('='));
    if (equals < 0)
        return usageFailure(
            QStringLiteral("\"%1\" is neither PATH=VALUE nor PATH:TYPE=VALUE").arg(text));
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
    return assignBehind(assignment, 0, configuration);
}

} // namespace Tarnvel::Client
