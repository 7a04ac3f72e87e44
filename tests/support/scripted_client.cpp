// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// An application that reads, changes and follows its managed configuration, one step for each
// argument, and prints a line for each: "get", "set KEY=VALUE" (an integer, or else a string), or
// "follow", which waits for the next change. At the end, prints how many more changes
// it has received.

#include <Tarnvel/ManagedConfiguration/Configuration>
#include <Tarnvel/ManagedConfiguration/ConfigurationManager>
#include <Tarnvel/ManagedConfiguration/Error>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QTextStream>

#include "configuration_p.h"

using namespace Tarnvel::Application::ManagedConfiguration;

namespace {

QString described(const Configuration &configuration)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    QStringList texts;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        texts.append(entry.key() + '=' + entry.value().toString());
    return texts.isEmpty() ? QString("nothing") : texts.join(' ');
}

QString described(const Error &error)
{
    return QString("error %1: %2").arg(error.code()).arg(error.message());
}

QString get(ConfigurationManager &manager)
{
    QString result;
    QEventLoop loop;
    manager.getConfiguration([&](const Configuration &configuration, const Error &error) {
        result = error ? described(error) : described(configuration);
        loop.quit();
    });
    loop.exec();
    return result;
}

QString set(ConfigurationManager &manager, const QString &assignment)
{
    const QString text = assignment.section('=', 1);
    bool isInteger = false;
    const int number = text.toInt(&isInteger);
    Configuration change;
    change.set(assignment.section('=', 0, 0), isInteger ? QVariant(number) : QVariant(text));
    QString result;
    QEventLoop loop;
    manager.changeConfiguration(change, [&](const Error &error) {
        result = error ? described(error) : QString("done");
        loop.quit();
    });
    loop.exec();
    return result;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName("acme");
    QCoreApplication::setApplicationName("viewer");
    ConfigurationManager &manager = *ConfigurationManager::instance();
    QStringList changes;
    QEventLoop changed;
    QObject::connect(&manager, &ConfigurationManager::configurationChanged, &changed,
                     [&](const Configuration &configuration) {
                         changes.append(described(configuration));
                         changed.quit();
                     });

    QTextStream out(stdout);
    const QStringList steps = QCoreApplication::arguments().mid(1);
    for (const QString &step : steps) {
        if (step == "get") {
            out << "got " << get(manager) << Qt::endl;
        } else if (step.startsWith("set ")) {
            out << "set " << set(manager, step.mid(4)) << Qt::endl;
        } else {
            if (changes.isEmpty())
                changed.exec();
            out << "changed to " << changes.takeFirst() << Qt::endl;
        }
    }
    if (!changes.isEmpty())
        out << changes.size() << " more changes" << Qt::endl;
}
