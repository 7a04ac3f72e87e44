// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "waiting.h"

#include <QtCore/QString>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlContext>
#include <QtQml/QQmlEngine>
#include <QtQml/QQmlExpression>

#include <memory>

namespace Tarnvel::Testing {

/*! \brief An engine that finds the module in the build. */
class Engine : public QQmlEngine
{
public:
    Engine()
    {
        addImportPath(QStringLiteral(MODULES));
    }
};

/*! \brief An element; its property \c log has the paths of each changed(), or what a test adds. */
class Element
{
public:
    /*! \brief Makes an element in \a engine with the script \a defaults and other \a members. */
    explicit Element(QQmlEngine &engine, const QString &defaults = QStringLiteral("({})"),
                     const QString &members = QString())
    {
        QQmlComponent component(&engine);
        const QString text = QStringLiteral("import Tarnvel.ManagedConfiguration 1.0\n"
                                            "ManagedConfiguration {\n"
                                            "    property var log: []\n"
                                            "    onChanged: paths => log.push(paths.join())\n"
                                            "    defaults: %1\n"
                                            "    %2\n"
                                            "}\n");
        component.setData(text.arg(defaults, members).toUtf8(), QUrl());
        m_object.reset(component.create());
        if (!m_object)
            qFatal("%s", qUtf8Printable(component.errorString()));
    }

    /*! \brief The result of the expression \a script in the element as JSON, or what it throws. */
    QString eval(const QString &script) const
    {
        QQmlExpression expression(qmlContext(m_object.get()), m_object.get(),
                                  QStringLiteral("JSON.stringify(%1)").arg(script));
        const QVariant result = expression.evaluate();
        return expression.hasError() ? expression.error().description() : result.toString();
    }

    QObject *object() const
    {
        return m_object.get();
    }

    /*! \brief The log, which is empty then. */
    QString takeLog() const
    {
        return eval(QStringLiteral("log.splice(0)"));
    }

    /*! \brief Requests \a change; the log gets the name and the message of the error. */
    void change(const QString &change) const
    {
        eval(QStringLiteral("change(%1, error => log.push(error.name + ' ' + error.message))")
                 .arg(change));
    }

    /*! \brief Waits until the log has something, and takes it. */
    QString awaitLog() const
    {
        const auto hasLog = [this] { return eval(QStringLiteral("log.length > 0")) == "true"; };
        return QTest::qWaitFor(hasLog, waitTimeoutMs) ? takeLog() : QStringLiteral("nothing");
    }

    /*! \brief Reads the configuration again, and forgets what that changed; false if it fails. */
    bool reload() const
    {
        eval(QStringLiteral("reload()"));
        const auto hasRead = [this] { return eval(QStringLiteral("status > 0")) == "true"; };
        return QTest::qWaitFor(hasRead, waitTimeoutMs) && !takeLog().isNull()
            && eval(QStringLiteral("status")) == "1";
    }

private:
    std::unique_ptr<QObject> m_object;
};

} // namespace Tarnvel::Testing
