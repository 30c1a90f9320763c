#pragma once
// `describe TYPE`: finds the named type, a container of the registry or a variable or
// parameter type, with or without its VX_ prefix, and describes it.
#include <string>
#include <variant>

#include "describe_container.hpp"
#include "describe_report.hpp"

namespace zorexp_cli {

using DescribeResult = std::variant<ContainerReport, TypeReport>;

// Throws BadInput for an unknown type, and for assignments given for a variable or parameter
// type (which has no properties to assign).
DescribeResult Describe(const std::string& typeName, const ContainerRequest& request);

}  // namespace zorexp_cli
