// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_manager_p.h"
#include "dbus_peer.h"
#include "description.h"
#include "generated_dictionary.h"
#include "message_log.h"
#include "reading_model.h"

#include <QtCore/QCoreApplication>
#include <QtDBus/QDBusMetaType>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

Outcome read(const Body &body)
{
    static Peer peer;
    const QVariant argument = peer.receive(body);
    MessageLog log;
    const auto configuration = qdbus_cast<Configuration>(argument);
    return {describe(configuration), log.take()};
}

} // namespace

// NOLINTNEXTLINE(readability-non-const-parameter)
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    qDBusRegisterMetaType<Configuration>();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    const Body body = readBody(input);
    const Outcome got = read(body);
    const Outcome expected = expectedReading(body.argument.get());
    if (!(got == expected))
        failWith(got, expected, textOf(body));
    return 0;
}
