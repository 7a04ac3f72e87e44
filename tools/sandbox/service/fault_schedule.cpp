// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fault_schedule.h"

#include <algorithm>
#include <utility>

namespace Tarnvel::Sandbox {

FaultSchedule::FaultSchedule(Handler handler) : m_handler(std::move(handler)) { }

void FaultSchedule::setScenario(const Scenario &scenario)
{
    QMap<QString, Entries> old = std::exchange(m_entries, {});
    for (auto application = scenario.begin(); application != scenario.end(); ++application) {
        Entries &oldEntries = old[application.key()];
        Entries &entries = m_entries[application.key()];
        for (const Fault &fault : application->faults) {
            const auto same = std::find_if(
                oldEntries.begin(), oldEntries.end(),
                [&fault](const auto &entry) { return entry->fault == fault; });
            // Taken out, so that of two equal faults each goes on as itself.
            entries.append(same == oldEntries.end()
                               ? makeEntry(application.key(), fault)
                               : oldEntries.takeAt(static_cast<int>(same - oldEntries.begin())));
        }
    }
}

CallFaults FaultSchedule::count(const QString &path, const QString &method)
{
    CallFaults met;
    for (const std::shared_ptr<Entry> &entry : m_entries.value(path)) {
        const Fault &fault = entry->fault;
        if (fault.method != method)
            continue;
        ++entry->calls;
        if (fault.call != 0 && fault.call != entry->calls)
            continue;
        if (fault.kind == Fault::Delay && !met.delay)
            met.delay = fault.seconds;
        else if (fault.kind != Fault::Delay && !met.fault)
            met.fault = fault;
    }
    return met;
}

std::shared_ptr<FaultSchedule::Entry> FaultSchedule::makeEntry(const QString &path,
                                                               const Fault &fault)
{
    const auto entry = std::make_shared<Entry>();
    entry->fault = fault;
    if (!fault.method.isEmpty())
        return entry;
    entry->timer = std::make_unique<QTimer>();
    entry->timer->setSingleShot(true);
    entry->timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(entry->timer.get(), &QTimer::timeout, entry->timer.get(),
                     [this, path, fault] { m_handler(path, fault); });
    entry->timer->start(toMilliseconds(fault.time));
    return entry;
}

int toMilliseconds(double seconds)
{
    return qRound(seconds * 1000);
}

} // namespace Tarnvel::Sandbox
