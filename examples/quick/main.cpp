// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "viewersettings.h"

#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>
#include <QtQml/QQmlContext>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setOrganizationName(QStringLiteral("acme"));
    QGuiApplication::setApplicationName(QStringLiteral("viewer"));
    QQmlApplicationEngine engine;
    engine.rootContext()->setContextProperty(QStringLiteral("viewerDefaults"),
                                             ViewerSettings::defaults());
    engine.load(QStringLiteral("qrc:/Viewer.qml"));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
