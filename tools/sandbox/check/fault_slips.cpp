// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fault_slips.h"

#include "endpoint.h"
#include "scenario/fault_reader.h"
#include "service/fault_schedule.h"
#include "valid_part.h"

#include <algorithm>
#include <limits>
#include <set>

namespace Tarnvel::Sandbox {

namespace {

constexpr int never = std::numeric_limits<int>::max();

struct WrittenFault
{
    Fault fault;
    int offset;
};
using WrittenFaults = QVector<WrittenFault>;

WrittenFaults readFaults(const Tools::JsonValue &application)
{
    WrittenFaults faults;
    for (const Tools::JsonValue &item : itemsOf(application, QStringLiteral("faults"))) {
        if (const auto fault = readValidPart(readFault, item))
            faults.append({*fault, item.offset});
    }
    return faults;
}

WrittenFaults faultsOf(const WrittenFaults &all, const QString &method)
{
    WrittenFaults faults;
    std::copy_if(all.begin(), all.end(), std::back_inserter(faults),
                 [&method](const WrittenFault &written) { return written.fault.method == method; });
    return faults;
}

void addLost(const WrittenFault &written, const QString &reason, Tools::Diagnostics *diagnostics)
{
    diagnostics->addSlip(written.offset,
                         QStringLiteral("this fault is never injected: %1").arg(reason),
                         QStringLiteral("remove it, or what prevents it"));
}

bool comesBack(const WrittenFaults &timed)
{
    return std::any_of(timed.begin(), timed.end(), [](const WrittenFault &written) {
        return written.fault.kind == Fault::Restart;
    });
}

// Each call that a fault names, and the first other one, which stands for all others.
std::set<int> distinctCalls(const WrittenFaults &faults)
{
    std::set<int> calls;
    for (const WrittenFault &written : faults)
        calls.insert(written.fault.call);
    // The number of a fault that affects every call.
    calls.erase(0);
    int other = 1;
    while (calls.count(other) > 0)
        ++other;
    calls.insert(other);
    return calls;
}

// As FaultSchedule::count() does, for the faults of one method.
void addLostAmongCalls(const WrittenFaults &faults, bool exitIsFinal,
                       Tools::Diagnostics *diagnostics)
{
    std::set<const WrittenFault *> injected;
    int lastCall = never;
    for (const int call : distinctCalls(faults)) {
        const WrittenFault *delay = nullptr;
        const WrittenFault *other = nullptr;
        for (const WrittenFault &written : faults) {
            if (written.fault.call != 0 && written.fault.call != call)
                continue;
            const WrittenFault *&first = written.fault.kind == Fault::Delay ? delay : other;
            first = first ? first : &written;
        }
        injected.insert({delay, other});
        // More calls can come while the end is delayed.
        if (other && !delay
            && (other->fault.kind == Fault::BusDeath
                || (other->fault.kind == Fault::Exit && exitIsFinal))) {
            lastCall = call;
            break;
        }
    }
    for (const WrittenFault &written : faults) {
        if (injected.count(&written) > 0)
            continue;
        addLost(written,
                written.fault.call > lastCall
                    ? QStringLiteral("the service ends at call %1").arg(lastCall)
                    : QStringLiteral("others before it affect the same calls"),
                diagnostics);
    }
}

bool refusesAllCalls(const Tools::JsonValue &application)
{
    const Tools::JsonValue *const configurable = application.member(QStringLiteral("configurable"));
    const Tools::JsonValue *const users = application.member(QStringLiteral("users"));
    return (configurable && configurable->kind == Tools::JsonValue::Boolean
            && !configurable->isTrue)
        || (users && users->kind == Tools::JsonValue::List && users->items.empty());
}

// A refusal has no reply that these could change.
void addLostAmongRefusals(const WrittenFaults &faults, Tools::Diagnostics *diagnostics)
{
    for (const WrittenFault &written : faults) {
        const Fault::Kind kind = written.fault.kind;
        if (kind == Fault::WrongSignature || kind == Fault::ExtraArguments
            || kind == Fault::TooLarge)
            addLost(written, QStringLiteral("the service refuses all calls"), diagnostics);
    }
}

// In the order of time. Which fault comes first at the same time is not known: a restart comes
// last, so that the fewest are lost.
WrittenFaults inTurn(WrittenFaults timed)
{
    const auto turn = [](const WrittenFault &written) {
        return std::make_pair(toMilliseconds(written.fault.time),
                              written.fault.kind == Fault::Restart);
    };
    std::stable_sort(timed.begin(), timed.end(),
                     [turn](const WrittenFault &left, const WrittenFault &right) {
                         return turn(left) < turn(right);
                     });
    return timed;
}

void addLostAmongTimes(WrittenFaults timed, Tools::Diagnostics *diagnostics)
{
    int busDeath = never;
    int exit = never;
    int returnTime = 0;
    timed = inTurn(timed);
    while (!timed.isEmpty()) {
        const WrittenFault written = timed.takeFirst();
        const Fault &fault = written.fault;
        const int time = toMilliseconds(fault.time);
        // Back later, the service has the configuration that replaced the other.
        const bool takesEffectLater = fault.kind == Fault::Replace
            && (exit >= time || comesBack(timed));
        if (busDeath < time) {
            addLost(written, QStringLiteral("the bus exits before"), diagnostics);
        } else if (fault.kind == Fault::BusDeath) {
            busDeath = time;
        } else if (fault.kind == Fault::Restart) {
            exit = never;
            returnTime = time + toMilliseconds(fault.seconds);
        } else if (fault.kind == Fault::Exit && exit >= time) {
            exit = time;
        } else if ((exit < time || time < returnTime) && !takesEffectLater) {
            addLost(written, QStringLiteral("the service is away at that time"), diagnostics);
        }
    }
}

} // namespace

void addFaultSlips(const Tools::JsonValue &document, Tools::Diagnostics *diagnostics)
{
    const std::vector<Tools::JsonValue> &applications = itemsOf(document,
                                                                QStringLiteral("applications"));
    WrittenFaults timed;
    for (const Tools::JsonValue &application : applications)
        timed += faultsOf(readFaults(application), QString());
    addLostAmongTimes(timed, diagnostics);
    for (const Tools::JsonValue &application : applications) {
        const WrittenFaults faults = readFaults(application);
        for (const char *const method :
             {DBus::getConfigurationMethod, DBus::changeConfigurationMethod})
            addLostAmongCalls(faultsOf(faults, QLatin1String(method)), !comesBack(timed),
                              diagnostics);
        if (refusesAllCalls(application))
            addLostAmongRefusals(faults, diagnostics);
    }
}

} // namespace Tarnvel::Sandbox
