#include "flowsheet/sweep_output.hpp"

#include <algorithm>
#include <cstdio>
#include <ostream>

#include "flowsheet/output_buffer.hpp"
#include "flowsheet/steady_state_solve.hpp"

namespace zx::flowsheet {
namespace {

constexpr int kTextDigits = 10;   // as the solve's text results
constexpr int kExactDigits = 17;  // JSON and CSV: reads back as the same double

std::string Number(double v) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.*g", kTextDigits, v);
    return buf;
}

}  // namespace

std::string SweepProgressLine(const SweepEngine& engine, int point, const SweepPoint& p) {
    std::string line = "point " + std::to_string(point + 1) + "/" + std::to_string(engine.Range().Points()) + ": " +
                       engine.Range().path + " = " + Number(p.value) + ": ";
    if (!p.converged) return line + "failed: " + p.failure;
    return line + "converged in " + std::to_string(p.iterations) + (p.iterations == 1 ? " iteration" : " iterations");
}

void WriteSweepText(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& stream) {
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> header{engine.Range().path, "status"};
    header.insert(header.end(), engine.Names().begin(), engine.Names().end());
    rows.push_back(header);
    for (const SweepPoint& p : points) {
        std::vector<std::string> row{Number(p.value), StatusKey(p.status)};
        for (double v : p.values) row.push_back(Number(v));
        rows.push_back(std::move(row));
    }
    std::vector<std::size_t> width(header.size(), 0);
    for (const auto& row : rows)
        for (std::size_t c = 0; c < row.size(); ++c) width[c] = std::max(width[c], row[c].size());
    OutputBuffer out(stream);
    for (const auto& row : rows) {
        for (std::size_t c = 0; c < row.size(); ++c) {
            out.Spaces((c ? 2 : 0) + width[c] - row[c].size());
            out.Put(row[c]);
        }
        out.Put('\n');
    }
}

void WriteSweepJson(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& stream) {
    OutputBuffer out(stream);
    out.Put("{\"vary\": ");
    out.JsonString(engine.Range().path);
    out.Put(", \"variables\": [");
    for (std::size_t i = 0; i < engine.Names().size(); ++i) {
        if (i) out.Put(", ");
        out.JsonString(engine.Names()[i]);
    }
    out.Put("], \"points\": [");
    for (std::size_t k = 0; k < points.size(); ++k) {
        const SweepPoint& p = points[k];
        out.Put(k ? ", {\"value\": " : "{\"value\": ");
        out.Number(p.value, kExactDigits, true);
        out.Put(", \"status\": ");
        out.JsonString(StatusKey(p.status));
        out.Put(", \"iterations\": ");
        out.Integer(p.iterations);
        out.Put(", \"residual_norm\": ");
        out.Number(p.residualNorm, kExactDigits, true);
        if (!p.converged) {
            out.Put(", \"failure\": ");
            out.JsonString(p.failure);
        }
        out.Put(", \"values\": [");
        for (std::size_t i = 0; i < p.values.size(); ++i) {
            if (i) out.Put(", ");
            out.Number(p.values[i], kExactDigits, true);
        }
        out.Put("]}");
    }
    out.Put("]}\n");
}

void WriteSweepCsv(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& stream) {
    OutputBuffer out(stream);
    out.CsvField(engine.Range().path);
    out.Put(",status");
    for (const std::string& name : engine.Names()) {
        out.Put(',');
        out.CsvField(name);
    }
    out.Put('\n');
    for (const SweepPoint& p : points) {
        out.Number(p.value, kExactDigits);
        out.Put(',');
        out.Put(StatusKey(p.status));
        for (double v : p.values) {
            out.Put(',');
            out.Number(v, kExactDigits);
        }
        out.Put('\n');
    }
}

}  // namespace zx::flowsheet
