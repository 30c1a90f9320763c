#pragma once
// JSON pointers name an entry of a flowsheet file in messages: "/blocks/R1/set/NPTS".
#include <cstddef>
#include <string>
#include <string_view>

namespace zx::flowsheet {

// "/blocks/R1" + "set" -> "/blocks/R1/set" ("~" and "/" in keys escaped as "~0" and "~1").
std::string PointerChild(const std::string& pointer, std::string_view key);
std::string PointerChild(const std::string& pointer, std::size_t index);

}  // namespace zx::flowsheet
