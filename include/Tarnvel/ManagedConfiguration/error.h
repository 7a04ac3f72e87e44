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
 * \headerfile error.h <Tarnvel/ManagedConfiguration/Error>
 * \brief The Error class describes how a request ended, with a code and a message.
 *
 * The callback of each request of ConfigurationManager receives an Error. It converts to true if
 * the request failed:
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
 * Without a service or a bus, requests fail with Error::Internal. The class itself needs neither.
 * It is reentrant: different threads can use different objects.
 */
class TARNVEL_MANAGED_CONFIGURATION_EXPORT Error
{
public:
    /*!
     * \brief The reason for an error. The numeric values are fixed.
     *
     * The service chooses the code of a refusal. The library does not repeat failed requests. The
     * description of each code says who can fix it, and whether to retry.
     */
    enum Code : int {
        /*! The request succeeded. */
        NoError = 0,
        /*!
         * An internal error of the service, or an error without a code of its own: the bus or the
         * service is not available, the reply did not arrive in time or is not a configuration, or
         * the identity of the application does not result in a valid object path. The message says
         * which.
         *
         * The administrator can fix the bus and the service, the developer the identity. Retry when
         * the service is available again or less busy. Do not retry with an invalid identity, or
         * after the process has lost its connection to the bus: the application must be restarted.
         */
        Internal = 1,
        /*!
         * The configuration contains a key that the service does not have for this application.
         *
         * The developer can fix this by sending known keys only, or the administrator by adding the
         * key to the service. Until then, do not retry with the same configuration.
         */
        NotExistingKey = 2,
        /*!
         * A value has a different type from the one that the service has for its key.
         *
         * The developer can fix this by sending the type that is read. Do not retry.
         */
        InvalidType = 3,
        /*!
         * A value has the right type, but the service does not allow it.
         *
         * The user can fix this by choosing another value, or the administrator by allowing this
         * one. Retry with another value only.
         */
        InvalidValue = 4,
        /*!
         * The application may not change this setting: an administrator has locked it.
         *
         * Only the administrator can fix this. Until then, do not retry: show the setting as locked
         * instead.
         */
        Forbidden = 5,
        /*!
         * The application has no managed configuration that can be changed.
         *
         * The administrator can fix this by setting one up, or the developer, if it was set up for
         * other names than those of the application. Until then, do not retry.
         */
        NotConfigurable = 6,
        /*!
         * The service does not allow the user who runs the application.
         *
         * The administrator can fix this by allowing the user. Retry as another user only.
         */
        InvalidUserId = 7,
        /*!
         * A value has a type that the service cannot store.
         *
         * The developer can fix this by sending another type. Do not retry.
         */
        UnsupportedType = 8,
    };

    /*!
     * \brief Constructs an error with \a code and \a message, both unmodified.
     *
     * A default-constructed Error means success.
     */
    Error(Code code = NoError, const QString &message = QString());

    /*! \brief Returns true if there \e is an error, like isError(). */
    explicit operator bool() const;

    /*! \brief Returns true if code() is not NoError, whatever the message is. */
    bool isError() const;

    /*! \brief Returns the code passed to the constructor. */
    Code code() const;

    /*!
     * \brief Returns the message passed to the constructor, unmodified.
     *
     * The message of an error of the service or the bus is the text that the service or the bus
     * sent. It is intended for logs, not for users. It is null if the request succeeded.
     */
    QString message() const;

private:
    Code m_code;
    QString m_message;
};

/*!
 * \brief Converts the D-Bus \a error to an Error.
 *
 * The errors of the service have names that consist of "org.brenvik.ManagedConfiguration.Error."
 * and the enumerator of the code; they are converted to that code. A repeated prefix counts as one.
 * All other named errors, including the prefix with "NoError", are converted to Error::Internal.
 * The message is that of the D-Bus error. If \a error is not an error, or has no name, the result
 * means success and has a null message. This function never fails, logs nothing, and is
 * thread-safe.
 */
TARNVEL_MANAGED_CONFIGURATION_EXPORT Error errorFromDBus(const QDBusError &error);

} // namespace ManagedConfiguration
} // namespace Application
} // namespace Tarnvel
