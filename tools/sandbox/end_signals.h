// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <functional>

namespace Tarnvel::Sandbox {

/*!
 * \brief Receives the signals that ask this process to end, in the event loop.
 *
 * These are SIGHUP, SIGINT and SIGTERM. One that comes before the event loop runs is kept for it.
 */
class EndSignals
{
public:
    using Handler = std::function<void(int signal)>;

    /*! \brief From now on, calls \a handler in place of what the signals do by default. */
    explicit EndSignals(Handler handler);

    /*! \brief Ends the receiving. */
    ~EndSignals();

    EndSignals(const EndSignals &) = delete;
    EndSignals &operator=(const EndSignals &) = delete;

private:
    Handler m_handler;
    unsigned int m_sources[3];
};

} // namespace Tarnvel::Sandbox
