// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtDBus/QDBusMessage>

namespace Tarnvel::Benchmarks {

/*! \brief Sets the application for which the service keeps the payload called \a name. */
void setApplication(const QString &name);

/*! \brief A call that reads the payload called \a name. */
QDBusMessage readCall(const QString &name);

} // namespace Tarnvel::Benchmarks
