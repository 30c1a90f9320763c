#pragma once
// Reports as JSON, keys in a fixed order; fields without a value are left out.
#include <vector>

#include <nlohmann/json.hpp>

#include "describe_report.hpp"

namespace zorexp_cli {

using Json = nlohmann::ordered_json;

Json ToJson(const ContainerReport& report);
Json ToJson(const TypeReport& report);
Json ToJson(const std::vector<TypeListing>& listing);

}  // namespace zorexp_cli
