// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_manager_p.h"

#include <QtCore/QMetaMethod>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

using namespace Tarnvel::Application::ManagedConfiguration;

namespace {

// What the class itself declares, without its bases.
QStringList describe(const QMetaObject &meta)
{
    QStringList texts;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        texts.append(QString("%1 %2 %3 %4(%5 %6)")
                         .arg(method.access() == QMetaMethod::Public ? "public" : "not public",
                              method.methodType() == QMetaMethod::Signal ? "signal" : "slot",
                              method.typeName(), method.name(), method.parameterTypes().join(", "),
                              method.parameterNames().join(", ")));
    }
    if (meta.propertyCount() != meta.propertyOffset()
        || meta.enumeratorCount() != meta.enumeratorOffset()
        || meta.classInfoCount() != meta.classInfoOffset() || meta.constructorCount() != 0)
        texts.append("something that is not a method");
    return texts;
}

} // namespace

class MetaObjectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theManagerHasOneSignal();
    void itsPrivateObjectHasOneSlot();
};

void MetaObjectTest::initTestCase()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    QCoreApplication::setOrganizationName("acme");
}

void MetaObjectTest::theManagerHasOneSignal()
{
    const char name[] = "Tarnvel::Application::ManagedConfiguration::ConfigurationManager";
    ConfigurationManager manager;
    QCOMPARE(manager.metaObject()->className(), name);
    QCOMPARE(manager.metaObject()->superClass(), &QObject::staticMetaObject);
    QCOMPARE(manager.qt_metacast(name), static_cast<void *>(&manager));
    QVERIFY(!manager.parent());
    QVERIFY(manager.children().isEmpty());
    QCOMPARE(describe(*manager.metaObject()),
             QStringList("public signal void configurationChanged(Configuration configuration)"));
}

void MetaObjectTest::itsPrivateObjectHasOneSlot()
{
    const char name[] = "Tarnvel::Application::ManagedConfiguration::ConfigurationManagerPrivate";
    ConfigurationManagerPrivate requests(nullptr);
    QCOMPARE(requests.metaObject()->className(), name);
    QCOMPARE(requests.metaObject()->superClass(), &QDBusAbstractInterface::staticMetaObject);
    QCOMPARE(requests.qt_metacast(name), static_cast<void *>(&requests));
    QCOMPARE(describe(*requests.metaObject()),
             QStringList("public slot void onConfigurationChanged( )"));
}

QTEST_GUILESS_MAIN(MetaObjectTest)

#include "meta_object_test.moc"
