// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_manager_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>
#include <QtCore/QPointer>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtDBus/QDBusVariant>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include "bus_limits.h"
#include "configuration_p.h"
#include "qt_version_p.h"

#include <algorithm>
#include <utility>

namespace Tarnvel::Application::ManagedConfiguration {

namespace {

constexpr char serviceName[] = "org.brenvik.ManagedConfiguration";
constexpr char interfaceName[] = "org.brenvik.ManagedConfiguration.Application1";

ConfigurationManager *theManager = nullptr;
bool isConfigurationRegistered = false;

QString getDBusApplicationPath()
{
    const QString organization = QCoreApplication::organizationName();
    const QString application = QCoreApplication::applicationName();
    if (organization.isEmpty() || application.isEmpty())
        qWarning() << "Organization name and application name must be set to work with managed "
                      "configuration";

    // One arg() after the other: the service computes the path in the same way, and both must agree
    // even if a name contains a placeholder.
    QString path = QStringLiteral("/%1.%2").arg(organization);
    path = path.arg(application);
    return path.replace(QLatin1Char('.'), QLatin1String("_2e"));
}

template<typename T>
void appendElement(QList<T> &list, const QVariant &element)
{
    if (element.canConvert<T>())
        list.append(element.value<T>());
    else
        qWarning() << "Array element has unexpected type: " << typeName(element);
}

// Appends each element as it is read: a QVariantList in between would allocate memory for each.
template<typename T>
QVariant toTypedList(const QVariant &first, const QDBusArgument &argument)
{
    QList<T> list;
    appendElement(list, first);
    while (!argument.atEnd())
        appendElement(list, argument.asVariant());
    return QVariant::fromValue(list);
}

QVariant parseElements(const QDBusArgument &argument)
{
    if (argument.atEnd())
        return QVariantList();

    // The type of the first element decides. If it is unsupported, the others are not read: there
    // may be millions.
    const QVariant first = argument.asVariant();
    switch (first.userType()) {
    case QMetaType::Int:
        return toTypedList<int>(first, argument);
    case QMetaType::QString:
        return toTypedList<QString>(first, argument);
    case QMetaType::Bool:
        return toTypedList<bool>(first, argument);
    default:
        qWarning() << "Unsupported type for arrays: " << typeName(first);
        return {};
    }
}

QVariant parseArray(const QDBusArgument &argument)
{
    argument.beginArray();
    const QVariant list = parseElements(argument);
    argument.endArray();
    return list;
}

QVariant parseVariantData(QVariant value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>())
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

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
// Qt D-Bus does not support QList<QString>; sending one terminates the process.
QDBusVariant sendable(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QList<QString>>())
        return QDBusVariant(QStringList(value.value<QList<QString>>()));
    return QDBusVariant(value);
}
#else
QDBusVariant sendable(const QVariant &value)
{
    return QDBusVariant(value);
}
#endif

// A bus disconnects a sender of more nested containers. The deepest level uses up the last one, so
// its values must not be containers.
constexpr int deepestLevel = DBus::portableContainerDepth / DBus::containersPerLevel;

bool isContainer(const QVariant &value)
{
    const char *const signature = QDBusMetaType::typeToSignature(QtType(value.userType()));
    return !signature || qstrlen(signature) != 1 || *signature == 'v';
}

bool isTooDeep(const Configuration &configuration, int level = 1)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    return std::any_of(entries.begin(), entries.end(), [level](const QVariant &value) {
        if (level == deepestLevel)
            return isContainer(value);
        return value.userType() == qMetaTypeId<Configuration>()
            && isTooDeep(value.value<Configuration>(), level + 1);
    });
}

QDBusError tooDeepError()
{
    return {
        QDBusError::LimitsExceeded,
        QStringLiteral("The configuration is nested too deep to be sent: D-Bus carries %1 levels")
            .arg(deepestLevel)};
}

// Without a connection to the bus, Qt D-Bus returns a failed call whose watcher never emits
// finished(). The watcher of a call created from the same error does, from the event loop.
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
        // The handler may delete the manager, and with it the watcher.
        const QPointer<QDBusPendingCallWatcher> guard(watcher);
        handler(*watcher);
        if (guard)
            guard->deleteLater();
    });
}

Configuration configurationOrEmpty(const QDBusPendingReply<Configuration> &reply)
{
    return reply.isValid() ? reply.value() : Configuration();
}

// libdbus stops reading from the bus while 63 MiB of received messages are in use, and a watcher
// keeps its reply in use.
void dropReply(QDBusPendingCallWatcher *watcher)
{
    static_cast<QDBusPendingCall &>(*watcher) = QDBusPendingCall::fromCompletedCall(QDBusMessage());
}

QDBusConnection systemBus()
{
    // Statics are destroyed in reverse order. So Qt 6 must create its registry of types before Qt
    // D-Bus creates its thread, which otherwise uses the registry too late, and warns.
    qRegisterMetaType<QDBusMessage>();
    return QDBusConnection::systemBus();
}

// Returns a null string if Qt D-Bus cannot read keys of this type as strings.
QString keyText(const QVariant &key)
{
    if (key.userType() == QMetaType::QString)
        return key.toString();
    if (key.userType() == qMetaTypeId<QDBusObjectPath>())
        return key.value<QDBusObjectPath>().path();
    if (key.userType() == qMetaTypeId<QDBusSignature>())
        return key.value<QDBusSignature>().signature();
    return {};
}

// Qt D-Bus does not check that the data has the type it is asked to read, and may read past the
// end. All entries of a dictionary have the same types, so it is enough to check the first.
void readEntries(const QDBusArgument &argument, Configuration &configuration)
{
    argument.beginMapEntry();
    QString key = keyText(argument.asVariant());
    if (key.isNull() || argument.currentType() != QDBusArgument::VariantType) {
        argument.endMapEntry();
        return;
    }

    QDBusVariant value;
    for (;;) {
        argument >> value;
        configuration.set(key, parseVariantData(value.variant()));
        argument.endMapEntry();
        if (argument.atEnd())
            return;
        argument.beginMapEntry();
        argument >> key;
    }
}

} // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const Configuration &configuration)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    argument.beginMap(QMetaType::QString, qMetaTypeId<QDBusVariant>());
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        argument.beginMapEntry();
        argument << entry.key() << sendable(entry.value());
        argument.endMapEntry();
    }
    argument.endMap();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Configuration &configuration)
{
    argument.beginMap();
    if (!argument.atEnd())
        readEntries(argument, configuration);
    argument.endMap();
    return argument;
}

ConfigurationManagerPrivate::ConfigurationManagerPrivate(ConfigurationManager *manager)
    : QDBusAbstractInterface(QLatin1String(serviceName), getDBusApplicationPath(), interfaceName,
                             systemBus(), nullptr),
      m_manager(manager)
{
    if (!isConfigurationRegistered) {
        qDBusRegisterMetaType<Configuration>();
        isConfigurationRegistered = true;
    }
    connection().connect(QLatin1String(serviceName), getDBusApplicationPath(),
                         QLatin1String(interfaceName), QStringLiteral("ConfigurationChanged"), this,
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
    const QDBusPendingCall call = isTooDeep(configuration)
        ? QDBusPendingCall::fromError(tooDeepError())
        : asyncCall(QStringLiteral("ChangeConfiguration"), QVariant::fromValue(configuration));
    watchOnce(call, this, [callback = callback](const QDBusPendingReply<> &reply) {
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
              const Configuration configuration = configurationOrEmpty(*watcher);
              dropReply(watcher);
              Q_EMIT m_manager->configurationChanged(configuration);
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
