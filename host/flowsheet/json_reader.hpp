#pragma once
// A streaming reader of JSON text: the caller pulls one value at a time and always knows the
// line and column it stands at, so that every value of a flowsheet file keeps its source
// position and no document of the whole file is ever built.
//
// Written by hand rather than taken from nlohmann::json: that library's SAX events carry no
// source position (and its DOM costs a node per value), while messages here must name the line
// and column of any value, and large arrays must go straight into contiguous vectors.
//
// What it refuses, each at the offending byte: anything that is not JSON (RFC 8259), nesting
// deeper than the limit, numbers outside the range of a double (beyond about ±1.8e308, or
// nonzero below about 4.9e-324), text that is not UTF-8, control characters inside texts,
// unpaired UTF-16 surrogates in \u escapes, and anything after the top-level value.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "flowsheet/source_position.hpp"

namespace zx::flowsheet {

struct ReadingLimits {
    // Objects and lists nested inside each other, the outermost counting 1.
    std::size_t maxDepth = 256;
};

class JsonReader {
public:
    enum class Token { Object, List, Text, Number, Logical, Null };

    struct Number {
        double value = 0.0;
        bool integer = false;   // written without fraction or exponent ("12", not "12.0")
        std::string_view literal;   // the number as written
    };

    explicit JsonReader(std::string_view text, ReadingLimits limits = {});

    // The kind of the next value (skipping white space). Refuses the end of the input or a
    // character that cannot start a value.
    Token Next();
    // Where the next value starts, once Next has found it; otherwise where reading stands.
    SourcePos Position() const { return PositionAt(m_at); }
    // The position of a byte on the line being read.
    SourcePos PositionAt(std::size_t offset) const;

    // An object: Enter, then NextKey until it returns false; after each key, read its value.
    void EnterObject();
    bool NextKey(std::string& key, SourcePos& keyAt);
    // A list: Enter, then NextItem until it returns false; after each, read the item.
    void EnterList();
    bool NextItem();

    // The value Next announced (a text, a number, a logical, null).
    void ReadText(std::string& out);
    std::string ReadText() {
        std::string s;
        ReadText(s);
        return s;
    }
    Number ReadNumber();
    bool ReadLogical();
    void ReadNull();
    // Passes over one value of any kind.
    void Skip();

    // Refuses anything but white space after the top-level value.
    void Finish();

    // Throws InputError at a position with a message.
    [[noreturn]] static void Fail(SourcePos at, const std::string& message);

private:
    [[noreturn]] void SyntaxError(const std::string& expected) const;
    void SkipSpace();
    void Descend();
    void Expect(char c, const char* what);
    // False at the close of the open object or list (closing it); otherwise true, past the
    // comma that must separate what follows from what came before.
    bool Continues(char close, const char* expected);
    void ReadLiteral(std::string_view word);
    void ReadTextSlow(std::string& out);
    void ReadEscape(std::string& out);
    unsigned ReadHex4();

    std::string_view m_text;
    std::size_t m_at = 0;
    std::uint32_t m_line = 1;
    std::size_t m_lineStart = 0;   // offset of the first byte of the current line
    ReadingLimits m_limits;
    // One flag per open object or list: true until its first member or item is read.
    std::vector<bool> m_first;
};

}  // namespace zx::flowsheet
