#pragma once
// Applying one value of a flowsheet file to the property it names, as a user assignment:
//   a variable or parameter takes a value or an attribute object {"value", "spec", "lower",
//   "upper"}; an array takes a list (in set order), an object keyed by index, or an attribute
//   object whose attributes are one value for every element or a list in set order; a port
//   or sub-model takes an object of its own property paths.
// Refused values throw InputError naming the file location (line, column and pointer), the
// property and the value.
#include <string>

#include "flowsheet/input_value.hpp"

class VX_Type;

namespace zx::flowsheet {

// name is how users know target ("R1.T_CELL"); pointer is where the value stands in the file.
void ApplyValue(VX_Type& target, const InputValue& value, const std::string& pointer, const std::string& name);

}  // namespace zx::flowsheet
