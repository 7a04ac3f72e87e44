// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_manager.h"
#include "configuration_manager_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>
#include <QtCore/QPointer>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtDBus/QDBusVariant>

#include "configuration_p.h"

#include <utility>

namespace Tarnvel::Application::ManagedConfiguration {

namespace {

const QLatin1String serviceName("org.brenvik.ManagedConfiguration");
const char interfaceName[] = "org.brenvik.ManagedConfiguration.Application1";

ConfigurationManager *theManager = nullptr;
bool isConfigurationRegistered = false;

QString getDBusApplicationPath()
{
    const QString organization = QCoreApplication::organizationName();
    const QString application = QCoreApplication::applicationName();
    if (organization.isEmpty() || application.isEmpty())
        qWarning() << "Organization name and application name must be set to work with managed "
                      "configuration";

    // One name after the other: the service computes the path in the same way, and the two must
    // agree even on a name that contains a placeholder.
    QString path = QStringLiteral("/%1.%2").arg(organization);
    path = path.arg(application);
    return path.replace(QLatin1Char('.'), QLatin1String("_2e"));
}

template<typename T>
QVariant toTypedList(const QVariantList &list)
{
    QList<T> typedList;
    for (const QVariant &element : list) {
        if (element.canConvert<T>())
            typedList.append(element.value<T>());
        else
            qWarning() << "Array element has unexpected type: "
                       << QVariant::typeToName(element.type());
    }
    return QVariant::fromValue(typedList);
}

QVariant parseArray(const QDBusArgument &argument)
{
    QVariantList list;
    argument.beginArray();
    while (!argument.atEnd())
        list.append(argument.asVariant());
    argument.endArray();

    if (list.isEmpty())
        return list;
    switch (list.first().type()) {
    case QVariant::Int:
        return toTypedList<int>(list);
    case QVariant::String:
        return toTypedList<QString>(list);
    case QVariant::Bool:
        return toTypedList<bool>(list);
    default:
        qWarning() << "Unsupported type for arrays: " << QVariant::typeToName(list.first().type());
        return {};
    }
}

QVariant parseVariantData(const QVariant &value)
{
    if (value.type() != QVariant::UserType || value.userType() != qMetaTypeId<QDBusArgument>())
        return value;

    const auto argument = value.value<QDBusArgument>();
    switch (argument.currentType()) {
    case QDBusArgument::MapType: {
        Configuration configuration;
        argument >> configuration;
        return QVariant::fromValue(configuration);
    }
    case QDBusArgument::ArrayType:
        return parseArray(argument);
    default:
        return argument.asVariant();
    }
}

// When the process has no connection to a bus, QtDBus hands out a call that has failed but whose
// watcher never reports it. The same error made into a call of its own is reported, from the event
// loop, like any other.
QDBusPendingCall reported(const QDBusPendingCall &call)
{
    return call.isError() ? QDBusPendingCall::fromError(call.error()) : call;
}

template<typename Handler>
void watch(const QDBusPendingCall &call, QObject *parent, Handler handler)
{
    auto *watcher = new QDBusPendingCallWatcher(reported(call), parent);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, std::move(handler),
                     Qt::DirectConnection);
}

template<typename Handler>
void watchOnce(const QDBusPendingCall &call, QObject *parent, Handler handler)
{
    watch(call, parent, [handler = std::move(handler)](QDBusPendingCallWatcher *watcher) {
        // What the handler calls may delete the manager, and with it the watcher.
        const QPointer<QDBusPendingCallWatcher> guard(watcher);
        handler(*watcher);
        if (guard)
            guard->deleteLater();
    });
}

} // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const Configuration &configuration)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    argument.beginMap(QVariant::String, qMetaTypeId<QDBusVariant>());
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        argument.beginMapEntry();
        argument << entry.key() << QDBusVariant(entry.value());
        argument.endMapEntry();
    }
    argument.endMap();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Configuration &configuration)
{
    argument.beginMap();
    while (!argument.atEnd()) {
        QString key;
        QVariant value;
        argument.beginMapEntry();
        argument >> key >> value;
        configuration.set(key, parseVariantData(value));
        argument.endMapEntry();
    }
    argument.endMap();
    return argument;
}

ConfigurationManagerPrivate::ConfigurationManagerPrivate(ConfigurationManager *manager)
    : QDBusAbstractInterface(serviceName, getDBusApplicationPath(), interfaceName,
                             QDBusConnection::systemBus(), nullptr),
      m_manager(manager)
{
    if (!isConfigurationRegistered) {
        qRegisterMetaType<Configuration>(
            "Tarnvel::Application::ManagedConfiguration::Configuration");
        qDBusRegisterMetaType<Configuration>();
        isConfigurationRegistered = true;
    }
    connection().connect(serviceName, getDBusApplicationPath(), QLatin1String(interfaceName),
                         QStringLiteral("ConfigurationChanged"), this,
                         SLOT(onConfigurationChanged()));
}

void ConfigurationManagerPrivate::getConfiguration(
    const std::function<void(const Configuration &, const Error &)> &callback)
{
    watchOnce(asyncCall(QStringLiteral("GetConfiguration")), this,
              [callback = callback](const QDBusPendingReply<Configuration> &reply) {
                  if (reply.isValid())
                      callback(reply.value(), Error(Error::NoError, QString()));
                  else
                      callback(Configuration(), errorFromDBus(reply.error()));
              });
}

void ConfigurationManagerPrivate::changeConfiguration(
    const Configuration &configuration, const std::function<void(const Error &)> &callback)
{
    watchOnce(asyncCall(QStringLiteral("ChangeConfiguration"), QVariant::fromValue(configuration)),
              this, [callback = callback](const QDBusPendingReply<> &reply) {
                  if (reply.isValid())
                      callback(Error(Error::NoError, QString()));
                  else
                      callback(errorFromDBus(reply.error()));
              });
}

void ConfigurationManagerPrivate::onConfigurationChanged()
{
    watch(asyncCall(QStringLiteral("GetConfiguration")), this,
          [this](QDBusPendingCallWatcher *watcher) {
              const QDBusPendingReply<Configuration> reply = *watcher;
              Q_EMIT m_manager->configurationChanged(reply.isValid() ? reply.value()
                                                                     : Configuration());
          });
}

ConfigurationManager *ConfigurationManager::instance()
{
    if (!theManager)
        theManager = new ConfigurationManager();
    return theManager;
}

ConfigurationManager::ConfigurationManager() : d(new ConfigurationManagerPrivate(this)) { }

ConfigurationManager::~ConfigurationManager() = default;

void ConfigurationManager::getConfiguration(
    const std::function<void(const Configuration &, const Error &)> &callback)
{
    d->getConfiguration(callback);
}

void ConfigurationManager::changeConfiguration(const Configuration &configuration,
                                               const std::function<void(const Error &)> &callback)
{
    d->changeConfiguration(configuration, callback);
}

} // namespace Tarnvel::Application::ManagedConfiguration
