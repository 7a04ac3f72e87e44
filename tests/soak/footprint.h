// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace Tarnvel::Soak {

/*! \brief What this process occupies. */
struct Footprint
{
    /*! Bytes that the process has allocated and not released. */
    qint64 heap;
    /*! Bytes of physical memory, once what can be returned to the system has been. */
    qint64 resident;
    int files;
    int threads;
};

/*! \brief What this process occupies now. */
Footprint takeFootprint();

/*! \brief How many bytes a run may add to what the process occupies. */
struct Budget
{
    /*! For each notification that a living manager has received. */
    qint64 notification;
    /*! For all else, in Footprint::heap. */
    qint64 heap;
    /*! For all else, in Footprint::resident. */
    qint64 resident;
};

/*! \brief The budget stored in \a fileName; ends the process if the file is incomplete. */
Budget readBudget(const QString &fileName);

} // namespace Tarnvel::Soak
