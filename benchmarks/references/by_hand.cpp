// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "by_hand.h"

#include <QtDBus/QDBusArgument>

namespace Tarnvel::Benchmarks {

namespace {

template<typename T>
QVariant readList(const QDBusArgument &argument)
{
    QList<T> list;
    argument >> list;
    return QVariant::fromValue(list);
}

QVariant readValue(const QVariant &value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return value;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() == QDBusArgument::MapType)
        return readByHand(argument);
    const QString signature = argument.currentSignature();
    if (signature == QLatin1String("ai"))
        return readList<int>(argument);
    if (signature == QLatin1String("ab"))
        return readList<bool>(argument);
    return {};
}

} // namespace

QVariantMap readByHand(const QDBusArgument &argument)
{
    QVariantMap map;
    argument.beginMap();
    while (!argument.atEnd()) {
        QString key;
        QVariant value;
        argument.beginMapEntry();
        argument >> key >> value;
        argument.endMapEntry();
        map.insert(key, readValue(value));
    }
    argument.endMap();
    return map;
}

} // namespace Tarnvel::Benchmarks
