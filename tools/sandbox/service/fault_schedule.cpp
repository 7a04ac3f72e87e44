// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fault_schedule.h"

#include <algorithm>
#include <utility>

namespace Tarnvel::Sandbox {

FaultSchedule::FaultSchedule(Handler handler) : m_handler(std::move(handler)) { }

void FaultSchedule::setScenario(const std::shared_ptr<const Scenario> &scenario)
{
    // Faults that stay refer to it until they are found in the new scenario.
    const std::shared_ptr<const Scenario> oldScenario = std::exchange(m_scenario, scenario);
    QMap<QString, ScheduledFaults> old = std::exchange(m_scheduled, {});
    for (auto application = scenario->begin(); application != scenario->end(); ++application) {
        ScheduledFaults &oldFaults = old[application.key()];
        ScheduledFaults &newFaults = m_scheduled[application.key()];
        for (const Fault &fault : application->faults) {
            const auto same = std::find_if(
                oldFaults.begin(), oldFaults.end(),
                [&fault](const auto &scheduled) { return *scheduled->fault == fault; });
            // Removed, so that two equal faults keep separate counts.
            newFaults.append(same == oldFaults.end()
                                 ? schedule(application.key(), fault)
                                 : oldFaults.takeAt(static_cast<int>(same - oldFaults.begin())));
            newFaults.last()->fault = &fault;
        }
    }
}

CallFaults FaultSchedule::count(const QString &path, const QString &method)
{
    CallFaults due;
    for (const std::shared_ptr<ScheduledFault> &scheduled : m_scheduled.value(path)) {
        const Fault &fault = *scheduled->fault;
        if (fault.method != method)
            continue;
        ++scheduled->calls;
        if (fault.call != 0 && fault.call != scheduled->calls)
            continue;
        if (fault.kind == Fault::Delay && !due.delay)
            due.delay = fault.seconds;
        else if (fault.kind != Fault::Delay && !due.fault)
            due.fault = fault;
    }
    return due;
}

std::shared_ptr<FaultSchedule::ScheduledFault> FaultSchedule::schedule(const QString &path,
                                                                       const Fault &fault)
{
    const auto scheduled = std::make_shared<ScheduledFault>();
    if (!fault.method.isEmpty())
        return scheduled;
    scheduled->timer.setSingleShot(true);
    scheduled->timer.setTimerType(Qt::PreciseTimer);
    scheduled->timer.callOnTimeout(
        [this, path, scheduled = scheduled.get()] { m_handler(path, *scheduled->fault); });
    scheduled->timer.start(toMilliseconds(fault.time));
    return scheduled;
}

int toMilliseconds(double seconds)
{
    return qRound(seconds * 1000);
}

} // namespace Tarnvel::Sandbox
