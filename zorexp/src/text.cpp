#include "zorexp/text.hpp"

#include <cctype>
#include <cstdlib>
#include <cstdio>

namespace {
int Lower(char c) { return std::tolower(static_cast<unsigned char>(c)); }
}

bool VX_EqualCI(const char* a, const char* b) { return SUValue::CompareCI(a, b) == 0; }

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
