#pragma once
// `units [QUANTITY] [--json]`: the quantity families values may be written in, each with the
// units it accepts; one family with every unit's factor, offset and source.
#include <string>

namespace zorexp_cli {

// The report text. BadInput for an unknown quantity (naming the known ones).
std::string UnitsReport(const std::string& quantity, bool json);

}  // namespace zorexp_cli
