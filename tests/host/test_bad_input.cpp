#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <unistd.h>

#include "host_command.hpp"

namespace {

// Bad input: exit status 2, nothing on stdout, exactly one line on stderr containing every
// fragment.
void ExpectRefused(const std::string& arguments, std::initializer_list<std::string> fragments) {
    const CommandResult r = RunHost(arguments);
    EXPECT_EQ(r.status, 2) << arguments << "\n" << r.err;
    EXPECT_TRUE(r.out.empty()) << arguments << "\n" << r.out;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << arguments << "\n" << r.err;
    for (const std::string& f : fragments) EXPECT_NE(r.err.find(f), std::string::npos) << arguments << ": " << f << " not in " << r.err;
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

namespace {

// A file in the temporary folder holding text, removed with the object.
class ScratchFile {
public:
    ScratchFile(const std::string& name, const std::string& text) : m_path("/tmp/zx_host_" + std::to_string(::getpid()) + "_" + name) {
        std::ofstream(m_path) << text;
    }
    ~ScratchFile() { std::remove(m_path.c_str()); }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

const char* const kSheet = R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 2, "CTYPE": "TCool-Spec",
    "T_PROCESS": {"value": [80, 90, 95], "spec": "Fixed"}, "U": {"value": 2, "spec": "Fixed"}, "T_COOL": 30}}}})";

TEST(BadInput, SolverOptionsThatWouldMisleadAreRefusedBeforeReading) {
    // The file does not exist: refusing the option first shows nothing was read.
    ExpectRefused("solve /nonexistent.json --tolerance inf", {"--tolerance \"inf\"", "finite number above 0"});
    ExpectRefused("solve /nonexistent.json --tolerance nan", {"--tolerance \"nan\""});
    ExpectRefused("solve /nonexistent.json --tolerance 0", {"--tolerance \"0\""});
    ExpectRefused("solve /nonexistent.json --tolerance -1e-8", {"--tolerance \"-1e-8\""});
    ExpectRefused("solve /nonexistent.json --tolerance ''", {"--tolerance \"\""});
    ExpectRefused("solve /nonexistent.json --max-iterations 0", {"--max-iterations \"0\"", "at least 1"});
    ExpectRefused("solve /nonexistent.json --max-iterations -1", {"--max-iterations \"-1\""});
    ExpectRefused("solve /nonexistent.json --csv ''", {"--csv", "name of the file"});
    ExpectRefused("solve /nonexistent.json --max-unknowns 0", {"--max-unknowns"});
}

TEST(BadInput, SizesBeyondTheLimitAreRefusedNamingTheArrayAndSize) {
    ExpectRefused("describe RPLUG_TCOOL1 --set NPTS=2147483647", {"RPLUG_TCOOL1", "T_PROCESS would have 2147483648 elements",
                                                                  "--max-unknowns"});
    ExpectRefused("describe RPLUG_TCOOL1 --set NRANGE=0:2000000000", {"NRANGE has 2000000001 members"});
    ExpectRefused("describe RPLUG_TCOOL1 --set NPTS=20 --max-unknowns 50", {"would have 21 elements", "limit of 50"});
    ExpectRefused("describe RPLUG_TCOOL1 --set NPTS=4294967296", {"integer 4294967296 is outside the range of integers"});
    ExpectRefused("describe RPLUG_TCOOL1 --set U=1e309", {"number 1e309 cannot be held as a real number"});
    ScratchFile huge("huge.json", R"({"blocks": {"R": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 2147483647}}}})");
    ExpectRefused("solve " + huge.Path(), {huge.Path() + ":1:", "/blocks/R: block R (RPLUG_TCOOL1): T_PROCESS would have 2147483648 elements"});
}

TEST(BadInput, WhatUsersTypeIsQuotedOnOneLineAndBriefly) {
    // (The shell's printf makes the bytes: \377 is 0xFF.)
    ExpectRefused("describe RPLUG_TCOOL1 --set \"$(printf 'CTYPE=\\377\\376')\" --json", {"--set CTYPE=\\xFF\\xFE: not UTF-8 text"});
    ExpectRefused("describe \"$(printf 'NO\\nSUCH\\tTYPE')\"", {"\"NO\\nSUCH\\tTYPE\""});
    const CommandResult r = RunHost("describe RPLUG_TCOOL1 --set CTYPE=" + std::string(5000, 'x'));
    EXPECT_EQ(r.status, 2);
    EXPECT_LT(r.err.size(), 400u) << r.err;
}

