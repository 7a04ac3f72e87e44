// SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
// SPDX-License-Identifier: BSD-3-Clause

#include "json_document.h"

#include "terminal.h"

#include <QtCore/QSet>

#include <algorithm>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <string_view>

namespace Tarnvel::Sandbox {

namespace {

// Not the StringStream: the reader works on a copy of that, whose position nobody else sees.
using Stream = rapidjson::MemoryStream;

constexpr std::string_view separators = " \t\r\n,:";
constexpr int maximumQuotedSize = 80;

// An escape may stand for half a character alone, which UTF-8 has no bytes for.
bool isUtf8(const char *text, int size)
{
    for (int index = 0; index + 1 < size; ++index) {
        const auto second = static_cast<unsigned char>(text[index + 1]);
        if (text[index] == '\xed' && second >= 0xa0)
            return false;
    }
    return true;
}

// What the reader calls for each token.
class TreeBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, TreeBuilder>
{
public:
    TreeBuilder(const QByteArray &text, const Stream &stream, JsonValue *root, Mistake *mistake)
        : m_text(text), m_stream(stream), m_root(root), m_mistake(mistake)
    {
    }

    // Where the token begins that is being read: behind the last, there is nothing but separators.
    int tokenStart() const
    {
        int start = m_lastEnd;
        while (start < m_text.size() && separators.find(m_text.at(start)) != std::string_view::npos)
            ++start;
        return start;
    }

    bool Null()
    {
        add(JsonValue::Null);
        return true;
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
        if (!isUtf8(text, static_cast<int>(size)))
            return refuseHalf();
        add(JsonValue::String)->text = QString::fromUtf8(text, static_cast<int>(size));
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
        if (!isUtf8(text, static_cast<int>(size)))
            return refuseHalf();
        const QString key = QString::fromUtf8(text, static_cast<int>(size));
        OpenValue &object = m_open.back();
        if (object.keys.contains(key))
            return refuse(tokenStart(), QStringLiteral("a second member %1").arg(quoted(key)),
                          m_mistake);
        object.keys.insert(key);
        object.value->members.push_back({key, tokenStart(), {}});
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
        // Stays where it is: nothing is added to what holds it before it is closed.
        JsonValue *value;
        QSet<QString> keys;
    };

    JsonValue *nextPlace()
    {
        if (m_open.empty())
            return m_root;
        JsonValue *const holder = m_open.back().value;
        return holder->kind == JsonValue::List ? &holder->items.emplace_back()
                                               : &holder->members.back().value;
    }

    JsonValue *add(JsonValue::Kind kind)
    {
        JsonValue *const value = nextPlace();
        value->kind = kind;
        value->offset = tokenStart();
        endToken();
        return value;
    }

    bool open(JsonValue::Kind kind)
    {
        if (m_open.size() == maximumJsonDepth)
            return refuse(tokenStart(),
                          QStringLiteral("more than %1 lists and objects inside one another")
                              .arg(maximumJsonDepth),
                          m_mistake);
        m_open.push_back({add(kind), {}});
        endBracket();
        return true;
    }

    bool close()
    {
        m_open.pop_back();
        endBracket();
        return true;
    }

    bool refuseHalf()
    {
        return refuse(tokenStart(), QStringLiteral("half a character in a string"), m_mistake);
    }

    void endToken()
    {
        m_lastEnd = static_cast<int>(m_stream.Tell());
    }

    // The reader takes a bracket after it has told of it.
    void endBracket()
    {
        m_lastEnd = static_cast<int>(m_stream.Tell()) + 1;
    }

