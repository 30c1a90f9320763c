#include "procedures_listing.hpp"

#include "errors.hpp"
#include "procedures/procedure_catalogue.hpp"
#include "text_table.hpp"
#include "zorexp/routine_loader.hpp"

namespace zorexp_cli {
namespace {

using Json = nlohmann::ordered_json;

ProcedureListing Look(const VX_ProcedureDeclaration& d) {
    const VX_RoutineLookup found = VX_FindRoutine(d.library, d.version, d.entry);
    ProcedureListing l{&d, found.status >= 0, {}, found.status >= 0 ? std::string() : found.why};
    if (found.library) l.file = found.library->path;
    return l;
}

const char* TypeLetter(int type) { return type == VX_ARG_STRING ? "S" : type == VX_ARG_REAL ? "R" : "I"; }

Json Arguments(const VX_ProcedureDeclaration& d, bool outputs) {
    Json list = Json::array();
    const int first = outputs ? d.inputs : 0, end = outputs ? d.inputs + d.outputs : d.inputs;
    for (int a = first; a < end; ++a)
        list.push_back(Json{{"type", TypeLetter(d.args[a].type)}, {"dims", d.args[a].dims}, {"written_back", d.args[a].writtenBack}});
    return list;
}

}  // namespace

std::vector<ProcedureListing> ListProcedures(const std::string& name) {
    std::vector<ProcedureListing> out;
    if (!name.empty()) {
        const VX_ProcedureDeclaration* d = VX_FindProcedureDeclaration(name);
        if (!d) throw BadInput("no procedure declaration named \"" + name + "\" (zorexp procedures lists them)");
        out.push_back(Look(*d));
        return out;
    }
    for (const VX_ProcedureDeclaration* d : VX_ProcedureCatalogue()) out.push_back(Look(*d));
    return out;
}

nlohmann::ordered_json ProceduresJson(const std::vector<ProcedureListing>& listing, bool single) {
    Json all = Json::array();
    for (const ProcedureListing& l : listing) {
        const VX_ProcedureDeclaration& d = *l.declaration;
        Json e{{"name", d.name},
               {"library", d.library},
               {"entry", d.entry},
               {"version", d.version},
               {"language", std::string(1, d.language)},
               {"derivatives", d.derivatives},
               {"component_list", d.componentList},
               {"inputs", Arguments(d, false)},
               {"outputs", Arguments(d, true)},
               {"provided", l.provided}};
        if (single) {
            e["file"] = l.file.empty() ? Json() : Json(l.file);
            if (!l.provided) e["reason"] = l.why;
        }
        all.push_back(std::move(e));
    }
    return single ? all.front() : all;
}

std::string ProceduresText(const std::vector<ProcedureListing>& listing, bool single) {
    if (single) {
        const ProcedureListing& l = listing.front();
        const VX_ProcedureDeclaration& d = *l.declaration;
        std::string out;
        auto line = [&](const char* label, const std::string& value) { out += std::string(label) + std::string(16 - std::string(label).size(), ' ') + value + "\n"; };
        line("Procedure", d.name);
        line("Library", d.library);
        line("Entry", d.entry);
        line("Version", std::to_string(d.version) + (d.version == 4 ? " (sparse routine)" : " (dense routine)"));
        line("Language", std::string(1, d.language));
        line("Arguments", d.signature);
        line("Derivatives", d.derivatives ? "yes" : "no");
        line("Component list", d.componentList ? "yes" : "no");
        line("Provided", l.provided ? "yes, by " + l.file : "no: " + l.why);
        return out;
    }
    TextTable table({"Procedure", "Library", "Entry", "Version", "Language", "Derivatives", "List", "Arguments", "Provided"});
    int provided = 0;
    for (const ProcedureListing& l : listing) {
        const VX_ProcedureDeclaration& d = *l.declaration;
        provided += l.provided;
        table.AddRow({d.name, d.library, d.entry, std::to_string(d.version), std::string(1, d.language), d.derivatives ? "yes" : "-",
                      d.componentList ? "yes" : "-", d.signature, l.provided ? "yes" : "no"});
    }
    return table.Render() + "\n" + std::to_string(listing.size()) + " declarations, " + std::to_string(provided) +
           " with their routine on the routine search path.\n";
}

}  // namespace zorexp_cli
