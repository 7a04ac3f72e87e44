// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

// For nearly every test on a bus.
#include "announcements.h"
#include "answers.h"
#include "bus_fixture.h"
#include "waiting.h"

#include <QtCore/QObject>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

namespace Tarnvel::Testing {

/*! \brief A test whose functions each start with a fresh service, which keeps {'key': <7>}. */
class BusTest : public QObject
{
    Q_OBJECT

public:
    explicit BusTest(BusFixture &fixture) : m_fixture(fixture), m_service(fixture.service) { }

protected Q_SLOTS:
    virtual void init()
    {
        // Before the event loop has run, Qt D-Bus may handle a new owner before the loss of the
        // old.
        QCoreApplication::processEvents();
        m_service.reset();
        m_service.replyWith(QStringLiteral("({'key': <7>},)"));
        if (!m_service.start())
            qFatal("the service did not start");
    }
    void cleanup()
    {
        m_service.reset();
    }

protected:
    /*! \brief Adds a row for each kind of request and outcome to the data of a test. */
    static void addRequestRows()
    {
        QTest::addColumn<bool>("isChange");
        QTest::addColumn<bool>("isRefused");

        QTest::newRow("read, accepted") << false << false;
        QTest::newRow("read, refused") << false << true;
        QTest::newRow("change, accepted") << true << false;
        QTest::newRow("change, refused") << true << true;
    }

    BusFixture &m_fixture;
    FakeService &m_service;
};

} // namespace Tarnvel::Testing
