// fuzz_host: structured bad input against the host. Runs the zorexp command on generated cases
// (flowsheet files, command lines, file-system cases) and classifies every outcome; then reads
// and sets up generated flowsheet texts in this process, and parses generated --set values,
// many times faster. Prints the count of each outcome and ends with status 1 when any case
// crashed, hung, drew a sanitizer report or got a wrong status.
//
//   fuzz_host [--seed N] [--cases N] [--reader-cases N] [--only K] [--keep DIR] [--timeout S]
//
// A seed names the same cases on every machine; --only K reruns case K of a seed alone.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <optional>
#include <sstream>

#include <CLI/CLI.hpp>

#include "case_generator.hpp"
#include "flowsheet/equation_system.hpp"
#include "flowsheet/flowsheet.hpp"
#include "flowsheet/input_error.hpp"
#include "flowsheet/structure_diagnosis.hpp"
#include "host_catalog.hpp"
#include "outcome.hpp"
#include "process_run.hpp"
#include "value_parsing.hpp"
#include "zorexp/zorexp.hpp"

namespace {

using namespace zx::fuzz;
namespace fs = std::filesystem;

struct Options {
    std::uint64_t seed = 1;
    std::size_t cases = 300;
    std::size_t readerCases = 3000;
    long only = -1;
    double timeout = 60.0;
    std::string keep;
    std::string zorexp = ZOREXP_COMMAND;
    std::string library = VX_MODEL_LIBRARY_PATH;
    std::string examples = ZX_EXAMPLES_DIR;
};

struct Tally {
    std::array<std::size_t, kOutcomes> counts{};
    void Add(Outcome o) { ++counts[static_cast<std::size_t>(o)]; }
    std::size_t Faults() const {
        std::size_t n = 0;
        for (int o = 0; o < kOutcomes; ++o) n += IsFault(static_cast<Outcome>(o)) ? counts[static_cast<std::size_t>(o)] : 0;
        return n;
    }
    void Print(const char* title) const {
        std::cout << title << ":";
        for (int o = 0; o < kOutcomes; ++o) std::cout << "  " << OutcomeName(static_cast<Outcome>(o)) << " " << counts[static_cast<std::size_t>(o)];
        std::cout << "\n";
    }
};

std::string ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::vector<std::string> ExampleTexts(const std::string& dir) {
    std::vector<std::string> texts;
    std::vector<fs::path> paths;
    for (const auto& e : fs::directory_iterator(dir))
        if (e.path().extension() == ".json" && e.path().string().find(".expected.") == std::string::npos) paths.push_back(e.path());
    std::sort(paths.begin(), paths.end());   // the same order everywhere, for the seed's sake
    for (const auto& p : paths) texts.push_back(ReadFile(p));
    return texts;
}

// "@name" is a file of the case in its work folder; "@" the folder itself.
std::string Resolve(const std::string& arg, const std::string& work) {
    return !arg.empty() && arg[0] == '@' ? (arg.size() == 1 ? work : work + "/" + arg.substr(1)) : arg;
}

// What is wrong with the files a run left behind.
std::string FileProblem(const FuzzCase& c, const std::string& work, const ProcessResult& r, const std::optional<std::string>& before) {
    for (const auto& e : fs::directory_iterator(work)) {
        const std::string name = e.path().filename().string();
        if (name[0] == '.' && name != ".stdout" && name != ".stderr") return "a temporary file was left behind: " + name;
    }
    if (c.guardedFile.empty() || r.exitStatus == 0) return {};
    const std::string path = Resolve(c.guardedFile, work);
    const bool exists = fs::exists(path);
    if (exists != before.has_value() || (exists && ReadFile(path) != *before)) return "a failed command changed " + c.guardedFile;
    return {};
}

void Report(std::size_t index, const FuzzCase& c, const Verdict& v, const ProcessResult& r, const std::string& work,
            const Options& options) {
    std::cout << "case " << index << " (" << c.category << "): " << OutcomeName(v.outcome) << ": " << v.why << "\n  zorexp";
    for (const std::string& a : c.args) std::cout << " '" << VX_BriefText(a, 80) << "'";
    std::cout << "\n  status " << r.exitStatus << ", signal " << r.signal << "; stderr: " << VX_BriefText(r.err, 400) << "\n";
    if (!options.keep.empty()) {
        const fs::path dest = fs::path(options.keep) / ("case_" + std::to_string(options.seed) + "_" + std::to_string(index));
        fs::create_directories(dest);
        for (const auto& [name, text] : c.files) std::ofstream(dest / name, std::ios::binary) << text;
        std::ofstream(dest / "command") << work << "\n";
    }
}

Tally RunProcessCases(const HostCatalog& catalog, const Options& options) {
    CaseGenerator generator(catalog, ExampleTexts(options.examples), options.seed);
    Tally tally;
    for (std::size_t i = 0; i < options.cases; ++i) {
        const FuzzCase c = generator.Next();
        if (options.only >= 0 && static_cast<long>(i) != options.only) continue;
        char pattern[] = "/tmp/zx_fuzz_XXXXXX";
        const std::string work = ::mkdtemp(pattern) ? pattern : "";
        if (work.empty()) throw std::runtime_error("cannot make a work folder in /tmp");
        for (const auto& [name, text] : c.files) std::ofstream(work + "/" + name, std::ios::binary) << text;
        std::vector<std::string> args;
        for (const std::string& a : c.args) args.push_back(Resolve(a, work));
        std::optional<std::string> before;
        if (!c.guardedFile.empty() && fs::exists(Resolve(c.guardedFile, work))) before = ReadFile(Resolve(c.guardedFile, work));

        const ProcessResult r = RunProcess(options.zorexp, args, c.stdoutPath, work, options.timeout);
        const Verdict v = Classify(c, r, FileProblem(c, work, r, before));
        tally.Add(v.outcome);
        if (IsFault(v.outcome) || options.only >= 0) Report(i, c, v, r, work, options);
        fs::remove_all(work);
    }
    return tally;
}

// Reading and set-up in this process, as the commands do them: a refusal must be an InputError
// of one line; a model failure is a status of 1; nothing else may escape.
Outcome ReadAndSetUp(const std::string& text, void* library, std::string& why) {
    using namespace zx::flowsheet;
    const BlockCreator create = CreatorFromFactories([library](const std::string& type) {
        return reinterpret_cast<FactoryFunction>(::dlsym(library, (type + "Factory").c_str()));
    });
    try {
        const FlowsheetDocument doc = ReadFlowsheetText(text);
        auto sheet = Flowsheet::Build(doc, create);
        auto system = std::make_unique<EquationSystem>(*sheet);
        DiagnoseStructure(*system);
        system.reset();
        return Outcome::ExpectedStatus;
    } catch (const InputError& e) {
        const std::string line = e.Line("sheet.json");
        if (line.find('\n') == std::string::npos && std::string(e.what()).size() > 0) return Outcome::CleanRefusal;
        why = "a refusal of more than one line: " + VX_BriefText(line, 300);
    } catch (const ModelFailure&) {
        return Outcome::ExpectedStatus;
    } catch (const std::bad_alloc&) {
        why = "out of memory: a size got past the limits";
    } catch (const std::exception& e) {
        // The runtime names a missing array element; the command reports it as a set-up failure.
        if (dynamic_cast<const std::out_of_range*>(&e) || dynamic_cast<const std::logic_error*>(&e)) return Outcome::ExpectedStatus;
        why = std::string("an unexpected exception: ") + e.what();
    }
    return Outcome::WrongStatus;
}

// --set values parsed for every kind of target: whatever the text, a value comes back (the
// assignment's check then decides).
Outcome ParseSetValue(const std::string& text, std::string& why) {
    static VX_REALVARIABLE real(true);
    static VX_INTEGERPARAMETER integer(true);
    static VX_LOGICALPARAMETER logical(true);
    static VX_INTEGERSET integers(true);
    static VX_STRINGSET texts(true);
    try {
        for (VX_VarParam* target : std::initializer_list<VX_VarParam*>{&real, &integer, &logical, &integers, &texts}) {
            std::string problem;
            const VX_Value v = zorexp_cli::ParseValue(*target, VX_ATTR_VALUE, text, &problem);
            (void)target->CheckValue(VX_ATTR_VALUE, v);
        }
        return Outcome::ExpectedStatus;
    } catch (const std::exception& e) {
        why = std::string("the value parser threw: ") + e.what();
        return Outcome::WrongStatus;
    }
}

Tally RunInProcessCases(const HostCatalog& catalog, const Options& options) {
    void* library = ::dlopen(options.library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error("cannot load " + options.library);
    // Sizes beyond this are refused, as the command refuses what memory cannot hold.
    VX_Session::SetDefaultElementLimit(20000);
    CaseGenerator generator(catalog, ExampleTexts(options.examples), options.seed ^ 0x5eed);
    Tally tally;
    for (std::size_t i = 0; i < options.readerCases; ++i) {
        const std::string text = generator.NextFlowsheet();
        const std::string value = generator.NextSetValue();
        if (options.only >= 0 && static_cast<long>(i) != options.only) continue;
        for (int part = 0; part < 2; ++part) {
            std::string why;
            const Outcome o = part == 0 ? ReadAndSetUp(text, library, why) : ParseSetValue(value, why);
            tally.Add(o);
            if (IsFault(o)) std::cout << "in-process case " << i << ": " << why << "\n  " << VX_BriefText(part == 0 ? text : value, 400) << "\n";
        }
    }
    return tally;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app{"Structured bad input against the zorexp host; every outcome classified."};
    app.add_option("--seed", options.seed, "Seed of the cases (the same cases on every machine).");
    app.add_option("--cases", options.cases, "Cases run as zorexp processes.");
    app.add_option("--reader-cases", options.readerCases, "Flowsheet texts read and set up, and --set values parsed, in process.");
    app.add_option("--only", options.only, "Run only this case of the seed (in both parts).");
    app.add_option("--timeout", options.timeout, "Seconds before a zorexp run counts as a hang.");
    app.add_option("--keep", options.keep, "Folder to keep the files of faulty cases in.");
    app.add_option("--zorexp", options.zorexp, "The zorexp command.");
    app.add_option("--library", options.library, "The model library.");
    app.add_option("--examples", options.examples, "Folder of example flowsheets to start from.");
    CLI11_PARSE(app, argc, argv);

    try {
        const HostCatalog catalog = LearnHost(options.zorexp, options.library);
        std::cout << "seed " << options.seed << ": " << catalog.commands.size() << " commands, " << catalog.creatable.size()
                  << " creatable types, " << catalog.valueTypes.size() << " variable and parameter types\n";
        const Tally processes = RunProcessCases(catalog, options);
        processes.Print("zorexp runs");
        const Tally inProcess = RunInProcessCases(catalog, options);
        inProcess.Print("in process");
        return processes.Faults() + inProcess.Faults() == 0 ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << "fuzz_host: " << e.what() << "\n";
        return 2;
    }
}
