// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "json_document.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QString>

#include <limits>
#include <vector>

namespace Tarnvel::Schema {

/*! \brief The types of settings. */
enum class Type {
    Integer,
    Boolean,
    String,
    List,
    Object,
};

/*! \brief The values that a schema allows for an integer, a boolean, a string, or an item. */
struct Scalar
{
    /*! Neither List nor Object. */
    Type type = Type::String;
    /*! The only allowed values, in the order of the schema; all if empty. */
    std::vector<Tools::JsonValue> values;
    /*! The range of an integer. */
    qint32 minimum = std::numeric_limits<qint32>::min();
    qint32 maximum = std::numeric_limits<qint32>::max();
    /*! The length of a string, in Unicode code points. */
    qint32 minimumLength = 0;
    qint32 maximumLength = std::numeric_limits<qint32>::max();
    /*! What must match somewhere in a string; none if empty. */
    QRegularExpression pattern;
};

/*! \brief A setting, or an object that contains settings. */
struct Setting
{
    /*! Empty for the object that contains all settings. */
    QString key;
    /*! Keys with "/" between them: "network/proxy". */
    QString path;
    /*! Where the key is in the schema. */
    int offset = 0;
    Type type = Type::Object;
    QString title;
    QString description;
    /*! What to do instead, for a deprecated setting. */
    QString deprecated;
    /*! True if the application must be restarted to apply a new value. */
    bool needsRestart = false;
    /*! The name in generated code, if the key cannot be it. */
    QString name;
    /*! The names in generated code for the values of a string, if they cannot be made from these.
     */
    std::vector<QString> valueNames;
    /*! The values; of a list, those of the items. */
    Scalar scalar;
    /*! The number of items of a list. */
    qint32 minimumItems = 0;
    qint32 maximumItems = std::numeric_limits<qint32>::max();
    /*! The value if there is no valid one; the type's own zero if the schema has none. */
    Tools::JsonValue defaultValue;
    std::vector<Tools::JsonValue> examples;
    /*! The settings in an object, in the order of the schema. */
    std::vector<Setting> members;

    /*! \brief The member with this \a key of an object, or null. */
    const Setting *member(const QString &key) const;
};

/*! \brief The settings of an application. */
struct Schema
{
    QString organization;
    QString application;
    /*! An object, with the title and the description of the schema. */
    Setting root;
};

/*! \brief The D-Bus type of the values of \a setting: "ai". */
QByteArray dbusType(const Setting &setting);

/*! \brief True if strings must match a pattern. */
bool hasPattern(const Scalar &scalar);

/*! \brief \a value as JSON on one line. */
QString toJson(const Tools::JsonValue &value);

/*!
 * \brief \a object as the JSON of a file, with the members of objects on lines of their own.
 *
 * What could end a line, or change the order of the text around it, is escaped.
 */
QByteArray toJsonFile(const Tools::JsonValue &object);

} // namespace Tarnvel::Schema