    const QByteArray &m_text;
    const Stream &m_stream;
    JsonValue *m_root;
    Mistake *m_mistake;
    std::vector<OpenValue> m_open;
    int m_lastEnd = 0;
};

QString syntaxMistake(rapidjson::ParseErrorCode code, char character)
{
    switch (code) {
    case rapidjson::kParseErrorDocumentRootNotSingular:
        return QStringLiteral("something follows the end");
    case rapidjson::kParseErrorObjectMissName:
        return QStringLiteral("the name of a member is missing");
    case rapidjson::kParseErrorObjectMissColon:
        return QStringLiteral("a \":\" is missing");
    case rapidjson::kParseErrorObjectMissCommaOrCurlyBracket:
        return QStringLiteral("a \",\" or a \"}\" is missing");
    case rapidjson::kParseErrorArrayMissCommaOrSquareBracket:
        return QStringLiteral("a \",\" or a \"]\" is missing");
    case rapidjson::kParseErrorStringUnicodeEscapeInvalidHex:
        return QStringLiteral("four hexadecimal digits are missing behind \"\\u\"");
    case rapidjson::kParseErrorStringUnicodeSurrogateInvalid:
        return QStringLiteral("half a character in a string");
    case rapidjson::kParseErrorStringEscapeInvalid:
        return character == '\\' ? QStringLiteral("no such escape sequence")
                                 : QStringLiteral("a control character in a string");
    case rapidjson::kParseErrorStringMissQuotationMark:
        return QStringLiteral("a string without its end");
    case rapidjson::kParseErrorStringInvalidEncoding:
        return QStringLiteral("not UTF-8");
    case rapidjson::kParseErrorNumberTooBig:
        return QStringLiteral("a number that is too great");
    case rapidjson::kParseErrorNumberMissFraction:
        return QStringLiteral("digits are missing behind the decimal point");
    case rapidjson::kParseErrorNumberMissExponent:
        return QStringLiteral("digits are missing in the exponent");
    default:
        return QStringLiteral("no value");
    }
}

// In a string that does not end and in a word that means nothing, the reader stops somewhere behind
// the place that people look for.
bool isAboutToken(rapidjson::ParseErrorCode code)
{
    return code == rapidjson::kParseErrorStringMissQuotationMark
        || code == rapidjson::kParseErrorValueInvalid;
}

} // namespace

const JsonMember *JsonValue::member(QLatin1String key) const
{
    const auto found = std::find_if(members.begin(), members.end(),
                                    [key](const JsonMember &one) { return one.key == key; });
    return found == members.end() ? nullptr : &*found;
}

bool parseJson(const QByteArray &text, JsonValue *value, Mistake *mistake)
{
    constexpr unsigned flags = rapidjson::kParseNumbersAsStringsFlag
        | rapidjson::kParseValidateEncodingFlag | rapidjson::kParseIterativeFlag;
    // The reader takes U+0000 for the end.
    const int null = text.indexOf('\0');
    const int size = null < 0 ? text.size() : null;
    Stream stream(text.constData(), static_cast<std::size_t>(size));
    *value = {};
    TreeBuilder builder(text, stream, value, mistake);
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, builder);
    if (result.Code() == rapidjson::kParseErrorTermination)
        return false;

    const int stop = result.IsError() ? static_cast<int>(result.Offset()) : size;
    if (stop == size && null >= 0)
        return refuse(null, QStringLiteral("U+0000"), mistake);
    if (!result.IsError())
        return true;
    if (stop == size && result.Code() != rapidjson::kParseErrorStringMissQuotationMark)
        return refuse(size, QStringLiteral("the end comes too early"), mistake);
    return refuse(isAboutToken(result.Code()) ? std::min(builder.tokenStart(), stop) : stop,
                  syntaxMistake(result.Code(), stop < size ? text.at(stop) : '\0'), mistake);
}

QString lineAndColumn(const QByteArray &text, int offset)
{
    const QByteArray before = text.left(offset);
    const QByteArray line = before.mid(before.lastIndexOf('\n') + 1);
    return QStringLiteral("%1:%2")
        .arg(before.count('\n') + 1)
        .arg(QString::fromUtf8(line).size() + 1);
}

bool refuse(int offset, const QString &text, Mistake *mistake)
{
    *mistake = {offset, text};
    return false;
}

QString describe(JsonValue::Kind kind)
{
    switch (kind) {
    case JsonValue::Null:
        return QStringLiteral("null");
    case JsonValue::Boolean:
        return QStringLiteral("a boolean");
    case JsonValue::Number:
        return QStringLiteral("a number");
    case JsonValue::String:
        return QStringLiteral("a string");
    case JsonValue::List:
        return QStringLiteral("a list");
    case JsonValue::Object:
        break;
    }
    return QStringLiteral("an object");
}

QString quoted(const QString &text)
{
    const QString shown = text.size() > maximumQuotedSize
        ? text.left(maximumQuotedSize) + QStringLiteral("...")
        : text;
    return QLatin1Char('"') + Tools::shownOnOneLine(shown) + QLatin1Char('"');
}

} // namespace Tarnvel::Sandbox
