// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "script_values.h"

#include "configuration_p.h"

#include <QtQml/QJSValueIterator>

namespace Tarnvel::Qml {

namespace {

using Application::ManagedConfiguration::ConfigurationPrivate;

// As many as a configuration can have. An object that contains itself has more.
constexpr int maximumLevels = 21;

bool isConfiguration(const QVariant &value)
{
    return value.userType() == qMetaTypeId<Configuration>();
}

// Also true for a list that is a property of another object, which is no array.
bool isList(const QJSValue &value)
{
    return value.isObject() && value.property(QStringLiteral("length")).isNumber()
        && value.property(QStringLiteral("push")).isCallable();
}

quint32 sizeOf(const QJSValue &list)
{
    return list.property(QStringLiteral("length")).toUInt();
}

/*! \brief Merges a configuration into defaults, and notes what it makes. */
class Merge
{
public:
    explicit Merge(QJSEngine &engine)
        : m_engine(engine),
          m_freeze(function(engine, "Object", "freeze")),
          m_stringify(function(engine, "JSON", "stringify"))
    {
    }

    QJSValue object(const QJSValue &defaults, const Configuration &configuration,
                    const QString &parentPath = {}, int level = 1)
    {
        QJSValue object = m_engine.newObject();
        // Meanwhile "__proto__" is a key like any other.
        const QJSValue prototype = object.prototype();
        object.setPrototype(QJSValue(QJSValue::NullValue));
        QVariantMap kept = ConfigurationPrivate::data(configuration);
        QJSValueIterator member(defaults);
        while (!m_isTooDeep && member.next()) {
            const QString name = member.name();
            object.setProperty(name,
                               merged(member.value(), kept.take(name), parentPath + name, level));
        }
        for (auto entry = kept.constBegin(); entry != kept.constEnd(); ++entry) {
            const QJSValue none = isConfiguration(*entry) ? m_engine.newObject() : QJSValue();
            object.setProperty(entry.key(), merged(none, *entry, parentPath + entry.key(), level));
        }
        object.setPrototype(prototype);
        return m_freeze.call({object});
    }

    bool isTooDeep() const
    {
        return m_isTooDeep;
    }

    const QMap<QString, QString> &settings() const
    {
        return m_settings;
    }

private:
    static QJSValue function(const QJSEngine &engine, const char *object, const char *name)
    {
        return engine.globalObject().property(QLatin1String(object)).property(QLatin1String(name));
    }

    QJSValue merged(const QJSValue &defaultValue, const QVariant &value, const QString &path,
                    int level)
    {
        if (isPlainObject(defaultValue)) {
            m_isTooDeep = m_isTooDeep || level == maximumLevels;
            if (m_isTooDeep)
                return {};
            return object(defaultValue, Configuration::fromVariant(value), path + QLatin1Char('/'),
                          level + 1);
        }
        const bool isKept = value.isValid() && !isConfiguration(value);
        const QJSValue setting = isKept ? toScript(m_engine, value) : copy(defaultValue);
        m_settings.insert(path, m_stringify.call({setting}).toString());
        return setting;
    }

    // A script can modify an array, but not those in the defaults.
    QJSValue copy(const QJSValue &value)
    {
        if (!isList(value))
            return value;
        const quint32 size = sizeOf(value);
        QJSValue array = m_engine.newArray(size);
        for (quint32 index = 0; index < size; ++index)
            array.setProperty(index, value.property(index));
        return array;
    }

