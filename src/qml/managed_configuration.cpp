// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "managed_configuration.h"

#include "shared_configuration.h"

#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtQml/QQmlEngine>
#include <QtQml/QQmlInfo>
#include <Tarnvel/ManagedConfiguration/xpath.h>

namespace Tarnvel::Qml {

using namespace Application::ManagedConfiguration;

namespace {

// By their codes.
constexpr const char *errorNames[] = {
    "NoError",   "Internal",        "NotExistingKey", "InvalidType",     "InvalidValue",
    "Forbidden", "NotConfigurable", "InvalidUserId",  "UnsupportedType",
};

QVariantMap describe(const Error &error)
{
    return {{QStringLiteral("code"), static_cast<int>(error.code())},
            {QStringLiteral("name"), QLatin1String(errorNames[error.code()])},
            {QStringLiteral("message"), error.message()}};
}

} // namespace

ManagedConfiguration::ManagedConfiguration(QObject *parent) : QObject(parent) { }

QJSValue ManagedConfiguration::defaults() const
{
    return m_defaults;
}

void ManagedConfiguration::setDefaults(const QJSValue &defaults)
{
    const bool isObject = isPlainObject(defaults);
    if (!isObject)
        qmlWarning(this) << "defaults must be an object: put its braces into parentheses";
    m_defaults = isObject ? defaults : QJSValue();
    update(true);
}

QJSValue ManagedConfiguration::values() const
{
    return m_values.object;
}

ManagedConfiguration::Status ManagedConfiguration::status() const
{
    return m_status;
}

QJSValue ManagedConfiguration::error() const
{
    QQmlEngine *const engine = qmlEngine(this);
    return engine ? engine->toScriptValue(describe(m_error)) : QJSValue();
}

void ManagedConfiguration::reload()
{
    SharedConfiguration::instance().reload();
}

QJSValue ManagedConfiguration::value(const QString &path) const
{
    const Xpath xpath(path);
    QJSValue value = xpath.isValid() ? m_values.object : QJSValue();
    for (const XpathAccess &access : xpath.accesses()) {
        const bool isKey = access.type() == XpathAccess::Key;
        const QString name = isKey ? access.toKey() : QString::number(access.toIndex());
        const bool hasValue = isKey == isPlainObject(value) && value.hasOwnProperty(name);
        value = hasValue ? value.property(name) : QJSValue();
    }
    // This logs why there is none, unless a default hides it.
    const bool isHidden = value.isUndefined() && xpath.isValid()
        && SharedConfiguration::instance().configuration().getByXpath(path).isValid();
    if (isHidden)
        qmlWarning(this) << "the defaults have no object for " << path;
    return value;
}

void ManagedConfiguration::change(const QJSValue &object, const QJSValue &callback)
{
    const auto answer = [element = QPointer<ManagedConfiguration>(this),
                         callback](const Error &error) {
        if (element)
            element->answer(callback, error);
    };
    QVariantMap change;
    const Error error = readChange(object, m_values.object, &change);
    if (error)
        QTimer::singleShot(0, this, [answer, error] { answer(error); });
    else
        SharedConfiguration::instance().change(change, answer);
}

void ManagedConfiguration::classBegin()
{
    // Bindings in the element may use values before its defaults are set.
    update();
}

void ManagedConfiguration::componentComplete()
{
    m_isComplete = true;
    connect(&SharedConfiguration::instance(), &SharedConfiguration::updated, this,
            [this] { update(); });
    SharedConfiguration::instance().load();
    update();
}

void ManagedConfiguration::update(bool hasOtherDefaults)
{
    QQmlEngine *const engine = qmlEngine(this);
    if (!engine)
        return;
    const Error oldError = m_error;
    const Status oldStatus = m_status;
    Configuration configuration;
    if (m_isComplete) {
        const SharedConfiguration &shared = SharedConfiguration::instance();
        configuration = shared.configuration();
        m_error = shared.error();
        m_status = shared.isLoading() ? Loading : m_error ? Failed : Ready;
    }
    const Values values = mergedValues(*engine, m_defaults, configuration);
    if (values.object.isUndefined())
        qmlWarning(this) << "defaults has too many levels";
    const QStringList paths = differingPaths(m_values, values);
    const QJSValue pathsForScript = toScript(*engine, paths);
    const bool isReplaced = hasOtherDefaults || !paths.isEmpty() || m_values.object.isUndefined();
    if (isReplaced)
        m_values = values;
    const bool hasOtherStatus = m_status != oldStatus;
    const bool hasOtherError = describe(m_error) != describe(oldError);

    // Each handler finds all properties up to date. It may delete the element.
    const QPointer<ManagedConfiguration> element(this);
    if (hasOtherDefaults)
        Q_EMIT defaultsChanged();
    if (element && hasOtherStatus)
        Q_EMIT statusChanged();
    if (element && hasOtherError)
        Q_EMIT errorChanged();
    if (element && isReplaced)
        Q_EMIT valuesChanged();
    if (element && m_isComplete && !paths.isEmpty())
        Q_EMIT changed(pathsForScript);
}

void ManagedConfiguration::answer(const QJSValue &callback, const Error &error)
{
    QQmlEngine *const engine = qmlEngine(this);
    if (!engine)
        return;
    if (callback.isCallable()) {
        const QJSValue result = QJSValue(callback).call({engine->toScriptValue(describe(error))});
        if (result.isError())
            qmlWarning(this) << result.property(QStringLiteral("fileName")).toString() << ':'
                             << result.property(QStringLiteral("lineNumber")).toInt() << ": "
                             << result.toString();
    } else if (error) {
        qmlWarning(this) << errorNames[error.code()] << ": " << error.message();
    }
}

} // namespace Tarnvel::Qml
