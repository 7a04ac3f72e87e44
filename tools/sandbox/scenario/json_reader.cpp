// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "json_reader.h"

namespace Tarnvel::Sandbox {

namespace {

QString kindName(JsonValue::Kind kind)
{
    // "no list" rather than "a list".
    const QString described = describe(kind);
    return described.mid(described.indexOf(QLatin1Char(' ')) + 1);
}

} // namespace

bool isOfKind(const JsonValue &value, JsonValue::Kind kind, const QString &name, Mistake *mistake)
{
    return value.kind == kind
        || refuse(value.offset, QStringLiteral("%1 is no %2").arg(name, kindName(kind)), mistake);
}

bool isOfKind(const JsonMember &member, JsonValue::Kind kind, Mistake *mistake)
{
    return isOfKind(member.value, kind, quoted(member.key), mistake);
}

} // namespace Tarnvel::Sandbox
