#pragma once
// The runtime's own defaults: what a variable or parameter gets where its type, and every
// ancestor of its type, declares nothing. One place, so that users can look them up.
#include <climits>

namespace vx_defaults {
// Real variables (VX_REALVARIABLE)
inline constexpr double kVariableValue = 1.0;
inline constexpr double kVariableLower = -1e35;
inline constexpr double kVariableUpper = 1e35;
inline constexpr double kVariableScale = 1.0;
inline constexpr double kVariableDerivative = 0.0;
inline constexpr const char* kQuantity = "Dimensionless";   // no physical quantity
inline constexpr const char* kBaseUnit = "";                // no unit
inline constexpr int kPQRow = 0;                            // 0/0: no entry in the units table
inline constexpr int kPQCol = 0;
// Integer parameters (VX_INTEGERPARAMETER): no bounds unless the type declares them.
inline constexpr int kIntegerValue = 0;
inline constexpr int kIntegerLower = INT_MIN;
inline constexpr int kIntegerUpper = INT_MAX;
// Real parameters (VX_REALPARAMETER)
inline constexpr double kRealParamValue = 0.0;
inline constexpr double kRealParamLower = -1e35;
inline constexpr double kRealParamUpper = 1e35;
// String parameters (VX_STRINGPARAMETER): empty text, and an empty valid set, which accepts
// any value (lists such as component names are supplied at run time).
inline constexpr const char* kStringValue = "";
// Logical parameters (VX_LOGICALPARAMETER)
inline constexpr bool kLogicalValue = false;
}  // namespace vx_defaults
