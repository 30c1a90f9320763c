#pragma once
// Text from the command line turned into a runtime value for one attribute of a variable or
// parameter: reals and integers as numbers (reals also with a unit, "300 K", converted to the
// base unit of their type; a unit that does not fit sets *problem), logicals from
// true/false/1/0, options as text, specs from their names ("Fixed", "Free", ...), sets from
// comma-separated members ("1,3:5").
// Text that does not read as the expected kind stays text, so that the assignment refuses it
// and says what it expected; numbers of the expected kind but out of its range set *problem.
#include <string>
#include <string_view>

#include "zorexp/varparam.hpp"

namespace zorexp_cli {

VX_Value ParseValue(const VX_VarParam& target, VX_Attr attr, std::string_view text, std::string* problem = nullptr);

}  // namespace zorexp_cli
