// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "raw_service.h"

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QRandomGenerator>
#include <QtCore/QString>

namespace Tarnvel::Soak {

/*! \brief How often each kind of event has happened, by its name. */
using Tally = QMap<QString, int>;

/*! \brief The key that marks a change as a fence, which the service always accepts. */
constexpr char fenceKey[] = "fence";
/*! \brief The key under which a nonempty dictionary says how many entries a reader keeps of it. */
constexpr char entriesKey[] = "entries";
/*! \brief The key of a nested dictionary. */
constexpr char innerKey[] = "inner";

/*! \brief How long a request with a short timeout waits for its reply. */
constexpr int shortTimeoutMs = 100;
/*! \brief The object path of an application with a short timeout; some calls get no reply. */
constexpr char impatientPath[] = "/acme_2eimpatient";
/*! \brief The object path of an application whose calls all get a reply. */
constexpr char patientPath[] = "/acme_2epatient";

/*! \brief A service that replies correctly, wrongly, late, twice or never, chosen at random. */
class MisbehavingService : private Testing::RawService
{
public:
    /*! \brief A service for the bus at \a address; \a tally counts what it does wrong. */
    MisbehavingService(QString address, quint32 seed, Tally &tally);

    /*! \brief Connects to the bus; ends the process on failure. */
    void open();

    // close() leaves calls unanswered if there are any.
    using RawService::close;
    using RawService::isOpen;

    /*! \brief Announces \a count changes at \a path when the next fence arrives, then replies. */
    void announceAtNextFence(const QString &path, int count);

private:
    void receive(const Testing::MethodCall &call);
    void replyToPatient(const Testing::MethodCall &call);
    void replyToImpatient(const Testing::MethodCall &call);
    void reply(const Testing::MethodCall &call);
    void replyLate(const Testing::MethodCall &call, int longestDelayMs);
    GVariant *randomConfiguration();

    QString m_address;
    QRandomGenerator m_random;
    Tally &m_tally;
    QString m_announcedPath;
    int m_announcements = 0;
    int m_unanswered = 0;
    // Last, so that no timer outlives what it uses.
    QObject m_timerContext;
};

} // namespace Tarnvel::Soak
