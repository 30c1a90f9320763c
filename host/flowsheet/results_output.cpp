#include "flowsheet/results_output.hpp"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <ostream>
#include <string>

#include "flowsheet/flowsheet.hpp"
#include "flowsheet/output_buffer.hpp"
#include "flowsheet/output_units.hpp"
#include "zorexp/zorexp.hpp"

namespace zx::flowsheet {
namespace {

constexpr int kTextDigits = 10;   // text results: "%.10g"
constexpr int kExactDigits = 17;  // JSON and CSV: "%.17g", which reads back as the same double

// One variable as the writers see it: its path within the block, the variable, and its value
// in the unit printed.
struct Row {
    std::string_view path;
    const VX_Variable& variable;
    double value;
    std::string_view unit;
    std::string_view spec;
};

std::string_view UnitOf(const VX_Variable& v) {
    const VX_Value* unit = v.VX_DefaultBASEUOMNAME();
    return unit ? std::string_view(unit->TextValue()) : std::string_view();
}

std::string_view SpecOf(const VX_Variable& v, std::string& scratch) {
    if (const char* s = VX_SpecText(v.CurrSpec())) return s;
    scratch = std::to_string(static_cast<int>(v.CurrSpec()));
    return scratch;
}

// Visits every variable of a block in registration order, descending into ports, sub-models
// and arrays (not into references: what they point to belongs to someone else). The path is
// built in one buffer as the walk goes, so an array's prefix is written once and each element
// adds only its index.
template <class Visit>
class VariableWalk {
public:
    VariableWalk(Visit& visit, OutputUnits* units) : m_visit(visit), m_units(units) {}
    void Run(VX_Type& root) {
        m_path.clear();
        Walk(root);
    }

private:
    void Walk(VX_Type& node) {
        if (node.IsValue()) {
            auto& v = static_cast<VX_VarParam&>(node);
            if (v.GetKind() == VX_VarParam::RealVariable) {
                const auto& variable = static_cast<const VX_Variable&>(v);
                if (!m_units) return m_visit(Row{m_path, variable, variable.fv(), UnitOf(variable), SpecOf(variable, m_spec)});
                const OutputUnits::Choice c = m_units->For(variable);
                m_visit(Row{m_path, variable, c.toBase.Undo(variable.fv()), c.unit, SpecOf(variable, m_spec)});
            }
            return;
        }
        if (auto* array = dynamic_cast<VX_Matrix*>(&node)) return WalkArray(*array);
        if (auto* container = dynamic_cast<VX_Container*>(&node)) {
            const std::size_t base = m_path.size();
            for (const VX_PropertyEntry& p : container->Properties()) {
                if (!p.object) continue;
                if (base > 0) m_path += '.';
                m_path += p.name;
                Walk(*p.object);
                m_path.resize(base);
            }
        }
    }

    void WalkArray(VX_Matrix& array) {
        const std::size_t base = m_path.size();
        auto element = [&](int k, std::string_view index) {
            VX_Type* e = array.At(k);
            if (!e) return;
            m_path += '(';
            m_path += index;
            m_path += ')';
            Walk(*e);
            m_path.resize(base);
        };
        if (auto* ints = dynamic_cast<VX_BASE_I*>(&array)) {
            // Integer indices come from the set's ranges in order, without a lookup per element.
            int k = 0;
            char digits[16];
            for (const auto& [low, high] : ints->IndexSet().Ranges()) {
                for (long i = low; i <= high && k < array.Size(); ++i, ++k) {
                    const auto end = std::to_chars(digits, digits + sizeof digits, i).ptr;
                    element(k, std::string_view(digits, static_cast<std::size_t>(end - digits)));
                }
            }
        } else if (auto* texts = dynamic_cast<VX_BASE_S*>(&array)) {
            for (int k = 0; k < array.Size(); ++k) element(k, texts->IndexSet().At(static_cast<std::size_t>(k)));
        } else {
            for (int k = 0; k < array.Size(); ++k) element(k, array.IndexText(k));
        }
    }

    Visit& m_visit;
    OutputUnits* m_units;
    std::string m_path;
    std::string m_spec;
};

template <class Visit>
void ForEachRow(VX_Type& block, OutputUnits* units, Visit visit) {
    VariableWalk<Visit>(visit, units).Run(block);
}

}  // namespace

void WriteResultsText(Flowsheet& flowsheet, std::ostream& stream, OutputUnits* units) {
    OutputBuffer out(stream);
    for (const Block& block : flowsheet.Blocks()) {
        // Columns are as wide as their widest entry in the block: one pass to measure, one to write.
        std::size_t wPath = 0, wValue = 0, wUnit = 0;
        ForEachRow(*block.model, units, [&](const Row& r) {
            wPath = std::max(wPath, r.path.size());
            wValue = std::max(wValue, NumberWidth(r.value, kTextDigits));
            wUnit = std::max(wUnit, r.unit.size());
        });
        out.Put(block.name);
        out.Put(" (");
        out.Put(block.type);
        out.Put(")\n");
        ForEachRow(*block.model, units, [&](const Row& r) {
            const double value = r.value;
            out.Put("  ");
            out.Put(r.path);
            out.Spaces(wPath - r.path.size() + 2 + wValue - NumberWidth(value, kTextDigits));
            out.Number(value, kTextDigits);
            out.Put("  ");
            out.Put(r.unit);
            out.Spaces(wUnit - r.unit.size() + 2);
            out.Put(r.spec);
            out.Put('\n');
        });
    }
}

void WriteResultsJson(Flowsheet& flowsheet, const RunSummary& summary, std::ostream& stream, OutputUnits* units) {
    OutputBuffer out(stream);
    // {block: {path: item}} for every variable, item written by put.
    auto perBlock = [&](auto put) {
        out.Put('{');
        bool firstBlock = true;
        for (const Block& block : flowsheet.Blocks()) {
            if (!firstBlock) out.Put(", ");
            firstBlock = false;
            out.JsonString(block.name);
            out.Put(": {");
            bool first = true;
            ForEachRow(*block.model, units, [&](const Row& r) {
                if (!first) out.Put(", ");
                first = false;
                out.JsonString(r.path);
                out.Put(": ");
                put(r);
            });
            out.Put('}');
        }
        out.Put('}');
    };
    out.Put("{\"status\": ");
    out.JsonString(summary.status);
    out.Put(", \"iterations\": ");
    out.Integer(summary.iterations);
    out.Put(", \"residual_norm\": ");
    out.Number(summary.residualNorm, kExactDigits, true);
    out.Put(", \"blocks\": ");
    perBlock([&](const Row& r) { out.Number(r.value, kExactDigits, true); });
    if (units) {
        // Which unit each value is in.
        out.Put(", \"units\": ");
        perBlock([&](const Row& r) { out.JsonString(r.unit); });
    }
    out.Put("}\n");
}

void WriteResultsCsv(Flowsheet& flowsheet, std::ostream& stream, OutputUnits* units) {
    OutputBuffer out(stream);
    out.Put("block,path,value,unit,spec\n");
    for (const Block& block : flowsheet.Blocks()) {
        ForEachRow(*block.model, units, [&](const Row& r) {
            out.CsvField(block.name);
            out.Put(',');
            out.CsvField(r.path);
            out.Put(',');
            out.Number(r.value, kExactDigits);
            out.Put(',');
            out.CsvField(r.unit);
            out.Put(',');
            out.Put(r.spec);
            out.Put('\n');
        });
    }
}

}  // namespace zx::flowsheet
