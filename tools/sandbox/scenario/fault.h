// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "variant.h"

#include <QtCore/QString>
#include <QtCore/QVector>

namespace Tarnvel::Sandbox {

/*! \brief What the scenario tells the service to do wrong, or to do unasked. */
struct Fault
{
    // In the order of faultDescriptions(), which says what each does.
    enum Kind {
        Error,
        Delay,
        NoReply,
        WrongSignature,
        ExtraArguments,
        TooLarge,
        Exit,
        Restart,
        BusDeath,
        Replace,
        Announce,
        AnnounceTwice,
        Flood,
        SpoofedSignal,
    };

    Kind kind;

    /*! The method whose calls are affected; empty for a fault that happens at a #time. */
    QString method;
    /*!
     * The number of the only call to the method that is affected, counted from 1 since the fault
     * was added to the scenario; 0 for every call.
     */
    int call = 0;
    /*! Seconds since the fault was added to the scenario; for a fault without a #method. */
    double time = 0;

    /*! The full name of the error. */
    QString error;
    /*! The message of the error. */
    QString message;
    /*! How long it takes, from 0 to maximumSeconds. */
    double seconds = 0;
    /*! How often, from 1 to maximumCount. */
    int count = 0;
    /*! An a{sv}. */
    Variant configuration;

    static constexpr int maximumSeconds = 86400;
    static constexpr int maximumCount = 100000;
};

bool operator==(const Fault &left, const Fault &right);

/*! \brief Describes a kind of fault. */
struct FaultDescription
{
    Fault::Kind kind;
    /*! Its name in a scenario file: "no-reply". */
    const char *name;
    /*! What happens, in the words of all documents; a sentence without its period. */
    const char *text;
    /*! True if it can affect calls to a method. */
    bool affectsCalls;
    /*! True if it can happen at a time. */
    bool happensAtTime;
};

/*! \brief All kinds of fault, in the order of their declaration. */
const QVector<FaultDescription> &faultDescriptions();

/*! \brief The name of \a kind in a scenario file. */
QString faultName(Fault::Kind kind);

} // namespace Tarnvel::Sandbox
