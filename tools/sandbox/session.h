// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "command_line.h"
#include "private_bus.h"
#include "process/command.h"
#include "report/expectation.h"
#include "report/log.h"
#include "scenario/file_watch.h"
#include "service/simulated_service.h"

#include <QtCore/QString>

#include <optional>

namespace Tarnvel::Sandbox {

/*! \brief One run of the sandbox: the scenario, the bus, the service and the command. */
class Session
{
public:
    /*! \brief The run that \a options ask for, with its temporary files in \a directory. */
    Session(const Options &options, const QString &directory);

    /*!
     * \brief Runs until the command has ended, or until told to end, and returns the exit status.
     *
     * The command finds the signals as they were for \a signals.
     */
    int execute(const SignalState &signals);

private:
    bool prepare();
    bool openLog();
    bool startService();
    int stay();
    int runCommand(const SignalState &signals);
    int judge(int status) const;
    void end(int signal, bool isTyped);
    void readAgain();
    bool fail(const QString &mistake, int status);

    const Options &m_options;
    int m_failure = 0;
    Expectation m_expectation;
    Log m_log;
    PrivateBus m_bus;
    Scenario m_scenario;
    std::optional<SimulatedService> m_service;
    std::optional<FileWatch> m_watch;
    std::optional<Command> m_command;
};

} // namespace Tarnvel::Sandbox
