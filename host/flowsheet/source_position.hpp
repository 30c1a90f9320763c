#pragma once
// Where something stands in a flowsheet file: line and column, both counted from 1 (columns
// in bytes, as compilers count them). Line 0 means the place is not known.
#include <cstdint>
#include <string>

namespace zx::flowsheet {

struct SourcePos {
    std::uint32_t line = 0;
    std::uint32_t column = 0;

    bool Known() const { return line != 0; }
    // "3:14"
    std::string Text() const { return std::to_string(line) + ":" + std::to_string(column); }
};

}  // namespace zx::flowsheet
