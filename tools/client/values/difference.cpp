// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "difference.h"

#include "configuration_p.h"
#include "json.h"
#include "path.h"

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;

namespace {

void collectLeaves(const QVariant &value, const QString &path, Leaves *leaves)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(
        Configuration::fromVariant(value));
    const QString prefix = path.isEmpty() ? QString() : path + QLatin1Char('/');
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        collectLeaves(entry.value(), prefix + keyText(entry.key()), leaves);
    if (entries.isEmpty() && !path.isEmpty())
        leaves->insert(path, value);
}

} // namespace

Leaves leavesOf(const QVariant &value, const QString &path)
{
    Leaves leaves;
    collectLeaves(value, path, &leaves);
    return leaves;
}

QList<Difference> differencesBetween(const Leaves &before, const Leaves &after)
{
    QList<Difference> differences;
    Leaves both = before;
    for (auto leaf = after.begin(); leaf != after.end(); ++leaf)
        both.insert(leaf.key(), leaf.value());
    for (auto leaf = both.begin(); leaf != both.end(); ++leaf) {
        const QVariant then = before.value(leaf.key());
        const QVariant now = after.value(leaf.key());
        // Configurations and typed lists themselves do not compare by content.
        if (then.isValid() != now.isValid() || toJson(then) != toJson(now))
            differences.append({leaf.key(), then, now});
    }
    return differences;
}

} // namespace Tarnvel::Client
