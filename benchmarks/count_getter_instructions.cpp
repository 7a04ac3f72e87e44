// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// What the getters of a generated class take, and the lookup in each alone: callgrind counts the
// instructions.

#include "measure.h"
#include "viewersettings.h"

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Benchmarks;

namespace {

template<typename Getter>
void measureGetter(const QString &what, const Configuration &configuration, const QString &key,
                   Getter getter)
{
    constexpr int times = 100;
    const ViewerSettings settings(configuration);
    measure(QStringLiteral("getter.") + what, times, [&settings, getter] { getter(settings); });
    measure(QStringLiteral("getter_by_hand.") + what, times,
            [&configuration, &key] { configuration.get(key); });
}

} // namespace

int main()
{
    Configuration viewer;
    viewer.set(QStringLiteral("theme"), QStringLiteral("light"));
    viewer.set(QStringLiteral("language"), QStringLiteral("en_US"));
    viewer.set(QStringLiteral("zoom"), 100);
    viewer.set(QStringLiteral("fullscreen"), true);
    viewer.set(QStringLiteral("recentFiles"), QStringList {QStringLiteral("a.pdf")});
    measureGetter(QStringLiteral("integer"), viewer, QStringLiteral("zoom"),
                  [](const ViewerSettings &settings) { settings.zoom(); });
    measureGetter(QStringLiteral("boolean"), viewer, QStringLiteral("fullscreen"),
                  [](const ViewerSettings &settings) { settings.fullscreen(); });
    measureGetter(QStringLiteral("string"), viewer, QStringLiteral("language"),
                  [](const ViewerSettings &settings) { settings.language(); });
    measureGetter(QStringLiteral("enumeration"), viewer, QStringLiteral("theme"),
                  [](const ViewerSettings &settings) { settings.theme(); });
    measureGetter(QStringLiteral("list"), viewer, QStringLiteral("recentFiles"),
                  [](const ViewerSettings &settings) { settings.recentFiles(); });
}
