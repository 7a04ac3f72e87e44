// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "difference.h"

#include "configuration_p.h"
#include "json.h"
#include "path.h"

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;
using Tools::Style;

namespace {

void collectLeaves(const Configuration &configuration, const QString &prefix, Leaves *leaves)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        const QString path = prefix + keyText(entry.key());
        const Configuration nested = Configuration::fromVariant(entry.value());
        if (nested.isEmpty())
            leaves->insert(path, compactText(toJson(entry.value())));
        else
            collectLeaves(nested, path + QLatin1Char('/'), leaves);
    }
}

} // namespace

Leaves leavesOf(const Configuration &configuration)
{
    Leaves leaves;
    collectLeaves(configuration, QString(), &leaves);
    return leaves;
}

QList<Difference> differencesBetween(const Leaves &before, const Leaves &after)
{
    QList<Difference> differences;
    Leaves both = before;
    for (auto leaf = after.begin(); leaf != after.end(); ++leaf)
        both.insert(leaf.key(), leaf.value());
    for (auto leaf = both.begin(); leaf != both.end(); ++leaf) {
        const QString &path = leaf.key();
        const QString now = after.value(path);
        const QString then = before.value(path);
        if (then.isNull())
            differences.append({QStringLiteral("added: %1 = %2").arg(path, now), Style::Good});
        else if (now.isNull())
            differences.append(
                {QStringLiteral("removed: %1 (was %2)").arg(path, then), Style::Bad});
        else if (now != then)
            differences.append(
                {QStringLiteral("changed: %1 = %2 (was %3)").arg(path, now, then), Style::News});
    }
    return differences;
}

} // namespace Tarnvel::Client
