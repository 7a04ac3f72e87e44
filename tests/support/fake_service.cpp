// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "fake_service.h"

namespace Tarnvel::Testing {

namespace {

QString printValue(GVariant *value)
{
    g_autofree gchar *text = g_variant_print(value, TRUE);
    return QString::fromUtf8(text);
}

} // namespace

GVariant *parseValue(const QString &text)
{
    g_autoptr(GError) error = nullptr;
    GVariant *value = g_variant_parse(nullptr, text.toUtf8().constData(), nullptr, nullptr, &error);
    if (!value)
        qFatal("%s: %s", qUtf8Printable(text), error->message);
    return value;
}

FakeService::FakeService(const QString &address)
    : m_address(address), m_service([this](const Testing::MethodCall &call) { receive(call); })
{
    answerWith(QStringLiteral("(@a{sv} {},)"));
}

bool FakeService::start()
{
    const QString error = m_service.open(m_address);
    if (!error.isNull())
        qWarning("%s", qUtf8Printable(error));
    return error.isNull();
}

void FakeService::stop()
{
    m_service.close();
}

void FakeService::answerWith(const QString &values)
{
    const std::shared_ptr<GVariant> answer(parseValue(values), g_variant_unref);
    answerThrough([answer](const Testing::MethodCall &call) { call.reply(answer.get()); });
}

void FakeService::answerWithError(const QString &name, const QString &message)
{
    answerThrough(
        [name, message](const Testing::MethodCall &call) { call.replyError(name, message); });
}

void FakeService::answerThrough(const Handler &handler)
{
    m_handler = handler;
}

const QList<FakeService::Call> &FakeService::calls() const
{
    return m_calls;
}

void FakeService::announceChange(const QString &path, const QString &arguments)
{
    GVariant *values = arguments.isEmpty() ? nullptr : parseValue(arguments);
    m_service.announceChange(path, values);
    if (values)
        g_variant_unref(values);
}

void FakeService::receive(const Testing::MethodCall &call)
{
    m_calls.append({call.path(), call.method(), printValue(call.arguments())});
    // A copy: the handler may set another one.
    const Handler handler = m_handler;
    handler(call);
}

} // namespace Tarnvel::Testing
