#pragma once
// Results of a flowsheet: every variable of every block with its value, unit and spec, as
// aligned text per block, as JSON, or as CSV rows. Values are in their base units unless units
// are given (--units), and then in the units chosen.
#include <iosfwd>
#include <string>

namespace zx::flowsheet {

class Flowsheet;
class OutputUnits;

struct RunSummary {
    std::string status;        // "converged", "max_iterations", ...
    int iterations = 0;
    double residualNorm = 0.0;
};

void WriteResultsText(Flowsheet& flowsheet, std::ostream& out, OutputUnits* units = nullptr);
// {"status", "iterations", "residual_norm", "blocks": {block: {path: value}}}; values that are
// not finite are written as null. With units, "units": {block: {path: unit}} follows.
void WriteResultsJson(Flowsheet& flowsheet, const RunSummary& summary, std::ostream& out, OutputUnits* units = nullptr);
// Header "block,path,value,unit,spec", then one row per variable.
void WriteResultsCsv(Flowsheet& flowsheet, std::ostream& out, OutputUnits* units = nullptr);

}  // namespace zx::flowsheet
