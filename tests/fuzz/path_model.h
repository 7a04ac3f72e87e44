// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "generated_configuration.h"

#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace Tarnvel::Testing {

/*! \brief A step of a path: the key of an entry or the position of an item. */
struct Step
{
    bool isKey;
    QString key;
    int position;

    bool operator==(const Step &other) const;
};

/*! \brief What must come of parsing a path. */
struct Parse
{
    /*! None if the path is not valid. */
    QVector<Step> steps;
    QStringList warnings;
};

/*! \brief What must come of walking a path. */
struct Walk
{
    /*! Null if the path leads nowhere; points into the configuration walked. */
    const ValueTree *value = nullptr;
    /*! Set if the path ends at an item of a list. */
    QVariant item;
    QStringList warnings;
};

/*! \brief The parse of \a path, by the grammar. */
Parse expectedParse(const QString &path);

/*! \brief The walk along \a path through \a configuration, with the warnings of its parse. */
Walk expectedWalk(const ValueTree &configuration, const QString &path);

/*! \brief A path of these \a steps, which must be those of some path. */
QString join(const QVector<Step> &steps);

} // namespace Tarnvel::Testing
