// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "variant.h"

#include <QtCore/QString>
#include <QtCore/QVector>

namespace Tarnvel::Sandbox {

/*! \brief Something that goes wrong, or happens unasked, because the scenario says so. */
struct Fault
{
    enum Kind {
        /*! The call is answered with the error #error. */
        Error,
        /*! The call is answered #seconds later. Goes together with one other fault. */
        Delay,
        /*! The call is never answered. */
        NoAnswer,
        /*! The answer has another signature than the method's. */
        WrongSignature,
        /*! The answer has further arguments behind the method's own. */
        FurtherArguments,
        /*! The answer is larger than a message may be, which costs the service its connection. */
        TooLarge,
        /*! The service ends and does not come back. */
        Exit,
        /*! The service ends and comes back #seconds later. */
        Restart,
        /*! The bus dies and does not come back. */
        BusDeath,
        /*! The configuration becomes #configuration, and that is announced. */
        Push,
        /*! A change is announced that has not been made. */
        Announce,
        /*! It is announced twice. */
        AnnounceTwice,
        /*! It is announced #count times. */
        Flood,
        /*! It is announced by a connection that is not the service's. */
        SpoofedSignal,
    };

    Kind kind;

    /*! The method whose calls meet the fault; empty for one that comes at a #time. */
    QString method;
    /*!
     * The only call to the method that meets it, counted from 1 since the fault has come into the
     * scenario; 0 for every call.
     */
    int call = 0;
    /*! Seconds since the fault has come into the scenario; for one without a #method. */
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

/*! \brief True if \a left and \a right say the same. */
bool operator==(const Fault &left, const Fault &right);

/*! \brief A kind of fault, for people and for the scenario file. */
struct FaultDescription
{
    Fault::Kind kind;
    /*! Its name in a scenario file: "no-answer". */
    const char *name;
    /*! What happens, as a sentence without its full stop. */
    const char *text;
    /*! True if a call to a method can meet it. */
    bool comesWithCall;
    /*! True if it can come at a time. */
    bool comesAtTime;
};

/*! \brief All kinds of fault, in the order of their declaration. */
const QVector<FaultDescription> &faultDescriptions();

/*! \brief The name of \a kind in a scenario file. */
QString faultName(Fault::Kind kind);

} // namespace Tarnvel::Sandbox
