// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "application.h"
#include "client.h"
#include "configuration_p.h"

#include <QtCore/QEventLoop>
#include <Tarnvel/ManagedConfiguration/configuration_manager.h>

namespace Tarnvel::Benchmarks {

using namespace Application::ManagedConfiguration;

namespace {

int countEntries(const Configuration &configuration)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    int count = entries.size();
    for (const QVariant &value : entries) {
        if (value.userType() == qMetaTypeId<Configuration>())
            count += countEntries(value.value<Configuration>());
    }
    return count;
}

} // namespace

Read makeTarnvelClient(const QString &payload)
{
    setApplication(payload);
    // One manager per payload: it takes its object path from the names at its creation.
    const auto manager = std::make_shared<ConfigurationManager>();
    return [manager] {
        QEventLoop loop;
        int count = 0;
        manager->getConfiguration([&](const Configuration &configuration, const Error &error) {
            if (error)
                qFatal("%s", qUtf8Printable(error.message()));
            count = countEntries(configuration);
            loop.quit();
        });
        loop.exec();
        return count;
    };
}

} // namespace Tarnvel::Benchmarks
