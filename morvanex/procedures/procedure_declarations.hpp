#pragma once
// The classes VXProc_<NAME> of every procedure declaration, made from procedures.def. A model
// binds a call with one of them, for example
//   VXProc_PSQRT(counting, mode)                     (no component list)
//   VXProc_PENTH_MOL_LIQ(counting, mode, &list)      (takes the model's component list)
// and reaches its routine through the runtime (zorexp/procedure_type.hpp).
#include "procedures/procedure_template.hpp"

#define VX_PROCEDURE VX_DECLARE_PROCEDURE
#include "procedures/procedures.def"
#undef VX_PROCEDURE
