// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <vector>

namespace Tarnvel::Tools {

struct JsonMember;

/*! \brief A value in a JSON text, and where it is. */
struct JsonValue
{
    enum Kind {
        Null,
        Boolean,
        Number,
        String,
        List,
        Object,
    };

    Kind kind = Null;
    /*! Where the value begins, in bytes from the start of the text. */
    int offset = 0;
    /*! Where it has ended. */
    int end = 0;
    /*! What a Boolean is. */
    bool isTrue = false;
    /*! The content of a String; a Number as it is written. */
    QString text;
    /*! The items of a List. */
    std::vector<JsonValue> items;
    /*! The members of an Object in the order of the text. */
    std::vector<JsonMember> members;

    /*! \brief The value of the member \a name of an Object, or null. */
    const JsonValue *member(const QString &name) const;
};

/*! \brief A member of an object. */
struct JsonMember
{
    QString name;
    /*! Where the name begins. */
    int offset;
    JsonValue value;
};

/*! \brief How many lists and objects may be inside one another. */
constexpr int maximumJsonDepth = 128;

/*!
 * \brief The value that \a text holds.
 *
 * Adds to \a diagnostics if it holds none, a duplicate member or U+0000; the value is then
 * incomplete.
 */
JsonValue parseJson(const QByteArray &text, Diagnostics *diagnostics);

/*! \brief What kind of value that is, for people: "a list". */
QString describe(JsonValue::Kind kind);

/*! \brief \a text in quotation marks, on one line and cut off where it is long. */
QString quotedExcerpt(const QString &text);

} // namespace Tarnvel::Tools
