// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "simulated_service.h"

#include "bus_connection.h"
#include "change_validation.h"
#include "endpoint.h"
#include "exit_status.h"
#include "reply.h"

#include <QtCore/QTimer>

#include <utility>

namespace Tarnvel::Sandbox {

using Testing::MethodCall;
using Tools::Style;

namespace {

// For calls that the library never makes.
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
        return QStringLiteral("no application at \"%1\" or at any other path").arg(path);
    return QStringLiteral("no application at \"%1\", only at \"%2\"")
        .arg(path, known.join(QLatin1String("\", \"")));
}

int announcementCount(const std::optional<Fault> &fault)
{
    if (!fault)
        return 1;
    switch (fault->kind) {
    case Fault::SpoofedSignal:
        return 0;
    case Fault::AnnounceTwice:
        return 2;
    case Fault::Flood:
        return fault->count;
    default:
        return 1;
    }
}

// Announces a change of the configuration at \a path through a connection that is not the
// service's.
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

bool endsService(const Fault &fault)
{
    return fault.kind == Fault::Exit || fault.kind == Fault::Restart
        || fault.kind == Fault::BusDeath;
}

} // namespace

SimulatedService::SimulatedService(Scenario scenario, Log *log, std::function<void()> killBus)
    : m_scenario(std::make_shared<const Scenario>(std::move(scenario))),
      m_log(log),
      m_killBus(std::move(killBus)),
      m_service([this](const MethodCall &call) { receive(call); },
                [this] { handleConnectionLoss(); }),
      m_faults([this](const QString &path, const Fault &fault) { inject(path, fault); })
{
    m_service.setDescribedObjects(m_scenario->keys());
}

Tools::Failure SimulatedService::open(const QString &address)
{
    m_address = address;
    m_timerContext = std::make_unique<QObject>();
    const QString error = m_service.open(address);
    if (!error.isNull())
        return {SandboxFailed, error};
    m_log->start();
    m_faults.setScenario(m_scenario);
    return {};
}

void SimulatedService::apply(Scenario scenario)
{
    QVector<QPair<QString, QString>> changed;
    for (auto old = m_scenario->begin(); old != m_scenario->end(); ++old) {
        const Variant configuration = scenario.value(old.key()).configuration;
        if (!areEqual(configurationAt(old.key()), configuration))
            changed.append({old.key(), old->name});
    }
    for (auto added = scenario.begin(); added != scenario.end(); ++added) {
        if (!m_scenario->contains(added.key()))
            changed.append({added.key(), added->name});
    }
    m_scenario = std::make_shared<const Scenario>(std::move(scenario));
    m_kept.clear();
    m_faults.setScenario(m_scenario);
    m_service.setDescribedObjects(m_scenario->keys());
    for (const auto &[path, name] : qAsConst(changed))
        announce(path, name);
}

Variant SimulatedService::configurationAt(const QString &path) const
{
    if (!m_scenario->contains(path))
        return {};
    const KeptConfiguration kept = keptAt(path);
    return replaceValues(kept.given, kept.changes);
}

void SimulatedService::receive(const MethodCall &call)
{
    const CallFaults faults = m_faults.count(call.path(), call.method());
    const Request request {call, call.caller(), m_scenario->value(call.path()).name,
                           faults.delay.has_value()};
    if (!faults.delay) {
        handle(request, faults.fault);
        return;
    }
    m_log->report(delayEvent(request, *faults.delay));
    QTimer::singleShot(toMilliseconds(*faults.delay), Qt::PreciseTimer, m_timerContext.get(),
                       [this, request, fault = faults.fault] { handle(request, fault); });
}

void SimulatedService::handle(const Request &request, const std::optional<Fault> &fault)
{
    if (fault && fault->kind == Fault::Error) {
        refuse(request, fault->error, fault->message, fault);
    } else if (fault && (fault->kind == Fault::NoReply || endsService(*fault))) {
        m_log->report(callEvent(request, {Outcome::Unanswered, {}, {}, fault}));
        if (endsService(*fault))
            endService(*fault);
    } else {
        serve(request, fault);
    }
}

