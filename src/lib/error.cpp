// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <Tarnvel/ManagedConfiguration/error.h>

#include <QtCore/QMap>
#include <QtDBus/QDBusError>

namespace Tarnvel::Application::ManagedConfiguration {

Error::Error(Code code, const QString &message) : m_code(code), m_message(message) { }

Error::operator bool() const
{
    return isError();
}

bool Error::isError() const
{
    return m_code != NoError;
}

Error::Code Error::code() const
{
    return m_code;
}

QString Error::message() const
{
    return m_message;
}

Error errorFromDBus(const QDBusError &error)
{
    static const QMap<QString, Error::Code> codes {
        {QStringLiteral("Internal"), Error::Internal},
        {QStringLiteral("NotExistingKey"), Error::NotExistingKey},
        {QStringLiteral("InvalidType"), Error::InvalidType},
        {QStringLiteral("InvalidValue"), Error::InvalidValue},
        {QStringLiteral("Forbidden"), Error::Forbidden},
        {QStringLiteral("NotConfigurable"), Error::NotConfigurable},
        {QStringLiteral("InvalidUserId"), Error::InvalidUserId},
        {QStringLiteral("UnsupportedType"), Error::UnsupportedType},
    };

    if (!error.isValid() || error.name().isEmpty())
        return Error(Error::NoError, QString());

    const QLatin1String prefix("org.brenvik.ManagedConfiguration.Error.");
    if (!error.name().startsWith(prefix))
        return Error(Error::Internal, error.message());

    // Removes every occurrence: a service that wraps one of its errors in another repeats the
    // prefix.
    QString suffix = error.name();
    suffix.remove(prefix);
    return Error(codes.value(suffix, Error::Internal), error.message());
}

} // namespace Tarnvel::Application::ManagedConfiguration
