// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "change_validation.h"
#include "failure.h"
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
 * \brief A service on the bus that answers from a Scenario.
 *
 * It validates each change, merges it key by key at the top level, as a whole or not at all, and
 * keeps the result in memory only. It injects the faults of the scenario from open() on. Each call,
 * announcement and fault is an event of the log.
 */
class SimulatedService
{
public:
    /*!
     * \brief A service, not on a bus yet, that answers from \a scenario and reports to \a log.
     *
     * Calls \a killBus for the fault bus-death.
     */
    SimulatedService(Scenario scenario, Log *log, std::function<void()> killBus);

    /*! \brief Connects to the bus at \a address, or fails. */
    Tools::Failure open(const QString &address);

    /*!
     * \brief Answers from \a scenario from now on.
     *
     * Announces a change to exactly the applications whose configuration is different now,
     * including those that were added or removed. Faults that are in both scenarios continue.
     */
    void apply(Scenario scenario);

    /*! \brief The configuration that the service keeps at \a path; null if it keeps none. */
    Variant configurationAt(const QString &path) const;

private:
    void receive(const Testing::MethodCall &call);
    void handle(const Request &request, const std::optional<Fault> &fault);
    void serve(const Request &request, const std::optional<Fault> &fault);
    void get(const Request &request, const std::optional<Fault> &fault);
    void change(const Request &request, const Application &application,
                const std::optional<Fault> &fault);
    void refuse(const Request &request, const QString &error, const QString &message,
                const std::optional<Fault> &fault = {});

    void inject(const QString &path, const Fault &fault);
    void announce(const QString &path, const QString &name, const std::optional<Fault> &fault = {});
    KeptConfiguration keptAt(const QString &path) const;
    void endService(const Fault &fault);
    void close();
    void reopen();
    void handleConnectionLoss();

    std::shared_ptr<const Scenario> m_scenario;
    // By path; the others are the scenario's.
    QMap<QString, KeptConfiguration> m_kept;
    Log *m_log;
    std::function<void()> m_killBus;
    Testing::RawService m_service;
    QString m_address;
    FaultSchedule m_faults;
    // Delayed replies and restarts are dropped with it.
    std::unique_ptr<QObject> m_timerContext;
};

} // namespace Tarnvel::Sandbox
