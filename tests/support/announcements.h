// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QObject>
#include <QtCore/QStringList>

namespace Tarnvel::Application::ManagedConfiguration {
class ConfigurationManager;
}

namespace Tarnvel::Testing {

/*! \brief What a manager announces through configurationChanged() while this object lives,
 * described. */
class Announcements
{
public:
    /*! \brief Follows \a manager. */
    explicit Announcements(Application::ManagedConfiguration::ConfigurationManager &manager);

    /*! \brief The announced configurations, as describe() writes them, oldest first. */
    QStringList texts() const;

    /*! \brief How many there are. */
    int count() const;

private:
    QObject m_context;
    QStringList m_texts;
};

} // namespace Tarnvel::Testing
