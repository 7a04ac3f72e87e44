// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "variant.h"

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tarnvel::Sandbox {

/*! \brief What the service keeps for one application. */
struct Application
{
    /*! Organization and application name, for people: "acme/viewer". */
    QString name;
    /*! The configuration, an a{sv}. */
    Variant configuration;
    /*! The settings that the application may not alter, such as "network/proxy". */
    QStringList locked;
};

/*! \brief All applications, under the object paths at which they are served. */
using World = QMap<QString, Application>;

/*! \brief The object path at which an application finds its configuration. */
QString applicationPath(const QString &organization, const QString &application);

/*!
 * \brief The keys in the path of a locked setting; empty if \a path names none.
 *
 * A path consists of keys with "/" between them. None of the keys is empty.
 */
QStringList lockedKeys(const QString &path);

/*!
 * \brief Sets \a world to the one that \a text, the content of \a fileName, describes.
 *
 * If it describes none, false; \a world is then unchanged, and \a mistake is one line that begins
 * with \a fileName and says where and why.
 */
bool parseWorld(const QString &fileName, const QByteArray &text, World *world, QString *mistake);

/*! \brief Does as parseWorld() with what is in the file now. */
bool readWorld(const QString &fileName, World *world, QString *mistake);

} // namespace Tarnvel::Sandbox
