// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "json_document.h"

#include <QtCore/QVector>

#include <algorithm>

namespace Tarnvel::Sandbox {

/*! \brief A member that an object may have, and how it gets into a \a Target. */
template<typename Target>
struct KnownMember
{
    const char *key;
    bool isRequired;
    /*! Reads the member, or is false and says what is wrong with it. */
    bool (*read)(const JsonMember &member, Target *target, Mistake *mistake);
};

/*! \brief True if \a value, which \a name stands for, is of \a kind; otherwise a mistake. */
bool isOfKind(const JsonValue &value, JsonValue::Kind kind, const QString &name, Mistake *mistake);

/*! \brief Does as isOfKind() with the value of \a member. */
bool isOfKind(const JsonMember &member, JsonValue::Kind kind, Mistake *mistake);

/*!
 * \brief Reads the members of \a value, which \a name stands for, into \a target.
 *
 * It is a mistake if it is no object, if a member is not among the \a known ones, and if one of
 * these is missing that is required.
 */
template<typename Target>
bool readMembers(const JsonValue &value, const QString &name,
                 const QVector<KnownMember<Target>> &known, Target *target, Mistake *mistake)
{
    if (!isOfKind(value, JsonValue::Object, name, mistake))
        return false;
    for (const JsonMember &member : value.members) {
        const auto found = std::find_if(known.begin(), known.end(), [&member](const auto &one) {
            return member.key == QLatin1String(one.key);
        });
        if (found == known.end())
            return refuse(member.offset,
                          QStringLiteral("%1 is no member of %2").arg(quoted(member.key), name),
                          mistake);
        if (!found->read(member, target, mistake))
            return false;
    }
    for (const KnownMember<Target> &one : known) {
        if (one.isRequired && !value.member(QLatin1String(one.key)))
            return refuse(value.offset,
                          QStringLiteral("\"%1\" is missing").arg(QLatin1String(one.key)), mistake);
    }
    return true;
}

} // namespace Tarnvel::Sandbox
