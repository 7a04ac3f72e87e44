// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "description.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

namespace Tarnvel::Testing {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::ConfigurationManager;

/*! \brief Records what a manager emits through configurationChanged(). */
class Announcements
{
public:
    /*! \brief Follows \a manager. */
    explicit Announcements(ConfigurationManager &manager)
    {
        QObject::connect(&manager, &ConfigurationManager::configurationChanged, &m_context,
                         [this](const Configuration &configuration) {
                             m_texts.append(describe(configuration));
                         });
    }

    /*! \brief The announced configurations, as describe() writes them, oldest first. */
    QStringList texts() const
    {
        return m_texts;
    }

    /*! \brief How many there are. */
    int count() const
    {
        return m_texts.count();
    }

private:
    QObject m_context;
    QStringList m_texts;
};

} // namespace Tarnvel::Testing
