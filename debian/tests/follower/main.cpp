// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <Tarnvel/ManagedConfiguration/Configuration>
#include <Tarnvel/ManagedConfiguration/ConfigurationManager>
#include <Tarnvel/ManagedConfiguration/Error>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>
#include <QtCore/QTimer>

#include <cstdlib>

using namespace Tarnvel::Application::ManagedConfiguration;

namespace {

constexpr int timeout = 30000;

void expect(bool seen, const QString &what)
{
    QTextStream(stdout) << (seen ? "seen: " : "NOT SEEN: ") << what << Qt::endl;
    if (!seen)
        std::exit(EXIT_FAILURE);
}

void changeZoom()
{
    Configuration change;
    change.set("zoom", 125);
    ConfigurationManager::instance()->changeConfiguration(
        change, [](const Error &error) { expect(!error, "the zoom is changed"); });
}

void changeTheme()
{
    Configuration change;
    change.set("theme", "dark");
    ConfigurationManager::instance()->changeConfiguration(change, [](const Error &error) {
        expect(error.code() == Error::Forbidden, "the theme is locked");
        changeZoom();
    });
}

void start(const Configuration &configuration, const Error &error)
{
    expect(!error, "the configuration is read");
    expect(configuration.get("zoom") == 100, "the zoom is 100 %");
    expect(configuration.getByXpath("window/sizes[1]") == 600, "the second size is 600");
    changeTheme();
}

void follow(const Configuration &configuration)
{
    expect(configuration.get("zoom") == 125, "the change is announced");
    QCoreApplication::quit();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName("acme");
    QCoreApplication::setApplicationName("follower");
    ConfigurationManager *const manager = ConfigurationManager::instance();
    QObject::connect(manager, &ConfigurationManager::configurationChanged, &application, follow);
    manager->getConfiguration(start);
    QTimer::singleShot(timeout, &application, [] { expect(false, "the end"); });
    return QCoreApplication::exec();
}
