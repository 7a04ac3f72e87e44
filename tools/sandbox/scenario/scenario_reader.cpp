// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "scenario.h"

#include "configuration_reader.h"
#include "endpoint.h"
#include "fault_reader.h"
#include "json_reader.h"

#include <QtCore/QFile>

namespace Tarnvel::Sandbox {

namespace {

constexpr char byteOrderMark[] = "\xef\xbb\xbf";

// The greatest number stands for no user at all.
constexpr qint64 maximumUser = std::numeric_limits<quint32>::max() - 1;

struct Entry
{
    QString organizationName;
    QString applicationName;
    Application application;
};

using ReadItem = bool (*)(const JsonValue &item, Application *application, Mistake *mistake);

bool readItems(const JsonMember &member, ReadItem read, Application *application, Mistake *mistake)
{
    if (!isOfKind(member, JsonValue::List, mistake))
        return false;
    return std::all_of(member.value.items.begin(), member.value.items.end(),
                       [&](const JsonValue &item) { return read(item, application, mistake); });
}

bool checkPath(const QString &path, int offset, Mistake *mistake)
{
    return (isDBusText(path) && !settingKeys(path).isEmpty())
        || refuse(
               offset,
               QStringLiteral("%1 is not the path of a setting, such as \"a/b\"").arg(quoted(path)),
               mistake);
}

bool readLock(const JsonValue &item, Application *application, Mistake *mistake)
{
    if (!isOfKind(item, JsonValue::String, QStringLiteral("a locked path"), mistake)
        || !checkPath(item.text, item.offset, mistake))
        return false;
    application->locked.append(item.text);
    return true;
}

bool readUser(const JsonValue &item, Application *application, Mistake *mistake)
{
    qint64 user = 0;
    if (!integerFromJson(item, 0, maximumUser, &user))
        return refuse(item.offset,
                      QStringLiteral("a user is no integer from 0 to %1").arg(maximumUser),
                      mistake);
    application->users->append(static_cast<quint32>(user));
    return true;
}

bool readFault(const JsonValue &item, Application *application, Mistake *mistake)
{
    Fault fault {};
    if (!faultFromJson(item, &fault, mistake))
        return false;
    application->faults.append(fault);
    return true;
}

bool readLimit(const JsonMember &member, qint32 *limit, Mistake *mistake)
{
    using Limits = std::numeric_limits<qint32>;
    qint64 number = 0;
    if (!integerFromJson(member.value, Limits::min(), Limits::max(), &number))
        return refuse(member.value.offset,
                      QStringLiteral("\"%1\" is no 32-bit integer").arg(member.key), mistake);
    *limit = static_cast<qint32>(number);
    return true;
}

bool readRange(const JsonValue &value, AllowedValues *allowed, Mistake *mistake)
{
    static const QVector<KnownMember<AllowedValues>> members {
        {"minimum", false,
         [](const JsonMember &member, AllowedValues *range, Mistake *wrong) {
             return readLimit(member, &range->minimum, wrong);
         }},
        {"maximum", false,
         [](const JsonMember &member, AllowedValues *range, Mistake *wrong) {
             return readLimit(member, &range->maximum, wrong);
         }},
    };
    if (!readMembers(value, QStringLiteral("a range"), members, allowed, mistake))
        return false;
    if (value.members.empty())
        return refuse(value.offset, QStringLiteral("\"minimum\" or \"maximum\" is missing"),
                      mistake);
    return allowed->minimum <= allowed->maximum
        || refuse(value.offset, QStringLiteral("\"minimum\" is greater than \"maximum\""), mistake);
}

bool readList(const JsonValue &value, AllowedValues *allowed, Mistake *mistake)
{
    if (value.items.empty())
        return refuse(value.offset, QStringLiteral("no value is allowed"), mistake);
    const Variant list = arrayFromJson(value, mistake);
    if (!list)
        return false;
    for (gsize index = 0; index < g_variant_n_children(list.get()); ++index)
        allowed->values.append(adopt(g_variant_get_child_value(list.get(), index)));
    return true;
}

bool readAllowed(const JsonMember &setting, Application *application, Mistake *mistake)
{
    AllowedValues allowed;
    allowed.path = setting.key;
    if (!checkPath(setting.key, setting.offset, mistake))
        return false;
    if (setting.value.kind != JsonValue::List && setting.value.kind != JsonValue::Object)
        return refuse(setting.value.offset,
                      QStringLiteral("the allowed values are neither a list nor a range"), mistake);
    const auto read = setting.value.kind == JsonValue::List ? readList : readRange;
    if (!read(setting.value, &allowed, mistake))
        return false;
    application->allowed.append(allowed);
    return true;
}

bool readConfigurable(const JsonMember &member, Entry *entry, Mistake *mistake)
{
    entry->application.isConfigurable = member.value.isTrue;
    return isOfKind(member, JsonValue::Boolean, mistake);
}

bool readConfiguration(const JsonMember &member, Entry *entry, Mistake *mistake)
{
    entry->application.configuration = configurationFromJson(member.value, mistake);
    return entry->application.configuration != nullptr;
}

bool readAllAllowed(const JsonMember &member, Entry *entry, Mistake *mistake)
{
    const std::vector<JsonMember> &settings = member.value.members;
    return isOfKind(member, JsonValue::Object, mistake)
        && std::all_of(settings.begin(), settings.end(), [&](const JsonMember &setting) {
               return readAllowed(setting, &entry->application, mistake);
           });
}

const QVector<KnownMember<Entry>> &knownMembers()
{
    static const QVector<KnownMember<Entry>> members {
        {"organization", true,
         [](const JsonMember &member, Entry *entry, Mistake *mistake) {
             entry->organizationName = member.value.text;
             return isOfKind(member, JsonValue::String, mistake);
         }},
        {"application", true,
         [](const JsonMember &member, Entry *entry, Mistake *mistake) {
             entry->applicationName = member.value.text;
             return isOfKind(member, JsonValue::String, mistake);
         }},
        {"configuration", true, readConfiguration},
        {"locked", false,
         [](const JsonMember &member, Entry *entry, Mistake *mistake) {
             return readItems(member, readLock, &entry->application, mistake);
         }},
        {"configurable", false, readConfigurable},
        {"users", false,
         [](const JsonMember &member, Entry *entry, Mistake *mistake) {
             entry->application.users.emplace();
             return readItems(member, readUser, &entry->application, mistake);
         }},
        {"allowed", false, readAllAllowed},
        {"faults", false,
         [](const JsonMember &member, Entry *entry, Mistake *mistake) {
             return readItems(member, readFault, &entry->application, mistake);
         }},
    };
    return members;
}

bool readApplication(const JsonValue &value, Scenario *scenario, Mistake *mistake)
{
    Entry entry;
    if (!readMembers(value, QStringLiteral("an application"), knownMembers(), &entry, mistake))
        return false;
    const QString path = DBus::applicationPath(entry.organizationName, entry.applicationName);
    if (!isDBusText(path) || !g_variant_is_object_path(path.toUtf8().constData()))
        return refuse(value.offset, QStringLiteral("%1 is no object path").arg(quoted(path)),
                      mistake);
    if (scenario->contains(path))
        return refuse(value.offset, QStringLiteral("a second application at %1").arg(quoted(path)),
                      mistake);
    entry.application.name = entry.organizationName + QLatin1Char('/') + entry.applicationName;
    scenario->insert(path, entry.application);
    return true;
}

bool readDocument(const JsonValue &document, Scenario *scenario, Mistake *mistake)
{
    static const QVector<KnownMember<Scenario>> members {
        // It names the JSON Schema of the file, for editors.
        {"$schema", false,
         [](const JsonMember &member, Scenario *, Mistake *wrong) {
             return isOfKind(member, JsonValue::String, wrong);
         }},
        {"applications", true,
         [](const JsonMember &member, Scenario *applications, Mistake *wrong) {
             const std::vector<JsonValue> &items = member.value.items;
             return isOfKind(member, JsonValue::List, wrong)
                 && std::all_of(items.begin(), items.end(), [&](const JsonValue &item) {
                        return readApplication(item, applications, wrong);
                    });
         }},
    };
    return readMembers(document, QStringLiteral("a scenario"), members, scenario, mistake);
}

} // namespace

QStringList settingKeys(const QString &path)
{
    const QStringList keys = path.split(QLatin1Char('/'));
    return keys.contains(QString()) ? QStringList() : keys;
}

bool parseScenario(const QString &fileName, const QByteArray &text, Scenario *scenario,
                   QString *mistake)
{
    // Some editors put the mark there, and show it to nobody.
    const QByteArray json = text.startsWith(byteOrderMark)
        ? text.mid(static_cast<int>(std::size(byteOrderMark)) - 1)
        : text;
    JsonValue document;
    Scenario parsed;
    Mistake found;
    if (!parseJson(json, &document, &found) || !readDocument(document, &parsed, &found)) {
        *mistake = QStringLiteral("%1:%2: %3")
                       .arg(fileName, lineAndColumn(json, found.offset), found.text);
        return false;
    }
    *scenario = parsed;
    return true;
}

bool readScenario(const QString &fileName, Scenario *scenario, QString *mistake)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *mistake = fileName + QLatin1String(": ") + file.errorString();
        return false;
    }
    return parseScenario(fileName, file.readAll(), scenario, mistake);
}

} // namespace Tarnvel::Sandbox
