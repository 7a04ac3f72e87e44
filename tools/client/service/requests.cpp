// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "requests.h"

#include "bus.h"
#include "endpoint.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <memory>

namespace Tarnvel::Client {

using namespace Application::ManagedConfiguration;

namespace {

// After this time the library gives up a request by itself.
constexpr int libraryTimeoutMs = 25000;

struct Refusal
{
    const char *name;
    const char *hint;
};

Refusal refusalOf(Error::Code code)
{
    switch (code) {
    case Error::NotExistingKey:
        return {"NotExistingKey",
                "correct the path; \"get\" shows the settings that there are, and only who "
                "maintains the service can add others"};
    case Error::InvalidType:
        return {"InvalidType",
                "give the value the type of the setting; \"get --type\" shows it where there is a "
                "value"};
    case Error::InvalidValue:
        return {"InvalidValue",
                "choose a value that the service admits; its administrator knows which"};
    case Error::Forbidden:
        return {"Forbidden",
                "ask an administrator, who has locked the setting and can unlock it; trying again "
                "does not help"};
    case Error::NotConfigurable:
        return {"NotConfigurable",
                "correct --organization and --application, or have an administrator give the "
                "application a configuration"};
    case Error::InvalidUserId:
        return {"InvalidUserId",
                "run this as a user whom the service admits, or have an administrator admit the "
                "present one"};
    case Error::UnsupportedType:
        return {"UnsupportedType",
                "use a value of another type; the service cannot keep one of this type anywhere"};
    default:
        return {"Internal", "look into the service's log; if the fault passes, trying again helps"};
    }
}

Failure noAnswer(int timeoutMs)
{
    return {EX_UNAVAILABLE,
            QStringLiteral("no answer from the service within %1 seconds").arg(timeoutMs / 1000.0),
            QStringLiteral("see whether the service hangs, then try again, or allow more time with "
                           "--timeout")};
}

Failure refused(const Error &error)
{
    const Refusal refusal = refusalOf(error.code());
    return {
        error.code(),
        QStringLiteral("%1 with error %2, %3: %4")
            .arg(error.code() == Error::Internal ? QStringLiteral("the service or the bus failed")
                                                 : QStringLiteral("the service refused"))
            .arg(error.code())
            .arg(QLatin1String(refusal.name),
                 error.message().isEmpty() ? QStringLiteral("it gave no reason") : error.message()),
        QLatin1String(refusal.hint)};
}

// The library knows one code for all that the service has no error for.
Failure internalFailure(const Error &error, int timeoutMs, bool isLate)
{
    switch (serviceState(timeoutMs)) {
    case ServiceState::NoBus:
        return busFailure(error.message());
    case ServiceState::Absent:
        return {EX_UNAVAILABLE, QStringLiteral("no service: %1").arg(error.message()),
                QStringLiteral("start it, or run this in managed-configuration-sandbox")};
    case ServiceState::Activatable:
    case ServiceState::Running:
        break;
    }
    return isLate ? noAnswer(libraryTimeoutMs) : refused(error);
}

Failure failureOf(const Error &error, int timeoutMs, bool isLate)
{
    if (!error)
        return {};
    return error.code() == Error::Internal ? internalFailure(error, timeoutMs, isLate)
                                           : refused(error);
}

// Hands on the first outcome, be it the library's or that there was none in time.
class Wait
{
public:
    Wait(int timeoutMs, const ChangeHandler &handler)
        : m_timeoutMs(timeoutMs),
          m_timer(new QTimer(QCoreApplication::instance())),
          m_handler(handler)
    {
        m_timer->setSingleShot(true);
        QTimer *const timer = m_timer;
        QObject::connect(timer, &QTimer::timeout, timer, [timer, timeoutMs, handler] {
            timer->deleteLater();
            handler(noAnswer(timeoutMs));
        });
        timer->start(timeoutMs);
    }

    void end(const Error &error) const
    {
        if (!m_timer || !m_timer->isActive())
            return;
        m_timer->stop();
        m_timer->deleteLater();
        m_handler(failureOf(error, m_timeoutMs, m_libraryTime.hasExpired()));
    }

private:
    int m_timeoutMs;
    QPointer<QTimer> m_timer;
    QDeadlineTimer m_libraryTime {libraryTimeoutMs};
    ChangeHandler m_handler;
};

} // namespace

void readConfiguration(int timeoutMs, const ReadHandler &handler)
{
    const auto configuration = std::make_shared<Configuration>();
    const Wait wait(timeoutMs, [handler, configuration](const Failure &failure) {
        handler(*configuration, failure);
    });
    ConfigurationManager::instance()->getConfiguration(
        [wait, configuration](const Configuration &read, const Error &error) {
            *configuration = read;
            wait.end(error);
        });
}

void changeConfiguration(const Configuration &change, int timeoutMs, const ChangeHandler &handler)
{
    const Wait wait(timeoutMs, [handler](const Failure &failure) {
        Failure outcome = failure;
        if (failure.status == EX_UNAVAILABLE)
            outcome.message += QStringLiteral("; whether the change was made is not known");
        handler(outcome);
    });
    ConfigurationManager::instance()->changeConfiguration(
        change, [wait](const Error &error) { wait.end(error); });
}

} // namespace Tarnvel::Client
