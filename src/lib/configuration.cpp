// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_p.h"

#include <QtCore/QDebug>
#include <QtCore/QStringList>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

#include <algorithm>
#include <array>
#include <utility>

namespace Tarnvel::Application::ManagedConfiguration {

namespace {

template<typename List, typename Type>
bool contains(const List &list, Type type)
{
    return std::find(list.begin(), list.end(), type) != list.end();
}

bool isSupportedListType(const QVariant &value)
{
    static const std::array<int, 3> listTypes {
        qMetaTypeId<QList<int>>(), qMetaTypeId<QList<bool>>(), qMetaTypeId<QList<QString>>()};

    return value.userType() == QMetaType::QStringList || contains(listTypes, value.userType());
}

bool isConfiguration(const QVariant &value)
{
    return value.userType() == qMetaTypeId<Configuration>();
}

template<typename T>
QVariant itemAt(const QVariant &list, int index)
{
    const auto &items = *static_cast<const QList<T> *>(list.constData());
    return index >= 0 && index < items.size() ? QVariant(items.at(index)) : QVariant();
}

// Reads one item in place: QVariantList would convert all other items too.
QVariant itemAt(const QVariant &list, int index)
{
    if (list.userType() == qMetaTypeId<QList<int>>())
        return itemAt<int>(list, index);
    if (list.userType() == qMetaTypeId<QList<bool>>())
        return itemAt<bool>(list, index);
    return itemAt<QString>(list, index);
}

// The configuration in the value, without copying it.
const Configuration *configurationIn(const QVariant &value)
{
    return isConfiguration(value) ? static_cast<const Configuration *>(value.constData()) : nullptr;
}

// The steps return a pointer to their value, or null after a warning. A value is stored in its
// configuration; an item of a list is copied into the parameter item.

const QVariant *stepToItem(const QVariant &current, int index, const QString &xpath, QVariant &item)
{
    if (!isSupportedListType(current)) {
        qWarning().nospace() << "Error when getting a value from configuration by the " << xpath
                             << " xpath. The current value to be processed does not support an "
                                "access by index (index="
                             << index << ")";
        return nullptr;
    }
    item = itemAt(current, index);
    if (!item.isValid()) {
        qWarning() << "Error when getting a value from configuration by the" << xpath
                   << "xpath. The current sequence to be processed does not contain enough items "
                      "to access item at index"
                   << index;
        return nullptr;
    }
    return &item;
}

const QVariant *stepToValue(const Configuration *configuration, const QString &key,
                            const QString &xpath)
{
    if (!configuration) {
        qWarning().nospace() << "Error when getting a value from configuration by the " << xpath
                             << " xpath. The current value to be processed does not support an "
                                "access by key (key="
                             << key << ")";
        return nullptr;
    }
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(*configuration);
    const auto entry = entries.constFind(key);
    if (entry == entries.constEnd()) {
        qWarning() << "Error when getting a value from configuration by the" << xpath
                   << "xpath. The current value to be processed does not contain the" << key
                   << "key";
        return nullptr;
    }
    return &*entry;
}

const QVariant *step(const Configuration *configuration, const QVariant &current,
                     const XpathAccess &access, const QString &xpath, QVariant &item)
{
    switch (access.type()) {
    case XpathAccess::Index:
        return stepToItem(current, access.toIndex(), xpath, item);
    case XpathAccess::Key:
        return stepToValue(configuration, access.toKey(), xpath);
    }
    Q_UNREACHABLE();
}

} // namespace

ConfigurationPrivate::ConfigurationPrivate(QMap<QString, QVariant> map) : m_entries(std::move(map))
{
}

ConfigurationPrivate::ConfigurationPrivate(const ConfigurationPrivate &other) = default;

bool ConfigurationPrivate::containsKey(const QString &key) const
{
    return m_entries.contains(key);
}

bool ConfigurationPrivate::isEmpty() const
{
    return m_entries.isEmpty();
}

QVariant ConfigurationPrivate::get(const QString &key) const
{
    return m_entries.value(key);
}

bool ConfigurationPrivate::set(const QString &key, const QVariant &value)
{
    static constexpr std::array<int, 3> scalarTypes {QMetaType::Int, QMetaType::Bool,
                                                     QMetaType::QString};

    if (!contains(scalarTypes, value.userType()) && !isSupportedListType(value)
        && !isConfiguration(value))
        return false;
    // Received entries are usually sorted by key; with this hint they need no search.
    m_entries.insert(m_entries.cend(), key, value);
    return true;
}

QMap<QString, QVariant> ConfigurationPrivate::data(const Configuration &configuration)
{
    Q_ASSERT_X(configuration.d, "Configuration", "the configuration has been moved from");
    return configuration.d->m_entries;
}

Configuration::Configuration() : d(new ConfigurationPrivate({})) { }

Configuration::Configuration(ConfigurationPrivate *data) : d(data) { }

Configuration::Configuration(const Configuration &other)
    : d(new ConfigurationPrivate(ConfigurationPrivate::data(other)))
{
}

Configuration::Configuration(Configuration &&other) noexcept
{
    d.swap(other.d);
}

Configuration &Configuration::operator=(const Configuration &other)
{
    if (this != &other)
        d.reset(new ConfigurationPrivate(ConfigurationPrivate::data(other)));
    return *this;
}

Configuration &Configuration::operator=(Configuration &&other) noexcept
{
    d.swap(other.d);
    return *this;
}

Configuration::~Configuration() = default;

bool Configuration::containsKey(const QString &key) const
{
    return d->containsKey(key);
}

bool Configuration::isEmpty() const
{
    return d->isEmpty();
}

QVariant Configuration::get(const QString &key) const
{
    return d->get(key);
}

bool Configuration::set(const QString &key, const QVariant &value)
{
    return d->set(key, value);
}

QVariant Configuration::getByXpath(const QString &xpath) const
{
    const Xpath path(xpath);
    if (!path.isValid()) {
        qWarning().nospace() << "Attempt to use a non-valid xpath to get a value from the "
                                "configuration (xpath="
                             << path.toString() << ")";
        return {};
    }

    QVariant item;
    const QVariant *current = &item;
    const Configuration *configuration = this;
    for (const XpathAccess &access : path.accesses()) {
        current = step(configuration, *current, access, path.toString(), item);
        if (!current)
            return {};
        configuration = configurationIn(*current);
    }
    return *current;
}

Configuration Configuration::fromVariant(const QVariant &variant)
{
    return variant.value<Configuration>();
}

bool Configuration::operator==(const Configuration &other) const
{
    return ConfigurationPrivate::data(*this) == ConfigurationPrivate::data(other);
}

} // namespace Tarnvel::Application::ManagedConfiguration
