// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "shared_configuration.h"

#include "script_values.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

#include <utility>

namespace Tarnvel::Qml {

SharedConfiguration &SharedConfiguration::instance()
{
    static auto *const instance = new SharedConfiguration();
    return *instance;
}

void SharedConfiguration::load()
{
    if (m_read == 0)
        reload();
}

void SharedConfiguration::reload()
{
    m_isLoading = true;
    read();
    Q_EMIT updated();
}

bool SharedConfiguration::isLoading() const
{
    return m_isLoading;
}

Error SharedConfiguration::error() const
{
    return m_error;
}

Configuration SharedConfiguration::configuration() const
{
    return m_configuration;
}

void SharedConfiguration::change(const QVariantMap &change, const Callback &callback)
{
    m_changes.enqueue({change, callback});
    if (m_hasConfiguration)
        sendNext();
    else if (!m_isLoading)
        reload();
}

void SharedConfiguration::read()
{
    m_isReading = true;
    m_mustReadAgain = false;
    const auto finish = [this, read = ++m_read](const Configuration &configuration,
                                                const Error &error) {
        if (read == m_read)
            apply(configuration, error);
    };
    const bool hasNames = !QCoreApplication::organizationName().isEmpty()
        && !QCoreApplication::applicationName().isEmpty();
    if (!m_manager && hasNames) {
        m_manager = ConfigurationManager::instance();
        connect(m_manager, &ConfigurationManager::configurationChanged, this,
                &SharedConfiguration::follow);
    }
    if (m_manager)
        return m_manager->getConfiguration(finish);
    const Error error(Error::Internal,
                      QStringLiteral("The organization name or the application name is missing"));
    QTimer::singleShot(0, this, [finish, error] { finish(Configuration(), error); });
}

void SharedConfiguration::apply(const Configuration &configuration, const Error &error)
{
    if (m_mustReadAgain)
        return read();
    m_isReading = false;
    m_isLoading = false;
    m_error = error;
    if (!error) {
        m_configuration = configuration;
        m_changed = configuration;
        m_hasConfiguration = true;
    }
    // Those that a handler requests wait for the next read.
    const QQueue<Change> failed = m_hasConfiguration ? QQueue<Change>()
                                                     : std::exchange(m_changes, {});
    Q_EMIT updated();
    for (const Change &change : failed)
        change.callback(error);
    if (m_hasConfiguration)
        sendNext();
}

void SharedConfiguration::follow(const Configuration &configuration)
{
    // An empty one may also mean that it could not be read.
    if (configuration.isEmpty() && !m_isReading)
        return read();
    m_mustReadAgain = configuration.isEmpty();
    if (m_mustReadAgain)
        return;
    ++m_read;
    apply(configuration, Error());
}

void SharedConfiguration::sendNext()
{
    if (m_isSending || m_changes.isEmpty())
        return;
    m_isSending = true;
    const Configuration sent = completed(m_changes.head().values, m_changed);
    m_manager->changeConfiguration(sent,
                                   [this, sent](const Error &error) { finishChange(sent, error); });
}

void SharedConfiguration::finishChange(const Configuration &sent, const Error &error)
{
    m_isSending = false;
    const Change change = m_changes.dequeue();
    // The next change may be sent before this one is announced.
    for (auto entry = change.values.begin(); !error && entry != change.values.end(); ++entry)
        m_changed.set(entry.key(), sent.get(entry.key()));
    sendNext();
    change.callback(error);
}

} // namespace Tarnvel::Qml
