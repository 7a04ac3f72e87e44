// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "message_log.h"
#include "viewersettings.h"
#include "waiting.h"

#include <QtCore/QProcess>
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>
#include <QtQml/QQmlContext>
#include <QtQml/QQmlExpression>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickItemGrabResult>
#include <QtQuick/QQuickWindow>

using namespace Tarnvel::Testing;

// Runs in the sandbox, with a copy of the scenario of the viewer.
class QuickViewerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void controlsFollowTheConfiguration();

private:
    // For scripts/pictures.
    static void savePicture(QQuickWindow *window, const QString &fileName)
    {
        const auto grabbed = window->contentItem()->grabToImage();
        TRY_VERIFY(!grabbed->image().isNull());
        QVERIFY(grabbed->saveToFile(fileName));
    }
};

void QuickViewerTest::controlsFollowTheConfiguration()
{
    QGuiApplication::setOrganizationName("acme");
    QGuiApplication::setApplicationName("viewer");
    MessageLog log;
    QQmlApplicationEngine engine;
    engine.addImportPath(MODULES);
    engine.rootContext()->setContextProperty("viewerDefaults", ViewerSettings::defaults());
    engine.load(QUrl::fromLocalFile(VIEWER));
    QCOMPARE(engine.rootObjects().count(), 1);
    auto *const window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    auto *const zoom = window->findChild<QObject *>("zoom");
    auto *const proxy = window->findChild<QObject *>("proxy");
    const QObject *const message = window->findChild<QObject *>("message");
    QVERIFY(zoom && proxy && message);
    QCOMPARE(zoom->property("enabled").toBool(), false);
    QCOMPARE(window->findChild<QObject *>("recentFiles")->property("count").toInt(), 0);

    TRY_COMPARE(proxy->property("text").toString(), "proxy.acme.example:3128");
    QCOMPARE(zoom->property("value").toDouble(), 100.0);
    QCOMPARE(window->findChild<QObject *>("recentFiles")->property("count").toInt(), 3);

    // An accepted change.
    zoom->setProperty("value", 125.4);
    QMetaObject::invokeMethod(zoom, "moved");
    TRY_COMPARE(zoom->property("value").toDouble(), 125.0);

    // A refused one, which is requested once.
    QVERIFY(QTest::qWaitForWindowActive(window));
    QMetaObject::invokeMethod(proxy, "forceActiveFocus");
    QTest::keyClick(window, Qt::Key_X);
    QTest::keyClick(window, Qt::Key_Return);
    TRY_COMPARE(message->property("text").toString(), "\"network/proxy\" is locked");
    QQmlExpression(qmlContext(window), window,
                   "change('fence', { network: { proxy: 'z' } }, () => {})")
        .evaluate();
    TRY_COMPARE(window->property("locked").value<QJSValue>().toString(), "network/proxy,fence");
    QCOMPARE(proxy->property("text").toString(), "proxy.acme.example:3128");
    QCOMPARE(proxy->property("enabled").toBool(), false);
    if (qEnvironmentVariableIsSet("PICTURE"))
        savePicture(window, qEnvironmentVariable("PICTURE"));

    // A change by the administrator.
    const QStringList edit {"-i", "-e", "s/\"light\"/\"dark\"/", "-e", "s/3128/3129/", SCENARIO};
    QCOMPARE(QProcess::execute("sed", edit), 0);
    TRY_COMPARE(window->property("isDark").toBool(), true);
    QCOMPARE(proxy->property("text").toString(), "proxy.acme.example:3129");
    QCOMPARE(proxy->property("enabled").toBool(), true);
    QCOMPARE(log.take().filter("Viewer.qml"), QStringList());
}

QTEST_MAIN(QuickViewerTest)

#include "quick_viewer_test.moc"
