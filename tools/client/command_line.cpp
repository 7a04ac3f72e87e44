// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "command_line.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QRegularExpression>

#include <optional>

namespace Tarnvel::Client {

namespace {

const char description[] =
    "Reads, changes and follows the managed configuration of an application.\n"
    "\n"
    "Commands:\n"
    "  get [PATH]                the configuration, or the value at PATH, as JSON\n"
    "  set PATH[:TYPE]=VALUE...  changes values, all in one request\n"
    "  watch                     all values, then each change on a line\n"
    "  check                     whether bus, service and identity are in order\n"
    "\n"
    "PATH is keys with \"/\" between them, and \"[POSITION]\" behind the key of a list, such\n"
    "as window/sizes[0]. TYPE is int, bool, string, ints, bools, strings or configuration.\n"
    "\n"
    "The exit status is 0; from 1 to 8 the code with which the service refused; 64 for a\n"
    "mistake on the command line, 66 for a path without a value, 69 without bus, service\n"
    "or answer, 74 if the results cannot be written.";

std::optional<int> parseSeconds(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^[0-9]{1,5}(\\.[0-9])?$"));
    constexpr double minimum = 0.1;
    constexpr double maximum = 86400;
    const double seconds = text.toDouble();
    if (!form.match(text).hasMatch() || seconds < minimum || seconds > maximum)
        return std::nullopt;
    return qRound(seconds * 1000);
}

// The name of the first of \a options that is needed but has no value.
QString missingOption(const QCommandLineParser &parser, const QList<QCommandLineOption> &options)
{
    for (const QCommandLineOption &option : options) {
        if (parser.value(option).isEmpty())
            return option.names().constFirst();
    }
    return {};
}

} // namespace

Failure decodeWords(int count, const char *const *words, QStringList *decoded)
{
    for (int index = 0; index < count; ++index) {
        const QString word = QString::fromUtf8(words[index]);
        if (word.toUtf8() != words[index])
            return usageFailure(QStringLiteral("\"%1\" is not UTF-8").arg(word));
        decoded->append(word);
    }
    return {};
}

Failure parseCommandLine(const QStringList &words, CommandLine *commandLine)
{
    const QCommandLineOption organization(QStringLiteral("organization"),
                                          QStringLiteral("The organization of the application."),
                                          QStringLiteral("O"));
    const QCommandLineOption application(QStringLiteral("application"),
                                         QStringLiteral("The name of the application."),
                                         QStringLiteral("A"));
    const QCommandLineOption timeout(
        QStringLiteral("timeout"),
        QStringLiteral("How long to wait for an answer, from 0.1 to 86400."),
        QStringLiteral("SECONDS"), QStringLiteral("25"));
    const QCommandLineOption type(QStringLiteral("type"),
                                  QStringLiteral("With get: the types in place of the values."));
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(description));
    const QCommandLineOption help(QStringList {QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Shows this help."));
    parser.addOptions({organization, application, timeout, type, help});
    const QCommandLineOption version = parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("What to do."),
                                 QStringLiteral("COMMAND [ARGUMENT...]"));
    if (!parser.parse(words))
        return usageFailure(parser.errorText());
    if (parser.isSet(version))
        parser.showVersion();
    if (parser.isSet(help))
        parser.showHelp();

    const QString missing = missingOption(parser, {organization, application});
    if (!missing.isEmpty())
        return usageFailure(QStringLiteral("--%1 is missing").arg(missing));
    const std::optional<int> timeoutMs = parseSeconds(parser.value(timeout));
    if (!timeoutMs)
        return usageFailure(QStringLiteral("\"%1\" is no number of seconds from 0.1 to 86400, "
                                           "with at most one decimal")
                                .arg(parser.value(timeout)));
    const QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty())
        return usageFailure(QStringLiteral("the command is missing"));
    *commandLine = {parser.value(organization), parser.value(application), arguments.first(),
                    arguments.mid(1),           parser.isSet(type),        *timeoutMs};
    return {};
}

} // namespace Tarnvel::Client
