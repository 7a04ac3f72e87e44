// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "failure.h"
#include "scenario/variant.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>
#include <limits>
#include <optional>

namespace Tarnvel::Sandbox {

/*! \brief A call that must come, or must not. */
struct ExpectedCall
{
    /*! Where the expectation says so: "calls.json:3:5". */
    QString location;
    /*! The members that the record of the call must have. */
    QJsonObject members;
    /*! The seconds from the start within which the call must come. */
    double within = std::numeric_limits<double>::infinity();
    /*! How often the call must come at any point; without it, once, in its turn. */
    std::optional<int> times = {};
};

/*! \brief A setting that the service must keep at the end. */
struct ExpectedSetting
{
    /*! Where the expectation says so. */
    QString location;
    /*! The application's name, "acme/viewer", and its object path. */
    QString application;
    QString path;
    QString key;
    Variant value;
};

/*! \brief Compares the calls that come, and what the service keeps, with what is expected. */
class Expectation
{
public:
    /*! \brief Expects \a calls, with any others in between, and finally \a settings. */
    explicit Expectation(const QVector<ExpectedCall> &calls = {},
                         const QVector<ExpectedSetting> &settings = {});

    /*! \brief Takes the \a record of an event into account. */
    void record(const QJsonObject &record);

    /*!
     * \brief What is not met at the end, each with the calls that came nearest.
     *
     * Of the calls that must come in order, only the first that is missing. \a configurationAt is
     * what the service keeps at an object path; null if that is nothing.
     */
    QVector<Tools::Failure> unmet(
        const std::function<Variant(const QString &path)> &configurationAt) const;

private:
    struct RecordedCall
    {
        double time;
        QString text;
        // The members that are not as expected.
        QStringList differences;
    };
    struct CallProgress
    {
        ExpectedCall expected;
        int count = 0;
        // Those with the fewest differences.
        QVector<RecordedCall> nearest = {};

        bool isMet() const;
        void add(const RecordedCall &call);
        QString message() const;
        QString noteOn(const RecordedCall &call) const;
        QVector<Tools::Failure> failures() const;
    };

    QVector<CallProgress> m_calls;
    QVector<ExpectedSetting> m_settings;
};

} // namespace Tarnvel::Sandbox
