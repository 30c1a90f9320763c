#include "flowsheet/json_reader.hpp"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

#include "flowsheet/input_error.hpp"
#include "zorexp/text.hpp"
#include "zorexp/utf8_encoding.hpp"

namespace zx::flowsheet {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// How the byte at offset reads in a message: 'x', "byte 0xFF" or the end of the input.
std::string Found(std::string_view text, std::size_t at) {
    if (at >= text.size()) return "the end of the input";
    const auto c = static_cast<unsigned char>(text[at]);
    if (c >= 0x20 && c < 0x7F) return std::string("'") + static_cast<char>(c) + "'";
    static const char* const kHex = "0123456789ABCDEF";
    return std::string("byte 0x") + kHex[c >> 4] + kHex[c & 15];
}

}  // namespace

JsonReader::JsonReader(std::string_view text, ReadingLimits limits) : m_text(text), m_limits(limits) {
    // A byte order mark says nothing in UTF-8; editors on some systems write one.
    if (m_text.substr(0, 3) == "\xEF\xBB\xBF") m_at = m_lineStart = 3;
}

SourcePos JsonReader::PositionAt(std::size_t offset) const {
    constexpr std::size_t kMax = std::numeric_limits<std::uint32_t>::max();
    const std::size_t column = offset >= m_lineStart ? offset - m_lineStart + 1 : 1;
    return SourcePos{m_line, static_cast<std::uint32_t>(std::min(column, kMax))};
}

void JsonReader::Fail(SourcePos at, const std::string& message) { throw InputError(at, message); }

void JsonReader::SyntaxError(const std::string& expected) const {
    Fail(Position(), "syntax error: expected " + expected + ", found " + Found(m_text, m_at));
}

void JsonReader::SkipSpace() {
    while (m_at < m_text.size()) {
        const char c = m_text[m_at];
        if (c == '\n') {
            if (m_line != std::numeric_limits<std::uint32_t>::max()) ++m_line;
            m_lineStart = m_at + 1;
        } else if (c != ' ' && c != '\t' && c != '\r') {
            return;
        }
        ++m_at;
    }
}

JsonReader::Token JsonReader::Next() {
    SkipSpace();
    if (m_at < m_text.size()) {
        const char c = m_text[m_at];
        switch (c) {
        case '{': return Token::Object;
        case '[': return Token::List;
        case '"': return Token::Text;
        case 't':
        case 'f': return Token::Logical;
        case 'n': return Token::Null;
        default:
            if (c == '-' || IsDigit(c)) return Token::Number;
        }
    }
    SyntaxError("a value");
}

void JsonReader::Descend() {
    if (m_first.size() >= m_limits.maxDepth)
        Fail(Position(), "objects and lists are nested more than " + std::to_string(m_limits.maxDepth) + " deep");
    ++m_at;
    m_first.push_back(true);
}

void JsonReader::EnterObject() {
    if (Next() != Token::Object) SyntaxError("an object");
    Descend();
}

void JsonReader::EnterList() {
    if (Next() != Token::List) SyntaxError("a list");
    Descend();
}

void JsonReader::Expect(char c, const char* what) {
    SkipSpace();
    if (m_at >= m_text.size() || m_text[m_at] != c) SyntaxError(what);
    ++m_at;
}

bool JsonReader::Continues(char close, const char* expected) {
    SkipSpace();
    if (m_at < m_text.size() && m_text[m_at] == close) {
        ++m_at;
        m_first.pop_back();
        return false;
    }
    if (!m_first.back()) {
        Expect(',', expected);
        SkipSpace();
    }
    return true;
}

bool JsonReader::NextKey(std::string& key, SourcePos& keyAt) {
    const bool first = m_first.back();
    if (!Continues('}', "',' or '}' after a member of an object")) return false;
    if (m_at >= m_text.size() || m_text[m_at] != '"') SyntaxError(first ? "a key in double quotes or '}'" : "a key in double quotes");
    m_first.back() = false;
    keyAt = Position();
    ReadText(key);
    Expect(':', "':' after a key");
    return true;
}

