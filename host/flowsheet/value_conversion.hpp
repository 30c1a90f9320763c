#pragma once
// Values of a flowsheet file as runtime values for one attribute of a variable or parameter.
// The file says what a value is (an integer, a real number, a text, a logical, a list of
// integers or texts for a set); whether it suits the property is the runtime's check when it
// is assigned. Integers are range-checked here: the runtime's integers have 32 bits, and an
// integer literal beyond them is a real number only where a real number is expected.
// Values, bounds of real variables and parameters may carry a unit ("300 K" as a text, or a
// number with the unit of its attribute object); they are converted to the type's base unit.
#include <optional>
#include <string>
#include <string_view>

#include "flowsheet/input_value.hpp"
#include "zorexp/varparam.hpp"

namespace zx::flowsheet {

struct ConversionRefusal {
    std::string why;
    SourcePos pos;   // the offending value or list item
};

// The runtime value for attribute attr of target, or nothing with refusal filled in. unit is
// the unit the value's attribute object gives ("" for none).
std::optional<VX_Value> RuntimeValue(const VX_VarParam& target, VX_Attr attr, const InputValue& value,
                                     ConversionRefusal& refusal, std::string_view unit = {});

}  // namespace zx::flowsheet
