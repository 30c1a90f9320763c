#pragma once
// What a sweep shows: a progress line per point, and the points with every variable as an
// aligned table, as JSON or as CSV.
#include <iosfwd>
#include <string>
#include <vector>

#include "flowsheet/sweep.hpp"

namespace zx::flowsheet {

// "point 3/15: V1.ETA = 0.35: converged in 2 iterations", or the reason it failed.
std::string SweepProgressLine(const SweepEngine& engine, int point, const SweepPoint& p);

// A header of the varied property, "status" and every variable, then one row per point.
void WriteSweepText(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& out);
// {"vary", "variables", "points": [{"value", "status", "iterations", "residual_norm",
// ["failure",] "values"}]}; values that are not finite are null.
void WriteSweepJson(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& out);
// Header "<varied>,status,<variable>,...", then one row per point.
void WriteSweepCsv(const SweepEngine& engine, const std::vector<SweepPoint>& points, std::ostream& out);

}  // namespace zx::flowsheet
