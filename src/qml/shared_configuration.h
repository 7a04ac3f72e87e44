// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QObject>
#include <QtCore/QQueue>
#include <QtCore/QVariant>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <functional>

namespace Tarnvel::Qml {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::ConfigurationManager;
using Application::ManagedConfiguration::Error;

/*!
 * \brief The configuration of the process, for the elements of all engines.
 *
 * It is read once, and then follows the announcements.
 */
class SharedConfiguration : public QObject
{
    Q_OBJECT

public:
    using Callback = std::function<void(const Error &error)>;

    /*! \brief The only instance, which is never deleted. */
    static SharedConfiguration &instance();

    /*! \brief Reads the configuration if nobody has before. */
    void load();

    /*! \brief Reads the configuration again. */
    void reload();

    /*! \brief True while the first read, or one that an element asked for, is pending. */
    bool isLoading() const;

    /*! \brief How the last read ended. */
    Error error() const;

    /*! \brief The last configuration that was read; empty before. */
    Configuration configuration() const;

    /*!
     * \brief Requests \a change, whose maps are completed from what the service keeps.
     *
     * A change waits for the one before, whose result it must not undo, and for the first read. The
     * \a callback is called from the event loop.
     */
    void change(const QVariantMap &change, const Callback &callback);

Q_SIGNALS:
    /*! \brief Emitted when something has been read, could not be, or is read again. */
    void updated();

private:
    struct Change
    {
        QVariantMap values;
        Callback callback;
    };

    SharedConfiguration() = default;
    void read();
    void apply(const Configuration &configuration, const Error &error);
    void follow(const Configuration &configuration);
    void sendNext();
    void finishChange(const Configuration &sent, const Error &error);

    ConfigurationManager *m_manager = nullptr;
    Configuration m_configuration;
    // With the changes that were accepted, but perhaps not announced yet.
    Configuration m_changed;
    Error m_error;
    // The number of the last read; answers to others are out of date.
    int m_read = 0;
    bool m_isReading = false;
    // What is being read may be older than the last announcement.
    bool m_mustReadAgain = false;
    bool m_isLoading = false;
    bool m_hasConfiguration = false;
    bool m_isSending = false;
    QQueue<Change> m_changes;
};

} // namespace Tarnvel::Qml
