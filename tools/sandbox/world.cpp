// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "world.h"

#include "json_value.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace Tarnvel::Sandbox {

namespace {

struct Member
{
    QLatin1String key;
    QJsonValue::Type type;
    bool isRequired;
};

QString typeName(QJsonValue::Type type)
{
    switch (type) {
    case QJsonValue::String:
        return QStringLiteral("a string");
    case QJsonValue::Array:
        return QStringLiteral("a list");
    default:
        return QStringLiteral("an object");
    }
}

QString memberMistake(const QJsonValue &value, const Member &member, const QString &place)
{
    if (value.isUndefined())
        return member.isRequired
            ? mistakeAt(place, QStringLiteral("\"%1\" is missing").arg(member.key))
            : QString();
    return value.type() == member.type
        ? QString()
        : mistakeAt(memberPlace(place, member.key),
                    QStringLiteral("not %1").arg(typeName(member.type)));
}

bool checkMembers(const QJsonObject &object, const QList<Member> &members, const QString &place,
                  QString *mistake)
{
    QStringList unknown = object.keys();
    for (const Member &member : members) {
        *mistake = memberMistake(object.value(member.key), member, place);
        if (!mistake->isEmpty())
            return false;
        unknown.removeOne(member.key);
    }
    if (unknown.isEmpty())
        return true;
    *mistake = mistakeAt(memberPlace(place, unknown.first()), QStringLiteral("unknown member"));
    return false;
}

bool parseLocked(const QJsonArray &list, const QString &place, QStringList *locked,
                 QString *mistake)
{
    for (int index = 0; index < list.size(); ++index) {
        const QString path = list.at(index).toString();
        if (lockedKeys(path).isEmpty()) {
            *mistake = mistakeAt(itemPlace(place, index),
                                 QStringLiteral("not the path of a setting, such as \"a/b\""));
            return false;
        }
        locked->append(path);
    }
    return true;
}

bool parseApplication(const QJsonValue &value, const QString &place, World *world, QString *mistake)
{
    static const QList<Member> members {
        {QLatin1String("organization"), QJsonValue::String, true},
        {QLatin1String("application"), QJsonValue::String, true},
        {QLatin1String("configuration"), QJsonValue::Object, true},
        {QLatin1String("locked"), QJsonValue::Array, false},
    };
    if (!value.isObject()) {
        *mistake = mistakeAt(place, QStringLiteral("not an object"));
        return false;
    }
    const QJsonObject object = value.toObject();
    if (!checkMembers(object, members, place, mistake))
        return false;

    const QString organization = object.value(QLatin1String("organization")).toString();
    const QString application = object.value(QLatin1String("application")).toString();
    const QString path = applicationPath(organization, application);
    if (path.contains(QChar::Null) || !g_variant_is_object_path(path.toUtf8().constData())) {
        *mistake = mistakeAt(place, QStringLiteral("\"%1\" is no object path").arg(path));
        return false;
    }
    if (world->contains(path)) {
        *mistake = mistakeAt(place, QStringLiteral("a second application at \"%1\"").arg(path));
        return false;
    }

    Application &entry = (*world)[path];
    entry.name = organization + QLatin1Char('/') + application;
    entry.configuration = configurationFromJson(
        object.value(QLatin1String("configuration")).toObject(),
        memberPlace(place, QStringLiteral("configuration")), mistake);
    return entry.configuration
        && parseLocked(object.value(QLatin1String("locked")).toArray(),
                       memberPlace(place, QStringLiteral("locked")), &entry.locked, mistake);
}

bool parseApplications(const QJsonDocument &document, World *world, QString *mistake)
{
    if (!document.isObject()) {
        *mistake = QStringLiteral("not an object");
        return false;
    }
    const QString place = QStringLiteral("applications");
    if (!checkMembers(document.object(), {{QLatin1String("applications"), QJsonValue::Array, true}},
                      {}, mistake))
        return false;
    const QJsonArray list = document.object().value(place).toArray();
    for (int index = 0; index < list.size(); ++index) {
        if (!parseApplication(list.at(index), itemPlace(place, index), world, mistake))
            return false;
    }
    return true;
}

QString syntaxMistake(const QString &fileName, const QByteArray &text, const QJsonParseError &error)
{
    // The parser reports where it stopped: behind the character that it did not expect, save for
    // what follows a whole document.
    const bool isBehind = error.error != QJsonParseError::GarbageAtEnd && error.offset > 0;
    const QByteArray before = text.left(isBehind ? error.offset - 1 : error.offset);
    const int lineStart = before.lastIndexOf('\n') + 1;
    return QStringLiteral("%1:%2:%3: %4")
        .arg(fileName, QString::number(before.count('\n') + 1),
             QString::number(QString::fromUtf8(before.mid(lineStart)).size() + 1),
             error.errorString());
}

} // namespace

QString applicationPath(const QString &organization, const QString &application)
{
    QString path = QStringLiteral("/%1.%2").arg(organization);
    path = path.arg(application);
    return path.replace(QLatin1Char('.'), QLatin1String("_2e"));
}

QStringList lockedKeys(const QString &path)
{
    const QStringList keys = path.split(QLatin1Char('/'));
    return keys.contains(QString()) ? QStringList() : keys;
}

bool parseWorld(const QString &fileName, const QByteArray &text, World *world, QString *mistake)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        *mistake = syntaxMistake(fileName, text, error);
        return false;
    }
    World parsed;
    if (!parseApplications(document, &parsed, mistake)) {
        *mistake = fileName + QLatin1String(": ") + *mistake;
        return false;
    }
    *world = parsed;
    return true;
}

bool readWorld(const QString &fileName, World *world, QString *mistake)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *mistake = fileName + QLatin1String(": ") + file.errorString();
        return false;
    }
    return parseWorld(fileName, file.readAll(), world, mistake);
}

} // namespace Tarnvel::Sandbox
