#include "components_command.hpp"

#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "errors.hpp"
#include "text_table.hpp"
#include "thermo/component_database.hpp"
#include "thermo/units.hpp"

namespace zorexp_cli {
namespace {

using nlohmann::json;
using zx::thermo::Component;
using zx::thermo::ComponentDatabase;

// The quantities a complete entry has, in the order the file lists them.
const char* const kQuantities[] = {"molecular_weight", "critical_temperature", "critical_pressure", "critical_volume",
                                   "critical_compressibility", "acentric_factor", "normal_boiling_point", "ideal_gas_heat_capacity",
                                   "formation_enthalpy", "formation_gibbs_energy", "vapour_pressure", "heat_of_vaporisation",
                                   "saturated_liquid_volume"};

ComponentDatabase LoadDatabase() {
    // <prefix>/bin/zorexp, database under <prefix>/share/zorexp/.
    std::error_code ec;
    const std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    try {
        return ComponentDatabase::Load(zx::thermo::DatabasePath(exe.parent_path().parent_path()));
    } catch (const zx::thermo::DatabaseError& e) {
        throw HostFailure(e.what());
    }
}

std::string Number(const std::optional<double>& v, double scale = 1.0, double offset = 0.0) {
    return v ? fmt::format("{:.6g}", *v * scale + offset) : "-";
}

json Value(const std::string& text) {
    char* end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    return (!text.empty() && *end == '\0') ? json(v) : json(text);
}

std::vector<std::string> Missing(const Component& c) {
    std::vector<std::string> missing;
    for (const char* q : kQuantities) {
        bool present = false;
        for (const auto& d : c.data) present = present || d.quantity == q;
        if (!present) missing.emplace_back(q);
    }
    return missing;
}

std::string OneComponent(const ComponentDatabase& db, const Component& c, bool json_out) {
    const std::vector<std::string> missing = Missing(c);
    if (json_out) {
        json data = json::array();
        for (const auto& d : c.data) data.push_back({{"quantity", d.quantity}, {"value", Value(d.value)}, {"unit", d.unit}, {"source", d.source}});
        const json out{{"database", db.File().string()}, {"id", c.id},       {"name", c.name}, {"formula", c.formula},
                       {"aliases", c.aliases},           {"data", data},     {"missing", missing}};
        return out.dump(2) + "\n";
    }
    std::string text = fmt::format("{} ({}, {}){}\n", c.id, c.name, c.formula, c.aliases.empty() ? "" : ", also " + fmt::format("{}", fmt::join(c.aliases, ", ")));
    TextTable table({"QUANTITY", "VALUE", "UNIT", "SOURCE"});
    for (const auto& d : c.data) table.AddRow({d.quantity, d.value, d.unit, d.source});
    text += table.Render();
    if (!missing.empty()) text += fmt::format("Not in the database: {}\n", fmt::join(missing, ", "));
    return text;
}

std::string AllComponents(const ComponentDatabase& db, bool json_out) {
    if (json_out) {
        json list = json::array();
        for (const Component& c : db.Components())
            list.push_back({{"id", c.id}, {"name", c.name}, {"formula", c.formula}, {"aliases", c.aliases}, {"missing", Missing(c)}});
        return json{{"database", db.File().string()}, {"components", list}}.dump(2) + "\n";
    }
    TextTable table({"ID", "NAME", "FORMULA", "MW kg/kmol", "TC C", "PC bar", "OMEGA", "TB C", "ALIASES"});
    for (const Component& c : db.Components())
        table.AddRow({c.id, c.name, c.formula, Number(c.molecular_weight), Number(c.critical_temperature, 1.0, -zx::thermo::kCelsiusOffset),
                      Number(c.critical_pressure, 1.0 / zx::thermo::kPascalPerBar), Number(c.acentric_factor),
                      Number(c.normal_boiling_point, 1.0, -zx::thermo::kCelsiusOffset), fmt::format("{}", fmt::join(c.aliases, " "))});
    return fmt::format("{} components in {}\n", db.Components().size(), db.File().string()) + table.Render();
}

}  // namespace

std::string ComponentsReport(const std::string& id, bool json_out) {
    const ComponentDatabase db = LoadDatabase();
    if (id.empty()) return AllComponents(db, json_out);
    try {
        return OneComponent(db, db.Components()[db.Require(id)], json_out);
    } catch (const zx::thermo::DatabaseError& e) {
        throw BadInput(e.what());
    }
}

}  // namespace zorexp_cli
