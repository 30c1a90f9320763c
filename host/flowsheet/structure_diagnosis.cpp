#include "flowsheet/structure_diagnosis.hpp"

#include <algorithm>
#include <numeric>
#include <ostream>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/json_document.hpp"
#include "zorexp/variable.hpp"

namespace zx::flowsheet {
namespace {

std::string Plural(long n, const char* word) {
    return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
}

std::string Join(const std::vector<std::string>& names, int total) {
    std::string out;
    for (const std::string& n : names) out += (out.empty() ? "" : ", ") + n;
    if (total > static_cast<int>(names.size())) out += " and " + std::to_string(total - static_cast<int>(names.size())) + " more";
    return out;
}

class DisjointSets {
public:
    explicit DisjointSets(std::size_t n) : m_parent(n) { std::iota(m_parent.begin(), m_parent.end(), 0); }
    int Find(int a) {
        while (m_parent[static_cast<std::size_t>(a)] != a) {
            m_parent[static_cast<std::size_t>(a)] = m_parent[static_cast<std::size_t>(m_parent[static_cast<std::size_t>(a)])];
            a = m_parent[static_cast<std::size_t>(a)];
        }
        return a;
    }
    void Join(int a, int b) {
        a = Find(a);
        b = Find(b);
        if (a != b) m_parent[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
    }

private:
    std::vector<int> m_parent;
};

// One part of the system (rows and columns of the unknown pattern) split into groups that share
// no row and no column. Returns, per group, its rows and its columns.
struct Group {
    std::vector<int> rows, cols;
};
std::vector<Group> SplitPart(const zx::solve::TripletPattern& pattern, const std::vector<int>& rows,
                             const std::vector<int>& cols) {
    // Nodes: the part's rows, then its columns.
    std::vector<int> rowNode(static_cast<std::size_t>(pattern.n_rows), -1), colNode(static_cast<std::size_t>(pattern.n_cols), -1);
    for (std::size_t k = 0; k < rows.size(); ++k) rowNode[static_cast<std::size_t>(rows[k])] = static_cast<int>(k);
    for (std::size_t k = 0; k < cols.size(); ++k) colNode[static_cast<std::size_t>(cols[k])] = static_cast<int>(rows.size() + k);
    DisjointSets sets(rows.size() + cols.size());
    for (int t = 0; t < pattern.size(); ++t) {
        const int r = rowNode[static_cast<std::size_t>(pattern.rows[static_cast<std::size_t>(t)])];
        const int c = colNode[static_cast<std::size_t>(pattern.cols[static_cast<std::size_t>(t)])];
        if (r >= 0 && c >= 0) sets.Join(r, c);
    }
    std::vector<Group> groups;
    std::vector<int> groupOfRoot(rows.size() + cols.size(), -1);
    auto groupOf = [&](int node) -> Group& {
        int& g = groupOfRoot[static_cast<std::size_t>(sets.Find(node))];
        if (g < 0) {
            g = static_cast<int>(groups.size());
            groups.emplace_back();
        }
        return groups[static_cast<std::size_t>(g)];
    };
    for (std::size_t k = 0; k < rows.size(); ++k) groupOf(static_cast<int>(k)).rows.push_back(rows[k]);
    for (std::size_t k = 0; k < cols.size(); ++k) groupOf(static_cast<int>(rows.size() + k)).cols.push_back(cols[k]);
    return groups;
}

}  // namespace

StructureDiagnosis DiagnoseStructure(const EquationSystem& system, std::size_t maxListed) {
    StructureDiagnosis d;
    d.equations = system.Rows();
    d.unknowns = static_cast<int>(system.Unknowns().size());
    const zx::solve::StructuralReport r = zx::solve::analyse_structure(system.UnknownCsc());
    d.structuralRank = r.structural_rank;

    d.freeUnusedCount = static_cast<int>(system.FreeUnused().size());
    for (std::size_t k = 0; k < system.FreeUnused().size() && k < maxListed; ++k)
        d.freeUnused.push_back(system.VariableName(*system.FreeUnused()[k]));

    if (d.equations == 0 && d.unknowns == 0) {
        d.status = "empty";
        return d;
    }
    if (r.nonsingular()) {
        d.status = "solvable";
        return d;
    }
    d.status = d.equations < d.unknowns ? "under_specified" : d.equations > d.unknowns ? "over_specified" : "structurally_singular";
    const auto& pattern = system.UnknownPattern();
    auto variable = [&](int unknown) { return system.VariableName(*system.Unknowns()[static_cast<std::size_t>(unknown)]); };

    // Too many unknowns: within each group every equation is matched, so cols - rows of them
    // are left for the user to fix.
    for (const Group& g : SplitPart(pattern, r.underdetermined_rows, r.underdetermined_cols)) {
        ++d.faultGroups;
        if (d.faults.size() >= maxListed) continue;
        StructureFault f;
        f.kind = StructureFault::TooManyUnknowns;
        f.count = static_cast<int>(g.cols.size() - g.rows.size());
        f.candidates = static_cast<int>(g.cols.size());
        for (std::size_t k = 0; k < g.cols.size() && k < maxListed; ++k) f.names.push_back(variable(g.cols[k]));
        d.faults.push_back(std::move(f));
    }
    // Too many equations: rows - cols of each group; fixed variables in them could be freed.
    std::vector<char> inGroup(static_cast<std::size_t>(system.Rows()), 0), named(system.Columns().size(), 0);
    for (const Group& g : SplitPart(pattern, r.overdetermined_rows, r.overdetermined_cols)) {
        ++d.faultGroups;
        if (d.faults.size() >= maxListed) continue;
        StructureFault f;
        f.kind = StructureFault::TooManyEquations;
        f.count = static_cast<int>(g.rows.size() - g.cols.size());
        f.candidates = static_cast<int>(g.rows.size());
        for (std::size_t k = 0; k < g.rows.size() && k < maxListed; ++k) f.names.push_back(system.EquationName(g.rows[k]));
        std::fill(inGroup.begin(), inGroup.end(), 0);
        for (int row : g.rows) inGroup[static_cast<std::size_t>(row)] = 1;
        const auto& rows = system.EntryRows();
        const auto& cols = system.EntryColumns();
        for (std::size_t k = 0; k < rows.size(); ++k) {
            const auto c = static_cast<std::size_t>(cols[k]);
            if (!inGroup[static_cast<std::size_t>(rows[k])] || system.UnknownOfColumn()[c] >= 0 || named[c]) continue;
            if (system.Columns()[c]->GetKind() != VX_VarParam::RealVariable) continue;   // parameters cannot be freed
            named[c] = 1;
            ++f.fixedCandidates;
            if (f.fixedNames.size() < maxListed) f.fixedNames.push_back(system.VariableName(*system.Columns()[c]));
        }
        d.faults.push_back(std::move(f));
    }
    return d;
}

void WriteDiagnosis(const StructureDiagnosis& d, std::ostream& out) {
    out << Plural(d.equations, "equation") << ", " << Plural(d.unknowns, "unknown") << ", structural rank "
        << d.structuralRank << ": ";
    if (d.Solvable()) {
        out << "square and structurally nonsingular\n";
    } else if (d.status == "empty") {
        out << "nothing to solve: no block declares an equation (check the options that select equations, such as CTYPE)\n";
    } else {
        out << (d.status == "under_specified"  ? "under-specified"
                : d.status == "over_specified" ? "over-specified"
                                               : "structurally singular")
            << ", not solvable as posed\n";
        for (const StructureFault& f : d.faults) {
            if (f.kind == StructureFault::TooManyUnknowns) {
                out << "  " << Plural(f.count, "unknown") << " too many: fix " << f.count << " of: " << Join(f.names, f.candidates)
                    << "\n";
                continue;
            }
            out << "  " << Plural(f.count, "equation") << " too many among: " << Join(f.names, f.candidates) << "\n";
            if (f.fixedCandidates > 0)
                out << "    free " << f.count << " of: " << Join(f.fixedNames, f.fixedCandidates) << "; or remove/relax "
                    << f.count << " of those equations\n";
            else
                out << "    they hold no fixed variable: remove/relax " << f.count << " of them\n";
        }
        if (d.faultGroups > static_cast<int>(d.faults.size()))
            out << "  and " << Plural(d.faultGroups - static_cast<int>(d.faults.size()), "more group") << " like these\n";
    }
    if (d.freeUnusedCount > 0)
        out << "note: " << Plural(d.freeUnusedCount, "free variable") << " in no equation (not unknowns, kept at their values): "
            << Join(d.freeUnused, d.freeUnusedCount) << "\n";
}

void WriteDiagnosisJson(const StructureDiagnosis& d, std::ostream& out) {
    Json faults = Json::array();
    for (const StructureFault& f : d.faults) {
        Json j{{"kind", f.kind == StructureFault::TooManyUnknowns ? "too_many_unknowns" : "too_many_equations"},
               {"count", f.count},
               {"names", f.names},
               {"candidates", f.candidates}};
        if (f.kind == StructureFault::TooManyEquations) {
            j["fixed_names"] = f.fixedNames;
            j["fixed_candidates"] = f.fixedCandidates;
        }
        faults.push_back(std::move(j));
    }
    const Json j{{"status", d.status},
                 {"equations", d.equations},
                 {"unknowns", d.unknowns},
                 {"structural_rank", d.structuralRank},
                 {"faults", faults},
                 {"fault_groups", d.faultGroups},
                 {"free_unused", Json{{"count", d.freeUnusedCount}, {"names", d.freeUnused}}}};
    out << j.dump() << "\n";
}

}  // namespace zx::flowsheet
