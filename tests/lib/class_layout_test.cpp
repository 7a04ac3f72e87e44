// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "configuration_manager_p.h"
#include "configuration_p.h"

#include <QtCore/QMetaMethod>
#include <QtTest/QTest>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>
#include <Tarnvel/ManagedConfiguration/error.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

#include <cstring>
#include <dlfcn.h>
#include <type_traits>

using namespace Tarnvel::Application::ManagedConfiguration;

namespace {

const char mangledNamespace[] = "7Tarnvel11Application20ManagedConfiguration";

/*! What lies \a offset bytes into \a object. */
template<typename Member, typename Object>
Member memberAt(const Object &object, std::size_t offset)
{
    Member member;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): a pointer is what is copied.
    std::memcpy(&member, reinterpret_cast<const char *>(&object) + offset, sizeof(Member));
    return member;
}

/*! The string whose shared data is referred to at \a offset of \a object. */
template<typename Object>
const QString &stringAt(const Object &object, std::size_t offset)
{
    return *reinterpret_cast<const QString *>(reinterpret_cast<const char *>(&object) + offset);
}

using Slot = const void *;

/*! The virtual table of \a object: its first slot. */
template<typename Object>
const Slot *virtualTable(const Object &object)
{
    return memberAt<const Slot *>(object, 0);
}

/*! The virtual table of a class of Qt, past its offset to the top and its type information. */
const Slot *virtualTable(const char *symbol)
{
    return static_cast<const Slot *>(dlsym(RTLD_DEFAULT, symbol)) + 2;
}

/*! The address of an exported member function by its mangled name, without the namespace. */
Slot function(const char *prefix, const char *rest)
{
    const QByteArray name = QByteArray(prefix) + mangledNamespace + rest;
    return dlsym(RTLD_DEFAULT, name.constData());
}

QVector<Slot> slotsOf(const Slot *table, int first, int count)
{
    QVector<Slot> result;
    std::copy(table + first, table + first + count, std::back_inserter(result));
    return result;
}

// metaObject, qt_metacast, qt_metacall and two destructors, then what every QObject has: event,
// eventFilter, timerEvent, childEvent, customEvent, connectNotify, disconnectNotify.
constexpr int firstInheritedSlot = 5;
constexpr int inheritedSlots = 7;

} // namespace

class ClassLayoutTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void sizesAreFixed();
    void alignmentsAreThoseOfAPointer();
    void membersOfAnErrorAreInOrder();
    void membersOfAStepAreInOrder();
    void membersOfAPathAreInOrder();
    void membersOfAConfigurationAreInOrder();
    void membersOfTheManagerAreInOrder();
    void theVirtualTableOfAConfigurationHoldsItsDestructors();
    void theVirtualTableOfTheManagerIsInOrder();
    void theVirtualTableOfTheRequestsIsInOrder();
    void enumeratorsHaveTheirNumbers();
    void theManagerHasOneSignal();
    void theRequestsHaveOneSlot();
    void castsByNameKnowTheWholeName();
};

void ClassLayoutTest::initTestCase()
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));
}

void ClassLayoutTest::sizesAreFixed()
{
    constexpr std::size_t pointer = sizeof(void *);
    QCOMPARE(sizeof(Error), 2 * pointer);
    QCOMPARE(sizeof(Error::Code), sizeof(qint32));
    QCOMPARE(sizeof(XpathAccess::Type), sizeof(qint32));
    QCOMPARE(sizeof(XpathAccess), 2 * sizeof(qint32) + pointer);
    QCOMPARE(sizeof(Xpath), 2 * pointer);
    QCOMPARE(sizeof(ConfigurationPrivate), pointer);
    QCOMPARE(sizeof(Configuration), 2 * pointer);
    QCOMPARE(sizeof(ConfigurationManager), sizeof(QObject) + pointer);
    QCOMPARE(sizeof(ConfigurationManagerPrivate), sizeof(QDBusAbstractInterface) + pointer);

    static_assert(!std::is_polymorphic_v<Error>);
    static_assert(!std::is_polymorphic_v<Xpath>);
    static_assert(!std::is_polymorphic_v<XpathAccess>);
    static_assert(!std::is_polymorphic_v<ConfigurationPrivate>);
    static_assert(std::has_virtual_destructor_v<Configuration>);
    static_assert(QTypeInfo<Configuration>::isStatic);
}

