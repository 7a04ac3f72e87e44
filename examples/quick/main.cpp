// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    QGuiApplication::setOrganizationName(QStringLiteral("acme"));
    QGuiApplication::setApplicationName(QStringLiteral("viewer"));
    const QQmlApplicationEngine engine(QStringLiteral("qrc:/Viewer.qml"));
    return QGuiApplication::exec();
}
