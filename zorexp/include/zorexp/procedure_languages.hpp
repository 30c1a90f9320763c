#pragma once
// The language flavours of procedures: where the offsets handed to a routine count from, and
// how strings are laid out. Fortran: offsets from 1, strings padded with blanks. C: offsets from
// 0, strings ended by a NUL inside their field, and every string array preceded by a table of
// pointers to its strings.
#include "zorexp/procedure_type.hpp"

class VX_ProcedureType_F : public VX_ProcedureType {
public:
    bool IsFortran() const override { return true; }
    int LanguageBaseIndex() const override { return 1; }

protected:
    explicit VX_ProcedureType_F(const VX_ProcedureDeclaration& decl) : VX_ProcedureType(decl, 1, false) {}
};

class VX_ProcedureType_C : public VX_ProcedureType {
public:
    bool IsFortran() const override { return false; }
    int LanguageBaseIndex() const override { return 0; }

protected:
    explicit VX_ProcedureType_C(const VX_ProcedureDeclaration& decl) : VX_ProcedureType(decl, 0, true) {}
};

