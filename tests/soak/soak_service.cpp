// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "agreement.h"

#include <QtCore/QByteArray>
#include <QtCore/QCoreApplication>
#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtCore/QTimer>

#include "endpoint.h"
#include "process/termination_signals.h"
#include "raw_service.h"

#include <cstdio>
#include <cstdlib>
#include <random>

using namespace Tarnvel::Soak;
using Tarnvel::DBus::errorPrefix;
using Tarnvel::Sandbox::TerminationSignals;
using Tarnvel::Testing::MethodCall;
using Tarnvel::Testing::RawService;

namespace {

constexpr unsigned int hugeSize = 100 * 1024;
constexpr unsigned int hugeEntries = 2000;
constexpr unsigned int deepest = 8;

// The bus counts a call that is never answered among the outstanding ones of its caller, of which
// it lets there be 128, until the service is gone.
constexpr int unansweredMost = 30;

class Random
{
public:
    explicit Random(unsigned int seed) : m_engine(seed) { }

    unsigned int below(unsigned int limit)
    {
        return static_cast<unsigned int>(m_engine() % limit);
    }

private:
    std::mt19937 m_engine;
};

class Dictionary
{
public:
    Dictionary()
    {
        g_variant_builder_init(&m_builder, G_VARIANT_TYPE_VARDICT);
    }

    void addKept(const char *key, GVariant *value)
    {
        ++m_kept;
        addDropped(key, value);
    }

    void addDropped(const char *key, GVariant *value)
    {
        g_variant_builder_add(&m_builder, "{sv}", key, value);
    }

    GVariant *end()
    {
        if (m_kept > 0)
            addDropped(entriesKey, g_variant_new_int32(m_kept + 1));
        return g_variant_builder_end(&m_builder);
    }

private:
    GVariantBuilder m_builder;
    int m_kept = 0;
};

void addPlain(Dictionary &dictionary, Random &random)
{
    dictionary.addKept("volume", g_variant_new_int32(static_cast<gint32>(random.below(100))));
    dictionary.addKept("muted", g_variant_new_boolean(random.below(2) == 0));
    dictionary.addKept("theme", g_variant_new_string("dark"));
}

void addLists(Dictionary &dictionary)
{
    dictionary.addKept("numbers", g_variant_new_parsed("[1, 2, 3]"));
    dictionary.addKept("switches", g_variant_new_parsed("[true, false]"));
    dictionary.addKept("names", g_variant_new_parsed("['a', '', 'c']"));
    dictionary.addDropped("nothing", g_variant_new_parsed("@ai []"));
}

void addForeign(Dictionary &dictionary)
{
    dictionary.addKept("known", g_variant_new_int32(1));
    dictionary.addDropped("ratio", g_variant_new_double(0.5));
    dictionary.addDropped("pair", g_variant_new_parsed("(1, 'b')"));
    dictionary.addDropped("ratios", g_variant_new_parsed("[0.5, 1.5]"));
    dictionary.addDropped("lists", g_variant_new_parsed("[[1], [2, 3]]"));
}

void addHuge(Dictionary &dictionary, Random &random)
{
    if (random.below(2) == 0) {
        const QByteArray text(hugeSize, 'x');
        dictionary.addKept("text", g_variant_new_string(text.constData()));
        return;
    }
    for (unsigned int entry = 0; entry < hugeEntries; ++entry)
        dictionary.addKept(QByteArray::number(entry).constData(),
                           g_variant_new_string("some fifty bytes together with the key and rest"));
}

GVariant *makeConfiguration(Random &random, unsigned int level = 1)
{
    Dictionary dictionary;
    const unsigned int shape = random.below(200);
    if (shape == 0 && level == 1)
        addHuge(dictionary, random);
    else if (shape < 80)
        addPlain(dictionary, random);
    else if (shape < 130)
        addLists(dictionary);
    else if (shape < 150)
        addForeign(dictionary);
    else if (shape < 190 && level < deepest)
        dictionary.addKept(innerKey, makeConfiguration(random, level + 1));
    return dictionary.end();
}

class SoakService
{
public:
    explicit SoakService(unsigned int seed)
        : m_random(seed), m_service([this](const MethodCall &call) { receive(call); })
    {
    }

    QString open(const QString &address);
    void close();

private:
    void receive(const MethodCall &call);
    bool follow(const MethodCall &call);
    void answerPatient(const MethodCall &call);
    void answerImpatient(const MethodCall &call);
    void answer(const MethodCall &call);
    void answerLate(const MethodCall &call, unsigned int mostMs);
    void answerTwice(const MethodCall &call);
    void answerWithMore(const MethodCall &call);
    void answerInOtherForm(const MethodCall &call);
    void refuse(const MethodCall &call);
    void failOtherwise(const MethodCall &call);
    void leaveUnanswered();
    void printTally() const;

