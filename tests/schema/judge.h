// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <Tarnvel/ManagedConfiguration/Configuration>

#include <cstdio>

using Tarnvel::Application::ManagedConfiguration::Configuration;

template<typename T>
QVariant listFromJson(const QJsonArray &array)
{
    QList<T> list;
    for (const QJsonValue item : array)
        list.append(item.toVariant().value<T>());
    return QVariant::fromValue(list);
}

inline Configuration configurationFromJson(const QJsonObject &object);

// As the library reads it from the bus, where an empty list of the sandbox is one of strings.
inline QVariant valueFromJson(const QJsonValue &value)
{
    if (value.isObject())
        return QVariant::fromValue(configurationFromJson(value.toObject()));
    const QJsonArray array = value.toArray();
    if (value.isDouble())
        return value.toInt();
    if (!value.isArray())
        return value.toVariant();
    if (array.isEmpty() || array.first().isString())
        return value.toVariant().toStringList();
    return array.first().isBool() ? listFromJson<bool>(array) : listFromJson<int>(array);
}

inline Configuration configurationFromJson(const QJsonObject &object)
{
    Configuration configuration;
    for (auto entry = object.begin(); entry != object.end(); ++entry)
        configuration.set(entry.key(), valueFromJson(entry.value()));
    return configuration;
}

// Prints whether all settings in the file can be used.
template<typename Settings>
void judge(int schema, int configuration, const char *fileName)
{
    QFile file(QString::fromLatin1(fileName));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: cannot be read", fileName);
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    const Settings settings(configurationFromJson(object));
    std::printf("%d %d %d\n", schema, configuration, settings.problems().isEmpty() ? 1 : 0);
}
