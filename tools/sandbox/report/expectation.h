// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <limits>

namespace Tarnvel::Sandbox {

/*! \brief A call that must come. */
struct ExpectedCall
{
    /*! Where the expectation says so: "calls.json:3:5". */
    QString location;
    /*! The members that the record of the call must have. */
    QJsonObject members;
    /*! The seconds from the start within which the call must come. */
    double within = std::numeric_limits<double>::infinity();
};

/*! \brief Compares the calls that come with those that must come, in order. */
class Expectation
{
public:
    /*! \brief Expects \a calls; others may come in between. */
    explicit Expectation(const QVector<ExpectedCall> &calls = {});

    /*! \brief Takes the \a record of an event into account. */
    void record(const QJsonObject &record);

    /*! \brief The first call that has not come, or not in time; no failure if all have come. */
    Tools::Failure missing() const;

private:
    QVector<ExpectedCall> m_calls;
    int m_met = 0;
    // When the next call came, if that was too late; otherwise 0.
    double m_lateTime = 0;
};

} // namespace Tarnvel::Sandbox
