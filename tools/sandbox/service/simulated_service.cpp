// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "simulated_service.h"

#include "answer.h"
#include "change_validation.h"
#include "endpoint.h"
#include "spoofed_signal.h"

#include <QtCore/QTimer>

#include <utility>

namespace Tarnvel::Sandbox {

using Tools::Style;

namespace {

// Errors that no library with the right calls meets are those of D-Bus itself.
constexpr char busErrorPrefix[] = "org.freedesktop.DBus.Error.";

QString serviceError(const QString &name)
{
    return QLatin1String(DBus::errorPrefix) + name;
}

QString busError(const char *name)
{
    return QLatin1String(busErrorPrefix) + QLatin1String(name);
}

QString entryCount(gsize count)
{
    return count == 1 ? QStringLiteral("1 entry") : QStringLiteral("%1 entries").arg(count);
}

QString unknownPathMessage(const QString &path, const QStringList &known)
{
    if (known.isEmpty())
        return QStringLiteral("no application is kept at \"%1\", nor at any other path").arg(path);
    return QStringLiteral("no application is kept at \"%1\", only at \"%2\"")
        .arg(path, known.join(QLatin1String("\", \"")));
}

QMap<QString, Variant> configurationsOf(const Scenario &scenario)
{
    QMap<QString, Variant> configurations;
    for (auto application = scenario.begin(); application != scenario.end(); ++application)
        configurations.insert(application.key(), application->configuration);
    return configurations;
}

int announcementsOf(const Fault &fault)
{
    switch (fault.kind) {
    case Fault::Announce:
        return 1;
    case Fault::AnnounceTwice:
        return 2;
    case Fault::Flood:
        return fault.count;
    default:
        return 0;
    }
}

bool isBreakdown(const Fault &fault)
{
    return fault.kind == Fault::Exit || fault.kind == Fault::Restart
        || fault.kind == Fault::BusDeath;
}

} // namespace

SimulatedService::SimulatedService(const Scenario &scenario, Log *log,
                                   std::function<void()> killBus)
    : m_scenario(scenario),
      m_known(configurationsOf(scenario)),
      m_log(log),
      m_killBus(std::move(killBus)),
      m_service([this](const Testing::MethodCall &call) { receive(call); },
                [this] { loseConnection(); }),
      m_faults([this](const QString &path, const Fault &fault) { meetInTime(path, fault); })
{
}

QString SimulatedService::open(const QString &address)
{
    m_address = address;
    m_presence = std::make_unique<QObject>();
    const QString error = m_service.open(address);
    if (!error.isNull())
        return error;
    m_log->start();
    m_faults.setScenario(m_scenario);
    return {};
}

void SimulatedService::apply(const Scenario &scenario)
{
    const Scenario old = std::exchange(m_scenario, scenario);
    m_known = configurationsOf(scenario);
    m_faults.setScenario(scenario);
    for (auto entry = old.begin(); entry != old.end(); ++entry) {
        if (!areEqual(entry->configuration, scenario.value(entry.key()).configuration))
            announceMade(entry.key(), entry->name);
    }
    for (auto entry = scenario.begin(); entry != scenario.end(); ++entry) {
        if (!old.contains(entry.key()))
            announceMade(entry.key(), entry->name);
    }
}

void SimulatedService::receive(const Testing::MethodCall &call)
{
    const CallFaults faults = m_faults.count(call.path(), call.method());
    const Request request {call, call.caller(), m_scenario.value(call.path()).name,
                           faults.delay.has_value()};
    if (!faults.delay) {
        meet(request, faults.fault);
        return;
    }
    m_log->report(delayEvent(request, *faults.delay));
    QTimer::singleShot(toMilliseconds(*faults.delay), Qt::PreciseTimer, m_presence.get(),
                       [this, request, fault = faults.fault] { meet(request, fault); });
}

void SimulatedService::meet(const Request &request, const std::optional<Fault> &fault)
{
    if (fault && fault->kind == Fault::Error) {
        refuse(request, fault->error, fault->message, fault);
    } else if (fault && (fault->kind == Fault::NoAnswer || isBreakdown(*fault))) {
        m_log->report(callEvent(request, {Outcome::Unanswered, {}, {}, fault}));
        if (isBreakdown(*fault))
            breakDown(*fault);
    } else {
        serve(request, fault);
    }
}

void SimulatedService::serve(const Request &request, const std::optional<Fault> &fault)
{
    const Testing::MethodCall &call = request.call;
    const auto application = m_scenario.find(call.path());
    if (application == m_scenario.end())
        return refuse(request, serviceError(QStringLiteral("NotConfigurable")),
                      unknownPathMessage(call.path(), m_scenario.keys()));
    if (const auto refusal = refuseCaller(*application, call.path(), request.caller.userId))
        return refuse(request, serviceError(refusal->error), refusal->message);
    if (call.method() == QLatin1String(DBus::getConfigurationMethod))
        return answer(request, *application, fault);
    if (call.method() != QLatin1String(DBus::changeConfigurationMethod))
        return refuse(request, busError("UnknownMethod"),
                      QStringLiteral("there is no method \"%1\"").arg(call.method()));
    if (!g_variant_is_of_type(call.arguments(), G_VARIANT_TYPE("(a{sv})")))
        return refuse(request, busError("InvalidArgs"),
                      QStringLiteral("the argument is not one configuration, but \"%1\"")
                          .arg(QLatin1String(g_variant_get_type_string(call.arguments()))));
    change(request, &*application, fault);
}

void SimulatedService::answer(const Request &request, const Application &application,
                              const std::optional<Fault> &fault)
{
    GVariant *const configuration = application.configuration.get();
    request.call.reply(answerValues(configuration, fault));
    const QString count = entryCount(g_variant_n_children(configuration));
    m_log->report(callEvent(request, {Outcome::Answered, count, {}, fault}));
}

void SimulatedService::change(const Request &request, Application *application,
                              const std::optional<Fault> &fault)
{
    const Testing::MethodCall &call = request.call;
    const Variant change = adopt(g_variant_get_child_value(call.arguments(), 0));
    const Variant known = m_known.value(call.path());
    if (const auto refusal = refuseChange(*application, known, change.get()))
        return refuse(request, serviceError(refusal->error), refusal->message);

    const Variant changed = mergeConfigurations(application->configuration, change.get());
    const bool isAltered = !areEqual(application->configuration, changed);
    application->configuration = changed;
    call.reply(answerValues(nullptr, fault));
    const QString text = isAltered ? QString() : QStringLiteral("no difference");
    m_log->report(callEvent(request, {Outcome::Accepted, text, {}, fault}));
    if (isAltered)
        announceMade(call.path(), application->name);
}

void SimulatedService::refuse(const Request &request, const QString &error, const QString &message,
                              const std::optional<Fault> &fault)
{
    request.call.replyError(error, message);
    m_log->report(callEvent(request, {Outcome::Refused, message, error, fault}));
}

void SimulatedService::meetInTime(const QString &path, const Fault &fault)
{
    if (isBreakdown(fault))
        breakDown(fault);
    else if (fault.kind == Fault::Push)
        push(path, fault);
    else
        announceUnmade(path, fault);
}

void SimulatedService::push(const QString &path, const Fault &fault)
{
    Application &application = m_scenario[path];
    application.configuration = fault.configuration;
    m_known.insert(path, fault.configuration);
    announceMade(path, application.name, fault);
}

void SimulatedService::announceMade(const QString &path, const QString &name,
                                    const std::optional<Fault> &fault)
{
    if (!m_service.isOpen())
        return;
    m_service.announceChange(path);
    m_log->report(announcementEvent(name, path, fault));
}

void SimulatedService::announceUnmade(const QString &path, const Fault &fault)
{
    if (!m_service.isOpen())
        return;
    if (fault.kind == Fault::SpoofedSignal)
        emitSpoofedSignal(m_address, path);
    const int announcements = announcementsOf(fault);
    for (int announcement = 0; announcement < announcements; ++announcement)
        m_service.announceChange(path);
    m_log->report(announcementEvent(m_scenario.value(path).name, path, fault));
}

void SimulatedService::breakDown(const Fault &fault)
{
    // The bus first: it is not to answer the calls that the service leaves behind.
    if (fault.kind == Fault::BusDeath)
        m_killBus();
    leave();
    const QString text = fault.kind == Fault::BusDeath ? QStringLiteral("the bus has died")
                                                       : QStringLiteral("the service has ended");
    m_log->report(serviceEvent(text, Style::Bad, fault));
    if (fault.kind == Fault::Restart)
        QTimer::singleShot(toMilliseconds(fault.seconds), Qt::PreciseTimer, m_presence.get(),
                           [this] { comeBack(); });
}

void SimulatedService::leave()
{
    m_presence = std::make_unique<QObject>();
    m_service.close();
}

void SimulatedService::comeBack()
{
    const QString error = m_service.open(m_address);
    m_log->report(
        error.isNull()
            ? serviceEvent(QStringLiteral("the service has come back"), Style::News)
            : serviceEvent(QStringLiteral("the service cannot come back: ") + error, Style::Bad));
}

void SimulatedService::loseConnection()
{
    leave();
    m_log->report(
        serviceEvent(QStringLiteral("the bus has closed the service's connection"), Style::Bad));
    comeBack();
}

} // namespace Tarnvel::Sandbox
