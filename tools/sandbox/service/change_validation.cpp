// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "change_validation.h"

#include "report/variant_json.h"
#include "scenario/plain_json.h"
#include "validation.h"

namespace Tarnvel::Sandbox {

namespace {

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

const QMap<QByteArray, QString> &supportedTypes()
{
    static const QMap<QByteArray, QString> names {
        {"i", QStringLiteral("an integer")},
        {"b", QStringLiteral("a boolean")},
        {"s", QStringLiteral("a string")},
        {"ai", QStringLiteral("a list of integers")},
        {"ab", QStringLiteral("a list of booleans")},
        {"as", QStringLiteral("a list of strings")},
        {"a{sv}", QStringLiteral("a configuration")},
    };
    return names;
}

QByteArray typeOf(GVariant *value)
{
    return g_variant_get_type_string(value);
}

QString typeText(const QByteArray &type)
{
    const QString unsupported = QStringLiteral("of the type \"%1\"");
    return supportedTypes().value(type, unsupported.arg(QLatin1String(type)));
}

bool isList(GVariant *value)
{
    return typeOf(value).size() == 2 && supportedTypes().contains(typeOf(value));
}

// An empty list in a scenario without a schema does not say what it is a list of.
bool isAnyList(GVariant *known, GVariant *value)
{
    return isList(known) && g_variant_n_children(known) == 0 && isList(value);
}

Refusal refuseKey(const QString &path)
{
    return {QStringLiteral("NotExistingKey"), quoted(path) + QStringLiteral(" does not exist")};
}

std::optional<Refusal> refuseType(const QString &path, const QByteArray &known, GVariant *value)
{
    const QByteArray type = typeOf(value);
    if (type == known)
        return {};
    if (!supportedTypes().contains(type))
        return Refusal {
            QStringLiteral("UnsupportedType"),
            QStringLiteral("%1 cannot be %2: no setting can").arg(quoted(path), typeText(type))};
    return Refusal {
        QStringLiteral("InvalidType"),
        QStringLiteral("%1 is %2, not %3").arg(quoted(path), typeText(known), typeText(type))};
}

std::optional<Refusal> refuseEntries(const QString &prefix, const Variant &known,
                                     const Entries &changes)
{
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        const QString path = prefix + change.key();
        const Variant knownValue = valueAt(known, {change.key()});
        if (!knownValue)
            return refuseKey(path);
        GVariant *const value = change.value().get();
        std::optional<Refusal> refusal;
        if (!isAnyList(knownValue.get(), value))
            refusal = refuseType(path, typeOf(knownValue.get()), value);
        if (!refusal && g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT))
            refusal = refuseEntries(path + QLatin1Char('/'), knownValue, entriesOf(value));
        if (refusal)
            return refusal;
    }
    return {};
}

bool isChanged(const QStringList &keys, const KeptConfiguration &kept, const Entries &changes)
{
    return changes.contains(keys.first()) && !areEqual(kept.value(keys), valueAt(changes, keys));
}

// Empty if no locked setting would change.
QString changedLockedPath(const Application &application, const KeptConfiguration &kept,
                          const Entries &changes)
{
    for (const QString &path : application.locked) {
        if (isChanged(settingKeys(path), kept, changes))
            return path;
    }
    return {};
}

bool isAllowed(const AllowedValues &allowed, const Variant &value)
{
    if (allowed.values.isEmpty())
        return !g_variant_is_of_type(value.get(), G_VARIANT_TYPE_INT32)
            || (g_variant_get_int32(value.get()) >= allowed.minimum
                && g_variant_get_int32(value.get()) <= allowed.maximum);
    return std::any_of(allowed.values.begin(), allowed.values.end(),
                       [&value](const Variant &other) { return areEqual(value, other); });
}

