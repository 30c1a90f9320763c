#pragma once
// The catalogue of procedure declarations, as data: what `zorexp procedures` lists.
#include <span>
#include <string_view>

#include "zorexp/procedure_type.hpp"

// Every declaration, in the order of procedures.def.
std::span<const VX_ProcedureDeclaration* const> VX_ProcedureCatalogue();
// The declaration named name ("PSQRT" or "VXProc_PSQRT", either case); null when none is.
const VX_ProcedureDeclaration* VX_FindProcedureDeclaration(std::string_view name);
