// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "announcements.h"

#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

#include "description.h"

namespace Tarnvel::Testing {

using namespace Application::ManagedConfiguration;

Announcements::Announcements(ConfigurationManager &manager)
{
    QObject::connect(
        &manager, &ConfigurationManager::configurationChanged, &m_context,
        [this](const Configuration &configuration) { m_texts.append(describe(configuration)); });
}

QStringList Announcements::texts() const
{
    return m_texts;
}

int Announcements::count() const
{
    return m_texts.count();
}

} // namespace Tarnvel::Testing
