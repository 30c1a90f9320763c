#include "flowsheet/results_output.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <vector>

#include "flowsheet/flowsheet.hpp"
#include "flowsheet/json_reading.hpp"
#include "flowsheet/variable_walk.hpp"
#include "zorexp/zorexp.hpp"

namespace zx::flowsheet {
namespace {

std::string Number(double v, const char* format) {
    char buf[40];
    std::snprintf(buf, sizeof buf, format, v);
    return buf;
}

std::string UnitOf(const VX_Variable& v) {
    const VX_Value* unit = v.VX_DefaultBASEUOMNAME();
    return unit ? unit->TextValue() : std::string();
}

std::string SpecOf(const VX_Variable& v) {
    const char* s = VX_SpecText(v.CurrSpec());
    return s ? s : std::to_string(static_cast<int>(v.CurrSpec()));
}

std::string CsvField(const std::string& s) {
    if (s.find_first_of(",\"\n") == std::string::npos) return s;
    std::string out = "\"";
    for (char c : s) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
}

}  // namespace

void WriteResultsText(Flowsheet& flowsheet, std::ostream& out) {
    struct Row {
        std::string path, value, unit, spec;
    };
    for (const Block& block : flowsheet.Blocks()) {
        std::vector<Row> rows;
        ForEachVariable(*block.model, [&](VX_Variable& v) {
            rows.push_back(Row{v.Path(), Number(v.fv(), "%.10g"), UnitOf(v), SpecOf(v)});
        });
        std::size_t wPath = 0, wValue = 0, wUnit = 0;
        for (const Row& r : rows) {
            wPath = std::max(wPath, r.path.size());
            wValue = std::max(wValue, r.value.size());
            wUnit = std::max(wUnit, r.unit.size());
        }
        out << block.name << " (" << block.type << ")\n";
        for (const Row& r : rows) {
            out << "  " << r.path << std::string(wPath - r.path.size() + 2, ' ') << std::string(wValue - r.value.size(), ' ')
                << r.value << "  " << r.unit << std::string(wUnit - r.unit.size() + 2, ' ') << r.spec << "\n";
        }
    }
}

void WriteResultsJson(Flowsheet& flowsheet, const RunSummary& summary, std::ostream& out) {
    auto number = [](double v) { return std::isfinite(v) ? Number(v, "%.17g") : std::string("null"); };
    out << "{\"status\": " << Json(summary.status).dump() << ", \"iterations\": " << summary.iterations
        << ", \"residual_norm\": " << number(summary.residualNorm) << ", \"blocks\": {";
    bool firstBlock = true;
    for (const Block& block : flowsheet.Blocks()) {
        out << (firstBlock ? "" : ", ") << Json(block.name).dump() << ": {";
        firstBlock = false;
        bool first = true;
        ForEachVariable(*block.model, [&](VX_Variable& v) {
            out << (first ? "" : ", ") << Json(v.Path()).dump() << ": " << number(v.fv());
            first = false;
        });
        out << "}";
    }
    out << "}}\n";
}

void WriteResultsCsv(Flowsheet& flowsheet, std::ostream& out) {
    out << "block,path,value,unit,spec\n";
    for (const Block& block : flowsheet.Blocks()) {
        const std::string name = CsvField(block.name);
        ForEachVariable(*block.model, [&](VX_Variable& v) {
            out << name << ',' << CsvField(v.Path()) << ',' << Number(v.fv(), "%.17g") << ',' << CsvField(UnitOf(v)) << ','
                << SpecOf(v) << '\n';
        });
    }
}

}  // namespace zx::flowsheet
