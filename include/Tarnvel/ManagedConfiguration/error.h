// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>

#include "global.h"

class QDBusError;

namespace Tarnvel {
namespace Application {
namespace ManagedConfiguration {

/*!
 * \brief The outcome of a request: a code and a message.
 *
 * Every request of ConfigurationManager ends by handing one of these to its callback. An Error is
 * true when something went wrong, so that a failure is what a caller tests for:
 *
 * \code
 * #include <Tarnvel/ManagedConfiguration/Error>
 * #include <QDebug>
 *
 * void report(const Tarnvel::Application::ManagedConfiguration::Error &error)
 * {
 *     if (error)
 *         qWarning() << "The change was refused:" << error.code() << error.message();
 * }
 * \endcode
 *
 * Without a service, or without a bus, requests end in Error::Internal. An Error is itself a plain
 * value and needs neither. Distinct objects may be used in different threads.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT Error
{
public:
    /*!
     * \brief What went wrong. The numbers are fixed.
     *
     * The service decides which code a refusal bears. The library never tries again by itself; each
     * code says who can mend its cause, and whether trying again helps.
     */
    enum Code : int {
        /*! Success: there is no error, and nothing to mend. */
        NoError = 0,
        /*!
         * The service failed inside, or anything failed that has no code of its own: the bus or
         * the service is absent, the answer did not come in time or was no configuration, the
         * application's identity makes no valid object path. The message tells which.
         *
         * Whoever runs the system mends the bus and the service, the developer the identity.
         * Trying again helps once the service is back or has less to do. It never does with such
         * an identity, nor in a process whose bus has died: the application has to be restarted.
         */
        Internal = 1,
        /*!
         * The configuration names a key that the service does not know for this application.
         *
         * The developer mends it, by sending known keys alone; or the administrator, if the service
         * should know the key. Trying again with the same configuration does not help before.
         */
        NotExistingKey = 2,
        /*!
         * A value is of another type than the service keeps under its key.
         *
         * The developer mends it, by sending the type that is read. Trying again does not help.
         */
        InvalidType = 3,
        /*!
         * A value is of the right type, but the service does not admit it.
         *
         * The user mends it by choosing another value, or the administrator by admitting this one.
         * Trying again helps with another value only.
         */
        InvalidValue = 4,
        /*!
         * The application may not change this setting: an administrator has locked it.
         *
         * Only the administrator mends it. Trying again does not help before: show the setting as
         * locked instead.
         */
        Forbidden = 5,
        /*!
         * The application has no managed configuration that it could change.
         *
         * The administrator mends it by setting one up, or the developer if the names that the
         * application gives itself are not those for which it was set up. Trying again does not
         * help before.
         */
        NotConfigurable = 6,
        /*!
         * The user on whose behalf the application runs is not admitted.
         *
         * The administrator mends it by admitting the user. Trying again helps as another user
         * only.
         */
        InvalidUserId = 7,
        /*!
         * A value is of a type that the service cannot keep at all.
         *
         * The developer mends it, by sending another type. Trying again does not help.
         */
        UnsupportedType = 8,
    };

    /*!
     * \brief Makes an error of \a code and \a message, both kept as they are.
     *
     * A default-constructed Error means success.
     */
    Error(Code code = NoError, const QString &message = QString());

    /*! \brief True when there \e is an error; the same as isError(). */
    explicit operator bool() const;

    /*! \brief True when code() is not NoError. The message plays no part. */
    bool isError() const;

    /*! \brief The code given at construction. */
    Code code() const;

    /*!
     * \brief The message given at construction, never composed from the code or decorated.
     *
     * In an error of the service or the bus it is that side's own text, meant for a log rather
     * than for a user. It is null when the request succeeded.
     */
    QString message() const;

private:
    Code m_code;
    QString m_message;
};

/*!
 * \brief The Error that stands for a D-Bus \a error.
 *
 * The service's own errors, named "org.brenvik.ManagedConfiguration.Error." and the code's
 * enumerator, become that code; every other named error becomes Error::Internal. The message is
 * the D-Bus error's own. An \a error that is none, or has no name, gives a success with a null
 * message. Never fails, logs nothing, and may be called from any thread.
 */
TARNVEL_MANAGED_CONFIGURATION_EXPORT Error errorFromDBus(const QDBusError &error);

} // namespace ManagedConfiguration
} // namespace Application
} // namespace Tarnvel
