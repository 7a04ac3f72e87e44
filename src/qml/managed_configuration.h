// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "script_values.h"

#include <QtCore/QObject>
#include <QtQml/QJSValue>
#include <QtQml/QQmlParserStatus>
#include <QtQml/qqml.h>

namespace Tarnvel::Qml {

/*! \brief The element: the managed configuration of the application, for scripts. */
class ManagedConfiguration : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    // Qt 5 would take the name with its namespaces.
    QML_NAMED_ELEMENT(ManagedConfiguration)

    /*! An object with the values that apply where the configuration has none. */
    Q_PROPERTY(QJSValue defaults READ defaults WRITE setDefaults NOTIFY defaultsChanged)
    /*! The values of the configuration, and the defaults of the others. */
    Q_PROPERTY(QJSValue values READ values NOTIFY valuesChanged)
    /*! Whether the configuration has been read. */
    Q_PROPERTY(Status status READ status NOTIFY statusChanged)
    /*! How the last read ended: code, name and message. */
    Q_PROPERTY(QJSValue error READ error NOTIFY errorChanged)

public:
    enum Status {
        Loading,
        Ready,
        Failed,
    };
    Q_ENUM(Status)

    explicit ManagedConfiguration(QObject *parent = nullptr);

    QJSValue defaults() const;
    void setDefaults(const QJSValue &defaults);
    QJSValue values() const;
    Status status() const;
    QJSValue error() const;

    /*! \brief Reads the configuration again. */
    Q_INVOKABLE void reload();

    /*! \brief The value at \a path; undefined, with a warning, if there is none. */
    Q_INVOKABLE QJSValue value(const QString &path) const;

    /*!
     * \brief Requests the values of \a object. Calls \a callback with an error as in error().
     *
     * Without a callback, an error is logged.
     */
    Q_INVOKABLE void change(const QJSValue &object, const QJSValue &callback = QJSValue());

Q_SIGNALS:
    void defaultsChanged();
    void valuesChanged();
    void statusChanged();
    void errorChanged();
    /*! \brief Emitted when values differ from those before: an array of their \a paths. */
    void changed(const QJSValue &paths);

protected:
    void classBegin() override;
    void componentComplete() override;

private:
    void update(bool hasOtherDefaults = false);
    void answer(const QJSValue &callback, const Error &error);

    QJSValue m_defaults;
    Values m_values;
    Status m_status = Loading;
    Error m_error;
    bool m_isComplete = false;
};

} // namespace Tarnvel::Qml
