// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "commands.h"
#include "configuration_p.h"
#include "output.h"
#include "service/bus.h"
#include "service/requests.h"
#include "usage_failure.h"
#include "values/assignment.h"
#include "values/difference.h"
#include "values/json.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QSet>

#include <algorithm>

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::ConfigurationPrivate;
using Tools::Failure;

namespace {

Failure parseAssignments(const QStringList &arguments, QList<Assignment> *assignments)
{
    QSet<QString> paths;
    for (const QString &argument : arguments) {
        Assignment assignment;
        if (const Failure failure = parseAssignment(argument, &assignment))
            return failure;
        const Steps &steps = assignment.steps;
        if (paths.contains(pathText(steps)))
            return usageFailure(
                QStringLiteral("\"%1\" replaces what an earlier argument sets").arg(argument));
        for (int count = 1; count <= steps.size(); ++count)
            paths.insert(pathText(steps, count));
        assignments->append(assignment);
    }
    return {};
}

Failure readObject(const QString &fileName, QJsonObject *object)
{
    QFile file(fileName);
    const bool isOpen = fileName == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                       : file.open(QIODevice::ReadOnly);
    const QByteArray text = isOpen ? file.readAll() : QByteArray();
    if (!isOpen || file.error() != QFile::NoError)
        return {EX_NOINPUT, file.errorString(),
                QStringLiteral("name a file that can be read, or - for standard input"), fileName};
    QJsonParseError error;
    const QJsonDocument document = parseJson(text, &error);
    *object = document.object();
    if (document.isObject())
        return {};
    return {EX_DATAERR,
            error.error == QJsonParseError::NoError
                ? QStringLiteral("expected a JSON object")
                : QStringLiteral("%1, at byte %2").arg(error.errorString()).arg(error.offset),
            QStringLiteral("correct the file; \"get\" prints such an object"), fileName};
}

// What to set: assignments, or the object in a file.
Failure parseArguments(const CommandLine &commandLine, QList<Assignment> *assignments,
                       QJsonObject *object)
{
    const bool hasFile = !commandLine.file.isEmpty();
    if (hasFile && !commandLine.arguments.isEmpty())
        return usageFailure(QStringLiteral("set takes either --from or PATH=VALUE"));
    if (!hasFile && commandLine.arguments.isEmpty())
        return usageFailure(QStringLiteral("set needs at least one PATH=VALUE, or --from"));
    return hasFile ? readObject(commandLine.file, object)
                   : parseAssignments(commandLine.arguments, assignments);
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

// A value of one key whose type is given does not depend on what the service keeps.
bool isIndependent(const Assignment &assignment)
{
    return assignment.type && assignment.steps.size() == 1;
}

// A change that fails may have been made, but not without a service.
Failure requireService(int timeoutMs)
{
    ServiceState state = ServiceState::Running;
    const Failure failure = findService(timeoutMs, &state);
    return state == ServiceState::Absent ? absentServiceFailure() : failure;
}

// The service merges whole values of top-level keys.
Failure assignAll(const QList<Assignment> &assignments, const Reading &reading,
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

Failure mergeFile(const QString &fileName, const QJsonObject &object, const Configuration &before,
                  Configuration *change)
{
    Configuration configuration = before;
    if (const Failure failure = mergeJson(object, &configuration))
        return {EX_DATAERR, failure.text(), QStringLiteral("correct the file"), fileName};
    const QStringList keys = object.keys();
    for (const QString &key : keys) {
        const QVariant value = configuration.get(key);
        if (!before.containsKey(key) || toJson(before.get(key)) != toJson(value))
            change->set(key, value);
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
        const QStringList paths = unseenSettingsAt(pathText(assignment.steps), lost).keys();
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

void printDifferences(const Configuration &before, const Configuration &change)
{
    Configuration replaced;
    const QStringList keys = ConfigurationPrivate::data(change).keys();
    for (const QString &key : keys)
        replaced.set(key, before.get(key));
    const QList<Difference> differences = differencesBetween(
        leavesOf(QVariant::fromValue(replaced)), leavesOf(QVariant::fromValue(change)));
    std::for_each(differences.begin(), differences.end(), printDifference);
    if (differences.isEmpty())
        print(QStringLiteral("unchanged"), Tools::Style::Aside);
}

} // namespace

Failure set(const CommandLine &commandLine)
{
    QList<Assignment> assignments;
    QJsonObject object;
    if (const Failure failure = parseArguments(commandLine, &assignments, &object))
        return failure;
    if (const Failure failure = openBus(commandLine.timeoutMs))
        return failure;
    const bool hasFile = !commandLine.file.isEmpty();
    const bool needsReading = hasFile || commandLine.isDryRun
        || !std::all_of(assignments.begin(), assignments.end(), isIndependent);
    Reading reading;
    if (const Failure failure = needsReading ? readConfiguration(commandLine.timeoutMs, &reading)
                                             : requireService(commandLine.timeoutMs))
        return failure;

    Configuration change;
    if (const Failure failure = hasFile
            ? mergeFile(commandLine.file, object, reading.configuration, &change)
            : assignAll(assignments, reading, &change))
        return failure;
    const Failure loss = checkForLoss(assignments, change, reading.unseen);
    if (loss && !commandLine.isForced)
        return loss;
    if (loss && commandLine.isDryRun)
        printNote(loss.message);
    if (!commandLine.isDryRun && !change.isEmpty())
        return changeConfiguration(commandLine.timeoutMs, change);
    printDifferences(reading.configuration, change);
    return {};
}

} // namespace Tarnvel::Client
