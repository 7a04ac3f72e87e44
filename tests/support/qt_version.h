// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "qt_version_p.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Tarnvel::Testing {

using Application::ManagedConfiguration::QtType;

/*! \brief Whether the library is built for Qt 6. Where this is asked, docs/qt6.md has a row. */
constexpr bool onQt6 = QT_VERSION_MAJOR == 6;

/*! \brief The name of the type QList<QString>. */
inline const QString textListType = QLatin1String(onQt6 ? "QStringList" : "QList<QString>");

/*! \brief The name that warnings have for all types that are not built into Qt. */
inline QString sharedTypeName()
{
    // In Qt 5 it is that of the first type which the process has registered.
    return onQt6 ? QStringLiteral("QDBusMessage")
                 : QString::fromLatin1(QMetaType(QMetaType::User).name());
}

#if QT_VERSION_MAJOR == 5
/*! \brief The id of the type \a name. */
inline int typeOfName(const QByteArray &name)
{
    return QMetaType::type(name);
}

/*! \brief A null int. */
inline QVariant nullInt()
{
    return QVariant(QVariant::Int);
}
#else
inline int typeOfName(const QByteArray &name)
{
    return QMetaType::fromName(name).id();
}

inline QVariant nullInt()
{
    return QVariant(QMetaType(QMetaType::Int));
}
#endif

} // namespace Tarnvel::Testing
