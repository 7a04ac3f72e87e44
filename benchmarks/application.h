// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QString>
#include <QtDBus/QDBusMessage>

namespace Tarnvel::Benchmarks {

/*! \brief Takes the identity under which the service keeps the shape called \a name. */
void becomeApplication(const QString &name);

/*! \brief The call that reads the shape called \a name. */
QDBusMessage readCall(const QString &name);

} // namespace Tarnvel::Benchmarks
