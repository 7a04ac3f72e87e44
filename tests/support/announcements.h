// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QStringList>

#include <memory>

namespace Tarnvel::Application::ManagedConfiguration {
class ConfigurationManager;
}

namespace Tarnvel::Testing {

/*! \brief What a manager announces through configurationChanged() from now on, described. */
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
    std::shared_ptr<QStringList> m_texts = std::make_shared<QStringList>();
};

} // namespace Tarnvel::Testing
