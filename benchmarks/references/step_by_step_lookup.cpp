// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "step_by_step_lookup.h"

#include <QtCore/QStringList>
#include <Tarnvel/ManagedConfiguration/xpath.h>

namespace Tarnvel::Benchmarks {

using namespace Application::ManagedConfiguration;

namespace {

QList<XpathAccess> parseStepByStep(const QString &xpath)
{
    QList<XpathAccess> accesses;
    const QStringList parts = xpath.split(QLatin1Char('/'), Qt::SkipEmptyParts, Qt::CaseSensitive);
    for (const QString &part : parts) {
        const int open = part.indexOf(QLatin1Char('['));
        const int close = part.indexOf(QLatin1Char(']'));
        if (open == -1 && close == -1) {
            accesses.append(XpathAccess(part));
            continue;
        }
        bool isNumber = false;
        const QString indexText = part.mid(open + 1, close - open - 1);
        const int index = indexText.toInt(&isNumber, 10);
        if (open > close || open == 0 || close != part.size() - 1 || !isNumber || index < 0)
            return {};
        accesses.append(XpathAccess(part.mid(0, open)));
        accesses.append(XpathAccess(index));
    }
    return accesses;
}

} // namespace

QVariant getByXpathStepByStep(const Configuration &configuration, const QString &xpath)
{
    const QList<XpathAccess> accesses = parseStepByStep(xpath);
    if (accesses.isEmpty())
        return {};
    QVariant current = QVariant::fromValue(configuration);
    for (const XpathAccess &access : accesses) {
        if (access.type() == XpathAccess::Index) {
            const auto items = current.value<QVariantList>();
            if (access.toIndex() >= items.size())
                return {};
            current = items.at(access.toIndex());
        } else {
            const Configuration nested = Configuration::fromVariant(current);
            if (!nested.containsKey(access.toKey()))
                return {};
            current = nested.get(access.toKey());
        }
    }
    return current;
}

} // namespace Tarnvel::Benchmarks
