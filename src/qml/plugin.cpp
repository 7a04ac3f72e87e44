// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <QtQml/QQmlEngineExtensionPlugin>

namespace Tarnvel::Qml {

/*! \brief The plugin of the QML module, whose types are registered when it is loaded. */
class ManagedConfigurationPlugin : public QQmlEngineExtensionPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QQmlEngineExtensionInterface_iid)
};

} // namespace Tarnvel::Qml

#include "plugin.moc"
