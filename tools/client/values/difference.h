// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVariant>

namespace Tarnvel::Client {

/*!
 * \brief Values of a configuration, by path.
 *
 * Nested configurations are expanded, except empty ones.
 */
using Leaves = QMap<QString, QVariant>;

/*! \brief The values in \a value, which is at \a path, or \a value itself. */
Leaves leavesOf(const QVariant &value, const QString &path = QString());

/*! \brief A value that was added, removed or changed. */
struct Difference
{
    QString path;
    /*! Invalid if the value was added. */
    QVariant before;
    /*! Invalid if the value was removed. */
    QVariant after;
};

/*! \brief What differs between \a before and \a after, in the order of the paths. */
QList<Difference> differencesBetween(const Leaves &before, const Leaves &after);

} // namespace Tarnvel::Client
