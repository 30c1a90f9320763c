#pragma once
// Output text gathered in one large buffer and handed to its stream in big pieces. Numbers are
// written with std::to_chars, in the form printf's "%.<precision>g" gives (which to_chars is
// specified to match), texts as JSON strings or CSV fields.
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string_view>

namespace zx::flowsheet {

class OutputBuffer {
public:
    explicit OutputBuffer(std::ostream& out, std::size_t capacity = std::size_t{1} << 20);
    ~OutputBuffer();   // hands over what is left; call Flush to learn whether that worked
    OutputBuffer(const OutputBuffer&) = delete;
    OutputBuffer& operator=(const OutputBuffer&) = delete;

    void Put(std::string_view text);
    void Put(char c) {
        if (m_used == m_capacity) Drain();
        m_data[m_used++] = c;
    }
    void Spaces(std::size_t n);
    void Integer(long long value);
    // "%.<precision>g"; with nullForNonFinite, NaN and infinities are written as null (JSON).
    void Number(double value, int precision, bool nullForNonFinite = false);
    // A JSON string as nlohmann::json writes it (UTF-8 kept; bytes that are not UTF-8 become
    // U+FFFD, so that the output stays valid JSON).
    void JsonString(std::string_view text);
    // A CSV field, quoted when it holds a comma, a quote or a line break.
    void CsvField(std::string_view text);

    // Hands everything to the stream and flushes it; false when the stream has failed.
    bool Flush();

private:
    void Drain();
    void Reserve(std::size_t n) {
        if (m_capacity - m_used < n) Drain();
    }

    std::ostream& m_out;
    std::unique_ptr<char[]> m_data;
    std::size_t m_capacity;
    std::size_t m_used = 0;
};

// The length of "%.<precision>g" of value (for aligning columns).
std::size_t NumberWidth(double value, int precision);

}  // namespace zx::flowsheet
