// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

#include "configuration_p.h"
#include "description.h"
#include "generated_configuration.h"
#include "message_log.h"
#include "outcome.h"
#include "path_model.h"

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

constexpr int mostPaths = 20;

/*! \brief A line of UTF-8, or behind 'U' and a length that many units of UTF-16. */
QString readPath(Input &input)
{
    if (input.byte() != 'U')
        return QString::fromUtf8(input.line());
    QString path(input.byte(), Qt::Uninitialized);
    for (QChar &unit : path)
        unit = QChar(ushort(input.number(2)));
    return path;
}

QVector<Step> stepsOf(const Xpath &xpath)
{
    QVector<Step> steps;
    for (const XpathAccess &access : xpath.accesses())
        steps.append({access.type() == XpathAccess::Key, access.toKey(), access.toIndex()});
    return steps;
}

QString textOf(const QVector<Step> &steps)
{
    QStringList texts;
    for (const Step &step : steps)
        texts.append(step.isKey ? QLatin1String("key ") + step.key
                                : QLatin1String("position ") + QString::number(step.position));
    return texts.join(QLatin1String(", "));
}

void checkParse(const QString &path)
{
    MessageLog log;
    const Xpath xpath(path);
    const QStringList warnings = log.take();
    const QVector<Step> steps = stepsOf(xpath);
    const Parse expected = expectedParse(path);
    if (!(steps == expected.steps) || warnings != expected.warnings)
        failWith({textOf(steps), warnings}, {textOf(expected.steps), expected.warnings}, path);
    if (xpath.isValid() == steps.isEmpty() || xpath.toString() != path)
        fail(QStringLiteral("a path that does not know its text or whether it is valid"), path);

    const Xpath again(join(steps));
    const QStringList warningsOfJoined = log.take();
    if (!steps.isEmpty() && (!(stepsOf(again) == steps) || !warningsOfJoined.isEmpty()))
        failWith({textOf(stepsOf(again)), warningsOfJoined}, {textOf(steps), {}}, again.toString());
}

void checkWalk(const Configuration &configuration, const ValueTree &tree, const QString &path)
{
    MessageLog log;
    const QVariant got = configuration.getByXpath(path);
    const QStringList warnings = log.take();
    const Walk walk = expectedWalk(tree, path);
    QVariant expected = walk.item;
    if (!expected.isValid() && walk.value != nullptr)
        expected = toVariant(*walk.value);

    const bool comparesByContent = expected.userType() < QMetaType::User;
    if (describe(got) != describe(expected) || (comparesByContent && got != expected)
        || warnings != walk.warnings)
        failWith({describe(got), warnings}, {describe(expected), walk.warnings},
                 path + QLatin1String(" in ") + describe(configuration));
}

/*! \brief Paths to the values of \a tree, and to items within and behind its lists. */
void appendPaths(const ValueTree &tree, const QString &prefix, QStringList &paths)
{
    for (auto entry = tree.entries.cbegin(); entry != tree.entries.cend(); ++entry) {
        const QString path = prefix + u'/' + entry.key();
        if (paths.size() >= mostPaths)
            return;
        paths.append(path);
        for (const int position : {0, entry->items.size() - 1, entry->items.size()})
            paths.append(path + u'[' + QString::number(position) + u']');
        appendPaths(*entry, path, paths);
    }
}

/*! \brief Stores the entries of \a tree one by one; only what is refused may be refused. */
void checkStoring(const ValueTree &tree)
{
    Configuration configuration;
    for (auto entry = tree.entries.cbegin(); entry != tree.entries.cend(); ++entry) {
        const bool isStorable = entry->kind != ValueTree::Refused;
        const QVariant value = toVariant(*entry);
        if (configuration.set(entry.key(), value) != isStorable
            || configuration.containsKey(entry.key()) != isStorable)
            fail(QStringLiteral("stored or refused wrongly"), describe(value));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Input input(data, size);
    const QString path = readPath(input);
    const ValueTree tree = readConfiguration(input);
    const Configuration configuration = Configuration::fromVariant(toVariant(tree));

    QStringList paths {path};
    appendPaths(tree, QString(), paths);
    for (const QString &one : qAsConst(paths)) {
        checkParse(one);
        checkWalk(configuration, tree, one);
    }
    checkStoring(tree);
    return 0;
}
