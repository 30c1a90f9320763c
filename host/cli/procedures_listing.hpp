#pragma once
// `procedures [NAME]`: every procedure declaration of the model library with whether its routine
// can be found on the routine search path (or one declaration, with the file it was found in).
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

struct VX_ProcedureDeclaration;

namespace zorexp_cli {

struct ProcedureListing {
    const VX_ProcedureDeclaration* declaration;
    bool provided;
    std::string file;   // the routine library's file, when it was found
    std::string why;    // why the routine cannot be called, when it cannot
};

// All declarations, or the one named (with or without VXProc_, any case); an unknown name is
// BadInput.
std::vector<ProcedureListing> ListProcedures(const std::string& name);

nlohmann::ordered_json ProceduresJson(const std::vector<ProcedureListing>& listing, bool single);
std::string ProceduresText(const std::vector<ProcedureListing>& listing, bool single);

}  // namespace zorexp_cli
