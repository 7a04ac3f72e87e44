// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "arguments.h"

namespace Tarnvel::Tools {

QString parseArguments(const QStringList &arguments, QCommandLineParser *parser)
{
    // addHelpOption() would also add --help-all, for Qt's own options.
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help."));
    parser->addOption(help);
    const QCommandLineOption version = parser->addVersionOption();
    if (!parser->parse(arguments))
        return parser->errorText();
    if (parser->isSet(version))
        parser->showVersion();
    if (parser->isSet(help))
        parser->showHelp();
    return {};
}

} // namespace Tarnvel::Tools