bool JsonReader::NextItem() {
    const bool first = m_first.back();
    if (!Continues(']', "',' or ']' after an item of a list")) return false;
    if (!first && m_at < m_text.size() && m_text[m_at] == ']') SyntaxError("a value after ','");
    m_first.back() = false;
    return true;
}

void JsonReader::ReadText(std::string& out) {
    if (Next() != Token::Text) SyntaxError("a text in double quotes");
    // Plain ASCII up to the closing quote is copied at once.
    const std::size_t begin = m_at + 1;
    std::size_t end = begin;
    while (end < m_text.size()) {
        const auto c = static_cast<unsigned char>(m_text[end]);
        if (c == '"' || c == '\\' || c < 0x20 || c >= 0x80) break;
        ++end;
    }
    out.assign(m_text.data() + begin, end - begin);
    m_at = end;
    if (end < m_text.size() && m_text[end] == '"') {
        ++m_at;
        return;
    }
    ReadTextSlow(out);
}

void JsonReader::ReadTextSlow(std::string& out) {
    for (;;) {
        if (m_at >= m_text.size()) Fail(Position(), "syntax error: a text is not closed before the end of the input");
        const auto c = static_cast<unsigned char>(m_text[m_at]);
        if (c == '"') {
            ++m_at;
            return;
        }
        if (c == '\\') {
            ReadEscape(out);
        } else if (c < 0x20) {
            Fail(Position(), "a text holds a control character (" + Found(m_text, m_at) +
                                 "): write it as an escape such as \\n or \\t");
        } else if (c < 0x80) {
            out += static_cast<char>(c);
            ++m_at;
        } else {
            const std::size_t n = VX_Utf8Length(m_text, m_at);
            if (n == 0) Fail(Position(), "a text is not UTF-8 (" + Found(m_text, m_at) + ")");
            out.append(m_text.data() + m_at, n);
            m_at += n;
        }
    }
}

unsigned JsonReader::ReadHex4() {
    unsigned value = 0;
    for (int k = 0; k < 4; ++k, ++m_at) {
        const char c = m_at < m_text.size() ? m_text[m_at] : '\0';
        unsigned digit = 0;
        if (IsDigit(c)) digit = static_cast<unsigned>(c - '0');
        else if (c >= 'a' && c <= 'f') digit = static_cast<unsigned>(c - 'a' + 10);
        else if (c >= 'A' && c <= 'F') digit = static_cast<unsigned>(c - 'A' + 10);
        else SyntaxError("four hexadecimal digits after \\u");
        value = value * 16 + digit;
    }
    return value;
}

void JsonReader::ReadEscape(std::string& out) {
    const std::size_t start = m_at;
    ++m_at;   // the backslash
    const char c = m_at < m_text.size() ? m_text[m_at] : '\0';
    ++m_at;
    switch (c) {
    case '"': out += '"'; return;
    case '\\': out += '\\'; return;
    case '/': out += '/'; return;
    case 'b': out += '\b'; return;
    case 'f': out += '\f'; return;
    case 'n': out += '\n'; return;
    case 'r': out += '\r'; return;
    case 't': out += '\t'; return;
    case 'u': break;
    default:
        m_at = start + 1;
        SyntaxError("an escape (\\\" \\\\ \\/ \\b \\f \\n \\r \\t \\uXXXX) after '\\'");
    }
    unsigned cp = ReadHex4();
    if (cp >= 0xD800 && cp <= 0xDBFF) {
        // A high surrogate must be followed by a low one: together they are one character.
        if (m_text.substr(m_at, 2) != "\\u") Fail(PositionAt(start), "a text holds half of a UTF-16 surrogate pair");
        m_at += 2;
        const unsigned low = ReadHex4();
        if (low < 0xDC00 || low > 0xDFFF) Fail(PositionAt(start), "a text holds half of a UTF-16 surrogate pair");
        cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
    } else if (cp >= 0xDC00 && cp <= 0xDFFF) {
        Fail(PositionAt(start), "a text holds half of a UTF-16 surrogate pair");
    } else if (cp == 0) {
        // Texts end at their first zero byte wherever the runtime keeps them.
        Fail(PositionAt(start), "a text holds the character U+0000, which no name or value may contain");
    }
    VX_AppendUtf8(out, static_cast<char32_t>(cp));
}

