// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "bus_test.h"
#include "program.h"

using namespace Tarnvel::Testing;

// What applications do not see.
class ClientChangesTest : public BusTest
{
    Q_OBJECT

public:
    using BusTest::BusTest;

private Q_SLOTS:
    void unseenSettingsAreTold_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("told");

        const QPair<const char *, const char *> rows[] {
            {"byte 1", "k of D-Bus type y (byte)"},
            {"int16 1", "k of D-Bus type n (int16)"},
            {"uint16 1", "k of D-Bus type q (uint16)"},
            {"uint32 1", "k of D-Bus type u (uint32)"},
            {"int64 1", "k of D-Bus type x (int64)"},
            {"uint64 1", "k of D-Bus type t (uint64)"},
            {"0.5", "k of D-Bus type d (double)"},
            {"objectpath '/'", "k of D-Bus type o (object path)"},
            {"signature 's'", "k of D-Bus type g (signature)"},
            {"<1>", "k of D-Bus type v (variant)"},
            {"@ai []", "k of D-Bus type ai (an empty list)"},
            {"@ab []", "k of D-Bus type ab (an empty list)"},
            {"b'bytes'", "k of D-Bus type ay"},
            {"[0.5]", "k of D-Bus type ad"},
            {"(1, 'x')", "k of D-Bus type (is)"},
            {"{'x': 'y'}", "k of D-Bus type a{ss}"},
            {"{1: <2>}", "k of D-Bus type a{iv}"},
            {"@a{sd} {}", "k of D-Bus type a{sd}"},
            {"{'x/y': <{'z': <0.5>}>}", "k/\"x/y\"/z of D-Bus type d (double)"},
            {"{objectpath '/o': <0.5>, '/p': <1>}", "k/\"/o\" of D-Bus type d (double)"},
            {"1", ""},
            {"@as []", ""},
            {"[true]", ""},
            {"@a{sv} {}", ""},
            {"{signature 's': <'x'>}", ""},
        };
        for (const auto &[value, told] : rows)
            QTest::newRow(value) << value << told;
    }

    void unseenSettingsAreTold()
    {
        QFETCH(QString, value);
        QFETCH(QString, told);
        m_service.replyWith(QString("({'k': <%1>, 'l': <1>},)").arg(value));
        const QString errors = runClient({"get"}).errors;
        QCOMPARE(errors.contains("do not see"), !told.isEmpty());
        QVERIFY2(told.isEmpty() || errors.endsWith("applications do not see " + told + "\n"),
                 qPrintable(errors));
        QCOMPARE(runClient({"get", "l"}).errors.contains("do not see"), false);
    }

private:
    static Outcome runClient(const QStringList &arguments)
    {
        return Program("managed-configuration").run(clientArguments(arguments));
    }
};

TARNVEL_BUS_TEST_MAIN(ClientChangesTest)

#include "client_changes_test.moc"
