// Declarations of the test routine library's routines, written as rows like those of
// procedures.def, plus libraries that must be refused or not found.
#pragma once

#include "procedures/procedure_template.hpp"

VX_DECLARE_PROCEDURE(ZXT_SQUARE, "ZxTestRoutines", "ZXT_square", 2, F, "R* -> R", yes, no)
// The same routine through the other spelling of the library, without derivatives.
VX_DECLARE_PROCEDURE(ZXT_SQUARE_FD, "zxtestroutines", "ZXT_square", 1, F, "R* -> R", no, no)
VX_DECLARE_PROCEDURE(ZXT_CLIFF, "ZxTestRoutines", "ZXT_cliff", 2, F, "R*, R* -> R", no, no)
VX_DECLARE_PROCEDURE(ZXT_PROFILE, "ZxTestRoutines", "ZXT_profile", 2, F, "R*, R[1]* -> R, R[1]", yes, no)
VX_DECLARE_PROCEDURE(ZXT_CONSTANTS, "ZxTestRoutines", "ZXT_constants", 2, F, "I, R, S, R* -> R", no, no)
VX_DECLARE_PROCEDURE(ZXT_COUNT, "ZxTestRoutines", "ZXT_count", 2, F, "(none) -> R", no, no)
VX_DECLARE_PROCEDURE(ZXT_SPARSE, "ZxTestRoutines", "ZORM13_zxt_square", 4, F, "R* -> R", yes, no)
VX_DECLARE_PROCEDURE(ZXT_CSTRINGS, "ZxTestRoutines", "ZXT_cstrings", 2, C, "S, S[1]*, I -> R", no, no)
VX_DECLARE_PROCEDURE(ZXT_COMPONENTS, "ZxTestRoutines", "ZXT_components", 2, F, "R* -> R, R", no, yes)
VX_DECLARE_PROCEDURE(ZXT_MISSING_ENTRY, "ZxTestRoutines", "ZXT_nowhere", 2, F, "R* -> R", yes, no)
VX_DECLARE_PROCEDURE(ZXT_MISSING_LIBRARY, "ZxNoSuchLibrary", "ZXT_square", 2, F, "R* -> R", yes, no)
VX_DECLARE_PROCEDURE(ZXT_NO_INTERFACE, "ZxNoInterface", "ZXT_square", 2, F, "R* -> R", yes, no)
VX_DECLARE_PROCEDURE(ZXT_TOO_OLD, "ZxDenseOnly", "ZORM13_zxt_square", 4, F, "R* -> R", yes, no)
VX_DECLARE_PROCEDURE(ZXT_CWD_ONLY, "ZxCwdOnly", "ZXT_square", 2, F, "R* -> R", yes, no)

// A declaration that asks for written-back inputs (the runtime's default does not).
class VXProc_ZXT_WRITEBACK : public VX_ProcedureTemplate<VXProc_ZXT_WRITEBACK, 2, 1, 0, VX_ProcedureType_F, 2> {
public:
    static constexpr auto kArgs = VX_SignatureArgs<3>("R*, S* -> R");
    static constexpr VX_ProcedureDeclaration kDeclaration{
        "ZXT_WRITEBACK", "ZxTestRoutines", "ZXT_writeback", 2, 'F', "R*, S* -> R", 2, 1, 0, kArgs.data(), false, false};
    static bool PostsetInputs() { return true; }
    VXProc_ZXT_WRITEBACK(bool counting, int mode) : VX_ProcedureTemplate(counting, mode, nullptr) {}
};
