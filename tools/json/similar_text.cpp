// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "similar_text.h"

#include "json_document.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace Tarnvel::Tools {

namespace {

// One slip in three characters still is a slip; more is another word.
constexpr int charactersPerSlip = 3;

// The number of characters to insert, remove or replace.
int distance(const QString &left, const QString &right)
{
    std::vector<int> row(static_cast<std::size_t>(right.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const QChar character : left) {
        int diagonal = row.front()++;
        for (std::size_t column = 1; column < row.size(); ++column) {
            const bool isSame = character == right.at(static_cast<int>(column) - 1);
            const int replaced = diagonal + (isSame ? 0 : 1);
            diagonal = row[column];
            row[column] = std::min({row[column] + 1, row[column - 1] + 1, replaced});
        }
    }
    return row.back();
}

} // namespace

QString similarTextHint(const QString &text, const QStringList &known)
{
    int smallest = std::max(1, static_cast<int>(text.size()) / charactersPerSlip) + 1;
    QString nearest;
    for (const QString &candidate : known) {
        // The lengths alone say that it is farther away.
        if (std::abs(static_cast<int>(candidate.size() - text.size())) >= smallest)
            continue;
        const int slips = distance(text.toLower(), candidate.toLower());
        if (slips < smallest) {
            smallest = slips;
            nearest = candidate;
        }
    }
    return nearest.isNull() ? QString()
                            : QStringLiteral("did you mean %1?").arg(quotedExcerpt(nearest));
}

} // namespace Tarnvel::Tools
