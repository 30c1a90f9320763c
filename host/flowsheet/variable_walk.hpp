#pragma once
// Visiting the properties of a block: every variable (or every variable and parameter) in
// registration order, descending into ports, sub-models and arrays. References (globals,
// externals, virtual members) are not descended into: what they point to belongs to someone
// else.
#include <functional>

class VX_Type;
class VX_VarParam;
class VX_Variable;

namespace zx::flowsheet {

void ForEachVariable(VX_Type& root, const std::function<void(VX_Variable&)>& visit);
void ForEachValue(VX_Type& root, const std::function<void(VX_VarParam&)>& visit);

// A number that changes whenever an array of the block changes its size: set-up repeats its
// rounds until it stops changing.
unsigned long long ShapeFingerprint(VX_Type& root);

}  // namespace zx::flowsheet
