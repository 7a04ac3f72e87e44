// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "endpoint.h"

namespace Tarnvel::DBus {

QStringList errorNames()
{
    return {QStringLiteral("Internal"),      QStringLiteral("NotExistingKey"),
            QStringLiteral("InvalidType"),   QStringLiteral("InvalidValue"),
            QStringLiteral("Forbidden"),     QStringLiteral("NotConfigurable"),
            QStringLiteral("InvalidUserId"), QStringLiteral("UnsupportedType")};
}

QString applicationPath(const QString &organization, const QString &application)
{
    // One arg() after the other, as in the library: a name may contain a placeholder.
    QString path = QStringLiteral("/%1.%2").arg(organization);
    path = path.arg(application);
    return path.replace(QLatin1Char('.'), QLatin1String("_2e"));
}

} // namespace Tarnvel::DBus
