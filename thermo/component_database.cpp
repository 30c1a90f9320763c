#include "thermo/component_database.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <map>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "thermo/units.hpp"

namespace zx::thermo {
namespace {

using nlohmann::json;

// Factor from a unit the file may use to the SI unit of the quantity's kind.
struct UnitFactor {
    const char* unit;
    double factor;
    double offset;
};
const std::map<std::string, std::vector<UnitFactor>> kUnitsByKind = {
    {"molar-mass", {{"kg/kmol", 1.0, 0.0}, {"g/mol", 1.0, 0.0}}},
    {"temperature", {{"K", 1.0, 0.0}, {"degC", 1.0, kCelsiusOffset}}},
    {"pressure", {{"bar", 1.0e5, 0.0}, {"kPa", 1.0e3, 0.0}, {"MPa", 1.0e6, 0.0}, {"Pa", 1.0, 0.0}}},
    {"molar-volume", {{"cm3/mol", 1.0e-6, 0.0}, {"m3/kmol", 1.0e-3, 0.0}, {"m3/mol", 1.0, 0.0}}},
    {"molar-energy", {{"J/mol", 1.0, 0.0}, {"kJ/mol", 1.0e3, 0.0}, {"GJ/kmol", 1.0e6, 0.0}}},
    {"dimensionless", {{"-", 1.0, 0.0}}},
};

class Reader {
public:
    Reader(const json& sources, std::string where) : sources_(sources), where_(std::move(where)) {}

    [[noreturn]] void Fail(const std::string& what) const { throw DatabaseError(where_ + ": " + what); }

