#pragma once
// Values of a flowsheet file as runtime values. The JSON type says what the value is (an
// integer, a real number, a text, a logical, a list of integers or texts for a set); whether
// it suits the property is the runtime's check when it is assigned.
#include <optional>
#include <string>

#include "flowsheet/json_reading.hpp"
#include "zorexp/value.hpp"

namespace zx::flowsheet {

// The runtime value of a JSON value, or nothing (with *why set) when the JSON value is not
// one (null, an object, a list of mixed or nested items).
std::optional<VX_Value> ValueFromJson(const Json& value, std::string* why);

// A spec given as text ("Fixed", "free", ...), or nothing (with *why set).
std::optional<VX_Value> SpecFromJson(const Json& value, std::string* why);

}  // namespace zx::flowsheet
