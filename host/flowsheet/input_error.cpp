#include "flowsheet/input_error.hpp"

#include "zorexp/text.hpp"

namespace zx::flowsheet {

std::string InputError::Line(const std::string& source) const {
    // "3:14" follows the file name directly, as compilers write it; a pointer after a blank.
    std::string out = VX_BriefText(source, 4096);
    if (m_pos.Known()) out += ":" + m_pos.Text();
    if (!m_pointer.empty()) out += ": " + VX_BriefText(m_pointer, 200);
    // Messages quote what the file holds: kept on one line, without control characters.
    return out + ": " + VX_BriefText(what(), 1000);
}

}  // namespace zx::flowsheet
