// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "diagnostics.h"
#include "json_document.h"

#include <QtCore/QStringList>

namespace Tarnvel::Tools {

// Each function returns what is in a value. If that is not what is expected, it adds a
// diagnostic and returns a default value. A null pointer stands for a member that an object does
// not have: it gives a default value and no diagnostic.

bool readBoolean(const JsonValue *value, Diagnostics *diagnostics);
QString readString(const JsonValue *value, Diagnostics *diagnostics);

/*! \brief An integer from \a minimum to \a maximum. */
qint64 readInteger(const JsonValue *value, qint64 minimum, qint64 maximum,
                   Diagnostics *diagnostics);
qint32 readInt32(const JsonValue *value, Diagnostics *diagnostics);

/*! \brief A number from 0 to \a maximum. */
double readNumber(const JsonValue *value, int maximum, Diagnostics *diagnostics);

/*! \brief The items of a list. */
const std::vector<JsonValue> &readList(const JsonValue *value, Diagnostics *diagnostics);

/*! \brief Adds the diagnostic that \a expected was expected in place of \a value. */
void addUnexpected(const JsonValue &value, const QString &expected, Diagnostics *diagnostics);

/*! \brief Reads an object member by member. */
class ObjectReader
{
public:
    /*! \brief Adds a diagnostic if \a value is not an object; it is then treated as empty. */
    ObjectReader(const JsonValue &value, Diagnostics *diagnostics);

    /*! \brief The value of the member \a name, or null. */
    const JsonValue *find(QLatin1String name);

    /*! \brief The value of the member \a name; if there is none, null and a diagnostic. */
    const JsonValue *require(QLatin1String name);

    /*! \brief Adds a diagnostic for each other member of \a object, such as "a range". */
    void addUnknownMembers(const QString &object);

private:
    const JsonValue &m_value;
    Diagnostics *m_diagnostics;
    QStringList m_known;
};

} // namespace Tarnvel::Tools
