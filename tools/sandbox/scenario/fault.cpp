// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fault.h"

#include <tuple>

namespace Tarnvel::Sandbox {

bool operator==(const Fault &left, const Fault &right)
{
    const auto members = [](const Fault &fault) {
        return std::tie(fault.kind, fault.method, fault.call, fault.time, fault.error,
                        fault.message, fault.seconds, fault.count);
    };
    return members(left) == members(right) && areEqual(left.configuration, right.configuration);
}

const QVector<FaultDescription> &faultDescriptions()
{
    static const QVector<FaultDescription> descriptions {
        {Fault::Error, "error", "the reply is an error", true, false},
        {Fault::Delay, "delay", "the reply is sent some seconds later", true, false},
        {Fault::NoReply, "no-reply", "the call never gets a reply", true, false},
        {Fault::WrongSignature, "wrong-signature", "the reply has arguments of other types", true,
         false},
        {Fault::ExtraArguments, "extra-arguments", "the reply has extra arguments", true, false},
        {Fault::TooLarge, "too-large", "the reply is larger than the bus allows", true, false},
        {Fault::Exit, "exit", "the service exits and does not come back", true, true},
        {Fault::Restart, "restart", "the service exits and comes back", true, true},
        {Fault::BusDeath, "bus-death", "the bus exits and does not come back", true, true},
        {Fault::Replace, "replace", "the configuration is replaced, and this is announced", false,
         true},
        {Fault::Announce, "announce", "a change that was not made is announced", false, true},
        {Fault::AnnounceTwice, "announce-twice", "a change that was not made is announced twice",
         false, true},
        {Fault::Flood, "flood", "a change that was not made is announced many times", false, true},
        {Fault::SpoofedSignal, "spoofed-signal", "another connection announces a change", false,
         true},
    };
    return descriptions;
}

QString faultName(Fault::Kind kind)
{
    return QLatin1String(faultDescriptions().at(kind).name);
}

} // namespace Tarnvel::Sandbox
