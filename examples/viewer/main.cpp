// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "viewersettings.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>
#include <Tarnvel/ManagedConfiguration/ConfigurationManager>
#include <Tarnvel/ManagedConfiguration/Error>

#include <cstdlib>

using namespace Tarnvel::Application::ManagedConfiguration;

namespace {

void print(const ViewerSettings &settings)
{
    const bool isDark = settings.theme() == ViewerSettings::Theme::Dark;
    QTextStream out(stdout);
    out << "  theme         " << (isDark ? "dark" : "light") << Qt::endl;
    out << "  zoom          " << settings.zoom() << " %" << Qt::endl;
    out << "  recent files  " << settings.recentFiles().join(", ") << Qt::endl;
    out << "  first tool    " << settings.window().toolbar().actions().value(0) << Qt::endl;
    out << "  proxy         " << settings.network().proxy() << Qt::endl;
}

void print(const QString &request, const Error &error)
{
    const QString failure = QString("failed, %1: %2").arg(error.code()).arg(error.message());
    QTextStream(stdout) << request << ": " << (error ? failure : "done") << Qt::endl;
}

void changeZoom(const ViewerSettings &settings)
{
    ViewerSettings::Change change(settings);
    change.setZoom(125);
    ConfigurationManager::instance()->changeConfiguration(
        change.configuration(), [](const Error &error) { print("Changing the zoom", error); });
}

void start(const Configuration &configuration, const Error &error)
{
    print("Reading the configuration", error);
    if (error)
        return QCoreApplication::exit(EXIT_FAILURE);
    const ViewerSettings settings(configuration);
    print(settings);

    ViewerSettings::Change change(settings);
    change.network().setProxy("localhost:8080");
    const auto proceed = [settings](const Error &changeError) {
        print("Changing the proxy", changeError);
        changeZoom(settings);
    };
    ConfigurationManager::instance()->changeConfiguration(change.configuration(), proceed);
}

void follow(const Configuration &configuration)
{
    QTextStream(stdout) << "The configuration has changed" << Qt::endl;
    if (!configuration.isEmpty()) // It is also empty if it could not be read.
        print(ViewerSettings(configuration));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName("acme");
    QCoreApplication::setApplicationName("viewer");
    ConfigurationManager *const manager = ConfigurationManager::instance();
    QObject::connect(manager, &ConfigurationManager::configurationChanged, &application, follow);
    manager->getConfiguration(start);
    return QCoreApplication::exec();
}
