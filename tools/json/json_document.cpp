// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "json_document.h"

#include "terminal.h"
#include "text.h"

#include <QtCore/QSet>

#include <algorithm>
#include <array>
#include <glib.h>
#include <map>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <string_view>

namespace Tarnvel::Tools {

namespace {

// Not a StringStream: the reader copies it, so its position cannot be seen here.
using Stream = rapidjson::MemoryStream;

constexpr std::string_view separators = " \t\r\n,:";
constexpr int maximumQuotedSize = 80;

// What the reader calls for each token.
class TreeBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, TreeBuilder>
{
public:
    TreeBuilder(const QByteArray &text, const Stream &stream, JsonValue *root,
                Diagnostics *diagnostics)
        : m_text(text), m_stream(stream), m_root(root), m_diagnostics(diagnostics)
    {
    }

    // Where the current token begins: there are only separators between it and the last one.
    int tokenStart() const
    {
        int start = m_lastEnd;
        while (start < m_text.size() && separators.find(m_text.at(start)) != std::string_view::npos)
            ++start;
        return start;
    }

    bool Null()
    {
        return add(JsonValue::Null);
    }

    bool Bool(bool isTrue)
    {
        add(JsonValue::Boolean)->isTrue = isTrue;
        return true;
    }

    bool RawNumber(const char *text, rapidjson::SizeType size, bool)
    {
        add(JsonValue::Number)->text = QString::fromLatin1(text, static_cast<int>(size));
        return true;
    }

    bool String(const char *text, rapidjson::SizeType size, bool)
    {
        const QString content = checkedText(text, size);
        add(JsonValue::String)->text = content;
        return true;
    }

    bool StartArray()
    {
        return open(JsonValue::List);
    }

    bool StartObject()
    {
        return open(JsonValue::Object);
    }

    bool Key(const char *text, rapidjson::SizeType size, bool)
    {
        const QString name = checkedText(text, size);
        OpenValue &object = m_open.back();
        if (object.names.contains(name))
            m_diagnostics->add(tokenStart(),
                               QStringLiteral("duplicate member ") + quotedExcerpt(name));
        object.names.insert(name);
        object.value->members.push_back({name, tokenStart(), {}});
        endToken();
        return true;
    }

    bool EndArray(rapidjson::SizeType)
    {
        return close();
    }

    bool EndObject(rapidjson::SizeType)
    {
        return close();
    }

private:
    struct OpenValue
    {
        // Not moved: nothing is added to the value around it before this one is closed.
        JsonValue *value;
        QSet<QString> names;
    };

    JsonValue *nextValue()
    {
        if (m_open.empty())
            return m_root;
        JsonValue *const parent = m_open.back().value;
        return parent->kind == JsonValue::List ? &parent->items.emplace_back()
                                               : &parent->members.back().value;
    }

    JsonValue *add(JsonValue::Kind kind)
    {
        JsonValue *const value = nextValue();
        value->kind = kind;
        value->offset = tokenStart();
        endToken();
        value->end = m_lastEnd;
        return value;
    }

    bool open(JsonValue::Kind kind)
    {
        if (m_open.size() == maximumJsonDepth) {
            m_diagnostics->add(
                tokenStart(),
                QStringLiteral("more than %1 nested lists and objects").arg(maximumJsonDepth));
            return false;
        }
        m_open.push_back({add(kind), {}});
        endBracket();
        return true;
    }

    bool close()
    {
        endBracket();
        m_open.back().value->end = m_lastEnd;
        m_open.pop_back();
        return true;
    }

    QString checkedText(const char *text, rapidjson::SizeType size)
    {
        if (!g_utf8_validate(text, static_cast<gssize>(size), nullptr))
            m_diagnostics->add(tokenStart(),
                               QStringLiteral("U+0000 or lone surrogate in a string"));
        return fromUtf8({text, static_cast<int>(size)});
    }

    void endToken()
    {
        m_lastEnd = static_cast<int>(m_stream.Tell());
    }

    // The reader reports a bracket before it consumes it.
    void endBracket()
    {
        m_lastEnd = static_cast<int>(m_stream.Tell()) + 1;
    }

