// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "scenario/scenario.h"

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QTimer>
#include <QtCore/QVector>

#include <functional>
#include <memory>
#include <optional>

namespace Tarnvel::Sandbox {

/*! \brief The faults to inject into one call. */
struct CallFaults
{
    /*! Seconds to wait first. */
    std::optional<double> delay;
    /*! What then happens to the reply, or in place of it. */
    std::optional<Fault> fault;
};

/*!
 * \brief Knows when each fault of a scenario is due.
 *
 * For each fault, it counts calls and seconds since the fault was added to the scenario. A fault
 * that is also in the next scenario keeps its counts.
 */
class FaultSchedule
{
public:
    using Handler = std::function<void(const QString &path, const Fault &fault)>;

    /*! \brief A schedule that calls \a handler for each fault whose time has come. */
    explicit FaultSchedule(Handler handler);

    /*! \brief From now on, the faults are those of \a scenario. */
    void setScenario(const std::shared_ptr<const Scenario> &scenario);

    /*!
     * \brief Counts a call to \a method at \a path.
     *
     * Of several faults that are due, the first delay and the first other one count.
     */
    CallFaults count(const QString &path, const QString &method);

private:
    struct ScheduledFault
    {
        // In the scenario.
        const Fault *fault = nullptr;
        int calls = 0;
        QTimer timer;
    };
    using ScheduledFaults = QVector<std::shared_ptr<ScheduledFault>>;

    std::shared_ptr<ScheduledFault> schedule(const QString &path, const Fault &fault);

    Handler m_handler;
    std::shared_ptr<const Scenario> m_scenario;
    // By path.
    QMap<QString, ScheduledFaults> m_scheduled;
};

/*! \brief \a seconds in the unit of timers. */
int toMilliseconds(double seconds);

} // namespace Tarnvel::Sandbox
