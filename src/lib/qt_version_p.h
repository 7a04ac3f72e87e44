// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtCore/QVariant>

// What differs between Qt 5 and Qt 6.

namespace Tarnvel::Application::ManagedConfiguration {

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
/*! \brief What the functions of Qt take for a type; made of its id. */
using QtType = int;

/*! \brief The name of the type of \a value. All types that are not built into Qt share one. */
inline const char *typeName(const QVariant &value)
{
    return QVariant::typeToName(value.type());
}

/*! \brief The decimal number \a text, which may have a sign, and white space around it. */
inline int toInt(const QString &text, bool *isNumber)
{
    return text.toInt(isNumber, 10);
}
#else
using QtType = QMetaType;

inline const char *typeName(const QVariant &value)
{
    // Qt 6 has no shared name. In Qt 5 it is this one, unless the application registers a type
    // before it connects to the bus.
    return value.typeId() < QMetaType::User ? value.typeName() : "QDBusMessage";
}

inline int toInt(const QString &text, bool *isNumber)
{
    // Qt 6 itself takes no white space and no minus sign beyond ASCII, and ends the number at a
    // NUL.
    QString number = text.trimmed();
    number.replace(QChar(0x2212), QLatin1Char('-')).replace(QChar(0), QLatin1Char('x'));
    return number.toInt(isNumber, 10);
}
#endif

} // namespace Tarnvel::Application::ManagedConfiguration
