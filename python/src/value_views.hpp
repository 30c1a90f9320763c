#pragma once
// Values of a property as Python sees them: a numpy view over the doubles the solver reads and
// writes (a real variable or real parameter, or an array of real variables), its attributes,
// and the plain value of anything else (an integer, text, logical or set parameter).
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

class VX_Type;

namespace zorexp_python {

// "real_variable", "real_parameter", "integer_parameter", "string_parameter",
// "logical_parameter", "integer_set", "string_set", "array" or "container".
std::string KindOf(VX_Type& target);
// The kind of an array's elements ("" when it has none yet, or for anything but an array).
std::string ElementKindOf(VX_Type& target);

// A view of the target's real values that keeps owner alive; a copy marked read-only only
// for arrays of real parameters, whose values are not kept side by side.
pybind11::array ValuesOf(VX_Type& target, pybind11::handle owner);
// "lower", "upper" (floats, or arrays for an array), "spec" (text, or a list), "unit" and
// "quantity" (the base unit and quantity of the units table; those of the first element for an
// array).
pybind11::object AttributeOf(VX_Type& target, const std::string& name);
// A copy of the real values in another unit of their quantity; InputFault naming the quantity
// and the units it accepts when the unit does not fit.
pybind11::array InUnit(VX_Type& target, pybind11::handle owner, const std::string& unit);
// An integer, text, logical or set parameter's value.
pybind11::object PlainValueOf(VX_Type& target);
// The index texts of an array's elements in set order.
std::vector<std::string> IndexTextsOf(VX_Type& target);

}  // namespace zorexp_python
