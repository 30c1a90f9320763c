#include "flowsheet/input_error.hpp"

#include <cctype>

namespace zx::flowsheet {

std::string InputError::Line(const std::string& source) const {
    std::string out = source;
    if (!m_location.empty()) {
        // "3:14" follows the file name directly, as compilers write it; a pointer after a blank.
        const bool lineColumn = std::isdigit(static_cast<unsigned char>(m_location.front())) != 0;
        out += (lineColumn ? ":" : ": ") + m_location;
    }
    out += ": ";
    for (char c : std::string(what())) out += (c == '\n' || c == '\r') ? ' ' : c;
    return out;
}

}  // namespace zx::flowsheet
