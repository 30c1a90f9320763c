#pragma once
// Text helpers shared by the runtime: case-insensitive comparison and the SUValue cell.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// True when a and b are equal ignoring ASCII case (whole text, byte by byte).
bool VX_EqualCI(const char* a, const char* b);

// Length of the well-formed UTF-8 sequence starting at text[at] (1 for ASCII), or 0 when the
// bytes there are not UTF-8 (overlong forms and surrogates included).
std::size_t VX_Utf8Length(std::string_view text, std::size_t at);
bool VX_IsUtf8(std::string_view text);

// Text as messages show it: on one line (control characters and bytes that are not UTF-8
// written as escapes such as \n or \xFF) and at most about limit bytes long (longer text is
// cut and ends in "...").
std::string VX_BriefText(std::string_view text, std::size_t limit = 60);

// A loosely typed text/number cell used where options and list values are compared.
class SUValue {
public:
    enum Type : std::int32_t { VT_Empty = 0, VT_Text = 1, VT_Integer = 2, VT_Real = 3 };

    SUValue() = default;
    SUValue(const char* text) : m_type(VT_Text), m_text(text ? text : "") {}
    SUValue(std::string text) : m_type(VT_Text), m_text(std::move(text)) {}
    SUValue(int value) : m_type(VT_Integer), m_int(value) {}
    SUValue(double value) : m_type(VT_Real), m_real(value) {}

    // 0 when a and b are equal ignoring case, otherwise <0 or >0 like strcmp on lowered text.
    static int CompareCI(const char* a, const char* b);
    static int CompareCI(const SUValue& a, const SUValue& b) { return CompareCI(a.String(), b.String()); }

    const char* String() const;   // text form (numbers formatted)
    int Integer() const;          // integer form (text parsed as decimal, 0 when not a number)
    Type ValueType() const { return m_type; }
    void SetSize(std::size_t n) { m_text.assign(n, ' '); m_type = VT_Text; }
    void Clear() { m_type = VT_Empty; m_text.clear(); m_int = 0; m_real = 0.0; }

private:
    Type m_type = VT_Empty;
    std::string m_text;
    int m_int = 0;
    double m_real = 0.0;
    mutable std::string m_formatted;
};
