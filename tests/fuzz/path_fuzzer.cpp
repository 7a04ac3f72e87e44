// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/xpath.h>

#include "description.h"
#include "generated_configuration.h"
#include "message_log.h"
#include "path_model.h"

using namespace Tarnvel::Application::ManagedConfiguration;
using namespace Tarnvel::Testing;

namespace {

constexpr int mostPaths = 20;

// A line of UTF-8; after 'U' and a length, that many UTF-16 code units.
QString readPath(FuzzerInput &input)
{
    if (input.byte() != 'U')
        return QString::fromUtf8(input.line());
    QString path(input.byte(), Qt::Uninitialized);
    for (QChar &unit : path)
        unit = QChar(ushort(input.number(2)));
    return path;
}

void checkParse(const QString &path)
{
    MessageLog log;
    const Xpath xpath(path);
    QStringList actual;
    for (const XpathAccess &access : xpath.accesses())
        actual.append(access.type() == XpathAccess::Key
                          ? QLatin1String("key ") + access.toKey()
                          : QStringLiteral("index %1").arg(access.toIndex()));
    actual += log.take();
    const QStringList expected = expectedParse(path);
    if (actual != expected || xpath.toString() != path
        || xpath.isValid() == xpath.accesses().isEmpty())
        fail(path, actual, expected);
}

void checkLookup(const Configuration &configuration, const ValueTree &tree, const QString &path)
{
    MessageLog log;
    const QString value = describe(configuration.getByXpath(path));
    const QStringList actual = QStringList(value) + log.take();
    const QStringList expected = expectedLookup(tree, path);
    if (actual != expected)
        fail(path + QLatin1String(" in ") + describe(configuration), actual, expected);
}

// Paths to the values of \a tree, and to items inside and past the end of its lists.
void appendPaths(const ValueTree &tree, const QString &prefix, QStringList &paths)
{
    for (auto entry = tree.entries.cbegin(); entry != tree.entries.cend(); ++entry) {
        const QString path = prefix + u'/' + entry.key();
        if (paths.size() >= mostPaths)
            return;
        paths.append(path);
        for (const int index : {0, entry->items.size() - 1, entry->items.size()})
            paths.append(path + u'[' + QString::number(index) + u']');
        appendPaths(*entry, path, paths);
    }
}

void checkStoring(const ValueTree &tree)
{
    Configuration configuration;
    for (auto entry = tree.entries.cbegin(); entry != tree.entries.cend(); ++entry) {
        const bool isSupported = entry->kind != ValueTree::Unsupported;
        const QVariant value = toVariant(*entry);
        if (configuration.set(entry.key(), value) != isSupported
            || configuration.containsKey(entry.key()) != isSupported)
            fail(describe(value), {"stored, or refused"}, {"the opposite"});
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzerInput input(data, size);
    const QString path = readPath(input);
    const ValueTree tree = generateConfiguration(input);
    const Configuration configuration = Configuration::fromVariant(toVariant(tree));

    QStringList paths {path};
    appendPaths(tree, QString(), paths);
    for (const QString &one : qAsConst(paths)) {
        checkParse(one);
        checkLookup(configuration, tree, one);
    }
    checkStoring(tree);
    return 0;
}
