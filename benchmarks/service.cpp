// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// The service of the benchmarks: benchmark_service ADDRESS. It is a process of its own, so that its
// costs are not counted as the client's. It announces each change, but changes nothing.

#include "endpoint.h"
#include "payloads.h"
#include "raw_service.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>

#include <csignal>
#include <cstdio>
#include <sys/prctl.h>

using namespace Tarnvel;

namespace {

GVariant *replyTo(const Testing::MethodCall &call)
{
    static QHash<QString, GVariant *> replies;

    if (call.method() != QLatin1String(DBus::getConfigurationMethod))
        return g_variant_new_tuple(nullptr, 0);
    GVariant *&reply = replies[call.path()];
    const QStringList names = Benchmarks::payloadNames();
    for (const QString &name : names) {
        if (!reply && call.path() == DBus::applicationPath(QStringLiteral("acme"), name))
            reply = g_variant_ref_sink(g_variant_new("(@a{sv})", Benchmarks::makePayload(name)));
    }
    return reply;
}

} // namespace

int main(int argc, char *argv[])
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    QCoreApplication application(argc, argv);
    Testing::RawService service([&service](const Testing::MethodCall &call) {
        if (GVariant *reply = replyTo(call))
            call.reply(reply);
        else
            call.replyError(QStringLiteral("com.example.Unknown"), call.path());
        if (call.method() == QLatin1String(DBus::changeConfigurationMethod))
            service.announceChange(call.path());
    });
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2)
        qFatal("usage: benchmark_service ADDRESS");
    if (const QString error = service.open(arguments.at(1)); !error.isNull())
        qFatal("%s", qUtf8Printable(error));
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
