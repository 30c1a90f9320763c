#pragma once
// Reports as aligned plain-text tables, for people.
#include <string>
#include <vector>

#include "describe_report.hpp"

namespace zorexp_cli {

std::string ToText(const ContainerReport& report);
std::string ToText(const TypeReport& report);
std::string ToText(const std::vector<TypeListing>& listing);

}  // namespace zorexp_cli
