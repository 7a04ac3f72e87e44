// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "log.h"
#include "raw_service.h"
#include "scenario/fault.h"

#include <QtCore/QString>

#include <optional>

namespace Tarnvel::Sandbox {

/*! \brief A call, and who made it. */
struct Request
{
    Testing::MethodCall call;
    Testing::Caller caller;
    /*! The application's name, "acme/viewer"; empty if the scenario has none at the path. */
    QString application;
    /*! Whether a fault delayed the reply. */
    bool isDelayed = false;
};

/*! \brief How a request ended. */
struct Outcome
{
    enum Kind { Answered, Accepted, Refused, Unanswered };

    Kind kind;
    /*! For people: the number of entries, or the reason of a refusal. May be empty. */
    QString text;
    /*! The full name of the error of a refusal. */
    QString error;
    /*! The fault that was injected. */
    std::optional<Fault> fault;
};

/*! \brief How a record names an outcome: "answered". */
QString outcomeName(Outcome::Kind kind);

/*! \brief How a record names the error \a name: without the prefix of the service's errors. */
QString errorText(const QString &name);

/*! \brief \a request has ended in \a outcome. */
Event callEvent(const Request &request, const Outcome &outcome);

/*! \brief A fault delays the reply to \a request by \a seconds. */
Event delayEvent(const Request &request, double seconds);

/*!
 * \brief A change of the configuration of \a application, at \a path, has been announced.
 *
 * \a fault is the one that caused it, if any.
 */
Event announcementEvent(const QString &application, const QString &path,
                        const std::optional<Fault> &fault);

/*! \brief The service, or its bus, has ended or come back, as \a text says. */
Event serviceEvent(const QString &text, Tools::Style style, const std::optional<Fault> &fault = {});

/*! \brief The scenario file \a fileName was reloaded, or could not be, as \a line says. */
Event scenarioEvent(const QString &fileName, const QString &line, Tools::Style style);

} // namespace Tarnvel::Sandbox