    const json& Member(const json& object, const char* key) const {
        if (!object.contains(key)) Fail(fmt::format("\"{}\" is missing", key));
        return object.at(key);
    }
    double Number(const json& object, const char* key) const {
        const json& v = Member(object, key);
        if (!v.is_number()) Fail(fmt::format("\"{}\" must be a number", key));
        return v.get<double>();
    }
    std::string Text(const json& object, const char* key) const {
        const json& v = Member(object, key);
        if (!v.is_string()) Fail(fmt::format("\"{}\" must be text", key));
        return v.get<std::string>();
    }
    std::string Source(const json& object, const char* key) const {
        const std::string name = Text(object, "source");
        if (!sources_.contains(name))
            Fail(fmt::format("{}source \"{}\" is not in the file's \"sources\"", key != nullptr ? std::string(key) + ": " : "", name));
        return fmt::format("{}: {}", name, sources_.at(name).get<std::string>());
    }
    // {"value": v, "unit": u, "source": s} of the given kind, converted to SI.
    std::optional<double> Quantity(const json& c, const char* key, const char* kind, Component& out) const {
        if (!c.contains(key)) return std::nullopt;
        const json& q = c.at(key);
        const std::string where = where_ + "." + key;
        const Reader sub(sources_, where);
        const double value = sub.Number(q, "value");
        const std::string unit = sub.Text(q, "unit");
        const auto& units = kUnitsByKind.at(kind);
        const auto it = std::find_if(units.begin(), units.end(), [&](const UnitFactor& u) { return unit == u.unit; });
        if (it == units.end()) sub.Fail(fmt::format("unit \"{}\" is not a {} unit", unit, kind));
        out.data.push_back({key, fmt::format("{}", value), unit, sub.Source(q, nullptr)});
        return value * it->factor + it->offset;
    }

private:
    const json& sources_;
    std::string where_;
};

IdealGasHeatCapacity ReadHeatCapacity(const Reader& r, const json& q, Component& c) {
    if (r.Text(q, "temperature_unit") != "K") r.Fail("ideal_gas_heat_capacity: temperature_unit must be K");
    IdealGasHeatCapacity cp{r.Number(q, "A"), r.Number(q, "B"), r.Number(q, "C"), r.Number(q, "D"), 0.0, 0.0};
    const json& range = r.Member(q, "range");
    if (!range.is_array() || range.size() != 2) r.Fail("ideal_gas_heat_capacity: range must be [min, max]");
    cp.t_min = range[0].get<double>();
    cp.t_max = range[1].get<double>();
    if (!(cp.t_min <= kReferenceTemperature && kReferenceTemperature <= cp.t_max))
        r.Fail("ideal_gas_heat_capacity: the range must contain 298.15 K");
    c.data.push_back({"ideal_gas_heat_capacity",
                      fmt::format("{} with A={} B={} C={} D={}, {} to {} K", r.Text(q, "form"), cp.A, cp.B, cp.C, cp.D, cp.t_min, cp.t_max),
                      "cp/R, T in K", r.Source(q, "ideal_gas_heat_capacity")});
    return cp;
}

VapourPressure ReadVapourPressure(const Reader& r, const json& q, Component& c) {
    const std::string form = r.Text(q, "form");
    const std::string rangeUnit = r.Text(q, "range_unit");
    const json& range = r.Member(q, "range");
    if (!range.is_array() || range.size() != 2) r.Fail("vapour_pressure: range must be [min, max]");
    VapourPressure p;
    if (form == "lee-kesler") {
        if (!c.critical_temperature || !c.critical_pressure || !c.acentric_factor)
            r.Fail("vapour_pressure: lee-kesler needs critical_temperature, critical_pressure and acentric_factor");
        if (rangeUnit != "Tr") r.Fail("vapour_pressure: a lee-kesler range is given in Tr");
        p.form = VapourPressure::Form::LeeKesler;
        p.tc = *c.critical_temperature;
        p.pc = *c.critical_pressure;
        p.omega = *c.acentric_factor;
        p.t_min = range[0].get<double>() * p.tc;
        p.t_max = range[1].get<double>() * p.tc;
        c.data.push_back({"vapour_pressure", fmt::format("Lee-Kesler, Tr {} to {}", range[0].get<double>(), range[1].get<double>()),
                          "ln(P/Pc)", r.Source(q, "vapour_pressure")});
        return p;
    }
    if (form != "ln(P/kPa) = A - B/(t/degC + C)") r.Fail(fmt::format("vapour_pressure: unknown form \"{}\"", form));
    if (rangeUnit != "degC") r.Fail("vapour_pressure: an Antoine range is given in degC");
    p.A = r.Number(q, "A");
    p.B = r.Number(q, "B");
    p.C = r.Number(q, "C");
    p.t_min = range[0].get<double>() + kCelsiusOffset;
    p.t_max = range[1].get<double>() + kCelsiusOffset;
    c.data.push_back({"vapour_pressure",
                      fmt::format("Antoine A={} B={} C={}, {} to {} C", p.A, p.B, p.C, range[0].get<double>(), range[1].get<double>()),
                      "ln(P/kPa), t in C", r.Source(q, "vapour_pressure")});
    return p;
}

Component ReadComponent(const json& sources, const json& j, std::size_t index) {
    const Reader top(sources, fmt::format("components[{}]", index));
    Component c;
    c.id = UpperCase(top.Text(j, "id"));
    const Reader r(sources, "component " + c.id);
    c.name = r.Text(j, "name");
    c.formula = r.Text(j, "formula");
    if (j.contains("aliases"))
        for (const json& a : j.at("aliases")) c.aliases.push_back(UpperCase(a.get<std::string>()));
    const auto mw = r.Quantity(j, "molecular_weight", "molar-mass", c);
    if (!mw) r.Fail("\"molecular_weight\" is missing");
    c.molecular_weight = *mw;
    c.critical_temperature = r.Quantity(j, "critical_temperature", "temperature", c);
    c.critical_pressure = r.Quantity(j, "critical_pressure", "pressure", c);
    c.critical_volume = r.Quantity(j, "critical_volume", "molar-volume", c);
    c.critical_compressibility = r.Quantity(j, "critical_compressibility", "dimensionless", c);
    c.acentric_factor = r.Quantity(j, "acentric_factor", "dimensionless", c);
    c.normal_boiling_point = r.Quantity(j, "normal_boiling_point", "temperature", c);
    if (j.contains("ideal_gas_heat_capacity")) c.ideal_gas_cp = ReadHeatCapacity(r, j.at("ideal_gas_heat_capacity"), c);
    c.formation_enthalpy = r.Quantity(j, "formation_enthalpy", "molar-energy", c);
    c.formation_gibbs_energy = r.Quantity(j, "formation_gibbs_energy", "molar-energy", c);
    if (j.contains("vapour_pressure")) c.vapour_pressure = ReadVapourPressure(r, j.at("vapour_pressure"), c);
    c.heat_of_vaporisation_nb = r.Quantity(j, "heat_of_vaporisation", "molar-energy", c);

    const auto& tc = c.critical_temperature;
    if (j.contains("saturated_liquid_volume")) {
        const json& q = j.at("saturated_liquid_volume");
        if (r.Text(q, "form") != "rackett") r.Fail("saturated_liquid_volume: the form must be rackett");
        if (!tc || !c.critical_pressure) r.Fail("saturated_liquid_volume: rackett needs critical_temperature and critical_pressure");
        double zc = 0.0;
        if (c.critical_compressibility) {
            zc = *c.critical_compressibility;
        } else if (c.critical_volume) {
            zc = *c.critical_pressure * *c.critical_volume / (kGasConstant * *tc);
        } else {
            r.Fail("saturated_liquid_volume: rackett needs critical_compressibility or critical_volume");
        }
        c.liquid_volume = RackettVolume{*tc, *c.critical_pressure, zc};
        c.data.push_back({"saturated_liquid_volume", fmt::format("Rackett with Zc={:.4f}", zc), "m3/mol", r.Source(q, "saturated_liquid_volume")});
    }
    if (c.heat_of_vaporisation_nb && tc && c.normal_boiling_point)
        c.heat_of_vaporisation = WatsonHeatOfVaporisation{*c.heat_of_vaporisation_nb, *c.normal_boiling_point, *tc};
    return c;
}

std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t up = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = up;
        }
    }
    return row[b.size()];
}

}  // namespace