// A value that stays need not be allowed: the administrator has set it.
std::optional<Refusal> refuseValues(const Application &application, const KeptConfiguration &kept,
                                    const Entries &changes)
{
    for (const AllowedValues &allowed : application.allowed) {
        const QStringList keys = settingKeys(allowed.path);
        const Variant value = valueAt(changes, keys);
        if (!value || !isChanged(keys, kept, changes))
            continue;
        if (const Variant forbidden = forbiddenValue(allowed, value))
            return Refusal {
                QStringLiteral("InvalidValue"),
                QStringLiteral("%1 may not be %2, only %3")
                    .arg(quoted(allowed.path), toJsonText(forbidden.get()), allowedText(allowed))};
    }
    return {};
}

std::optional<Refusal> refuseValue(const Schema::Setting &setting, GVariant *value)
{
    for (const Schema::Problem &problem : validate(setting, toPlainJson(value))) {
        if (problem.kind != Schema::Problem::Deprecated)
            return Refusal {QStringLiteral("InvalidValue"), problem.text()};
    }
    return {};
}

// What the schema does not allow; again, a value that stays need not be allowed.
std::optional<Refusal> refuseSettings(const Schema::Setting &object, const QStringList &parents,
                                      const KeptConfiguration &kept, const Entries &changes)
{
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        const QStringList keys = parents + QStringList(change.key());
        if (areEqual(kept.value(keys), change.value()))
            continue;
        const QString path = keys.join(QLatin1Char('/'));
        const Schema::Setting *const setting = object.member(change.key());
        if (!setting)
            return refuseKey(path);
        GVariant *const value = change.value().get();
        std::optional<Refusal> refusal = refuseType(path, dbusType(*setting), value);
        if (!refusal && setting->type == Schema::Type::Object)
            refusal = refuseSettings(*setting, keys, kept, entriesOf(value));
        else if (!refusal)
            refusal = refuseValue(*setting, value);
        if (refusal)
            return refusal;
    }
    return {};
}

} // namespace

Variant KeptConfiguration::value(const QStringList &path) const
{
    return changes.contains(path.first()) ? valueAt(changes, path) : valueAt(given, path);
}

std::optional<Refusal> refuseCaller(const Application &application, const QString &path,
                                    std::optional<quint32> userId)
{
    if (!application.isConfigurable)
        return Refusal {QStringLiteral("NotConfigurable"),
                        quoted(path) + QStringLiteral(" is not configurable")};
    if (!application.users || (userId && application.users->contains(*userId)))
        return {};
    const QString user = userId ? QString::number(*userId) : QStringLiteral("(unknown)");
    return Refusal {QStringLiteral("InvalidUserId"),
                    QStringLiteral("user %1 may not use %2").arg(user, quoted(path))};
}

std::optional<Refusal> refuseChange(const Application &application, const KeptConfiguration &kept,
                                    const Entries &changes)
{
    const QString lockedPath = changedLockedPath(application, kept, changes);
    if (!lockedPath.isEmpty())
        return Refusal {QStringLiteral("Forbidden"),
                        quoted(lockedPath) + QStringLiteral(" is locked")};
    if (application.schema)
        return refuseSettings(application.schema->root, {}, kept, changes);
    if (const auto refusal = refuseEntries({}, kept.given, changes))
        return refusal;
    return refuseValues(application, kept, changes);
}

Variant forbiddenValue(const AllowedValues &allowed, const Variant &value)
{
    if (!isList(value.get()))
        return isAllowed(allowed, value) ? Variant() : value;
    for (gsize index = 0; index < g_variant_n_children(value.get()); ++index) {
        const Variant item = adopt(g_variant_get_child_value(value.get(), index));
        if (!isAllowed(allowed, item))
            return item;
    }
    return {};
}

QString allowedText(const AllowedValues &allowed)
{
    if (allowed.values.isEmpty())
        return QStringLiteral("%1 to %2")
            .arg(QString::number(allowed.minimum), QString::number(allowed.maximum));
    QStringList texts;
    for (const Variant &value : allowed.values)
        texts.append(toJsonText(value.get()));
    return texts.join(QStringLiteral(", "));
}

} // namespace Tarnvel::Sandbox