void ClassLayoutTest::alignmentsAreThoseOfAPointer()
{
    QCOMPARE(alignof(Error), alignof(void *));
    QCOMPARE(alignof(XpathAccess), alignof(void *));
    QCOMPARE(alignof(Xpath), alignof(void *));
    QCOMPARE(alignof(ConfigurationPrivate), alignof(void *));
    QCOMPARE(alignof(Configuration), alignof(void *));
    QCOMPARE(alignof(ConfigurationManager), alignof(void *));
    QCOMPARE(alignof(ConfigurationManagerPrivate), alignof(void *));
}

void ClassLayoutTest::membersOfAnErrorAreInOrder()
{
    const Error error(Error::Forbidden, QStringLiteral("no"));
    QCOMPARE(memberAt<qint32>(error, 0), 5);
    QCOMPARE(stringAt(error, sizeof(void *)), QStringLiteral("no"));
}

void ClassLayoutTest::membersOfAStepAreInOrder()
{
    const XpathAccess index(7);
    QCOMPARE(memberAt<qint32>(index, 0), 0);
    QCOMPARE(memberAt<qint32>(index, 4), 7);
    QVERIFY(stringAt(index, 8).isNull());

    const XpathAccess key(QStringLiteral("key"));
    QCOMPARE(memberAt<qint32>(key, 0), 1);
    QCOMPARE(memberAt<qint32>(key, 4), 0);
    QCOMPARE(stringAt(key, 8), QStringLiteral("key"));
}

void ClassLayoutTest::membersOfAPathAreInOrder()
{
    const Xpath path(QStringLiteral("a/b"));
    QCOMPARE(stringAt(path, 0), QStringLiteral("a/b"));
    const auto *accesses = reinterpret_cast<const QList<XpathAccess> *>(
        reinterpret_cast<const char *>(&path) + sizeof(void *));
    QCOMPARE(accesses, &path.accesses());
}

void ClassLayoutTest::membersOfAConfigurationAreInOrder()
{
    auto *entries = new ConfigurationPrivate({{QStringLiteral("key"), 7}});
    const Configuration configuration(entries);
    QCOMPARE(memberAt<ConfigurationPrivate *>(configuration, sizeof(void *)), entries);
    const auto *map = reinterpret_cast<const QMap<QString, QVariant> *>(entries);
    QCOMPARE(*map, (QMap<QString, QVariant> {{QStringLiteral("key"), 7}}));
}

void ClassLayoutTest::membersOfTheManagerAreInOrder()
{
    const ConfigurationManager manager;
    const auto *requests = memberAt<const ConfigurationManagerPrivate *>(manager, sizeof(QObject));
    QCOMPARE(requests->metaObject(), &ConfigurationManagerPrivate::staticMetaObject);
    QVERIFY(!requests->parent());
    QCOMPARE(memberAt<const ConfigurationManager *>(*requests, sizeof(QDBusAbstractInterface)),
             &manager);
}

void ClassLayoutTest::theVirtualTableOfAConfigurationHoldsItsDestructors()
{
    const Slot complete = function("_ZN", "13ConfigurationD1Ev");
    const Slot deleting = function("_ZN", "13ConfigurationD0Ev");
    QVERIFY(complete);
    QVERIFY(deleting);
    QCOMPARE(slotsOf(virtualTable(Configuration()), 0, 2), (QVector<Slot> {complete, deleting}));
}

void ClassLayoutTest::theVirtualTableOfTheManagerIsInOrder()
{
    const QVector<Slot> own {
        function("_ZNK", "20ConfigurationManager10metaObjectEv"),
        function("_ZN", "20ConfigurationManager11qt_metacastEPKc"),
        function("_ZN", "20ConfigurationManager11qt_metacallEN11QMetaObject4CallEiPPv"),
        function("_ZN", "20ConfigurationManagerD1Ev"),
        function("_ZN", "20ConfigurationManagerD0Ev"),
    };
    QVERIFY(!own.contains(nullptr));
    const ConfigurationManager manager;
    QCOMPARE(slotsOf(virtualTable(manager), 0, firstInheritedSlot), own);
    QCOMPARE(slotsOf(virtualTable(manager), firstInheritedSlot, inheritedSlots),
             slotsOf(virtualTable("_ZTV7QObject"), firstInheritedSlot, inheritedSlots));
}

