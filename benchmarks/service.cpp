// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// The service of the benchmarks: benchmark_service ADDRESS. A process of its own, so that what the
// client costs can be told from what the service costs. Each change is announced, and changes
// nothing.

#include "endpoint.h"
#include "raw_service.h"
#include "shapes.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>

#include <csignal>
#include <cstdio>
#include <sys/prctl.h>

using namespace Tarnvel;

namespace {

GVariant *answerTo(const Testing::MethodCall &call)
{
    static QHash<QString, GVariant *> answers;

    if (call.method() != QLatin1String(DBus::getConfigurationMethod))
        return g_variant_new_tuple(nullptr, 0);
    GVariant *&answer = answers[call.path()];
    const QStringList names = Benchmarks::shapeNames();
    for (const QString &name : names) {
        if (!answer && call.path() == DBus::applicationPath(QStringLiteral("acme"), name))
            answer = g_variant_ref_sink(g_variant_new("(@a{sv})", Benchmarks::makeShape(name)));
    }
    return answer;
}

} // namespace

int main(int argc, char *argv[])
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    QCoreApplication application(argc, argv);
    Testing::RawService service([&service](const Testing::MethodCall &call) {
        if (GVariant *answer = answerTo(call))
            call.reply(answer);
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
