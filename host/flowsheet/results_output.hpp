#pragma once
// Results of a flowsheet: every variable of every block with its value, unit and spec, as
// aligned text per block, as JSON, or as CSV rows.
#include <iosfwd>
#include <string>

namespace zx::flowsheet {

class Flowsheet;

struct RunSummary {
    std::string status;        // "converged", "max_iterations", ...
    int iterations = 0;
    double residualNorm = 0.0;
};

void WriteResultsText(Flowsheet& flowsheet, std::ostream& out);
// {"status", "iterations", "residual_norm", "blocks": {block: {path: value}}}; values that are
// not finite are written as null.
void WriteResultsJson(Flowsheet& flowsheet, const RunSummary& summary, std::ostream& out);
// Header "block,path,value,unit,spec", then one row per variable.
void WriteResultsCsv(Flowsheet& flowsheet, std::ostream& out);

}  // namespace zx::flowsheet
