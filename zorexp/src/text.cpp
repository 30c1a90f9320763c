#include "zorexp/text.hpp"
#include "zorexp/utf8_encoding.hpp"

#include <cctype>
#include <cstdlib>
#include <cstdio>

namespace {
int Lower(char c) { return std::tolower(static_cast<unsigned char>(c)); }
}

bool VX_EqualCI(const char* a, const char* b) { return SUValue::CompareCI(a, b) == 0; }

void VX_AppendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

std::size_t VX_Utf8Length(std::string_view text, std::size_t at) {
    auto byte = [&](std::size_t k) { return at + k < text.size() ? static_cast<unsigned char>(text[at + k]) : 0u; };
    auto next = [&](std::size_t k, unsigned low = 0x80, unsigned high = 0xBF) { return byte(k) >= low && byte(k) <= high; };
    const unsigned lead = byte(0);
    if (at >= text.size()) return 0;
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return next(1) ? 2 : 0;
    if (lead == 0xE0) return next(1, 0xA0) && next(2) ? 3 : 0;
    if (lead == 0xED) return next(1, 0x80, 0x9F) && next(2) ? 3 : 0;   // not a surrogate
    if (lead >= 0xE1 && lead <= 0xEF) return next(1) && next(2) ? 3 : 0;
    if (lead == 0xF0) return next(1, 0x90) && next(2) && next(3) ? 4 : 0;
    if (lead >= 0xF1 && lead <= 0xF3) return next(1) && next(2) && next(3) ? 4 : 0;
    if (lead == 0xF4) return next(1, 0x80, 0x8F) && next(2) && next(3) ? 4 : 0;
    return 0;
}

bool VX_IsUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t n = VX_Utf8Length(text, i);
        if (n == 0) return false;
        i += n;
    }
    return true;
}

std::string VX_BriefText(std::string_view text, std::size_t limit) {
    static const char* const kHex = "0123456789ABCDEF";
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        if (out.size() >= limit) {
            out += "...";
            break;
        }
        const auto c = static_cast<unsigned char>(text[i]);
        const std::size_t n = VX_Utf8Length(text, i);
        if (c == '\n') out += "\\n";
        else if (c == '\t') out += "\\t";
        else if (c == '\r') out += "\\r";
        else if (n == 0 || c < 0x20 || c == 0x7F) out += std::string("\\x") + kHex[c >> 4] + kHex[c & 15];
        else out.append(text.substr(i, n));
        i += n == 0 ? 1 : n;
    }
    return out;
}

int SUValue::CompareCI(const char* a, const char* b) {
    if (!a) a = "";
    if (!b) b = "";
    for (;; ++a, ++b) {
        const int ca = Lower(*a), cb = Lower(*b);
        if (ca != cb) return ca - cb;
        if (ca == 0) return 0;
    }
}

const char* SUValue::String() const {
    switch (m_type) {
    case VT_Text: return m_text.c_str();
    case VT_Integer: m_formatted = std::to_string(m_int); return m_formatted.c_str();
    case VT_Real: {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%.17g", m_real);
        m_formatted = buf;
        return m_formatted.c_str();
    }
    case VT_Empty: break;
    }
    return "";
}

int SUValue::Integer() const {
    switch (m_type) {
    case VT_Integer: return m_int;
    case VT_Real: return static_cast<int>(m_real);
    case VT_Text: {
        char* end = nullptr;
        const long v = std::strtol(m_text.c_str(), &end, 10);
        return (end && end != m_text.c_str()) ? static_cast<int>(v) : 0;
    }
    case VT_Empty: break;
    }
    return 0;
}