void SimulatedService::serve(const Request &request, const std::optional<Fault> &fault)
{
    const MethodCall &call = request.call;
    const auto application = m_scenario->find(call.path());
    if (application == m_scenario->end())
        return refuse(request, serviceError(QStringLiteral("NotConfigurable")),
                      unknownPathMessage(call.path(), m_scenario->keys()));
    if (const auto refusal = refuseCaller(*application, call.path(), request.caller.userId))
        return refuse(request, serviceError(refusal->error), refusal->message);
    if (call.method() == QLatin1String(DBus::getConfigurationMethod))
        return get(request, fault);
    if (call.method() != QLatin1String(DBus::changeConfigurationMethod))
        return refuse(request, busError("UnknownMethod"),
                      QStringLiteral("there is no method \"%1\"").arg(call.method()));
    if (!g_variant_is_of_type(call.arguments(), G_VARIANT_TYPE("(a{sv})")))
        return refuse(request, busError("InvalidArgs"),
                      QStringLiteral("expected arguments of the type \"(a{sv})\", found \"%1\"")
                          .arg(QLatin1String(g_variant_get_type_string(call.arguments()))));
    change(request, *application, fault);
}

void SimulatedService::get(const Request &request, const std::optional<Fault> &fault)
{
    const Variant configuration = configurationAt(request.call.path());
    request.call.reply(replyArguments(configuration.get(), fault));
    const QString count = entryCount(g_variant_n_children(configuration.get()));
    m_log->report(callEvent(request, {Outcome::Answered, count, {}, fault}));
}

void SimulatedService::change(const Request &request, const Application &application,
                              const std::optional<Fault> &fault)
{
    const MethodCall &call = request.call;
    const Entries changes = entriesOf(adopt(g_variant_get_child_value(call.arguments(), 0)).get());
    // In place: a copy would copy all earlier changes.
    KeptConfiguration &kept = *m_kept.insert(call.path(), keptAt(call.path()));
    if (const auto refusal = refuseChange(application, kept, changes))
        return refuse(request, serviceError(refusal->error), refusal->message);

    bool isChanged = false;
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        isChanged = isChanged || !areEqual(kept.value({change.key()}), change.value());
        kept.changes.insert(change.key(), change.value());
    }
    call.reply(replyArguments(nullptr, fault));
    const QString text = isChanged ? QString() : QStringLiteral("no difference");
    m_log->report(callEvent(request, {Outcome::Accepted, text, {}, fault}));
    if (isChanged)
        announce(call.path(), application.name);
}

void SimulatedService::refuse(const Request &request, const QString &error, const QString &message,
                              const std::optional<Fault> &fault)
{
    request.call.replyError(error, message);
    m_log->report(callEvent(request, {Outcome::Refused, message, error, fault}));
}

void SimulatedService::inject(const QString &path, const Fault &fault)
{
    if (endsService(fault))
        return endService(fault);
    if (fault.kind == Fault::Replace)
        m_kept.insert(path, {fault.configuration, {}});
    announce(path, m_scenario->value(path).name, fault);
}

void SimulatedService::announce(const QString &path, const QString &name,
                                const std::optional<Fault> &fault)
{
    if (!m_service.isOpen())
        return;
    if (fault && fault->kind == Fault::SpoofedSignal)
        emitSpoofedSignal(m_address, path);
    for (int count = announcementCount(fault); count > 0; --count)
        m_service.announceChange(path);
    m_log->report(announcementEvent(name, path, fault));
}

KeptConfiguration SimulatedService::keptAt(const QString &path) const
{
    return m_kept.value(path, {m_scenario->value(path).configuration, {}});
}

void SimulatedService::endService(const Fault &fault)
{
    // The bus first, or it would answer the calls that the service leaves behind.
    if (fault.kind == Fault::BusDeath)
        m_killBus();
    close();
    const QString text = fault.kind == Fault::BusDeath ? QStringLiteral("the bus has died")
                                                       : QStringLiteral("the service has ended");
    m_log->report(serviceEvent(text, Style::Bad, fault));
    if (fault.kind == Fault::Restart)
        QTimer::singleShot(toMilliseconds(fault.seconds), Qt::PreciseTimer, m_timerContext.get(),
                           [this] { reopen(); });
}

void SimulatedService::close()
{
    m_timerContext = std::make_unique<QObject>();
    m_service.close();
}

void SimulatedService::reopen()
{
    const QString error = m_service.open(m_address);
    m_log->report(
        error.isNull()
            ? serviceEvent(QStringLiteral("the service has come back"), Style::News)
            : serviceEvent(QStringLiteral("the service cannot come back: ") + error, Style::Bad));
}

void SimulatedService::handleConnectionLoss()
{
    close();
    m_log->report(
        serviceEvent(QStringLiteral("the bus has closed the service's connection"), Style::Bad));
    reopen();
}

} // namespace Tarnvel::Sandbox
