// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <vector>

namespace Tarnvel::Sandbox {

struct JsonMember;

/*! \brief A value in a JSON text, with its place there. */
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
    /*! What a Boolean is. */
    bool isTrue = false;
    /*! The content of a String; a Number as it is written. */
    QString text;
    /*! The items of a List. */
    std::vector<JsonValue> items;
    /*! The members of an Object in the order of the text; each has another key. */
    std::vector<JsonMember> members;

    /*! \brief The member \a key of an Object, or null. */
    const JsonMember *member(QLatin1String key) const;
};

/*! \brief A member of an object. */
struct JsonMember
{
    QString key;
    /*! Where the key begins. */
    int offset;
    JsonValue value;
};

/*! \brief What is wrong in a text, and where, in bytes from its start. */
struct Mistake
{
    int offset = 0;
    QString text;
};

/*! \brief Lists and objects may lie so deep inside one another. */
constexpr int maximumJsonDepth = 128;

/*! \brief Sets \a value to the one that \a text holds; if it holds none, false and \a mistake. */
bool parseJson(const QByteArray &text, JsonValue *value, Mistake *mistake);

/*! \brief The line and the column at \a offset, counted in characters from 1: "3:14". */
QString lineAndColumn(const QByteArray &text, int offset);

/*! \brief Sets \a mistake, and is false for the caller to return. */
bool refuse(int offset, const QString &text, Mistake *mistake);

/*! \brief What kind of value that is, for people: "a list". */
QString describe(JsonValue::Kind kind);

/*! \brief \a text between quotation marks, cut off where it is long, with nothing but text in it.
 */
QString quoted(const QString &text);

} // namespace Tarnvel::Sandbox