    Random m_random;
    QMap<QString, int> m_tally;
    int m_unanswered = 0;
    RawService m_service;
};

QString SoakService::open(const QString &address)
{
    return m_service.open(address);
}

void SoakService::close()
{
    m_service.close();
    printTally();
}

void SoakService::receive(const MethodCall &call)
{
    if (follow(call))
        return;
    if (call.path() == QLatin1String(impatientPath))
        answerImpatient(call);
    else
        answerPatient(call);
}

bool SoakService::follow(const MethodCall &call)
{
    if (call.method() != QLatin1String(Tarnvel::DBus::changeConfigurationMethod))
        return false;
    g_autoptr(GVariant) configuration = g_variant_get_child_value(call.arguments(), 0);
    const char *order = nullptr;
    if (!g_variant_lookup(configuration, orderKey, "&s", &order))
        return false;

    if (g_strcmp0(order, dieOrder) == 0) {
        printTally();
        std::_Exit(diedStatus);
    }
    gint32 count = 0;
    const char *path = nullptr;
    g_variant_lookup(configuration, countKey, "i", &count);
    g_variant_lookup(configuration, pathKey, "&s", &path);
    for (gint32 announced = 0; announced < count; ++announced)
        m_service.announceChange(QString::fromUtf8(path));
    m_tally[QStringLiteral("announced")] += count;
    call.reply(g_variant_new_tuple(nullptr, 0));
    return true;
}

void SoakService::answerPatient(const MethodCall &call)
{
    constexpr unsigned int shortDelayMs = 20;
    const unsigned int manner = m_random.below(100);
    if (manner < 12)
        refuse(call);
    else if (manner < 16)
        failOtherwise(call);
    else if (manner < 18)
        answerLate(call, shortDelayMs);
    else if (manner < 22)
        answerTwice(call);
    else if (manner < 26)
        answerInOtherForm(call);
    else if (manner < 30)
        answerWithMore(call);
    else
        answer(call);
}

void SoakService::answerImpatient(const MethodCall &call)
{
    const unsigned int manner = m_random.below(100);
    if (manner < 40 && m_unanswered < unansweredMost)
        leaveUnanswered();
    else if (manner < 80)
        answerLate(call, 2 * patienceMs);
    else
        answer(call);
}

void SoakService::answer(const MethodCall &call)
{
    ++m_tally[QStringLiteral("normal")];
    if (call.method() == QLatin1String(Tarnvel::DBus::getConfigurationMethod))
        call.reply(g_variant_new("(@a{sv})", makeConfiguration(m_random)));
    else
        call.reply(g_variant_new_tuple(nullptr, 0));
}

void SoakService::answerLate(const MethodCall &call, unsigned int mostMs)
{
    ++m_tally[QStringLiteral("late")];
    QTimer::singleShot(static_cast<int>(1 + m_random.below(mostMs)), QCoreApplication::instance(),
                       [this, call] { answer(call); });
}

void SoakService::answerTwice(const MethodCall &call)
{
    ++m_tally[QStringLiteral("twice")];
    answer(call);
    answer(call);
}

void SoakService::answerWithMore(const MethodCall &call)
{
    ++m_tally[QStringLiteral("further arguments")];
    call.reply(g_variant_new("(@a{sv}is)", makeConfiguration(m_random), 1, "more"));
}

void SoakService::answerInOtherForm(const MethodCall &call)
{
    static const char *const forms[] = {"()",         "(1,)",          "({'a': 'b'},)",
                                        "('a', 'b')", "([<1>, <2>],)", "({1: <2>},)"};
    ++m_tally[QStringLiteral("other signature")];
    call.reply(g_variant_new_parsed(forms[m_random.below(G_N_ELEMENTS(forms))]));
}

void SoakService::refuse(const MethodCall &call)
{
    static const QStringList names {
        QStringLiteral("Internal"),      QStringLiteral("NotExistingKey"),
        QStringLiteral("InvalidType"),   QStringLiteral("InvalidValue"),
        QStringLiteral("Forbidden"),     QStringLiteral("NotConfigurable"),
        QStringLiteral("InvalidUserId"), QStringLiteral("UnsupportedType")};
    ++m_tally[QStringLiteral("refused")];
    const auto size = static_cast<unsigned int>(names.size());
    call.replyError(QLatin1String(errorPrefix) + names.at(static_cast<int>(m_random.below(size))),
                    QStringLiteral("refused"));
}

void SoakService::failOtherwise(const MethodCall &call)
{
    static const char *const names[] = {"org.freedesktop.DBus.Error.AccessDenied",
                                        "org.brenvik.ManagedConfiguration.Error.Unheard",
                                        "com.example.Broken"};
    ++m_tally[QStringLiteral("other error")];
    call.replyError(QLatin1String(names[m_random.below(G_N_ELEMENTS(names))]),
                    QStringLiteral("failed"));
}

void SoakService::leaveUnanswered()
{
    ++m_tally[QStringLiteral("unanswered")];
    ++m_unanswered;
}

void SoakService::printTally() const
{
    QStringList words;
    for (auto entry = m_tally.begin(); entry != m_tally.end(); ++entry)
        words.append(QStringLiteral("%1=%2").arg(entry.key()).arg(entry.value()));
    std::printf("%s %s\n", tallyWord, qUtf8Printable(words.join(QLatin1Char(','))));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3)
        qFatal("usage: soak_service ADDRESS SEED");

    SoakService service(arguments.at(2).toUInt());
    const TerminationSignals terminationSignals([&service](int, bool) {
        service.close();
        QCoreApplication::quit();
    });
    if (const QString error = service.open(arguments.at(1)); !error.isNull())
        qFatal("%s", qUtf8Printable(error));
    std::puts(readyLine);
    std::fflush(stdout);
    return QCoreApplication::exec();
}
