// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "requests.h"

#include "bus.h"
#include "endpoint.h"

#include <QtCore/QEventLoop>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <functional>
#include <optional>
#include <sysexits.h>

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;
using Tools::Failure;

namespace {

using Callback = std::function<void(const Configuration &, const Error &)>;

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

Failure await(int timeoutMs, Configuration *configuration,
              const std::function<void(const Callback &)> &send)
{
    std::optional<Error> reply;
    QEventLoop loop;
    send([&reply, configuration, waiting = QPointer<QEventLoop>(&loop)](
             const Configuration &received, const Error &error) {
        // The caller no longer waits for a late reply.
        if (!waiting)
            return;
        *configuration = received;
        reply = error;
        waiting->quit();
    });
    QTimer::singleShot(timeoutMs, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
    if (reply)
        return failureOf(*reply, timeoutMs);
    return {EX_UNAVAILABLE,
            QStringLiteral("no reply from the service within %1 s").arg(timeoutMs / 1000.0),
            QStringLiteral("check whether the service hangs, then try again, or allow more time "
                           "with --timeout")};
}

} // namespace

Failure readConfiguration(int timeoutMs, Configuration *configuration)
{
    return await(timeoutMs, configuration, [](const Callback &callback) {
        ConfigurationManager::instance()->getConfiguration(callback);
    });
}

Failure changeConfiguration(int timeoutMs, const Configuration &change)
{
    Configuration ignored;
    Failure failure = await(timeoutMs, &ignored, [&change](const Callback &callback) {
        ConfigurationManager::instance()->changeConfiguration(
            change, [callback](const Error &error) { callback({}, error); });
    });
    if (failure.status == EX_UNAVAILABLE)
        failure.message += QStringLiteral("; the change may have been made");
    return failure;
}

} // namespace Tarnvel::Client