TEST(BadInput, OutputThatCannotBeWrittenIsAFailure) {
    ScratchFile sheet("sheet.json", kSheet);
    for (const char* args : {" --json", "", " --csv /dev/full"}) {
        const CommandResult r = RunHost("solve " + sheet.Path() + " --no-log" + args + " > /dev/full");
        EXPECT_EQ(r.status, 1) << args << "\n" << r.err;
        EXPECT_NE(r.err.find("failed"), std::string::npos) << r.err;
    }
    EXPECT_EQ(RunHost("types --json > /dev/full").status, 1);
}

TEST(BadInput, AComponentTheDatabaseDoesNotKnowIsTheFilesFault) {
    // Found by the first call of the block's property routine: the solve stops there and the
    // CSV is not written.
    ScratchFile sheet("typo.json", R"({"components": {"mix": ["WATER", "METHANL"]}, "blocks": {"L": {"type": "PROPS_LIQUID",
        "set": {"PROPMODE": "Rigorous", "T": {"value": 25, "spec": "Fixed"}, "P": {"value": 1, "spec": "Fixed"},
                "X": {"value": [0.5, 0.5], "spec": "Fixed"}}}}})");
    const std::string csv = sheet.Path() + ".csv";
    const CommandResult r = RunHost("solve " + sheet.Path() + " --no-log --csv " + csv);
    EXPECT_EQ(r.status, 2) << r.err;
    for (const char* f : {"block L (PROPS_LIQUID)", "unknown component \"METHANL\"", "did you mean", "METHANOL"})
        EXPECT_NE(r.err.find(f), std::string::npos) << f << " not in " << r.err;
    EXPECT_FALSE(std::ifstream(csv).good());
}

#ifndef __SANITIZE_ADDRESS__   // the sanitizers reserve more address space than the limit allows
// A cooler of n cells with fixed cell temperatures: large enough to run out of memory under a
// limit, small enough to solve without one.
std::string CoolerSheet(int n) {
    std::string cells = "[";
    for (int i = 0; i < n; ++i) cells += (i ? ", " : "") + std::to_string(300 + i % 97);
    cells += "]";
    return R"({"globals": {"PI": 3.14}, "blocks": {"COOLER": {"type": "RPLUG_TCOOL", "set": {"NPTS": )" + std::to_string(n) +
           R"(, "T_CELL0": {"value": 400, "spec": "Fixed"}, "T_CELL": {"value": )" + cells + R"(, "spec": "Fixed"},
        "DIAM": {"value": 0.05, "spec": "Fixed"}, "NTUBE": {"value": 500, "spec": "Fixed"}, "L": {"value": 12, "spec": "Fixed"}}}}})";
}

TEST(BadInput, RunningOutOfMemoryEndsWithOneLineAndNoFile) {
    ScratchFile sheet("large.json", CoolerSheet(1000000));
    const std::string csv = sheet.Path() + ".csv";
    // The memory guard is lifted so that the allocations themselves fail.
    const CommandResult r = RunHost("solve " + sheet.Path() + " --no-log --max-unknowns 100000000 --csv " + csv, "ulimit -v 300000; ");
    EXPECT_EQ(r.status, 1) << r.err;
    EXPECT_NE(r.err.find("zorexp: out of memory"), std::string::npos) << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_TRUE(r.out.empty());
    EXPECT_FALSE(std::ifstream(csv).good());
}

// Whichever allocation fails (the elements, the equations, the ordering or factorisation inside
// the linear solver, the output), the run either succeeds or stops with the one line, never
// with a solve called failed and its results written.
TEST(BadInput, EveryLimitOfMemoryEitherSolvesOrEndsWithOneLine) {
    ScratchFile sheet("limits.json", CoolerSheet(300000));
    for (int limit = 100000; limit <= 250000; limit += 25000) {
        const CommandResult r = RunHost("solve " + sheet.Path() + " --json --no-log --max-unknowns 100000000",
                                        "ulimit -v " + std::to_string(limit) + "; ");
        if (r.status == 0) {
            EXPECT_NE(r.out.find("\"converged\""), std::string::npos) << limit;
            continue;
        }
        EXPECT_EQ(r.status, 1) << limit << ": " << r.err;
        // The structure line comes before the solve; the message is the one line after it.
        const std::size_t message = r.err.find("zorexp: out of memory");
        ASSERT_NE(message, std::string::npos) << limit << ": " << r.err;
        EXPECT_EQ(r.err.find('\n', message), r.err.size() - 1) << limit << ": " << r.err;
        EXPECT_EQ(r.err.find("not converged"), std::string::npos) << limit << ": " << r.err;
        EXPECT_TRUE(r.out.empty()) << limit;
    }
}
#endif

}  // namespace
