#include "flowsheet/sweep_output.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>

#include "flowsheet/json_reading.hpp"
#include "flowsheet/steady_state_solve.hpp"

namespace zx::flowsheet {
namespace {

std::string Number(double v, const char* format = "%.10g") {
    char buf[40];
    std::snprintf(buf, sizeof buf, format, v);
    return buf;
}

std::string StatusOf(const SweepPoint& p) { return StatusKey(p.status); }

std::string CsvField(const std::string& s) {
    if (s.find_first_of(",\"\n") == std::string::npos) return s;
    std::string out = "\"";
    for (char c : s) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
}

}  // namespace

std::string SweepProgressLine(const SweepEngine& engine, int point, const SweepPoint& p) {
    std::string line = "point " + std::to_string(point + 1) + "/" + std::to_string(engine.Range().Points()) + ": " +
                       engine.Range().path + " = " + Number(p.value) + ": ";
    if (p.converged) return line + "converged in " + std::to_string(p.iterations) + (p.iterations == 1 ? " iteration" : " iterations");
    return line + "failed: " + p.failure;
}

void WriteSweepText(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& out) {
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> header{engine.Range().path, "status"};
    header.insert(header.end(), engine.Names().begin(), engine.Names().end());
    rows.push_back(header);
    for (const SweepPoint& p : points) {
        std::vector<std::string> row{Number(p.value), StatusOf(p)};
        for (double v : p.values) row.push_back(Number(v));
        rows.push_back(std::move(row));
    }
    std::vector<std::size_t> width(header.size(), 0);
    for (const auto& row : rows)
        for (std::size_t c = 0; c < row.size(); ++c) width[c] = std::max(width[c], row[c].size());
    for (const auto& row : rows) {
        for (std::size_t c = 0; c < row.size(); ++c)
            out << (c ? "  " : "") << std::string(width[c] - row[c].size(), ' ') << row[c];
        out << "\n";
    }
}

void WriteSweepJson(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& out) {
    auto number = [](double v) { return std::isfinite(v) ? Number(v, "%.17g") : std::string("null"); };
    out << "{\"vary\": " << Json(engine.Range().path).dump() << ", \"variables\": " << Json(engine.Names()).dump()
        << ", \"points\": [";
    for (std::size_t k = 0; k < points.size(); ++k) {
        const SweepPoint& p = points[k];
        out << (k ? ", " : "") << "{\"value\": " << number(p.value) << ", \"status\": " << Json(StatusOf(p)).dump()
            << ", \"iterations\": " << p.iterations << ", \"residual_norm\": " << number(p.residualNorm);
        if (!p.converged) out << ", \"failure\": " << Json(p.failure).dump();
        out << ", \"values\": [";
        for (std::size_t i = 0; i < p.values.size(); ++i) out << (i ? ", " : "") << number(p.values[i]);
        out << "]}";
    }
    out << "]}\n";
}

void WriteSweepCsv(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& out) {
    out << CsvField(engine.Range().path) << ",status";
    for (const std::string& name : engine.Names()) out << "," << CsvField(name);
    out << "\n";
    for (const SweepPoint& p : points) {
        out << Number(p.value, "%.17g") << "," << StatusOf(p);
        for (double v : p.values) out << "," << Number(v, "%.17g");
        out << "\n";
    }
}

}  // namespace zx::flowsheet
