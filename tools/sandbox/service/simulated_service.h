// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "fault_schedule.h"
#include "raw_service.h"
#include "report/event_formatter.h"
#include "report/log.h"
#include "scenario/scenario.h"

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <functional>
#include <memory>

namespace Tarnvel::Sandbox {

/*!
 * \brief The service as a Scenario has it.
 *
 * A change is judged by the scenario's rules, merged key by key at the top level, as a whole or not
 * at all, and kept in memory only. Faults come as the scenario has them, from open() on. Each call,
 * announcement and fault is an event of the log.
 */
class SimulatedService
{
public:
    /*!
     * \brief A service that keeps \a scenario, reports to \a log and is not on a bus yet.
     *
     * It calls \a killBus when the scenario has the bus die.
     */
    SimulatedService(const Scenario &scenario, Log *log, std::function<void()> killBus);

    /*! \brief Appears on the bus at \a address; what went wrong if that fails, otherwise null. */
    QString open(const QString &address);

    /*!
     * \brief Keeps \a scenario from now on.
     *
     * Announces a change to exactly the applications whose configuration is not what it was, also
     * to one that has come or gone. The faults still to come are the new scenario's.
     */
    void apply(const Scenario &scenario);

private:
    void receive(const Testing::MethodCall &call);
    void meet(const Request &request, const std::optional<Fault> &fault);
    void serve(const Request &request, const std::optional<Fault> &fault);
    void answer(const Request &request, const Application &application,
                const std::optional<Fault> &fault);
    void change(const Request &request, Application *application,
                const std::optional<Fault> &fault);
    void refuse(const Request &request, const QString &error, const QString &message,
                const std::optional<Fault> &fault = {});

    void meetInTime(const QString &path, const Fault &fault);
    void push(const QString &path, const Fault &fault);
    void announceMade(const QString &path, const QString &name,
                      const std::optional<Fault> &fault = {});
    void announceUnmade(const QString &path, const Fault &fault);
    void breakDown(const Fault &fault);
    void leave();
    void comeBack();
    void loseConnection();

    Scenario m_scenario;
    // The configurations as the administrator has made them, by path.
    QMap<QString, Variant> m_known;
    Log *m_log;
    std::function<void()> m_killBus;
    Testing::RawService m_service;
    QString m_address;
    FaultSchedule m_faults;
    // The timers of calls that wait for their answer end with it.
    std::unique_ptr<QObject> m_presence;
};

} // namespace Tarnvel::Sandbox
