// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "application_interface.h"
#include "bus_connection.h"
#include "bus_limits.h"
#include "bus_test.h"
#include "document_tables.h"
#include "endpoint.h"
#include "program.h"

#include <QtCore/QMap>
#include <QtCore/QMutex>

#include <initializer_list>
#include <memory>
#include <utility>

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::DBus;
using namespace Tarnvel::Testing;

namespace {

const QString page = QStringLiteral("dbus-interface.md");
const QString scenario = QStringLiteral(PROJECT_DIR "/examples/viewer/scenario.json");

QString memberText(const QString &kind, const QString &name, const QString &arguments,
                   const QString &reply = {})
{
    return QString("%1 %2 (%3) (%4)").arg(kind, name, arguments, reply);
}

QString signatureOf(GDBusArgInfo **arguments)
{
    QString signature;
    for (; arguments && *arguments; ++arguments)
        signature += QString::fromUtf8((*arguments)->signature);
    return signature;
}

QStringList membersIn(const QString &xml)
{
    const std::shared_ptr<GDBusNodeInfo> node(
        g_dbus_node_info_new_for_xml(qUtf8Printable(xml), nullptr), g_dbus_node_info_unref);
    if (!node)
        qFatal("not a description of an object: %s", qUtf8Printable(xml));
    GDBusInterfaceInfo *const interface = g_dbus_node_info_lookup_interface(node.get(),
                                                                            applicationInterface);
    QStringList members;
    for (GDBusMethodInfo **method = interface->methods; *method; ++method)
        members.append(memberText("method", (*method)->name, signatureOf((*method)->in_args),
                                  signatureOf((*method)->out_args)));
    for (GDBusSignalInfo **signal = interface->signals; *signal; ++signal)
        members.append(memberText("signal", (*signal)->name, signatureOf((*signal)->args)));
    members.sort();
    return members;
}

QStringList membersInPage()
{
    static const QRegularExpression kind("\\| (method|signal) \\|");
    QStringList members;
    const QVector<Row> rows = rowsOf(page);
    for (const Row &row : rows) {
        const QStringList cells = row.cells();
        if (row.header == "| member | kind | arguments | reply |")
            members.append(memberText(kind.match(row.line).captured(1), cells.at(0), cells.at(2),
                                      cells.at(3)));
    }
    members.sort();
    return members;
}

// Sees all messages on a bus.
class Monitor
{
public:
    explicit Monitor(const QString &address) : m_connection(openConnection(address, nullptr))
    {
        g_dbus_connection_add_filter(m_connection, receive, this, nullptr);
        g_autoptr(GVariant) reply = g_dbus_connection_call_sync(
            m_connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
            "org.freedesktop.DBus.Monitoring", "BecomeMonitor", g_variant_new("(asu)", nullptr, 0),
            nullptr, G_DBUS_CALL_FLAGS_NONE, waitTimeoutMs, nullptr, nullptr);
        if (!reply)
            qFatal("the bus has no monitor");
    }

    ~Monitor()
    {
        closeConnection(m_connection);
        g_object_unref(m_connection);
    }

    // The members of the interface of which it has seen calls with a reply, or signals.
    QStringList members() const
    {
        const QMutexLocker locker(&m_mutex);
        QStringList members = m_members;
        members.removeDuplicates();
        members.sort();
        return members;
    }

    bool hasSeenCallOf(const QString &method) const
    {
        const QMutexLocker locker(&m_mutex);
        return m_methods.contains(method);
    }

private:
    // Runs in the thread of GDBus, which must not reply to the calls of others.
    static GDBusMessage *receive(GDBusConnection *, GDBusMessage *message, gboolean isIncoming,
                                 gpointer monitor)
    {
        if (!isIncoming)
            return message;
        static_cast<Monitor *>(monitor)->record(message);
        const GDBusMessageType type = g_dbus_message_get_message_type(message);
        if (type == G_DBUS_MESSAGE_TYPE_METHOD_RETURN || type == G_DBUS_MESSAGE_TYPE_ERROR)
            return message;
        g_object_unref(message);
        return nullptr;
    }

    void record(GDBusMessage *message)
    {
        const QMutexLocker locker(&m_mutex);
        const QString member = g_dbus_message_get_member(message);
        const QString arguments = g_dbus_message_get_signature(message);
        const bool isOfInterface = g_strcmp0(g_dbus_message_get_interface(message),
                                             applicationInterface)
            == 0;
        switch (g_dbus_message_get_message_type(message)) {
        case G_DBUS_MESSAGE_TYPE_METHOD_CALL:
            m_methods.append(member);
            if (isOfInterface)
                m_pending.insert(
                    {g_dbus_message_get_sender(message), g_dbus_message_get_serial(message)},
                    {member, arguments});
            break;
        case G_DBUS_MESSAGE_TYPE_METHOD_RETURN: {
            const auto call = m_pending.take({g_dbus_message_get_destination(message),
                                              g_dbus_message_get_reply_serial(message)});
            if (!call.first.isEmpty())
                m_members.append(memberText("method", call.first, call.second, arguments));
            break;
        }
        case G_DBUS_MESSAGE_TYPE_SIGNAL:
            if (isOfInterface)
                m_members.append(memberText("signal", member, arguments));
            break;
        default:
            break;
        }
    }

