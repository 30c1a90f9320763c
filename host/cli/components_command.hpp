#pragma once
// `components [ID] [--json]`: the component database the property routines use, as a list of all
// components, or one component with every value, its unit and its source.
#include <string>

namespace zorexp_cli {

// The report text. BadInput for an unknown id (with the nearest ids); HostFailure when the
// database cannot be read.
std::string ComponentsReport(const std::string& id, bool json);

}  // namespace zorexp_cli
