// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_manager_p.h"
#include "qt_version.h"

#include <QtCore/QMetaMethod>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

using namespace Tarnvel::Application::ManagedConfiguration;
using Tarnvel::Testing::onQt6;

namespace {

// What the class itself declares, without its bases.
QStringList methods(const QMetaObject &meta)
{
    QStringList signatures;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        signatures.append(meta.method(i).methodSignature());
    return signatures;
}

} // namespace

class MetaObjectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theManagerHasOneSignal();
    void onQt5TheParameterMustBeRegistered();
    void itsPrivateObjectHasOneSlot();
};

void MetaObjectTest::initTestCase()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    QCoreApplication::setOrganizationName("acme");
}

void MetaObjectTest::theManagerHasOneSignal()
{
    const ConfigurationManager manager;
    QCOMPARE(manager.metaObject()->className(),
             "Tarnvel::Application::ManagedConfiguration::ConfigurationManager");
    QCOMPARE(manager.metaObject()->superClass(), &QObject::staticMetaObject);
    QVERIFY(!manager.parent());
    QVERIFY(manager.children().isEmpty());
    QCOMPARE(methods(*manager.metaObject()), QStringList("configurationChanged(Configuration)"));
}

void MetaObjectTest::onQt5TheParameterMustBeRegistered()
{
    const ConfigurationManager manager;
    const QMetaMethod signal = QMetaMethod::fromSignal(&ConfigurationManager::configurationChanged);
    QCOMPARE(signal.parameterType(0),
             onQt6 ? qMetaTypeId<Configuration>() : QMetaType::UnknownType);
    qRegisterMetaType<Configuration>("Configuration");
    QCOMPARE(signal.parameterType(0), qMetaTypeId<Configuration>());
}

void MetaObjectTest::itsPrivateObjectHasOneSlot()
{
    const ConfigurationManagerPrivate requests(nullptr);
    QCOMPARE(requests.metaObject()->className(),
             "Tarnvel::Application::ManagedConfiguration::ConfigurationManagerPrivate");
    QCOMPARE(requests.metaObject()->superClass(), &QDBusAbstractInterface::staticMetaObject);
    QCOMPARE(methods(*requests.metaObject()), QStringList("onConfigurationChanged()"));
}

QTEST_GUILESS_MAIN(MetaObjectTest)

#include "meta_object_test.moc"
