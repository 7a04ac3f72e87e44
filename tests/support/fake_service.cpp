// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fake_service.h"

namespace Tarnvel::Testing {

GVariant *parseValue(const QString &text)
{
    g_autoptr(GError) error = nullptr;
    GVariant *value = g_variant_parse(nullptr, text.toUtf8().constData(), nullptr, nullptr, &error);
    if (!value)
        qFatal("%s: %s", qUtf8Printable(text), error->message);
    return value;
}

FakeService::FakeService(const QString &address) : m_address(address)
{
    reset();
}

bool FakeService::start()
{
    const bool isOpen = m_service->open(m_address);
    if (!isOpen)
        qWarning("%s", qUtf8Printable(m_service->errorString()));
    return isOpen;
}

void FakeService::stop()
{
    m_service->close();
}

void FakeService::reset()
{
    // A new raw service, so that no call to the old one still comes in.
    m_service.emplace([this](const MethodCall &call) { receive(call); });
    m_calls.clear();
    m_unanswered.clear();
    answerWith(QStringLiteral("(@a{sv} {},)"));
}

void FakeService::answerWith(const QString &values)
{
    const std::shared_ptr<GVariant> answer(parseValue(values), g_variant_unref);
    answerThrough([answer](const MethodCall &call) { call.reply(answer.get()); });
}

void FakeService::answerWithError(const QString &name, const QString &message)
{
    answerThrough([name, message](const MethodCall &call) { call.replyError(name, message); });
}

void FakeService::answerThrough(const Handler &handler)
{
    m_handler = handler;
}

void FakeService::leaveUnanswered()
{
    m_unanswered.clear();
    answerThrough([this](const MethodCall &call) { m_unanswered.append(call); });
}

int FakeService::unanswered() const
{
    return m_unanswered.count();
}

void FakeService::replyTo(int index, const QString &values) const
{
    g_autoptr(GVariant) body = parseValue(values);
    m_unanswered.at(index).reply(body);
}

const QList<FakeService::Call> &FakeService::calls() const
{
    return m_calls;
}

void FakeService::announceChange(const QString &path, const QString &arguments)
{
    g_autoptr(GVariant) values = arguments.isEmpty() ? nullptr : parseValue(arguments);
    m_service->announceChange(path, values);
}

void FakeService::receive(const MethodCall &call)
{
    g_autofree gchar *arguments = g_variant_print(call.arguments(), TRUE);
    m_calls.append({call.path(), call.method(), QString::fromUtf8(arguments)});
    // A copy: the handler may set another one.
    const Handler handler = m_handler;
    handler(call);
}

} // namespace Tarnvel::Testing
