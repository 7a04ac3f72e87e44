// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "misbehaving_service.h"

#include "endpoint.h"

#include <QtCore/QTimer>

#include <utility>

namespace Tarnvel::Soak {

using Testing::MethodCall;

namespace {

// For the bus, an unanswered call is pending until the service leaves: this is well below
// DBus::maximumPendingCalls.
constexpr int maximumUnanswered = 30;

QByteArray nest(int levels)
{
    return levels == 0 ? QByteArrayLiteral("@a{sv} {}")
                       : "{'inner': <" + nest(levels - 1) + ">, 'entries': <2>}";
}

QByteArray makeHuge()
{
    constexpr int entries = 2000;
    QByteArray text = "{'entries': <" + QByteArray::number(entries + 1) + '>';
    for (int entry = 0; entry < entries; ++entry)
        text += ", '" + QByteArray::number(entry)
            + "': <'some fifty bytes, together with the key'>";
    return text + '}';
}

bool isFence(const MethodCall &call)
{
    if (call.method() != QLatin1String(DBus::changeConfigurationMethod))
        return false;
    g_autoptr(GVariant) configuration = g_variant_get_child_value(call.arguments(), 0);
    return g_variant_lookup(configuration, fenceKey, "b", nullptr) != 0;
}

} // namespace

MisbehavingService::MisbehavingService(QString address, quint32 seed, Tally &tally)
    : RawService([this](const MethodCall &call) { receive(call); }),
      m_address(std::move(address)),
      m_random(seed),
      m_tally(tally)
{
}

void MisbehavingService::open()
{
    m_unanswered = 0;
    if (const QString error = RawService::open(m_address); !error.isNull())
        qFatal("%s", qUtf8Printable(error));
}

void MisbehavingService::announceAtNextFence(const QString &path, int count)
{
    m_announcedPath = path;
    m_announcements = count;
}

void MisbehavingService::receive(const MethodCall &call)
{
    if (isFence(call)) {
        for (; m_announcements > 0; --m_announcements)
            announceChange(m_announcedPath);
        reply(call);
    } else if (call.path() == QLatin1String(impatientPath)) {
        replyToImpatient(call);
    } else {
        replyToPatient(call);
    }
}

void MisbehavingService::replyToPatient(const MethodCall &call)
{
    static const char *const otherReplies[] = {"()",         "(1,)",          "({'a': 'b'},)",
                                               "('a', 'b')", "([<1>, <2>],)", "({1: <2>},)"};
    static const QStringList errors = DBus::errorNames() << QStringLiteral("Unknown");
    switch (m_random.bounded(25)) {
    case 0:
        ++m_tally[QStringLiteral("error replies")];
        call.replyError(DBus::errorPrefix + errors.at(m_random.bounded(errors.size())), "refused");
        break;
    case 1:
        ++m_tally[QStringLiteral("replies of another type")];
        call.reply(g_variant_new_parsed(otherReplies[m_random.bounded(6)]));
        break;
    case 2:
        ++m_tally[QStringLiteral("replies with extra arguments")];
        call.reply(g_variant_new("(@a{sv}is)", randomConfiguration(), 1, "more"));
        break;
    case 3:
        ++m_tally[QStringLiteral("double replies")];
        reply(call);
        reply(call);
        break;
    case 4:
        replyLate(call, shortTimeoutMs / 5);
        break;
    default:
        reply(call);
    }
}

void MisbehavingService::replyToImpatient(const MethodCall &call)
{
    const int choice = m_random.bounded(5);
    if (choice < 2 && m_unanswered < maximumUnanswered) {
        ++m_unanswered;
        ++m_tally[QStringLiteral("calls without a reply")];
    } else if (choice < 4) {
        replyLate(call, 2 * shortTimeoutMs);
    } else {
        reply(call);
    }
}

void MisbehavingService::reply(const MethodCall &call)
{
    if (call.method() == QLatin1String(DBus::getConfigurationMethod))
        call.reply(g_variant_new("(@a{sv})", randomConfiguration()));
    else
        call.reply(g_variant_new_tuple(nullptr, 0));
}

void MisbehavingService::replyLate(const MethodCall &call, int longestDelayMs)
{
    ++m_tally[QStringLiteral("late replies")];
    QTimer::singleShot(m_random.bounded(longestDelayMs), &m_timerContext,
                       [this, call] { reply(call); });
}

GVariant *MisbehavingService::randomConfiguration()
{
    constexpr int hugePeriod = 200;
    static const QByteArray huge = makeHuge();
    static const char *const flat[] = {
        "{'volume': <7>, 'muted': <true>, 'theme': <'dark'>, 'entries': <4>}",
        "{'numbers': <[1, 2, 3]>, 'switches': <[true, false]>, 'names': <['a', '', 'c']>,"
        " 'empty, so left out': <@ai []>, 'entries': <4>}",
        "{'known': <1>, 'ratio': <0.5>, 'pair': <(1, 'b')>, 'ratios': <[0.5, 1.5]>,"
        " 'lists': <[[1], [2, 3]]>, 'entries': <2>}"};
    if (m_random.bounded(hugePeriod) == 0)
        return g_variant_new_parsed(huge.constData());
    if (m_random.bounded(2) == 0)
        return g_variant_new_parsed(nest(m_random.bounded(9)).constData());
    return g_variant_new_parsed(flat[m_random.bounded(3)]);
}

} // namespace Tarnvel::Soak
