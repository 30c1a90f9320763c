#pragma once
// `solve --plot`: the profiles of array variables of a solution drawn by the Python package
// (python3 -m zorexp.result_plot, matplotlib), from the results' CSV file.
#include <string>
#include <vector>

namespace zorexp_cli {

// Runs the plotting module on csvFile; writes pngFile (one variable) or one file per variable.
// vars names "BLOCK.ARRAY" variables; empty draws every array variable. Throws HostFailure when
// the interpreter cannot run or the module fails (its own message is on stderr then).
void PlotResults(const std::string& csvFile, const std::string& pngFile, const std::vector<std::string>& vars);

}  // namespace zorexp_cli
