// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "setting.h"

namespace Tarnvel::Schema {

/*! \brief What a value has that its schema does not allow, or discourages. */
struct Problem
{
    enum Kind {
        /*! The schema has no such setting. */
        UnknownSetting,
        WrongType,
        /*! The type is right, but not the value. */
        InvalidValue,
        /*! The value is valid, but the setting is deprecated. */
        Deprecated,
    };

    Kind kind;
    /*! The setting: "network/proxy". */
    QString path;
    /*! Where the value is in its text, or its key if the setting is unknown. */
    int offset;
    /*! What is wrong, without the setting: "500 is above 400". */
    QString message;
    /*! What to do about it; may be empty. */
    QString hint = {};

    /*! \brief The setting and what is wrong with it: "zoom: 500 is above 400". */
    QString text() const;
};

/*! \brief All problems of \a value with \a setting and, if that is an object, its members. */
std::vector<Problem> validate(const Setting &setting, const Tools::JsonValue &value);

/*! \brief Why \a value, of the right type, is not allowed: "500 is above 400"; null if it is. */
QString invalidReason(const Scalar &scalar, const Tools::JsonValue &value);

/*! \brief That type, for people: "an integer". */
QString describe(Type type);

} // namespace Tarnvel::Schema