    GDBusConnection *m_connection;
    mutable QMutex m_mutex;
    QStringList m_methods;
    // Method and arguments, by caller and number of the call.
    QMap<QPair<QString, guint32>, QPair<QString, QString>> m_pending;
    QStringList m_members;
};

} // namespace

class DBusInterfaceTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void thePageNamesWhatIsOnTheBus();
    void theDescriptionIsThatOfThePageAndOfTheBus();
    void theSandboxDescribesItsObjects();
    void eachErrorHasItsCode();
    void eachReplyIsReadAsThePageSays_data();
    void eachReplyIsReadAsThePageSays();

private:
    // The code of the error that the application gets.
    int codeOf(const QString &error)
    {
        m_service.replyWithError(error, "no");
        Answers answers;
        m_manager.getConfiguration(answers.forReading());
        return answers.waitFor(1) ? answers.at(0).error.code() : -1;
    }

    ConfigurationManager m_manager;
};

void DBusInterfaceTest::thePageNamesWhatIsOnTheBus()
{
    const auto text = [](int number) { return QString::number(number); };
    const QString size = text(maximumMessageSize / 1024 / 1024) + " MiB";
    const QString depth = text(maximumContainerDepth) + ", with dbus-broker "
        + text(portableContainerDepth);
    const QString levels = text(portableContainerDepth / containersPerLevel) + " levels";
    for (const auto &[name, value] : std::initializer_list<std::pair<QString, QString>> {
             {"service name", QString("`%1`").arg(serviceName)},
             {"interface", QString("`%1`").arg(applicationInterface)},
             {"size of a message, by default", size},
             {"nested containers in a message", depth},
             {"nested configurations with entries, on each bus", levels},
             {"nested arrays in a signature", text(maximumArrayDepth)},
             {"nested structures in a signature", text(maximumStructureDepth)},
             {"length of a signature", text(maximumSignatureSize)},
             {"pending calls of a connection to dbus-daemon, by default",
              text(maximumPendingCalls)}}) {
        const QString row = QString("| %1 | %2 |\n").arg(name, value);
        QVERIFY2(contentOf(page).contains(row), qPrintable(row));
    }
}

void DBusInterfaceTest::theDescriptionIsThatOfThePageAndOfTheBus()
{
    const QStringList members = membersIn(applicationInterfaceXml);
    QCOMPARE(membersInPage(), members);

    // The library calls the sandbox.
    Program sandbox("managed-configuration-sandbox");
    sandbox.start({"--scenario", scenario});
    const QString address = sandbox.readLine().section('\'', 1, 1);
    const Monitor monitor(address);
    Program client(APPLICATION);
    client.setVariable(busAddressVariable, address);
    QCOMPARE(client.run({"get", "set zoom=125", "follow"}).status, 0);
    // The fence: any later call.
    g_autoptr(GDBusConnection) connection = openConnection(address, nullptr);
    g_autoptr(GVariant) id = callBus(connection, "GetId", nullptr, "(s)", nullptr);
    QVERIFY(id);
    TRY_VERIFY(monitor.hasSeenCallOf("GetId"));
    QCOMPARE(monitor.members(), members);
    closeConnection(connection);
}

void DBusInterfaceTest::theSandboxDescribesItsObjects()
{
    const QString command = contentOf("sandbox.md").section("-- gdbus", 1).section("\n```", 0, 0);
    Program sandbox("managed-configuration-sandbox");
    const Outcome outcome = sandbox.run(QStringList {"--scenario", scenario, "--", "gdbus"}
                                        + command.split(' ', Qt::SkipEmptyParts)
                                        + QStringList("--xml"));
    QCOMPARE(outcome.status, 0);
    QCOMPARE(membersIn(outcome.output), membersIn(applicationInterfaceXml));
}

void DBusInterfaceTest::eachErrorHasItsCode()
{
    const QString xml = applicationInterfaceXml;
    QStringList names;
    const QVector<Row> rows = rowsOf(page);
    for (const Row &row : rows) {
        const QString name = row.cells().at(0);
        if (row.header == "| error | when to reply with it |") {
            names.append(name);
            QCOMPARE(codeOf(errorPrefix + name), names.size());
            QVERIFY2(xml.contains("." + name), qPrintable(name));
        } else if (row.header == "| error name | code |") {
            QCOMPARE(row.cells().at(1), "Internal");
            QCOMPARE(codeOf(name), int(Error::Internal));
        }
    }
    QCOMPARE(names, errorNames());
}

void DBusInterfaceTest::eachReplyIsReadAsThePageSays_data()
{
    QTest::addColumn<QStringList>("cells");
    const QVector<Row> rows = rowsOf(page);
    for (const Row &row : rows) {
        if (row.header == "| reply to `GetConfiguration` | what the application reads |")
            QTest::addRow("%s", qUtf8Printable(row.line)) << row.cells();
    }
}

void DBusInterfaceTest::eachReplyIsReadAsThePageSays()
{
    QFETCH(const QStringList, cells);
    m_service.replyWith(cells.at(0));
    const QString answer = awaitRead(m_manager);
    QCOMPARE(answer.startsWith("{} error 1: ") ? "Internal" : answer, cells.at(1));
}

TARNVEL_BUS_TEST_MAIN(DBusInterfaceTest)

#include "dbus_interface_test.moc"
