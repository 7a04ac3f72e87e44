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

/*! \brief What goes wrong with one call. */
struct CallFaults
{
    /*! Seconds until anything else happens. */
    std::optional<double> delay;
    /*! What then happens in place of the answer, or to it. */
    std::optional<Fault> fault;
};

/*!
 * \brief The faults of a scenario, as they come.
 *
 * For each fault, calls and seconds are counted from when it has come into the scenario; one that
 * stays in the scenario when that changes goes on counting.
 */
class FaultSchedule
{
public:
    using Handler = std::function<void(const QString &path, const Fault &fault)>;

    /*! \brief A plan that calls \a handler when a fault comes at its time. */
    explicit FaultSchedule(Handler handler);

    /*! \brief Goes on with the faults of \a scenario. */
    void setScenario(const Scenario &scenario);

    /*!
     * \brief Counts a call to \a method at \a path.
     *
     * Of several faults that it meets, the first delay and the first other one count.
     */
    CallFaults count(const QString &path, const QString &method);

private:
    struct Entry
    {
        Fault fault;
        int calls = 0;
        std::unique_ptr<QTimer> timer;
    };
    using Entries = QVector<std::shared_ptr<Entry>>;

    std::shared_ptr<Entry> makeEntry(const QString &path, const Fault &fault);

    Handler m_handler;
    QMap<QString, Entries> m_entries;
};

/*! \brief \a seconds as timers take them. */
int toMilliseconds(double seconds);

} // namespace Tarnvel::Sandbox
