#pragma once
// What became of one fuzz case: a clean refusal (status 2, one line on stderr, nothing on
// stdout), the status the case expects, or one of the faults: a crash, a sanitizer report, a
// hang or a wrong status (which includes a messy refusal, an internal error and an output file
// changed by a command that failed).
#include <string>

#include "case_generator.hpp"
#include "process_run.hpp"

namespace zx::fuzz {

enum class Outcome { CleanRefusal, ExpectedStatus, Crash, SanitizerReport, Hang, WrongStatus };
inline constexpr int kOutcomes = 6;

const char* OutcomeName(Outcome outcome);
bool IsFault(Outcome outcome);

struct Verdict {
    Outcome outcome;
    std::string why;   // for faults
};

// fileProblem: what is wrong with the files the run left (a guarded output file changed by a
// command that failed, a temporary file left behind), or empty.
Verdict Classify(const FuzzCase& c, const ProcessResult& r, const std::string& fileProblem);

}  // namespace zx::fuzz
