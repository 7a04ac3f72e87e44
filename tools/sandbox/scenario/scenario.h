// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fault.h"
#include "setting.h"
#include "variant.h"

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <limits>
#include <memory>
#include <optional>

namespace Tarnvel::Sandbox {

/*! \brief The values that the application may give a setting. */
struct AllowedValues
{
    /*! The setting, such as "window/width"; of a list, each item. */
    QString path;
    /*! Integers, booleans or strings; empty if there is a range instead. */
    QVector<Variant> values;
    /*! The range of an integer. */
    qint32 minimum = std::numeric_limits<qint32>::min();
    qint32 maximum = std::numeric_limits<qint32>::max();
};

/*! \brief What the service keeps for one application. */
struct Application
{
    /*! Organization and application name, for people: "acme/viewer". */
    QString name;
    /*! The configuration, an a{sv}. */
    Variant configuration;
    /*! The settings that the application may not change, such as "network/proxy". */
    QStringList locked;
    /*! False if the service refuses every call of the application. */
    bool isConfigurable = true;
    /*! The users whose calls are served; those of all users if there is no list. */
    std::optional<QVector<quint32>> users;
    /*! What the application may set, in the order of the file; other settings may get any value. */
    QVector<AllowedValues> allowed;
    /*! The settings of the application, if the file names a schema; null if not. */
    std::shared_ptr<const Schema::Schema> schema;
    /*! What goes wrong, in the order of the file. */
    QVector<Fault> faults;
};

/*! \brief All applications, under the object paths at which they are served. */
using Scenario = QMap<QString, Application>;

} // namespace Tarnvel::Sandbox
