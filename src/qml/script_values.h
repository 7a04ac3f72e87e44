// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtQml/QJSEngine>
#include <QtQml/QJSValue>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/error.h>

namespace Tarnvel::Qml {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::Error;

/*! \brief The settings of an element: as an object for scripts, and as JSON by their paths. */
struct Values
{
    QJSValue object;
    QMap<QString, QString> settings;
};

/*!
 * \brief The values of \a configuration, and those of \a defaults that it does not have.
 *
 * Where \a defaults has an object, so has the result, and where it has another value, the result
 * has none. All objects are new and frozen. Undefined if \a defaults has more levels than a
 * configuration can have.
 */
Values mergedValues(QJSEngine &engine, const QJSValue &defaults,
                    const Configuration &configuration);

/*! \brief The paths of the settings that only one of the two has, or that differ, in order. */
QStringList differingPaths(const Values &before, const Values &now);

/*! \brief A \a value of a configuration for scripts; lists are arrays. */
QJSValue toScript(QJSEngine &engine, const QVariant &value);

/*! \brief True for an object that a literal makes: not an array, a date or an object of Qt. */
bool isPlainObject(const QJSValue &value);

/*!
 * \brief Converts \a object to values of a configuration, and its objects to maps.
 *
 * An empty array is a list of the type that \a values has at its path, otherwise of strings. The
 * error names the path of the first value that no configuration stores.
 */
Error readChange(const QJSValue &object, const QJSValue &values, QVariantMap *change);

/*! \brief The configuration that requests \a change where the service keeps \a kept. */
Configuration completed(const QVariantMap &change, const Configuration &kept);

} // namespace Tarnvel::Qml
