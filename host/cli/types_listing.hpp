#pragma once
// `types`: every type of the model library, containers first (in registry order), then the
// variable and parameter types.
#include <vector>

#include "describe_report.hpp"

namespace zorexp_cli {

std::vector<TypeListing> ListTypes();

}  // namespace zorexp_cli
