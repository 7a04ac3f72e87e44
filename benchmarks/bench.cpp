// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bench.h"

#include "application.h"
#include "endpoint.h"

#include <QtDBus/QDBusConnection>

namespace Tarnvel::Benchmarks {

Bench::Bench(int &argc, char **argv) : m_application(argc, argv)
{
    if (const QString error = m_bus.start(); !error.isNull())
        qFatal("%s", qUtf8Printable(error));
    qputenv(DBus::busAddressVariable, m_bus.address().toUtf8());
    m_service.start(QStringLiteral(BENCHMARK_SERVICE), {m_bus.address()});
    while (!m_service.canReadLine()) {
        if (!m_service.waitForReadyRead())
            qFatal("the service did not start: %s", m_service.readAllStandardError().constData());
    }
}

Bench::~Bench()
{
    m_service.kill();
    m_service.waitForFinished();
}

QString Bench::address() const
{
    return m_bus.address();
}

QVariant receive(const QString &name)
{
    const QDBusMessage reply = QDBusConnection::systemBus().call(readCall(name));
    if (reply.type() != QDBusMessage::ReplyMessage)
        qFatal("%s: %s", qUtf8Printable(name), qUtf8Printable(reply.errorMessage()));
    return reply.arguments().at(0);
}

} // namespace Tarnvel::Benchmarks
