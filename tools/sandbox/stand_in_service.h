// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "bus_service.h"
#include "world.h"

#include <QtCore/QString>

namespace Tarnvel::Sandbox {

/*!
 * \brief The service as a World has it.
 *
 * A change is merged key by key at the top level, as a whole or not at all, and is kept in memory
 * only. Locked settings stay as they are. Each call, change and refusal is an event that is
 * printed.
 */
class StandInService
{
public:
    /*! \brief A service that keeps \a world and is not on a bus yet. */
    explicit StandInService(const World &world);

    /*! \brief Appears on the bus at \a address; if that fails, false, and errorString() says why.
     */
    bool open(const QString &address);

    /*!
     * \brief Keeps \a world from now on.
     *
     * Announces a change to exactly the applications whose configuration is not what it was, also
     * to one that has come or gone.
     */
    void takeOver(const World &world);

    /*! \brief What went wrong in open(). */
    QString errorString() const;

private:
    void receive(const MethodCall &call);
    void answer(const MethodCall &call, const Application &application);
    void change(const MethodCall &call, Application *application);
    void announce(const QString &path, const QString &name);

    World m_world;
    BusService m_service;
};

} // namespace Tarnvel::Sandbox
