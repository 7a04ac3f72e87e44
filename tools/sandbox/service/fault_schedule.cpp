// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fault_schedule.h"

#include <algorithm>
#include <utility>

namespace Tarnvel::Sandbox {

FaultSchedule::FaultSchedule(Handler handler) : m_handler(std::move(handler)) { }

void FaultSchedule::setScenario(const std::shared_ptr<const Scenario> &scenario)
{
    // Alive until the entries that go on no longer refer to it.
    const std::shared_ptr<const Scenario> oldScenario = std::exchange(m_scenario, scenario);
    QMap<QString, Entries> old = std::exchange(m_entries, {});
    for (auto application = scenario->begin(); application != scenario->end(); ++application) {
        Entries &oldEntries = old[application.key()];
        Entries &entries = m_entries[application.key()];
        for (const Fault &fault : application->faults) {
            const auto same = std::find_if(
                oldEntries.begin(), oldEntries.end(),
                [&fault](const auto &entry) { return *entry->fault == fault; });
            // Taken out, so that each of two equal faults has an entry of its own.
            entries.append(same == oldEntries.end()
                               ? makeEntry(application.key(), fault)
                               : oldEntries.takeAt(static_cast<int>(same - oldEntries.begin())));
            entries.last()->fault = &fault;
        }
    }
}

CallFaults FaultSchedule::count(const QString &path, const QString &method)
{
    CallFaults due;
    for (const std::shared_ptr<Entry> &entry : m_entries.value(path)) {
        const Fault &fault = *entry->fault;
        if (fault.method != method)
            continue;
        ++entry->calls;
        if (fault.call != 0 && fault.call != entry->calls)
            continue;
        if (fault.kind == Fault::Delay && !due.delay)
            due.delay = fault.seconds;
        else if (fault.kind != Fault::Delay && !due.fault)
            due.fault = fault;
    }
    return due;
}

std::shared_ptr<FaultSchedule::Entry> FaultSchedule::makeEntry(const QString &path,
                                                               const Fault &fault)
{
    const auto entry = std::make_shared<Entry>();
    if (!fault.method.isEmpty())
        return entry;
    entry->timer.setSingleShot(true);
    entry->timer.setTimerType(Qt::PreciseTimer);
    entry->timer.callOnTimeout(
        [this, path, entry = entry.get()] { m_handler(path, *entry->fault); });
    entry->timer.start(toMilliseconds(fault.time));
    return entry;
}

int toMilliseconds(double seconds)
{
    return qRound(seconds * 1000);
}

} // namespace Tarnvel::Sandbox
