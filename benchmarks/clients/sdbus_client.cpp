// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "client.h"
#include "endpoint.h"

#include <map>
#include <sdbus-c++/sdbus-c++.h>
#include <string>
#include <vector>

namespace Tarnvel::Benchmarks {

namespace {

using Dictionary = std::map<std::string, sdbus::Variant>;

// Takes every value out of its variant, as an application that uses it must.
int readAll(const Dictionary &dictionary)
{
    int count = 0;
    for (const auto &[key, value] : dictionary) {
        ++count;
        const std::string type = value.peekValueType();
        if (type == "a{sv}")
            count += readAll(value.get<Dictionary>());
        else if (type == "s")
            value.get<std::string>();
        else if (type == "i")
            value.get<int>();
        else if (type == "b")
            value.get<bool>();
        else if (type == "ai")
            value.get<std::vector<int>>();
        else if (type == "as")
            value.get<std::vector<std::string>>();
    }
    return count;
}

} // namespace

Read makeSdbusClient(const QString &payload)
{
    const std::string path = DBus::applicationPath(QStringLiteral("acme"), payload).toStdString();
    const std::shared_ptr<sdbus::IProxy> proxy = sdbus::createProxy(
        sdbus::createSystemBusConnection(), DBus::serviceName, path);
    return [proxy] {
        Dictionary dictionary;
        proxy->callMethod(DBus::getConfigurationMethod)
            .onInterface(DBus::applicationInterface)
            .storeResultsTo(dictionary);
        return readAll(dictionary);
    };
}

} // namespace Tarnvel::Benchmarks
