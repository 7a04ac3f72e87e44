// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "description.h"

#include "configuration_p.h"

#include <QtCore/QStringList>

namespace Tarnvel::Testing {

using namespace Application::ManagedConfiguration;

namespace {

QString itemText(const QVariant &item)
{
    const QString text = item.toString();
    if (item.isNull() || text.isNull())
        return QStringLiteral("null");
    return item.userType() == QMetaType::QString ? u'"' + text + u'"' : text;
}

QString listText(const QVariant &value)
{
    const auto items = value.value<QVariantList>();
    QStringList texts;
    for (const QVariant &item : items)
        texts.append(itemText(item));
    return u'[' + texts.join(QLatin1String(", ")) + u']';
}

} // namespace

QString describe(const QVariant &value)
{
    const QString type = QLatin1String(value.typeName());
    if (!value.isValid())
        return QStringLiteral("invalid");
    if (value.userType() == qMetaTypeId<Configuration>())
        return describe(value.value<Configuration>());
    if (value.userType() == QMetaType::QStringList || value.userType() == qMetaTypeId<QList<int>>()
        || value.userType() == qMetaTypeId<QList<bool>>()
        || value.userType() == qMetaTypeId<QList<QString>>())
        return type + u' ' + listText(value);
    if (value.userType() == QMetaType::Int || value.userType() == QMetaType::Bool
        || value.userType() == QMetaType::QString)
        return type + u' ' + itemText(value);
    return type;
}

QString describe(const Configuration &configuration)
{
    const QMap<QString, QVariant> entries = ConfigurationPrivate::data(configuration);
    QStringList texts;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry)
        texts.append(QStringLiteral("\"%1\": %2").arg(entry.key(), describe(entry.value())));
    return u'{' + texts.join(QLatin1String(", ")) + u'}';
}

Configuration makeConfiguration(const QMap<QString, QVariant> &entries)
{
    return Configuration(new ConfigurationPrivate(entries));
}

} // namespace Tarnvel::Testing
