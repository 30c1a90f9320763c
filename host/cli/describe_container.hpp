#pragma once
// `describe` of a container type: the host creates one object through the library's factory,
// applies the user's assignments, drives the container protocol once (dimensions,
// assignments, equations, pattern, residuals, Jacobian) and reports what it found.
#include <string>
#include <vector>

#include "describe_report.hpp"
#include "user_assignments.hpp"

struct VX_RegistryEntry;

namespace zorexp_cli {

struct ContainerRequest {
    std::vector<std::string> components;        // the component list, when given
    std::vector<UserAssignment> assignments;
};

ContainerReport DescribeContainer(const VX_RegistryEntry& entry, const ContainerRequest& request);

}  // namespace zorexp_cli