std::string UpperCase(std::string_view text) {
    std::string out(text);
    for (char& ch : out) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return out;
}

ComponentDatabase ComponentDatabase::Load(const std::filesystem::path& file) {
    std::ifstream in(file);
    if (!in) throw DatabaseError(fmt::format("component database {}: cannot be read", file.string()));
    json root;
    try {
        root = json::parse(in);
    } catch (const json::parse_error& e) {
        throw DatabaseError(fmt::format("component database {}: not valid JSON ({})", file.string(), e.what()));
    }
    ComponentDatabase db;
    db.file_ = file;
    try {
        const json& sources = root.at("sources");
        const json& list = root.at("components");
        for (std::size_t i = 0; i < list.size(); ++i) db.components_.push_back(ReadComponent(sources, list[i], i));
        for (std::size_t i = 0; i < db.components_.size(); ++i) {
            const Component& c = db.components_[i];
            db.names_.emplace_back(c.id, i);
            for (const std::string& a : c.aliases) db.names_.emplace_back(a, i);
        }
        std::sort(db.names_.begin(), db.names_.end());
        for (std::size_t k = 1; k < db.names_.size(); ++k)
            if (db.names_[k].first == db.names_[k - 1].first)
                throw DatabaseError(fmt::format("name \"{}\" is given to two components", db.names_[k].first));
        if (root.contains("binary_interaction")) {
            for (const json& p : root.at("binary_interaction")) {
                const Reader r(sources, "binary_interaction");
                const json& pair = r.Member(p, "pair");
                if (!pair.is_array() || pair.size() != 2) r.Fail("\"pair\" must name two components");
                InteractionParameter ip{UpperCase(r.Text(p, "method")), db.Require(pair[0].get<std::string>()),
                                        db.Require(pair[1].get<std::string>()), r.Number(p, "kij"), r.Source(p, "binary_interaction")};
                db.interactions_.push_back(ip);
            }
        }
    } catch (const DatabaseError& e) {
        throw DatabaseError(fmt::format("component database {}: {}", file.string(), e.what()));
    } catch (const json::exception& e) {
        throw DatabaseError(fmt::format("component database {}: {}", file.string(), e.what()));
    }
    return db;
}

std::size_t ComponentDatabase::Find(std::string_view name) const {
    const std::string key = UpperCase(name);
    const auto it = std::lower_bound(names_.begin(), names_.end(), key, [](const auto& e, const std::string& k) { return e.first < k; });
    return it != names_.end() && it->first == key ? it->second : npos;
}

std::size_t ComponentDatabase::Require(std::string_view name) const {
    const std::size_t i = Find(name);
    if (i != npos) return i;
    const std::vector<std::string> near = Suggest(name);
    std::string message = fmt::format("unknown component \"{}\"", name);
    if (!near.empty()) message += fmt::format(" (did you mean {}?)", fmt::join(near, ", "));
    throw DatabaseError(message);
}

std::vector<std::string> ComponentDatabase::Suggest(std::string_view name) const {
    const std::string key = UpperCase(name);
    std::vector<std::pair<std::size_t, std::string>> scored;
    for (const auto& [n, index] : names_) {
        std::size_t d = Distance(key, n);
        if (!key.empty() && n.find(key) != std::string::npos) d = std::min<std::size_t>(d, 1);
        const bool samePrefix = key.size() >= 4 && n.compare(0, 4, key, 0, 4) == 0;
        if (d <= std::max<std::size_t>(2, key.size() / 3) || samePrefix) scored.emplace_back(d, components_[index].id);
    }
    std::sort(scored.begin(), scored.end());
    std::vector<std::string> out;
    for (const auto& s : scored)
        if (out.size() < 3 && std::find(out.begin(), out.end(), s.second) == out.end()) out.push_back(s.second);
    return out;
}

std::filesystem::path DatabasePath(const std::filesystem::path& prefix) {
    if (const char* env = std::getenv(kDatabaseEnvironmentVariable); env != nullptr && *env != '\0') return env;
    return prefix / kDatabaseRelativePath;
}

}  // namespace zx::thermo
