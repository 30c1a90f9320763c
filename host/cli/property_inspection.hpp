#pragma once
// Reads the properties of runtime objects into report form: current values, bounds, specs and
// the attributes their types give them; arrays element by element, nested containers member
// by member.
#include <vector>

#include "describe_report.hpp"

class VX_Container;
class VX_VarParam;

namespace zorexp_cli {

// Current attributes of a variable or parameter.
Attributes ReadAttributes(const VX_VarParam& object);

// The properties of a container in registration order.
std::vector<PropertyReport> InspectProperties(const VX_Container& container);

}  // namespace zorexp_cli
