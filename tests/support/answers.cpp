// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "answers.h"

#include "description.h"
#include "waiting.h"

namespace Tarnvel::Testing {

using namespace Application::ManagedConfiguration;

std::function<void(const Configuration &, const Error &)> Answers::forReading() const
{
    return [answers = m_answers](const Configuration &configuration, const Error &error) {
        answers->append({configuration, error});
    };
}

std::function<void(const Error &)> Answers::forChanging() const
{
    return [answers = m_answers](const Error &error) { answers->append({Configuration(), error}); };
}

int Answers::count() const
{
    return m_answers->count();
}

const Answer &Answers::at(int index) const
{
    if (index >= count())
        qFatal("there is no answer %d, only %d", index, count());
    return m_answers->at(index);
}

QStringList Answers::texts() const
{
    QStringList texts;
    for (const Answer &answer : qAsConst(*m_answers)) {
        QString text = describe(answer.configuration);
        if (answer.error)
            text += QStringLiteral(" error %1: %2")
                        .arg(QString::number(answer.error.code()), answer.error.message());
        texts.append(text);
    }
    return texts;
}

bool Answers::waitFor(int count) const
{
    return QTest::qWaitFor([this, count] { return this->count() >= count; }, waitTimeoutMs)
        && this->count() == count;
}

void addRequestRows()
{
    QTest::addColumn<bool>("isChange");
    QTest::addColumn<bool>("isRefused");

    for (const bool isChange : {false, true}) {
        for (const bool isRefused : {false, true})
            QTest::addRow("%s, %s", isChange ? "change" : "read",
                          isRefused ? "refused" : "accepted")
                << isChange << isRefused;
    }
}

} // namespace Tarnvel::Testing
