#pragma once
// Structured bad input for the host: flowsheet files cut short, with values of the wrong kind,
// nested too deep, sized absurdly, with numbers at the edges of their ranges, unknown names and
// odd text; command lines with odd option values; and file-system cases (directories, devices,
// missing folders, results aimed at the input file, output to a full disk). Every case says
// what the host must do with it.
#include <string>
#include <utility>
#include <vector>

#include "fuzz_random.hpp"
#include "host_catalog.hpp"

namespace zx::fuzz {

struct FuzzCase {
    // What the host must answer.
    enum Expect {
        Refusal,     // bad input: status 2, one line on stderr, nothing on stdout
        NotSuccess,  // anything but 0 (output that cannot be written)
        AnyStatus,   // 0, 1, 2 or 3, whichever the input deserves; a 2 must be a clean refusal
    };
    std::string category;                  // "truncation", "odd number", ...
    std::vector<std::string> args;         // after the program name; "@name" is a file of the case
    std::vector<std::pair<std::string, std::string>> files;   // name -> content, made in the work folder
    std::string stdoutPath;                // where stdout goes; empty: captured
    std::string guardedFile;               // "@name" of an output file that must not change unless the
                                           // command succeeds
    std::string flowsheet;                 // the flowsheet text, when the case has one
    Expect expect = AnyStatus;
};

class CaseGenerator {
public:
    // examples: texts of valid flowsheets to start from (the project's example files).
    CaseGenerator(const HostCatalog& catalog, std::vector<std::string> examples, std::uint64_t seed);

    // A case for the whole command (run as a process).
    FuzzCase Next();
    // A flowsheet text, valid or bad, for reading and set-up in process.
    std::string NextFlowsheet();
    // A value as users type it after --set PATH=, for the value parser.
    std::string NextSetValue();

private:
    FuzzCase FlowsheetCase();
    FuzzCase CommandLineCase();
    FuzzCase FileSystemCase();
    std::string ValidFlowsheet();
    std::string Block(const TypeInfo& type);
    std::string ValueFor(const PropertyInfo& p);
    std::string EdgeNumber();
    std::string OddText();
    std::string OptionValue(const std::string& kind);
    void Mutate(std::string& text, FuzzCase& c);

    const HostCatalog& m_catalog;
    std::vector<std::string> m_examples;
    std::vector<const TypeInfo*> m_defined;   // types with properties beyond the component list
    FuzzRandom m_random;
};

}  // namespace zx::fuzz
