#pragma once
// `describe` of a variable or parameter type: the attributes an object of the type starts
// with, its own declarations and those it inherits alike.
#include "describe_report.hpp"
#include "type_catalog.hpp"

namespace zorexp_cli {

TypeReport DescribeType(const TypeEntry& entry);

}  // namespace zorexp_cli
