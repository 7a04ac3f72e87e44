// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtDBus/QDBusArgument>
#include <Tarnvel/ManagedConfiguration/configuration.h>

namespace Tarnvel::Client {

/*! \brief The D-Bus signatures of settings that the service keeps and no application sees, by path.
 */
using UnseenSettings = QMap<QString, QString>;

/*! \brief What \a configuration, which was read from \a dictionary, lacks. */
UnseenSettings findUnseenSettings(
    const QDBusArgument &dictionary,
    const Application::ManagedConfiguration::Configuration &configuration);

/*! \brief Those of \a settings at \a path or below; all if it is empty. */
UnseenSettings unseenSettingsAt(const QString &path, const UnseenSettings &settings);

/*! \brief The type \a signature of an unseen setting: "d (double)", "ai (empty list)". */
QString unseenTypeText(const QString &signature);

/*! \brief All \a settings with their types on one line. */
QString unseenSettingsText(const UnseenSettings &settings);

} // namespace Tarnvel::Client
