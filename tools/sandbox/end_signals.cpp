// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "end_signals.h"

#include <csignal>
#include <glib-unix.h>
#include <utility>

namespace Tarnvel::Sandbox {

namespace {

template<int Signal>
guint receive(EndSignals::Handler *handler)
{
    return g_unix_signal_add(
        Signal,
        [](gpointer target) -> gboolean {
            (*static_cast<EndSignals::Handler *>(target))(Signal);
            return G_SOURCE_CONTINUE;
        },
        handler);
}

} // namespace

EndSignals::EndSignals(Handler handler)
    : m_handler(std::move(handler)),
      m_sources {receive<SIGHUP>(&m_handler), receive<SIGINT>(&m_handler),
                 receive<SIGTERM>(&m_handler)}
{
}

EndSignals::~EndSignals()
{
    for (const guint source : m_sources)
        g_source_remove(source);
}

} // namespace Tarnvel::Sandbox
