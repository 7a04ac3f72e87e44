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
    if (!isPlainObject(defaults))
        qmlWarning(this) << "defaults must be an object: put its braces into parentheses";
    m_defaults = defaults;
    m_values.object = QJSValue();
    Q_EMIT defaultsChanged();
    update();
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
    QJSEngine *const engine = qjsEngine(this);
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
    // This logs why there is none.
    if (value.isUndefined() && xpath.isValid())
        SharedConfiguration::instance().configuration().getByXpath(path);
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

void ManagedConfiguration::classBegin() { }

void ManagedConfiguration::componentComplete()
{
    m_isComplete = true;
    connect(&SharedConfiguration::instance(), &SharedConfiguration::updated, this,
            &ManagedConfiguration::update);
    SharedConfiguration::instance().load();
    update();
}

void ManagedConfiguration::update()
{
    QJSEngine *const engine = qjsEngine(this);
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
    const bool isReplaced = !paths.isEmpty() || m_values.object.isUndefined();
    if (isReplaced)
        m_values = values;

    // Each handler finds all properties up to date.
    if (m_status != oldStatus)
        Q_EMIT statusChanged();
    if (describe(m_error) != describe(oldError))
        Q_EMIT errorChanged();
    if (isReplaced)
        Q_EMIT valuesChanged();
    if (m_isComplete && !paths.isEmpty())
        Q_EMIT changed(toScript(*engine, paths));
}

void ManagedConfiguration::answer(const QJSValue &callback, const Error &error)
{
    QJSEngine *const engine = qjsEngine(this);
    if (!engine)
        return;
    if (callback.isCallable()) {
        const QJSValue result = QJSValue(callback).call({engine->toScriptValue(describe(error))});
        if (result.isError())
            qmlWarning(this) << result.toString();
    } else if (error) {
        qmlWarning(this) << errorNames[error.code()] << ": " << error.message();
    }
}

} // namespace Tarnvel::Qml
