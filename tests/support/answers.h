// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include "description.h"
#include "waiting.h"

#include <QtCore/QList>
#include <QtCore/QStringList>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <functional>
#include <memory>

namespace Tarnvel::Testing {

using Application::ManagedConfiguration::Configuration;
using Application::ManagedConfiguration::Error;

/*! \brief What the callback of a request was called with. A change has no configuration. */
struct Answer
{
    Configuration configuration;
    Error error;
};

/*!
 * \brief Collects the answers of any number of requests, in the order in which they come.
 *
 * The callbacks may outlive this object.
 */
class Answers
{
public:
    /*! \brief A callback for ConfigurationManager::getConfiguration(). */
    std::function<void(const Configuration &, const Error &)> forReading() const
    {
        return [answers = m_answers](const Configuration &configuration, const Error &error) {
            answers->append({configuration, error});
        };
    }

    /*! \brief A callback for ConfigurationManager::changeConfiguration(). */
    std::function<void(const Error &)> forChanging() const
    {
        return [read = forReading()](const Error &error) { read(Configuration(), error); };
    }

    /*! \brief How many answers there are. */
    int count() const
    {
        return m_answers->count();
    }

    /*! \brief The answer at \a index; ends the test program if there is none. */
    const Answer &at(int index) const
    {
        if (index >= count())
            qFatal("there is no answer %d, only %d", index, count());
        return m_answers->at(index);
    }

    /*!
     * \brief All answers as texts: the configuration as describe() writes it, and for an error
     * " error <code>: <message>" after it.
     */
    QStringList texts() const
    {
        QStringList texts;
        for (const Answer &answer : qAsConst(*m_answers)) {
            const QString error = QString(" error %1: ").arg(answer.error.code());
            texts.append(describe(answer.configuration)
                         + (answer.error ? error + answer.error.message() : QString()));
        }
        return texts;
    }

    /*! \brief Runs the event loop until there are \a count answers; false if they do not come. */
    bool waitFor(int count) const
    {
        return QTest::qWaitFor([=] { return this->count() >= count; }, waitTimeoutMs)
            && this->count() == count;
    }

    /*! \brief Waits for the first answer, and gives its text. */
    QString awaitText() const
    {
        return waitFor(1) ? texts().constFirst() : QStringLiteral("no answer");
    }

private:
    std::shared_ptr<QList<Answer>> m_answers = std::make_shared<QList<Answer>>();
};

/*!
 * \brief Reads through \a requester, a manager or its private object; the answer as a text.
 *
 * What the bus delivered to this process before the answer has been handled by then.
 */
template<typename Requester>
QString awaitRead(Requester &requester)
{
    const Answers answers;
    requester.getConfiguration(answers.forReading());
    return answers.awaitText();
}

/*! \brief The same for a change to \a configuration. */
template<typename Requester>
QString awaitChange(Requester &requester, const Configuration &configuration)
{
    const Answers answers;
    requester.changeConfiguration(configuration, answers.forChanging());
    return answers.awaitText();
}

} // namespace Tarnvel::Testing
