// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#pragma once

#include <QtCore/QList>
#include <QtCore/QStringList>
#include <Tarnvel/ManagedConfiguration/configuration.h>
#include <Tarnvel/ManagedConfiguration/error.h>

#include <functional>
#include <memory>

namespace Tarnvel::Testing {

/*! \brief What the callback of a request was called with. A change has no configuration. */
struct Answer
{
    Application::ManagedConfiguration::Configuration configuration;
    Application::ManagedConfiguration::Error error;
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
    std::function<void(const Application::ManagedConfiguration::Configuration &,
                       const Application::ManagedConfiguration::Error &)>
    forReading() const;

    /*! \brief A callback for ConfigurationManager::changeConfiguration(). */
    std::function<void(const Application::ManagedConfiguration::Error &)> forChanging() const;

    /*! \brief How many answers there are. */
    int count() const;

    /*! \brief The answer at \a index; ends the test program if there is none. */
    const Answer &at(int index) const;

    /*!
     * \brief All answers as texts: the configuration as describe() writes it, and for an error
     * " error <code>: <message>" behind it.
     */
    QStringList texts() const;

    /*! \brief Runs the event loop until there are \a count answers; false if they do not come. */
    bool waitFor(int count) const;

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
    return answers.waitFor(1) ? answers.texts().first() : QStringLiteral("no answer");
}

/*! \brief The same for a change to \a configuration. */
template<typename Requester>
QString awaitChange(Requester &requester,
                    const Application::ManagedConfiguration::Configuration &configuration)
{
    const Answers answers;
    requester.changeConfiguration(configuration, answers.forChanging());
    return answers.waitFor(1) ? answers.texts().first() : QStringLiteral("no answer");
}

/*!
 * \brief Adds a row for each kind of request and outcome to the data of a test.
 *
 * The columns are \c isChange and \c isRefused, both \c bool.
 */
void addRequestRows();

} // namespace Tarnvel::Testing
