// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "unseen_settings.h"

#include "path.h"
#include "qt_version_p.h"

#include <QtCore/QStringList>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusVariant>

namespace Tarnvel::Client {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::QtType;

namespace {

QString signatureOf(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QDBusArgument>())
        return value.value<QDBusArgument>().currentSignature();
    return QLatin1String(QDBusMetaType::typeToSignature(QtType(value.userType())));
}

// The library reads other dictionaries as empty configurations.
bool isReadable(const QString &dictionarySignature)
{
    static const QStringList signatures {QStringLiteral("a{sv}"), QStringLiteral("a{ov}"),
                                         QStringLiteral("a{gv}")};
    return signatures.contains(dictionarySignature);
}

void collect(const QDBusArgument &dictionary, const Configuration &configuration,
             const QString &prefix, UnseenSettings *settings)
{
    dictionary.beginMap();
    while (!dictionary.atEnd()) {
        QString key;
        QDBusVariant variant;
        dictionary.beginMapEntry();
        dictionary >> key >> variant;
        dictionary.endMapEntry();
        const QVariant value = variant.variant();
        const QString path = prefix + keyText(key);
        const QString signature = signatureOf(value);
        if (!configuration.containsKey(key)
            || (signature.startsWith(QLatin1String("a{")) && !isReadable(signature)))
            settings->insert(path, signature);
        else if (isReadable(signature))
            collect(value.value<QDBusArgument>(),
                    Configuration::fromVariant(configuration.get(key)), path + QLatin1Char('/'),
                    settings);
    }
    dictionary.endMap();
}

} // namespace

UnseenSettings findUnseenSettings(const QDBusArgument &dictionary,
                                  const Configuration &configuration)
{
    UnseenSettings settings;
    collect(dictionary, configuration, QString(), &settings);
    return settings;
}

UnseenSettings unseenSettingsAt(const QString &path, const UnseenSettings &settings)
{
    if (path.isEmpty())
        return settings;
    UnseenSettings found;
    if (settings.contains(path))
        found.insert(path, settings.value(path));
    const QString prefix = path + QLatin1Char('/');
    auto setting = settings.lowerBound(prefix);
    for (; setting != settings.end() && setting.key().startsWith(prefix); ++setting)
        found.insert(setting.key(), setting.value());
    return found;
}

QString unseenTypeText(const QString &signature)
{
    static const QMap<QString, QString> names {
        {QStringLiteral("y"), QStringLiteral("byte")},
        {QStringLiteral("n"), QStringLiteral("int16")},
        {QStringLiteral("q"), QStringLiteral("uint16")},
        {QStringLiteral("u"), QStringLiteral("uint32")},
        {QStringLiteral("x"), QStringLiteral("int64")},
        {QStringLiteral("t"), QStringLiteral("uint64")},
        {QStringLiteral("d"), QStringLiteral("double")},
        {QStringLiteral("o"), QStringLiteral("object path")},
        {QStringLiteral("g"), QStringLiteral("signature")},
        {QStringLiteral("h"), QStringLiteral("file descriptor")},
        {QStringLiteral("v"), QStringLiteral("variant")},
        // With items, applications see these.
        {QStringLiteral("ai"), QStringLiteral("empty list")},
        {QStringLiteral("ab"), QStringLiteral("empty list")},
    };
    const QString name = names.value(signature);
    return name.isEmpty() ? signature : QStringLiteral("%1 (%2)").arg(signature, name);
}

QString unseenSettingsText(const UnseenSettings &settings)
{
    QStringList texts;
    for (auto setting = settings.begin(); setting != settings.end(); ++setting)
        texts.append(QStringLiteral("%1 of D-Bus type %2")
                         .arg(setting.key(), unseenTypeText(setting.value())));
    return texts.join(QStringLiteral(", "));
}

} // namespace Tarnvel::Client
