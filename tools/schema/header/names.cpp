// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "names.h"

#include <QtCore/QHash>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QStringList>

namespace Tarnvel::Schema {

using Tools::Diagnostics;

namespace {

// The keywords of C++11 to C++20, and words that end a declaration or begin a line in a special
// way.
const char keywords[] =
    "alignas alignof and and_eq asm auto bitand bitor bool break case catch char char16_t char32_t "
    "char8_t class co_await co_return co_yield compl concept const const_cast consteval constexpr "
    "constinit continue decltype default delete do double dynamic_cast else enum explicit export "
    "extern false final float for friend goto if import inline int long module mutable namespace "
    "new noexcept not not_eq nullptr operator or or_eq override private protected public register "
    "reinterpret_cast requires return short signed sizeof static static_assert static_cast struct "
    "switch template this thread_local throw true try typedef typeid typename typeof union "
    "unsigned "
    "using virtual void volatile wchar_t while xor xor_eq";

// Those of Qt, the C library and the compilers whose names do not look like macros.
const char macros[] =
    "alloca assert assert_perror emit errno foreach forever i386 linux major makedev "
    "math_errhandling minor offsetof setjmp sigmask signals sigsetjmp slots stderr stdin stdout "
    "strdupa strndupa timeradd timerclear timercmp timerisset timersub unix";

// What each generated class has or uses.
const char members[] = "Allowed Change Checks Configuration Constants Qt Tarnvel ValueChecks "
                       "changedFrom configuration defaults isChanged problems std";

QSet<QString> words(const char *text)
{
    const QStringList list = QString::fromLatin1(text).split(QLatin1Char(' '));
    return {list.begin(), list.end()};
}

// Why C++ does not allow the name, wherever it is; null if it does.
QString identifierProblem(const QString &name)
{
    static const QSet<QString> allKeywords = words(keywords);
    static const QSet<QString> allMacros = words(macros);
    static const QRegularExpression identifier(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*\\z"));
    static const QRegularExpression macro(
        QStringLiteral("^([A-Z][A-Z0-9_]*[A-Z_][A-Z0-9_]*|B[0-9]+|(PRI|SCN|[A-Z]+_).*|[qQ][A-Z_].*"
                       "|(d|h|pthread|s6|sa|sched|si|sigev|st|va|be16|be32|be64)_.*"
                       "|(htobe|htole)[0-9]+|(be|le)[0-9]+toh)\\z"));
    if (!identifier.match(name).hasMatch())
        return QStringLiteral("it is not an identifier");
    if (name.startsWith(QLatin1Char('_')) || name.contains(QLatin1String("__")))
        return QStringLiteral("C++ reserves names that begin with \"_\" or contain \"__\"");
    if (allKeywords.contains(name))
        return QStringLiteral("it is a keyword");
    if (allMacros.contains(name) || macro.match(name).hasMatch())
        return QStringLiteral("it may be a macro or a name of Qt");
    return {};
}

QString capitalized(QString name)
{
    if (!name.isEmpty())
        name[0] = name.at(0).toUpper();
    return name;
}

// "two-pages" becomes "TwoPages", and "PDF" becomes "Pdf".
QString joinedWords(const QString &text)
{
    static const QRegularExpression separators(QStringLiteral("[^A-Za-z0-9]+"));
    QString joined;
    const QStringList parts = text.split(separators, Qt::SkipEmptyParts);
    for (const QString &part : parts)
        joined += part == part.toUpper() ? capitalized(part.toLower()) : capitalized(part);
    return joined;
}

QStringList names(const Setting &setting)
{
    QStringList names {getterName(setting)};
    if (setting.type == Type::Object || isEnumeration(setting))
        names.append(typeName(setting));
    if (setting.type != Type::Object)
        names.append(setterName(setting));
    return names;
}

// Which names the settings in a class have, and whether there is a problem with one.
class Scope
{
public:
    explicit Scope(const QString &className) : m_reserved(words(members))
    {
        m_reserved.insert(className);
    }

    // Why the setting cannot have its name; null if it can.
    QString problem(const Setting &setting) const
    {
        const QStringList all = names(setting);
        for (const QString &name : all) {
            const QString problem = all.count(name) > 1
                ? QStringLiteral("its type would have the same")
                : this->problem(name);
            if (!problem.isNull())
                return QStringLiteral("\"%1\" cannot be a name in C++: %2").arg(name, problem);
        }
        return {};
    }

    void add(const Setting &setting)
    {
        const QStringList all = names(setting);
        for (const QString &name : all)
            m_owners.insert(name, setting.path);
    }

    // A similar setting that can be added.
    Setting renamed(Setting setting)
    {
        const QString words = joinedWords(setting.key);
        setting.name = words;
        if (!words.isEmpty())
            setting.name[0] = words.at(0).toLower();
        for (int count = ++m_renamed; !problem(setting).isNull(); ++count)
            setting.name = QStringLiteral("setting%1%2").arg(words).arg(count);
        return setting;
    }

private:
    QString problem(const QString &name) const
    {
        if (m_owners.contains(name))
            return QStringLiteral("the setting \"%1\" has it").arg(m_owners.value(name));
        if (m_reserved.contains(name) || name.startsWith(QLatin1String("m_")))
            return QStringLiteral("the class uses it itself");
        return identifierProblem(name);
    }

    QSet<QString> m_reserved;
    QHash<QString, QString> m_owners;
    int m_renamed = 0;
};

QString suggestedEnumerator(const QString &value, std::size_t index)
{
    const QString name = joinedWords(value);
    if (identifierProblem(name).isNull())
        return name;
    const bool isNumber = !name.isEmpty() && name.at(0).isDigit();
    return isNumber ? QStringLiteral("Value") + name : QStringLiteral("Value%1").arg(index + 1);
}

// What makes all enumerators usable.
QString namesHint(const Setting &setting)
{
    QStringList names;
    for (std::size_t index = 0; index < setting.scalar.values.size(); ++index) {
        QString name = suggestedEnumerator(setting.scalar.values[index].text, index);
        if (names.contains(name))
            name += QStringLiteral("Number%1").arg(index + 1);
        names.append(name);
    }
    return QStringLiteral("add \"x-names\": [\"%1\"]").arg(names.join(QLatin1String("\", \"")));
}

void checkEnumerators(const Setting &setting, Diagnostics *diagnostics)
{
    const std::vector<QString> names = enumeratorNames(setting);
    QSet<QString> taken;
    for (std::size_t index = 0; index < names.size(); ++index) {
        const QString &name = names[index];
        QString problem = identifierProblem(name);
        if (taken.contains(name))
            problem = QStringLiteral("another value has it");
        if (!problem.isNull()) {
            diagnostics->add(
                setting.scalar.values[index].offset,
                QStringLiteral("\"%1\" cannot be a name in C++: %2").arg(name, problem),
                namesHint(setting));
            return;
        }
        taken.insert(name);
    }
}

} // namespace

QString getterName(const Setting &setting)
{
    return setting.name.isEmpty() ? setting.key : setting.name;
}

QString setterName(const Setting &setting)
{
    return QStringLiteral("set") + capitalized(getterName(setting));
}

QString typeName(const Setting &setting)
{
    return capitalized(getterName(setting));
}

bool isEnumeration(const Setting &setting)
{
    return setting.type == Type::String && !setting.scalar.values.empty();
}

std::vector<QString> enumeratorNames(const Setting &setting)
{
    std::vector<QString> names = setting.valueNames;
    if (!names.empty())
        return names;
    for (const Tools::JsonValue &value : setting.scalar.values)
        names.push_back(joinedWords(value.text));
    return names;
}

QString classNameProblem(const QString &name)
{
    static const QSet<QString> allMembers = words(members);
    const QString problem = identifierProblem(name);
    return problem.isNull() && allMembers.contains(name)
        ? QStringLiteral("the class has a member with this name")
        : problem;
}

void checkNames(const Setting &object, const QString &className, Diagnostics *diagnostics)
{
    Scope scope(className);
    // The others keep their names.
    QVector<QPair<const Setting *, QString>> problems;
    for (const Setting &setting : object.members) {
        const QString problem = scope.problem(setting);
        if (problem.isNull())
            scope.add(setting);
        else
            problems.append({&setting, problem});
        if (setting.type == Type::Object)
            checkNames(setting, typeName(setting), diagnostics);
        else if (isEnumeration(setting))
            checkEnumerators(setting, diagnostics);
    }
    for (const auto &[setting, problem] : problems) {
        const Setting renamed = scope.renamed(*setting);
        scope.add(renamed);
        diagnostics->add(setting->offset, problem,
                         QStringLiteral("add \"x-name\": \"%1\"").arg(renamed.name));
    }
}

} // namespace Tarnvel::Schema