    QJSEngine &m_engine;
    QJSValue m_freeze;
    QJSValue m_stringify;
    QMap<QString, QString> m_settings;
    bool m_isTooDeep = false;
};

// D-Bus carries no others.
bool isText(const QString &text)
{
    return text.isValidUtf16() && !text.contains(QChar(QChar::Null));
}

// Invalid for what is no item of a list.
QVariant toItem(const QJSValue &value)
{
    if (value.isBool())
        return value.toBool();
    if (value.isString())
        return isText(value.toString()) ? QVariant(value.toString()) : QVariant();
    // Without a fraction and within the limits.
    if (value.isNumber() && value.toInt() == value.toNumber())
        return value.toInt();
    return {};
}

template<typename T>
QVariant toListOf(const QJSValue &list)
{
    QList<T> items;
    const quint32 size = sizeOf(list);
    for (quint32 index = 0; index < size; ++index) {
        const QVariant item = toItem(list.property(index));
        if (item.userType() != qMetaTypeId<T>())
            return {};
        items.append(item.value<T>());
    }
    return QVariant::fromValue(items);
}

// Invalid for a value that no configuration stores. Qt 6.4 crashes when it converts some itself.
QVariant toValue(const QJSValue &value, const QJSValue &present)
{
    if (!isList(value))
        return toItem(value);
    switch (toItem(sizeOf(value) == 0 ? present.property(0) : value.property(0)).userType()) {
    case QMetaType::Int:
        return toListOf<int>(value);
    case QMetaType::Bool:
        return toListOf<bool>(value);
    default:
        return toListOf<QString>(value);
    }
}

Error notStored(const QString &path)
{
    const auto reason = QStringLiteral("\"%1\" is neither valid text, a boolean, a 32-bit integer, "
                                       "a list of one of these, nor an object of these");
    return Error(Error::InvalidType, reason.arg(path));
}

Error readMembers(const QJSValue &object, const QJSValue &values, const QString &parentPath,
                  int level, QVariantMap *change)
{
    QJSValueIterator member(object);
    while (member.next()) {
        const QString path = parentPath + member.name();
        const QJSValue present = values.property(member.name());
        QVariant value;
        if (!isPlainObject(member.value())) {
            value = toValue(member.value(), present);
        } else if (level < maximumLevels) {
            QVariantMap nested;
            const Error error = readMembers(member.value(), present, path + QLatin1Char('/'),
                                            level + 1, &nested);
            if (error)
                return error;
            value = nested;
        }
        if (!value.isValid() || !isText(member.name()))
            return notStored(path);
        change->insert(member.name(), value);
    }
    return Error();
}

Configuration withChange(Configuration configuration, const QVariantMap &change)
{
    for (auto entry = change.begin(); entry != change.end(); ++entry) {
        QVariant value = entry.value();
        if (value.userType() == QMetaType::QVariantMap) {
            const Configuration nested = Configuration::fromVariant(configuration.get(entry.key()));
            value = QVariant::fromValue(withChange(nested, value.toMap()));
        }
        configuration.set(entry.key(), value);
    }
    return configuration;
}

} // namespace

Values mergedValues(QJSEngine &engine, const QJSValue &defaults, const Configuration &configuration)
{
    Merge merge(engine);
    const QJSValue object = merge.object(defaults, configuration);
    return merge.isTooDeep() ? Values() : Values {object, merge.settings()};
}

QStringList differingPaths(const Values &before, const Values &now)
{
    QMap<QString, QString> all = before.settings;
    for (auto setting = now.settings.begin(); setting != now.settings.end(); ++setting)
        all.insert(setting.key(), setting.value());
    QStringList paths;
    for (auto setting = all.constBegin(); setting != all.constEnd(); ++setting) {
        if (before.settings.value(setting.key()) != now.settings.value(setting.key()))
            paths.append(setting.key());
    }
    return paths;
}

QJSValue toScript(QJSEngine &engine, const QVariant &value)
{
    // Qt 6 converts a string to a list, too.
    if (value.userType() == QMetaType::QString || !value.canConvert<QVariantList>())
        return engine.toScriptValue(value);
    // Qt itself makes objects that are no arrays of most lists.
    const auto items = value.value<QVariantList>();
    QJSValue array = engine.newArray(static_cast<uint>(items.size()));
    for (int index = 0; index < items.size(); ++index)
        array.setProperty(static_cast<quint32>(index), engine.toScriptValue(items.at(index)));
    return array;
}

bool isPlainObject(const QJSValue &value)
{
    const QJSValue prototype = value.prototype();
    return value.isObject() && !value.isQObject()
        && (prototype.isNull() || prototype.prototype().isNull());
}

Error readChange(const QJSValue &object, const QJSValue &values, QVariantMap *change)
{
    if (!isPlainObject(object))
        return Error(Error::InvalidType, QStringLiteral("a change must be an object"));
    return readMembers(object, values, {}, 1, change);
}

Configuration completed(const QVariantMap &change, const Configuration &kept)
{
    Configuration sent;
    for (auto entry = change.begin(); entry != change.end(); ++entry)
        sent.set(entry.key(), kept.get(entry.key()));
    return withChange(sent, change);
}

} // namespace Tarnvel::Qml
