#include "flowsheet/output_buffer.hpp"

#include <charconv>
#include <cmath>
#include <ostream>

#include "zorexp/text.hpp"

namespace zx::flowsheet {
namespace {

constexpr std::size_t kNumberRoom = 40;   // "%.17g" of any double fits

char* WriteNumber(char* at, double value, int precision) {
    return std::to_chars(at, at + kNumberRoom, value, std::chars_format::general, precision).ptr;
}

}  // namespace

OutputBuffer::OutputBuffer(std::ostream& out, std::size_t capacity)
    : m_out(out), m_data(std::make_unique<char[]>(capacity < 64 ? 64 : capacity)), m_capacity(capacity < 64 ? 64 : capacity) {}

OutputBuffer::~OutputBuffer() { Drain(); }

void OutputBuffer::Drain() {
    if (m_used > 0 && m_out) m_out.write(m_data.get(), static_cast<std::streamsize>(m_used));
    m_used = 0;
}

bool OutputBuffer::Flush() {
    Drain();
    m_out.flush();
    return static_cast<bool>(m_out);
}

void OutputBuffer::Put(std::string_view text) {
    while (!text.empty()) {
        if (m_used == m_capacity) Drain();
        const std::size_t n = std::min(text.size(), m_capacity - m_used);
        text.copy(m_data.get() + m_used, n);
        m_used += n;
        text.remove_prefix(n);
    }
}

void OutputBuffer::Spaces(std::size_t n) {
    for (; n > 0; --n) Put(' ');
}

void OutputBuffer::Integer(long long value) {
    Reserve(24);
    m_used = static_cast<std::size_t>(std::to_chars(m_data.get() + m_used, m_data.get() + m_capacity, value).ptr - m_data.get());
}

void OutputBuffer::Number(double value, int precision, bool nullForNonFinite) {
    if (nullForNonFinite && !std::isfinite(value)) return Put("null");
    Reserve(kNumberRoom);
    m_used = static_cast<std::size_t>(WriteNumber(m_data.get() + m_used, value, precision) - m_data.get());
}

void OutputBuffer::JsonString(std::string_view text) {
    static const char* const kHex = "0123456789abcdef";
    Put('"');
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        switch (c) {
        case '"': Put("\\\""); break;
        case '\\': Put("\\\\"); break;
        case '\b': Put("\\b"); break;
        case '\f': Put("\\f"); break;
        case '\n': Put("\\n"); break;
        case '\r': Put("\\r"); break;
        case '\t': Put("\\t"); break;
        default:
            if (c < 0x20) {
                Put("\\u00");
                Put(kHex[c >> 4]);
                Put(kHex[c & 15]);
            } else if (c < 0x80) {
                Put(static_cast<char>(c));
            } else if (const std::size_t n = VX_Utf8Length(text, i); n > 0) {
                Put(text.substr(i, n));
                i += n;
                continue;
            } else {
                Put("\xEF\xBF\xBD");
            }
        }
        ++i;
    }
    Put('"');
}

void OutputBuffer::CsvField(std::string_view text) {
    if (text.find_first_of(",\"\n\r") == std::string_view::npos) return Put(text);
    Put('"');
    for (char c : text) {
        if (c == '"') Put('"');
        Put(c);
    }
    Put('"');
}

std::size_t NumberWidth(double value, int precision) {
    char buf[kNumberRoom];
    return static_cast<std::size_t>(WriteNumber(buf, value, precision) - buf);
}

}  // namespace zx::flowsheet