    const QByteArray &m_text;
    const Stream &m_stream;
    JsonValue *m_root;
    Diagnostics *m_diagnostics;
    std::vector<OpenValue> m_open;
    int m_lastEnd = 0;
};

QString syntaxMessage(rapidjson::ParseErrorCode code, char character)
{
    static const std::map<rapidjson::ParseErrorCode, const char *> messages {
        {rapidjson::kParseErrorDocumentRootNotSingular, "unexpected text after the end"},
        {rapidjson::kParseErrorObjectMissName, "expected the name of a member"},
        {rapidjson::kParseErrorObjectMissColon, "expected \":\""},
        {rapidjson::kParseErrorObjectMissCommaOrCurlyBracket, "expected \",\" or \"}\""},
        {rapidjson::kParseErrorArrayMissCommaOrSquareBracket, "expected \",\" or \"]\""},
        {rapidjson::kParseErrorStringUnicodeEscapeInvalidHex,
         "expected four hexadecimal digits after \"\\u\""},
        {rapidjson::kParseErrorStringUnicodeSurrogateInvalid, "lone surrogate in a string"},
        {rapidjson::kParseErrorStringEscapeInvalid, "unknown escape sequence"},
        {rapidjson::kParseErrorStringMissQuotationMark, "unterminated string"},
        {rapidjson::kParseErrorStringInvalidEncoding, "invalid UTF-8"},
        {rapidjson::kParseErrorNumberTooBig, "number too large"},
        {rapidjson::kParseErrorNumberMissFraction, "expected digits after the decimal point"},
        {rapidjson::kParseErrorNumberMissExponent, "expected digits in the exponent"},
    };
    if (code == rapidjson::kParseErrorStringEscapeInvalid && character != '\\')
        return QStringLiteral("control character in a string");
    const auto found = messages.find(code);
    return QLatin1String(found == messages.end() ? "expected a value" : found->second);
}

// For an unterminated string and an unknown literal, the reader stops somewhere inside the token.
bool isAboutToken(rapidjson::ParseErrorCode code)
{
    return code == rapidjson::kParseErrorStringMissQuotationMark
        || code == rapidjson::kParseErrorValueInvalid;
}

} // namespace

const JsonValue *JsonValue::member(const QString &name) const
{
    const auto found = std::find_if(members.begin(), members.end(),
                                    [&name](const JsonMember &one) { return one.name == name; });
    return found == members.end() ? nullptr : &found->value;
}

JsonValue parseJson(const QByteArray &text, Diagnostics *diagnostics)
{
    constexpr unsigned flags = rapidjson::kParseNumbersAsStringsFlag
        | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseIterativeFlag;
    // The reader takes U+0000 for the end.
    const int null = text.indexOf('\0');
    const int size = null < 0 ? text.size() : null;
    Stream stream(text.constData(), static_cast<std::size_t>(size));
    JsonValue value;
    TreeBuilder builder(text, stream, &value, diagnostics);
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, builder);
    if (result.Code() == rapidjson::kParseErrorTermination)
        return value;

    const rapidjson::ParseErrorCode code = result.Code();
    const int stop = result.IsError() ? static_cast<int>(result.Offset()) : size;
    if (stop == size && null >= 0)
        diagnostics->add(null, QStringLiteral("U+0000 is not allowed"));
    else if (stop == size && result.IsError()
             && code != rapidjson::kParseErrorStringMissQuotationMark)
        diagnostics->add(size, QStringLiteral("unexpected end of the file"));
    else if (result.IsError())
        diagnostics->add(isAboutToken(code) ? std::min(builder.tokenStart(), stop) : stop,
                         syntaxMessage(code, stop < size ? text.at(stop) : '\0'));
    return value;
}

QString describe(JsonValue::Kind kind)
{
    static const std::array<const char *, 6> descriptions {
        "null", "a boolean", "a number", "a string", "a list", "an object",
    };
    return QLatin1String(descriptions.at(kind));
}

QString quotedExcerpt(const QString &text)
{
    const QString shown = text.size() > maximumQuotedSize
        ? text.left(maximumQuotedSize) + QStringLiteral("...")
        : text;
    return QLatin1Char('"') + shownOnOneLine(shown) + QLatin1Char('"');
}

} // namespace Tarnvel::Tools
