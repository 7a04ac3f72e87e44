// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "configuration_p.h"
#include "service/bus.h"
#include "service/requests.h"
#include "usage_failure.h"
#include "values/assignment.h"
#include "values/difference.h"

#include <QtCore/QSet>

#include <algorithm>

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::ConfigurationPrivate;
using Tools::Failure;

namespace {

Failure parseAssignments(const QStringList &arguments, QList<Assignment> *assignments)
{
    if (arguments.isEmpty())
        return usageFailure(QStringLiteral("set needs at least one PATH=VALUE"));
    QSet<QString> paths;
    for (const QString &argument : arguments) {
        Assignment assignment;
        if (const Failure failure = parseAssignment(argument, &assignment))
            return failure;
        const Steps &steps = assignment.steps;
        if (paths.contains(pathText(steps, steps.size())))
            return usageFailure(
                QStringLiteral("\"%1\" replaces what an earlier argument sets").arg(argument));
        for (int count = 1; count <= steps.size(); ++count)
            paths.insert(pathText(steps, count));
        assignments->append(assignment);
    }
    return {};
}

QString pathOf(const Assignment &assignment)
{
    return pathText(assignment.steps, assignment.steps.size());
}

// The present type is the type of the new value, unless that is given.
Failure checkPresentType(const Assignment &assignment, const UnseenSettings &unseen)
{
    for (int count = 1; !assignment.type && count <= assignment.steps.size(); ++count) {
        const QString path = pathText(assignment.steps, count);
        if (unseen.contains(path))
            return {EX_USAGE,
                    QStringLiteral("%1 has the D-Bus type %2, which applications cannot write")
                        .arg(path, unseenTypeText(unseen.value(path))),
                    QStringLiteral("ask an administrator of the service to change it")};
    }
    return {};
}

// Otherwise the new value does not depend on what the service keeps.
bool needsReading(const Assignment &assignment)
{
    return !assignment.type || assignment.steps.size() > 1;
}

// A change that fails may have been made, but not without a service.
Failure requireService(int timeoutMs)
{
    ServiceState state = ServiceState::Running;
    const Failure failure = findService(timeoutMs, &state);
    return state == ServiceState::Absent ? absentServiceFailure() : failure;
}

// The service merges whole values of top-level keys.
Failure makeChange(const QList<Assignment> &assignments, const Reading &reading,
                   Configuration *change)
{
    Configuration configuration = reading.configuration;
    for (const Assignment &assignment : assignments) {
        if (const Failure failure = checkPresentType(assignment, reading.unseen))
            return failure;
        if (const Failure failure = assign(assignment, &configuration))
            return failure;
        const QString key = assignment.steps.first().toKey();
        change->set(key, configuration.get(key));
    }
    return {};
}

// An empty list has no items from which the library could tell their type.
QStringList vanishingLists(const Configuration &configuration)
{
    QStringList paths;
    const Leaves leaves = leavesOf(QVariant::fromValue(configuration));
    for (auto leaf = leaves.begin(); leaf != leaves.end(); ++leaf) {
        const ValueType type = typeOf(leaf.value());
        if ((type == ValueType::Ints || type == ValueType::Bools)
            && leaf.value().value<QVariantList>().isEmpty())
            paths.append(leaf.key());
    }
    return paths;
}

Failure checkForLoss(const QList<Assignment> &assignments, const Configuration &change,
                     const UnseenSettings &unseen)
{
    UnseenSettings lost;
    const QStringList keys = ConfigurationPrivate::data(change).keys();
    for (const QString &key : keys)
        lost.insert(unseenSettingsAt(keyText(key), unseen));
    // A value with a type replaces whatever there is.
    for (const Assignment &assignment : assignments) {
        if (!assignment.type)
            continue;
        const QStringList paths = unseenSettingsAt(pathOf(assignment), lost).keys();
        for (const QString &path : paths)
            lost.remove(path);
    }
    const QStringList lists = vanishingLists(change);
    if (!lists.isEmpty())
        return {
            EX_USAGE,
            QStringLiteral("%1: an empty list of integers or booleans vanishes for every reader")
                .arg(lists.join(QStringLiteral(", "))),
            QStringLiteral("set at least one item, or use --force to send an empty list all the "
                           "same")};
    if (lost.isEmpty())
        return {};
    return {EX_USAGE, QStringLiteral("the change would remove ") + unseenSettingsText(lost),
            QStringLiteral("ask an administrator of the service to make the change, or use --force "
                           "to make it all the same")};
}

} // namespace

Failure set(const CommandLine &commandLine)
{
    QList<Assignment> assignments;
    if (const Failure failure = parseAssignments(commandLine.arguments, &assignments))
        return failure;
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    Reading reading;
    if (std::any_of(assignments.begin(), assignments.end(), needsReading)) {
        if (const Failure failure = readConfiguration(commandLine.timeoutMs, &reading))
            return failure;
    } else if (const Failure failure = requireService(commandLine.timeoutMs)) {
        return failure;
    }
    Configuration change;
    if (const Failure failure = makeChange(assignments, reading, &change))
        return failure;
    if (!commandLine.isForced) {
        if (const Failure failure = checkForLoss(assignments, change, reading.unseen))
            return failure;
    }
    return changeConfiguration(commandLine.timeoutMs, change);
}

} // namespace Tarnvel::Client
