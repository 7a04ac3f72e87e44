// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <Tarnvel/ManagedConfiguration/Configuration>
#include <Tarnvel/ManagedConfiguration/ConfigurationManager>
#include <Tarnvel/ManagedConfiguration/Error>

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

#include <cstdlib>

using namespace Tarnvel::Application::ManagedConfiguration;

namespace {

void print(const Configuration &configuration)
{
    const QStringList recentFiles = configuration.get("recentFiles").toStringList();
    QTextStream out(stdout);
    out << "  theme         " << configuration.get("theme").toString() << Qt::endl;
    out << "  zoom          " << configuration.get("zoom").toInt() << " %" << Qt::endl;
    out << "  recent files  " << recentFiles.join(", ") << Qt::endl;
    out << "  first tool    " << configuration.getByXpath("window/toolbar/actions[0]").toString()
        << Qt::endl;
    out << "  proxy         " << configuration.getByXpath("network/proxy").toString() << Qt::endl;
}

void print(const QString &request, const Error &error)
{
    const QString failure = QString("failed, %1: %2").arg(error.code()).arg(error.message());
    QTextStream(stdout) << request << ": " << (error ? failure : "done") << Qt::endl;
}

void changeZoom()
{
    Configuration change;
    change.set("zoom", 125);
    ConfigurationManager::instance()->changeConfiguration(
        change, [](const Error &error) { print("Changing the zoom", error); });
}

void start(const Configuration &configuration, const Error &error)
{
    print("Reading the configuration", error);
    if (error)
        return QCoreApplication::exit(EXIT_FAILURE);
    print(configuration);

    // To change a nested configuration, take it out, change it and put it back.
    Configuration network = Configuration::fromVariant(configuration.get("network"));
    network.set("proxy", "localhost:8080");
    Configuration change;
    change.set("network", QVariant::fromValue(network));
    ConfigurationManager::instance()->changeConfiguration(change, [](const Error &changeError) {
        print("Changing the proxy", changeError);
        changeZoom();
    });
}

void follow(const Configuration &configuration)
{
    QTextStream(stdout) << "The configuration has changed" << Qt::endl;
    if (!configuration.isEmpty()) // It is also empty if it could not be read.
        print(configuration);
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
