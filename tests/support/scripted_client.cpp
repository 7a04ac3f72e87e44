// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

// An application that does with its managed configuration what its arguments say, one step after
// the other, and prints a line for each: "get", "set KEY=VALUE" (an integer, or else a string), or
// "follow", which waits for the next change. What it has not waited for is told at the end.

#include <Tarnvel/ManagedConfiguration/Configuration>
#include <Tarnvel/ManagedConfiguration/ConfigurationManager>
#include <Tarnvel/ManagedConfiguration/Error>

#include <QtCore/QCoreApplication>
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

void print(const QString &line)
{
    QTextStream(stdout) << line << Qt::endl;
}

class Steps
{
public:
    explicit Steps(const QStringList &steps) : m_steps(steps)
    {
        QObject::connect(m_manager, &ConfigurationManager::configurationChanged, m_manager,
                         [this](const Configuration &configuration) {
                             m_changes.append(described(configuration));
                             if (m_isFollowing)
                                 follow();
                         });
    }

    void next()
    {
        if (m_steps.isEmpty())
            return end();
        const QString step = m_steps.takeFirst();
        if (step == "get")
            get();
        else if (step.startsWith("set "))
            set(step.mid(4));
        else
            follow();
    }

private:
    void get()
    {
        m_manager->getConfiguration([this](const Configuration &configuration, const Error &error) {
            print("got " + (error ? described(error) : described(configuration)));
            next();
        });
    }

    void set(const QString &assignment)
    {
        const QString key = assignment.section('=', 0, 0);
        const QString text = assignment.section('=', 1);
        bool isInteger = false;
        const int number = text.toInt(&isInteger);
        Configuration change;
        change.set(key, isInteger ? QVariant(number) : QVariant(text));
        m_manager->changeConfiguration(change, [this](const Error &error) {
            print("set " + (error ? described(error) : QString("done")));
            next();
        });
    }

    void follow()
    {
        m_isFollowing = m_changes.isEmpty();
        if (m_isFollowing)
            return;
        print("changed to " + m_changes.takeFirst());
        next();
    }

    void end()
    {
        if (!m_changes.isEmpty())
            print(QString("%1 more changes").arg(m_changes.size()));
        QCoreApplication::quit();
    }

    ConfigurationManager *m_manager = ConfigurationManager::instance();
    QStringList m_steps;
    QStringList m_changes;
    bool m_isFollowing = false;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName("acme");
    QCoreApplication::setApplicationName("viewer");
    Steps steps(QCoreApplication::arguments().mid(1));
    QMetaObject::invokeMethod(
        &application, [&steps] { steps.next(); }, Qt::QueuedConnection);
    return QCoreApplication::exec();
}
