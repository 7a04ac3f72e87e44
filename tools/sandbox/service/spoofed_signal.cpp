// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "spoofed_signal.h"

#include "bus_connection.h"
#include "endpoint.h"

namespace Tarnvel::Sandbox {

void emitSpoofedSignal(const QString &address, const QString &path)
{
    g_autoptr(GDBusConnection) connection = Testing::openConnection(address, nullptr);
    if (!connection)
        return;
    g_dbus_connection_emit_signal(connection, nullptr, path.toUtf8().constData(),
                                  DBus::applicationInterface, DBus::configurationChangedSignal,
                                  nullptr, nullptr);
    Testing::closeConnection(connection);
}

} // namespace Tarnvel::Sandbox
