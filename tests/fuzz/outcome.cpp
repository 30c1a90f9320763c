#include "outcome.hpp"

#include <algorithm>

namespace zx::fuzz {
namespace {

bool CleanRefusal(const ProcessResult& r) {
    return r.exitStatus == 2 && r.out.empty() && std::count(r.err.begin(), r.err.end(), '\n') == 1 && r.err.back() == '\n';
}

}  // namespace

const char* OutcomeName(Outcome outcome) {
    switch (outcome) {
    case Outcome::CleanRefusal: return "clean refusal";
    case Outcome::ExpectedStatus: return "expected status";
    case Outcome::Crash: return "crash";
    case Outcome::SanitizerReport: return "sanitizer report";
    case Outcome::Hang: return "hang";
    case Outcome::WrongStatus: return "wrong status";
    }
    return "?";
}

bool IsFault(Outcome outcome) { return outcome != Outcome::CleanRefusal && outcome != Outcome::ExpectedStatus; }

Verdict Classify(const FuzzCase& c, const ProcessResult& r, const std::string& fileProblem) {
    if (r.timedOut) return {Outcome::Hang, "no answer within the time limit"};
    for (const char* marker : {"AddressSanitizer", "LeakSanitizer", "UndefinedBehaviorSanitizer", "runtime error:"})
        if (r.err.find(marker) != std::string::npos) return {Outcome::SanitizerReport, marker};
    if (r.signal != 0) return {Outcome::Crash, "ended by signal " + std::to_string(r.signal)};
    if (r.exitStatus > 3) return {Outcome::Crash, "exit status " + std::to_string(r.exitStatus)};
    if (r.err.find("internal error") != std::string::npos) return {Outcome::WrongStatus, "an internal error"};
    if (!fileProblem.empty()) return {Outcome::WrongStatus, fileProblem};
    if (r.exitStatus == 2 && !CleanRefusal(r)) return {Outcome::WrongStatus, "status 2 without exactly one line on stderr and nothing on stdout"};
    switch (c.expect) {
    case FuzzCase::Refusal:
        if (r.exitStatus != 2) return {Outcome::WrongStatus, "bad input answered with status " + std::to_string(r.exitStatus)};
        break;
    case FuzzCase::NotSuccess:
        if (r.exitStatus == 0) return {Outcome::WrongStatus, "status 0 although the output could not be written"};
        break;
    case FuzzCase::AnyStatus: break;
    }
    return {r.exitStatus == 2 ? Outcome::CleanRefusal : Outcome::ExpectedStatus, {}};
}

}  // namespace zx::fuzz