JsonReader::Number JsonReader::ReadNumber() {
    if (Next() != Token::Number) SyntaxError("a number");
    const std::size_t start = m_at;
    std::size_t p = m_at;
    auto digits = [&] {
        if (p >= m_text.size() || !IsDigit(m_text[p])) {
            m_at = p;
            SyntaxError("a digit");
        }
        while (p < m_text.size() && IsDigit(m_text[p])) ++p;
    };
    Number n;
    n.integer = true;
    if (m_text[p] == '-') ++p;
    if (p < m_text.size() && m_text[p] == '0') {
        ++p;
        if (p < m_text.size() && IsDigit(m_text[p])) {
            m_at = start;
            Fail(Position(), "syntax error: a number may not start with 0 followed by digits");
        }
    } else {
        digits();
    }
    bool negativeExponent = false;
    if (p < m_text.size() && m_text[p] == '.') {
        n.integer = false;
        ++p;
        digits();
    }
    if (p < m_text.size() && (m_text[p] == 'e' || m_text[p] == 'E')) {
        n.integer = false;
        ++p;
        if (p < m_text.size() && (m_text[p] == '+' || m_text[p] == '-')) negativeExponent = m_text[p++] == '-';
        digits();
    }
    const char* first = m_text.data() + start;
    const char* last = m_text.data() + p;
    n.literal = std::string_view(first, p - start);
    if (n.integer) {
        long long i = 0;
        if (std::from_chars(first, last, i).ec == std::errc()) {
            n.value = static_cast<double>(i);
            m_at = p;
            return n;
        }
        // Beyond 64 bits: still a number, read as a double below.
    }
    if (std::from_chars(first, last, n.value).ec != std::errc()) {
        const std::string literal = VX_BriefText(std::string_view(first, static_cast<std::size_t>(last - first)));
        Fail(Position(), "number " + literal + (negativeExponent ? " is too close to zero" : " is too large") +
                             " to be held as a real number (about 4.9e-324 to 1.8e308)");
    }
    m_at = p;
    return n;
}

void JsonReader::ReadLiteral(std::string_view word) {
    if (m_text.substr(m_at, word.size()) != word) Fail(Position(), "syntax error: invalid literal; expected a value such as true, false, null, a number, a text, an object or a list");
    m_at += word.size();
}

bool JsonReader::ReadLogical() {
    if (Next() != Token::Logical) SyntaxError("true or false");
    const bool value = m_text[m_at] == 't';
    ReadLiteral(value ? "true" : "false");
    return value;
}

void JsonReader::ReadNull() {
    if (Next() != Token::Null) SyntaxError("null");
    ReadLiteral("null");
}

void JsonReader::Skip() {
    std::string scratch;
    SourcePos at;
    switch (Next()) {
    case Token::Object:
        EnterObject();
        while (NextKey(scratch, at)) Skip();
        return;
    case Token::List:
        EnterList();
        while (NextItem()) Skip();
        return;
    case Token::Text: ReadText(scratch); return;
    case Token::Number: ReadNumber(); return;
    case Token::Logical: ReadLogical(); return;
    case Token::Null: ReadNull(); return;
    }
}

void JsonReader::Finish() {
    SkipSpace();
    if (m_at < m_text.size()) SyntaxError("the end of the input after the top-level value");
}

}  // namespace zx::flowsheet
