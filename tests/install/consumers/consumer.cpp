// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// An application outside the project, for any language standard: it uses each public class and
// makes one request.

#include <QCoreApplication>

#include <Tarnvel/ManagedConfiguration/Configuration>
#include <Tarnvel/ManagedConfiguration/ConfigurationManager>
#include <Tarnvel/ManagedConfiguration/Error>
#include <Tarnvel/ManagedConfiguration/Xpath>

#include <cstdio>

using namespace Tarnvel::Application::ManagedConfiguration;

namespace {

QString themeByPath()
{
    Configuration window;
    window.set(QStringLiteral("theme"), QStringLiteral("dark"));
    Configuration configuration;
    configuration.set(QStringLiteral("window"), QVariant::fromValue(window));
    return configuration.getByXpath(QStringLiteral("window/theme")).toString();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("acme"));
    QCoreApplication::setApplicationName(QStringLiteral("consumer"));

    const Xpath path(QStringLiteral("sizes[2]"));
    std::printf("%s %d\n", qPrintable(themeByPath()), path.accesses().at(1).toIndex());

    ConfigurationManager::instance()->getConfiguration(
        [](const Configuration &configuration, const Error &error) {
            std::printf("entries: %s, error: %d\n", configuration.isEmpty() ? "no" : "yes",
                        static_cast<int>(error.code()));
            QCoreApplication::quit();
        });
    return QCoreApplication::exec();
}
