// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "identity.h"

#include "endpoint.h"

namespace Tarnvel::Client {

namespace {

bool isAllowed(QChar character)
{
    const ushort code = character.unicode();
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z')
        || (code >= '0' && code <= '9') || code == '_' || code == '/';
}

Failure failure(const QString &rule)
{
    return {EX_USAGE, QStringLiteral("no object path ") + rule,
            QStringLiteral("give the names by which the service knows the application; they "
                           "consist of letters, digits, \"_\" and \".\"")};
}

} // namespace

Failure identityFailure(const QString &organization, const QString &application)
{
    const QString path = DBus::applicationPath(organization, application);
    if (path.contains(QLatin1String("//")) || path.endsWith(QLatin1Char('/')))
        return failure(QStringLiteral("has an empty element, as in \"%1\"").arg(path));
    for (int position = 0; position < path.size(); ++position) {
        const bool isHigh = path.at(position).isHighSurrogate();
        if (!isAllowed(path.at(position)))
            return failure(QStringLiteral("allows the character \"%1\"")
                               .arg(path.mid(position, isHigh ? 2 : 1)));
    }
    return {};
}

} // namespace Tarnvel::Client
