#include "units_listing.hpp"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "errors.hpp"
#include "text_table.hpp"
#include "zorexp/text.hpp"
#include "zorexp/units.hpp"

namespace zorexp_cli {
namespace {

using nlohmann::json;

// The units a family accepts: those of its unitsOf family, in table order.
template <class Visit>
void ForEachUnit(const vx_units::Family& f, Visit visit) {
    for (const vx_units::UnitDef& u : vx_units::Units())
        if (std::string_view(u.family) == f.unitsOf) visit(u);
}

json FamilyJson(const vx_units::Family& f) {
    json units = json::array();
    ForEachUnit(f, [&](const vx_units::UnitDef& u) {
        units.push_back({{"unit", u.text}, {"factor", u.factor}, {"offset", u.offset}, {"source", u.source}});
    });
    return {{"quantity", f.name}, {"units_of", f.unitsOf}, {"si", f.si}, {"field", f.field}, {"units", units}};
}

std::string OneFamily(const vx_units::Family& f, bool json_out) {
    if (json_out) return FamilyJson(f).dump(2) + "\n";
    std::string reference;
    ForEachUnit(f, [&](const vx_units::UnitDef& u) {
        if (reference.empty()) reference = u.text;
    });
    std::string text = fmt::format("{}: a value v in UNIT is v * FACTOR + OFFSET {}\n", f.name, reference);
    TextTable table({"UNIT", "FACTOR", "OFFSET", "SOURCE"});
    ForEachUnit(f, [&](const vx_units::UnitDef& u) {
        table.AddRow({u.text, fmt::format("{:.10g}", u.factor), fmt::format("{:.10g}", u.offset), u.source});
    });
    return text + table.Render();
}

}  // namespace

std::string UnitsReport(const std::string& quantity, bool json_out) {
    if (!quantity.empty()) {
        for (const vx_units::Family& f : vx_units::Families())
            if (VX_EqualCI(quantity.c_str(), f.name)) return OneFamily(f, json_out);
        std::string known;
        for (const vx_units::Family& f : vx_units::Families()) known += (known.empty() ? "" : ", ") + std::string(f.name);
        throw BadInput("unknown quantity \"" + VX_BriefText(quantity) + "\" (the quantities are " + known + ")");
    }
    if (json_out) {
        json list = json::array();
        for (const vx_units::Family& f : vx_units::Families()) list.push_back(FamilyJson(f));
        return json{{"quantities", list}}.dump(2) + "\n";
    }
    TextTable table({"QUANTITY", "SI", "FIELD", "UNITS"});
    for (const vx_units::Family& f : vx_units::Families()) {
        std::string units;
        ForEachUnit(f, [&](const vx_units::UnitDef& u) { units += (units.empty() ? "" : " ") + std::string(u.text); });
        table.AddRow({f.name, *f.si ? f.si : "-", *f.field ? f.field : "-", units});
    }
    return table.Render();
}

}  // namespace zorexp_cli