void ClassLayoutTest::theVirtualTableOfTheRequestsIsInOrder()
{
    const QVector<Slot> own {
        function("_ZNK", "27ConfigurationManagerPrivate10metaObjectEv"),
        function("_ZN", "27ConfigurationManagerPrivate11qt_metacastEPKc"),
        function("_ZN", "27ConfigurationManagerPrivate11qt_metacallEN11QMetaObject4CallEiPPv"),
    };
    QVERIFY(!own.contains(nullptr));
    const ConfigurationManagerPrivate requests(nullptr);
    const Slot *const base = virtualTable("_ZTV22QDBusAbstractInterface");
    QCOMPARE(slotsOf(virtualTable(requests), 0, own.count()), own);
    // The complete destructor in slot 3 adds nothing to that of the base, so that a compiler may
    // enter the base's own; the deleting one knows the size of the object.
    QVERIFY(virtualTable(requests)[4] != base[4]);
    QVERIFY(virtualTable(requests)[4] != virtualTable(requests)[3]);
    QCOMPARE(slotsOf(virtualTable(requests), firstInheritedSlot, inheritedSlots),
             slotsOf(base, firstInheritedSlot, inheritedSlots));
}

void ClassLayoutTest::enumeratorsHaveTheirNumbers()
{
    static_assert(Error::NoError == 0 && Error::Internal == 1 && Error::NotExistingKey == 2
                  && Error::InvalidType == 3 && Error::InvalidValue == 4 && Error::Forbidden == 5
                  && Error::NotConfigurable == 6 && Error::InvalidUserId == 7
                  && Error::UnsupportedType == 8);
    static_assert(XpathAccess::Index == 0 && XpathAccess::Key == 1);
}

void ClassLayoutTest::theManagerHasOneSignal()
{
    const QMetaObject &meta = ConfigurationManager::staticMetaObject;
    QCOMPARE(meta.className(), "Tarnvel::Application::ManagedConfiguration::ConfigurationManager");
    QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
    QCOMPARE(meta.classInfoCount(), meta.classInfoOffset());
    QCOMPARE(meta.constructorCount(), 0);

    const QMetaMethod method = meta.method(meta.methodOffset());
    QCOMPARE(method.methodType(), QMetaMethod::Signal);
    QCOMPARE(method.access(), QMetaMethod::Public);
    QCOMPARE(method.methodSignature(), QByteArray("configurationChanged(Configuration)"));
    QCOMPARE(method.returnType(), int(QMetaType::Void));
    QCOMPARE(method.parameterTypes(), QList<QByteArray> {"Configuration"});
    QCOMPARE(method.parameterNames(), QList<QByteArray> {"configuration"});
}

void ClassLayoutTest::theRequestsHaveOneSlot()
{
    const QMetaObject &meta = ConfigurationManagerPrivate::staticMetaObject;
    QCOMPARE(meta.className(),
             "Tarnvel::Application::ManagedConfiguration::ConfigurationManagerPrivate");
    QCOMPARE(meta.superClass(), &QDBusAbstractInterface::staticMetaObject);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QCOMPARE(meta.enumeratorCount(), meta.enumeratorOffset());
    QCOMPARE(meta.classInfoCount(), meta.classInfoOffset());
    QCOMPARE(meta.constructorCount(), 0);

    const QMetaMethod method = meta.method(meta.methodOffset());
    QCOMPARE(method.methodType(), QMetaMethod::Slot);
    QCOMPARE(method.access(), QMetaMethod::Public);
    QCOMPARE(method.methodSignature(), QByteArray("onConfigurationChanged()"));
    QCOMPARE(method.returnType(), int(QMetaType::Void));
}

void ClassLayoutTest::castsByNameKnowTheWholeName()
{
    ConfigurationManager manager;
    QCOMPARE(
        manager.qt_metacast("Tarnvel::Application::ManagedConfiguration::ConfigurationManager"),
        static_cast<void *>(&manager));
    QCOMPARE(manager.qt_metacast("QObject"), static_cast<void *>(&manager));
    QVERIFY(!manager.qt_metacast("ConfigurationManager"));

    ConfigurationManagerPrivate requests(&manager);
    QCOMPARE(requests.qt_metacast(
                 "Tarnvel::Application::ManagedConfiguration::ConfigurationManagerPrivate"),
             static_cast<void *>(&requests));
    QCOMPARE(requests.qt_metacast("QDBusAbstractInterface"), static_cast<void *>(&requests));
    QVERIFY(!requests.qt_metacast("ConfigurationManagerPrivate"));
}

QTEST_GUILESS_MAIN(ClassLayoutTest)

#include "class_layout_test.moc"
