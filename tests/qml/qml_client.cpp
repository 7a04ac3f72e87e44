// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// The application acme/viewer, which logs what its element shows. With an argument, it ends after
// that.

#include <QtCore/QCoreApplication>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>

#include <memory>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));
    QCoreApplication::setApplicationName(QStringLiteral("viewer"));
    QQmlEngine engine;
    QObject::connect(&engine, &QQmlEngine::quit, &application, &QCoreApplication::quit);
    QQmlComponent component(&engine);
    component.setData(R"(
        import Tarnvel.ManagedConfiguration 1.0
        ManagedConfiguration {
            defaults: ({ theme: "", zoom: 0, last: 0 })
            onStatusChanged: {
                console.log("status", status, error.name);
                if (Qt.application.arguments.length > 1)
                    Qt.quit();
            }
            onChanged: paths => console.log("changed", paths.join())
        })",
                      QUrl());
    const std::unique_ptr<QObject> element(component.create());
    if (!element)
        qFatal("%s", qUtf8Printable(component.errorString()));
    return QCoreApplication::exec();
}
