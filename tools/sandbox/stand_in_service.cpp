// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "stand_in_service.h"

#include "log.h"

namespace Tarnvel::Sandbox {

namespace {

// Errors that no library with the right calls meets are those of D-Bus itself.
constexpr char busErrorPrefix[] = "org.freedesktop.DBus.Error.";

void printOutcome(const MethodCall &call, const QString &name, const QString &outcome)
{
    printEvent(
        QStringLiteral("%1: %2 from %3: %4").arg(name, call.method(), call.sender(), outcome));
}

void refuse(const MethodCall &call, const QString &name, const QString &error,
            const QString &message, const char *prefix = errorPrefix)
{
    call.replyError(QLatin1String(prefix) + error, message);
    printOutcome(call, name, QStringLiteral("refused, %1: %2").arg(error, message));
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

// Empty if none is altered.
QString alteredLock(const Application &application, const Variant &changed)
{
    for (const QString &path : application.locked) {
        const QStringList keys = lockedKeys(path);
        if (!areEqual(valueAt(application.configuration, keys), valueAt(changed, keys)))
            return path;
    }
    return {};
}

} // namespace

StandInService::StandInService(const World &world)
    : m_world(world), m_service([this](const MethodCall &call) { receive(call); })
{
}

bool StandInService::open(const QString &address)
{
    return m_service.open(address);
}

void StandInService::takeOver(const World &world)
{
    const World old = m_world;
    m_world = world;
    for (auto entry = old.begin(); entry != old.end(); ++entry) {
        if (!areEqual(entry->configuration, world.value(entry.key()).configuration))
            announce(entry.key(), entry->name);
    }
    for (auto entry = world.begin(); entry != world.end(); ++entry) {
        if (!old.contains(entry.key()))
            announce(entry.key(), entry->name);
    }
}

QString StandInService::errorString() const
{
    return m_service.errorString();
}

void StandInService::receive(const MethodCall &call)
{
    const auto application = m_world.find(call.path());
    if (application == m_world.end())
        refuse(call, call.path(), QStringLiteral("NotConfigurable"),
               unknownPathMessage(call.path(), m_world.keys()));
    else if (call.method() == QLatin1String(getConfigurationMethod))
        answer(call, *application);
    else if (call.method() != QLatin1String(changeConfigurationMethod))
        refuse(call, application->name, QStringLiteral("UnknownMethod"),
               QStringLiteral("there is no method \"%1\"").arg(call.method()), busErrorPrefix);
    else if (!g_variant_is_of_type(call.arguments(), G_VARIANT_TYPE("(a{sv})")))
        refuse(call, application->name, QStringLiteral("InvalidArgs"),
               QStringLiteral("the argument is not one configuration, but \"%1\"")
                   .arg(QLatin1String(g_variant_get_type_string(call.arguments()))),
               busErrorPrefix);
    else
        change(call, &*application);
}

void StandInService::answer(const MethodCall &call, const Application &application)
{
    GVariant *const configuration = application.configuration.get();
    call.reply(g_variant_new_tuple(&configuration, 1));
    printOutcome(
        call, application.name,
        QStringLiteral("answered, %1").arg(entryCount(g_variant_n_children(configuration))));
}

void StandInService::change(const MethodCall &call, Application *application)
{
    const Variant change = adopt(g_variant_get_child_value(call.arguments(), 0));
    const Variant changed = mergeConfigurations(application->configuration, change.get());
    const QString lock = alteredLock(*application, changed);
    if (!lock.isEmpty()) {
        refuse(call, application->name, QStringLiteral("Forbidden"),
               QStringLiteral("\"%1\" is locked").arg(lock));
        return;
    }
    const bool isAltered = !areEqual(application->configuration, changed);
    application->configuration = changed;
    call.reply(nullptr);
    printOutcome(call, application->name,
                 isAltered ? QStringLiteral("accepted")
                           : QStringLiteral("accepted, no difference"));
    if (isAltered)
        announce(call.path(), application->name);
}

void StandInService::announce(const QString &path, const QString &name)
{
    m_service.announceChange(path);
    printEvent(QStringLiteral("%1: ConfigurationChanged").arg(name));
}

} // namespace Tarnvel::Sandbox
