#include <gtest/gtest.h>

#include <algorithm>

#include "host_command.hpp"

namespace {

// Bad input: exit status 2, nothing on stdout, exactly one line on stderr containing every
// fragment.
void ExpectRefused(const std::string& arguments, std::initializer_list<const char*> fragments) {
    const CommandResult r = RunHost(arguments);
    EXPECT_EQ(r.status, 2) << arguments << "\n" << r.err;
    EXPECT_TRUE(r.out.empty()) << arguments << "\n" << r.out;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << arguments << "\n" << r.err;
    for (const char* f : fragments) EXPECT_NE(r.err.find(f), std::string::npos) << arguments << ": " << f << " not in " << r.err;
}

TEST(BadInput, UnknownTypesAndMalformedArguments) {
    ExpectRefused("describe NO_SUCH_TYPE", {"NO_SUCH_TYPE"});
    ExpectRefused("describe VX_ --json", {"\"VX_\""});
    ExpectRefused("describe TEMPERATURE --set VALUE=3", {"TEMPERATURE", "variable type"});
    ExpectRefused("describe ASSAY --set NPTS", {"--set NPTS", "PATH=VALUE"});
    ExpectRefused("describe", {"TYPE"});
    ExpectRefused("frobnicate", {"frobnicate"});
}

TEST(BadInput, PropertiesOfTheGenericBase) {
    // Every model has its component list name; it is an option without a spec.
    ExpectRefused("describe ASSAY --set NO_SUCH=1", {"ASSAY", "NO_SUCH"});
    ExpectRefused("describe ASSAY --fix ComponentList", {"ASSAY", "ComponentList", "has no spec"});
    ExpectRefused("describe ASSAY --set ComponentList.X=1", {"ASSAY", "ComponentList.X"});
}

}  // namespace
