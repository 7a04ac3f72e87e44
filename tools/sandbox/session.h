// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "command_line.h"
#include "failure.h"
#include "private_bus.h"
#include "process/command.h"
#include "report/expectation.h"
#include "report/log.h"
#include "scenario/entry_cache.h"
#include "scenario/file_watch.h"
#include "service/simulated_service.h"

#include <QtCore/QString>

#include <optional>

namespace Tarnvel::Sandbox {

/*! \brief One run of the sandbox: the scenario, the bus, the service and the command. */
class Session
{
public:
    /*! \brief A session as \a options say, with its temporary files in \a directory. */
    Session(const Options &options, const QString &directory);

    /*!
     * \brief Runs until the command ends, or a termination signal comes; returns the exit status.
     *
     * The command starts with the state in \a signals. A failure is printed.
     */
    int execute(const SignalState &signals);

private:
    QVector<Tools::Failure> readFiles();
    Tools::Failure startWatch();
    Tools::Failure start(const SignalState &signals);
    Tools::Failure openLog();
    Tools::Failure startService();
    Tools::Failure printAddress() const;
    Tools::Failure startCommand(const SignalState &signals);
    int statusAfter(int status) const;
    void end(int signal, bool isTyped);
    void reload();

    const Options &m_options;
    Expectation m_expectation;
    EntryCache m_cache;
    Log m_log;
    Testing::PrivateBus m_bus;
    std::optional<SimulatedService> m_service;
    std::optional<FileWatch> m_watch;
    std::optional<Command> m_command;
};

} // namespace Tarnvel::Sandbox
