// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "requests.h"

#include "bus.h"
#include "configuration_manager_p.h"
#include "endpoint.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <functional>
#include <optional>
#include <sysexits.h>

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;
using Tools::Failure;

namespace {

using Callback = std::function<void(const Error &)>;

const char *hintFor(Error::Code code)
{
    switch (code) {
    case Error::NotExistingKey:
        return "correct the path; \"get\" shows the existing settings, and only the administrator "
               "of the service can add others";
    case Error::InvalidType:
        return "give the value the type of the setting; \"get --type\" shows it if there is a "
               "value";
    case Error::InvalidValue:
        return "choose a value that the service accepts; its administrator knows which";
    case Error::Forbidden:
        return "ask an administrator to unlock the setting; trying again will not help";
    case Error::NotConfigurable:
        return "correct --organization and --application, or ask an administrator to set up a "
               "configuration for the application";
    case Error::InvalidUserId:
        return "run this as a user that the service accepts, or ask an administrator to allow the "
               "current one";
    case Error::UnsupportedType:
        return "use a value of another type; the service cannot store this type";
    default:
        return "check the service's log; if the problem is temporary, try again";
    }
}

Failure refusal(const Error &error)
{
    return {
        error.code(),
        QStringLiteral("%1 with error %2, %3: %4")
            .arg(error.code() == Error::Internal ? QStringLiteral("the service or the bus failed")
                                                 : QStringLiteral("the service refused"),
                 QString::number(error.code()), DBus::errorNames().value(error.code() - 1),
                 error.message().isEmpty() ? QStringLiteral("no reason given") : error.message()),
        QLatin1String(hintFor(error.code()))};
}

Failure failureOf(const Error &error, int timeoutMs)
{
    if (!error)
        return {};
    ServiceState state = ServiceState::Running;
    // Error::Internal also stands for a missing bus and a missing service.
    if (error.code() == Error::Internal) {
        if (const Failure failure = findService(timeoutMs, &state))
            return failure;
    }
    return state == ServiceState::Absent ? absentServiceFailure() : refusal(error);
}

Failure await(int timeoutMs, const std::function<void(const Callback &)> &send)
{
    std::optional<Error> reply;
    QEventLoop loop;
    send([&reply, waiting = QPointer<QEventLoop>(&loop)](const Error &error) {
        // The caller no longer waits for a late reply.
        if (!waiting)
            return;
        reply = error;
        waiting->quit();
    });
    QTimer::singleShot(timeoutMs, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    if (!reply)
        loop.exec();
    if (reply)
        return failureOf(*reply, timeoutMs);
    return {EX_UNAVAILABLE,
            QStringLiteral("no reply from the service within %1 s").arg(timeoutMs / 1000.0),
            QStringLiteral("check whether the service hangs, then try again, or allow more time "
                           "with --timeout")};
}

} // namespace

// Not through the manager: it leaves out what applications do not see.
Failure readConfiguration(int timeoutMs, Reading *reading)
{
    const QString path = DBus::applicationPath(QCoreApplication::organizationName(),
                                               QCoreApplication::applicationName());
    const QDBusMessage call = QDBusMessage::createMethodCall(
        QLatin1String(DBus::serviceName), path, QLatin1String(DBus::applicationInterface),
        QLatin1String(DBus::getConfigurationMethod));
    qDBusRegisterMetaType<Configuration>();
    QDBusPendingCallWatcher watcher(QDBusConnection::systemBus().asyncCall(call));
    const Failure failure = await(timeoutMs, [&watcher](const Callback &callback) {
        const auto finish = [callback, &watcher] {
            const QDBusPendingReply<Configuration> reply = watcher;
            callback(reply.isError() ? errorFromDBus(reply.error())
                                     : Error(Error::NoError, QString()));
        };
        QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &watcher, finish);
        // Without a connection to the bus, the watcher never emits the signal.
        if (watcher.isFinished())
            finish();
    });
    if (failure)
        return failure;
    const QDBusPendingReply<Configuration> reply = watcher;
    reading->configuration = reply.value();
    reading->unseen = findUnseenSettings(reply.argumentAt(0).value<QDBusArgument>(),
                                         reading->configuration);
    return {};
}

Failure changeConfiguration(int timeoutMs, const Configuration &change)
{
    Failure failure = await(timeoutMs, [&change](const Callback &callback) {
        ConfigurationManager::instance()->changeConfiguration(change, callback);
    });
    if (failure.status == EX_UNAVAILABLE)
        failure.message += QStringLiteral("; the change may have been made");
    return failure;
}

} // namespace Tarnvel::Client
