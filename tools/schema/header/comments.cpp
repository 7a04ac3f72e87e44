// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "comments.h"

#include "facts.h"
#include "terminal.h"

namespace Tarnvel::Schema {

QString escapedForComment(const QString &text)
{
    const QString shown = Tools::shownOnOneLine(text);
    QString escaped;
    for (const QChar character : shown) {
        // Two question marks could begin a trigraph.
        if (character == QLatin1Char('?') && escaped.endsWith(character))
            escaped += QStringLiteral("&#63;");
        else if (character == QLatin1Char('/') && escaped.endsWith(QLatin1Char('*')))
            escaped += QStringLiteral("&#47;");
        else if (character == QLatin1Char('*') && escaped.endsWith(QLatin1Char('/')))
            escaped += QStringLiteral("&#42;");
        else if (QStringLiteral("\\@<>&#").contains(character))
            escaped += QLatin1Char('\\') + QString(character);
        else
            escaped += character;
    }
    return escaped;
}

QStringList describe(const Setting &setting)
{
    const QString path = QStringLiteral("The setting \"%1\".").arg(setting.path);
    QStringList paragraphs {QStringLiteral("\\brief ")
                            + escapedForComment(setting.title.isEmpty() ? path : setting.title)};
    const QStringList texts = setting.description.split(QLatin1Char('\n'));
    for (const QString &text : texts)
        paragraphs.append(escapedForComment(text));
    QStringList facts;
    const QVector<Fact> all = factsOf(setting);
    for (const Fact &fact : all)
        facts.append(QStringLiteral("%1: %2.").arg(QLatin1String(fact.name),
                                                   fact.values.join(QLatin1String(", "))));
    paragraphs.append(escapedForComment(facts.join(QLatin1Char(' '))));
    if (setting.needsRestart)
        paragraphs.append(
            QStringLiteral("The application must be restarted to apply a new value."));
    if (!setting.deprecated.isEmpty())
        paragraphs.append(QStringLiteral("\\deprecated ") + escapedForComment(setting.deprecated));
    return paragraphs;
}

} // namespace Tarnvel::Schema
