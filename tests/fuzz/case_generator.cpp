#include "case_generator.hpp"

#include <algorithm>
#include <cctype>

namespace zx::fuzz {
namespace {

const std::vector<std::string> kEdgeNumbers = {
    "0", "-0", "1", "-1", "2.5", "1e308", "1e309", "-1e309", "4.9e-324", "2e-324", "1e-400", "2147483647", "2147483648",
    "-2147483648", "-2147483649", "4294967296", "9223372036854775807", "9223372036854775808", "18446744073709551615",
    "1" + std::string(400, '0'), "0." + std::string(400, '1'), "1E+2", "1e-2",
    // not numbers in JSON
    "NaN", "Infinity", "-Infinity", "0x10", "01", ".5", "1.", "1e", "+1", "--1", "1e+"};

const std::vector<std::string> kOddTexts = {
    R"("")", R"(" ")", R"("\u0000")", R"("\ud800")", R"("\udc00x")", R"("\ud83d\ude00")", "\"\xff\xfe\"", "\"\xc0\xaf\"",
    "\"a\tb\"", "\"line\nbreak\"", R"("\n\r\t")", R"("\\")", R"("\"quoted\"")", "\"\xe2\x82\xac\"", R"("NPTS")",
    R"("FIXED")", R"("fixed")", R"("Free ")", R"("1")", R"("true")", R"("null")", R"("%s%n")", R"("../../etc/passwd")"};

const std::vector<std::string> kSpecs = {R"("Fixed")", R"("Free")", R"("fixed")", R"("Initial")", R"("RateInitial")", R"("Tight")", "4", "null"};

std::string Quoted(const std::string& s) {
    std::string out = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

std::string SwapCase(std::string s) {
    for (char& c : s) c = std::isupper(static_cast<unsigned char>(c)) ? static_cast<char>(std::tolower(c)) : static_cast<char>(std::toupper(c));
    return s;
}

}  // namespace

CaseGenerator::CaseGenerator(const HostCatalog& catalog, std::vector<std::string> examples, std::uint64_t seed)
    : m_catalog(catalog), m_examples(std::move(examples)), m_random(seed) {
    for (const TypeInfo& t : m_catalog.creatable)
        if (t.properties.size() > 1) m_defined.push_back(&t);
}

std::string CaseGenerator::EdgeNumber() { return m_random.Pick(kEdgeNumbers); }

std::string CaseGenerator::OddText() {
    if (m_random.Chance(5)) return "\"" + std::string(100000 + m_random.Below(1000), 'x') + "\"";
    return m_random.Pick(kOddTexts);
}

std::string CaseGenerator::ValueFor(const PropertyInfo& p) {
    auto number = [&] { return m_random.Chance(70) ? std::to_string(static_cast<int>(m_random.Below(600)) - 100) : EdgeNumber(); };
    auto numbers = [&](std::size_t n) {
        std::string list = "[";
        for (std::size_t k = 0; k < n; ++k) list += (k ? ", " : "") + number();
        return list + "]";
    };
    if (m_random.Chance(8)) return m_random.Chance(50) ? OddText() : EdgeNumber();   // the wrong kind, often
    switch (p.kind) {
    case PropertyInfo::Variable:
        if (m_random.Chance(50)) return number();
        return "{\"value\": " + number() + ", \"spec\": " + m_random.Pick(kSpecs) +
               (m_random.Chance(20) ? ", \"lower\": " + number() + ", \"upper\": " + number() : "") + "}";
    case PropertyInfo::Integer:
        return m_random.Chance(80) ? std::to_string(m_random.Below(6)) : EdgeNumber();
    case PropertyInfo::Real: return number();
    case PropertyInfo::Text:
        return !p.valid.empty() && m_random.Chance(75) ? Quoted(m_random.Pick(p.valid)) : OddText();
    case PropertyInfo::Logical: return m_random.Chance(50) ? "true" : "false";
    case PropertyInfo::IntegerSet: return m_random.Chance(70) ? "[0, 1, 2]" : "[" + EdgeNumber() + ", 3]";
    case PropertyInfo::TextSet: return m_random.Chance(70) ? R"(["A", "B"])" : "[" + OddText() + "]";
    case PropertyInfo::Array:
        switch (m_random.Below(5)) {
        case 0: return numbers(m_random.Below(6));
        case 1: return "{\"value\": " + numbers(m_random.Below(6)) + ", \"spec\": \"Fixed\"}";
        case 2: return "{\"value\": " + number() + ", \"spec\": " + m_random.Pick(kSpecs) + "}";
        case 3: return "{\"" + std::to_string(m_random.Below(4)) + "\": " + number() + "}";
        default: return numbers(m_random.Chance(20) ? 20000 : 3);
        }
    case PropertyInfo::Container: return m_random.Chance(50) ? "{\"X\": 1}" : number();
    case PropertyInfo::Reference: return number();
    }
    return number();
}

std::string CaseGenerator::Block(const TypeInfo& type) {
    std::string set;
    for (const PropertyInfo& p : type.properties) {
        if (!m_random.Chance(60)) continue;
        std::string path = p.name;
        if (p.kind == PropertyInfo::Array && m_random.Chance(30)) path += "(" + std::to_string(m_random.Below(4)) + ")";
        const PropertyInfo element{p.name, PropertyInfo::Variable, {}};
        set += (set.empty() ? "" : ", ") + Quoted(path) + ": " + ValueFor(path == p.name ? p : element);
    }
    // Sizes at the edges: the counts that size arrays.
    for (const PropertyInfo& p : type.properties)
        if (p.kind == PropertyInfo::Integer && m_random.Chance(15))
            set += (set.empty() ? "" : ", ") + Quoted(SwapCase(p.name)) + ": " + m_random.Pick(std::vector<std::string>{"2147483647", "-1", "100000", "100000000"});
    return "{\"type\": " + Quoted(type.name) + ", \"components\": \"main\", \"set\": {" + set + "}}";
}

std::string CaseGenerator::ValidFlowsheet() {
    if (!m_examples.empty() && m_random.Chance(30)) return m_random.Pick(m_examples);
    std::string blocks;
    const std::size_t n = 1 + m_random.Below(3);
    for (std::size_t b = 0; b < n; ++b) {
        const TypeInfo& type = !m_defined.empty() && m_random.Chance(80) ? *m_random.Pick(m_defined) : m_random.Pick(m_catalog.creatable);
        blocks += (b ? ", " : "") + Quoted("B" + std::to_string(b + 1)) + ": " + Block(type);
    }
    return "{\n  \"version\": 1,\n  \"components\": {\"main\": [\"WATER\", \"CO2\"]},\n  \"blocks\": {" + blocks +
           "},\n  \"connections\": []\n}\n";
}

// Changes a flowsheet text the way careless or hostile input does; says what the host owes.
void CaseGenerator::Mutate(std::string& text, FuzzCase& c) {
    const std::size_t at = m_random.Below(text.size());
    switch (m_random.Below(9)) {
    case 0:
        // Cut anywhere before the closing brace: what is left is never a whole file.
        c.category = "truncation";
        text.resize(m_random.Below(text.find_last_of('}') + 1));
        c.expect = FuzzCase::Refusal;
        return;
    case 1: {
        c.category = "odd byte";
        static const char kBytes[] = {'\0', '\x01', '\x7f', '\xff', '\xc3', '"', '\\', '{', ']', ',', ':', '\n'};
        text.insert(at, 1, kBytes[m_random.Below(sizeof kBytes)]);
        return;
    }
    case 2:
        c.category = "byte removed";
        text.erase(at, 1);
        return;
    case 3: {
        c.category = "nesting";
        const std::size_t depth = m_random.Pick(std::vector<std::size_t>{10, 250, 253, 257, 1000, 100000});
        const auto colon = text.find(": ", at);
        if (colon != std::string::npos) text.insert(colon + 2, std::string(depth, '[') + "1" + std::string(depth, ']') + ", \"X\": ");
        return;
    }
    case 4: {
        c.category = "key given twice";
        const auto set = text.find("\"set\": {");
        if (set == std::string::npos) break;
        const std::size_t open = set + 8;
        const auto first = text.find_first_not_of(" \n\t", open);
        if (first == std::string::npos || text[first] != '"') break;   // an empty set
        const auto end = text.find('"', first + 1);
        const std::string key = text.substr(first + 1, end - first - 1);
        text.insert(open, Quoted(m_random.Chance(50) ? key : SwapCase(key)) + ": 1, ");
        c.expect = FuzzCase::Refusal;
        return;
    }
    case 5:
        c.category = "unknown key";
        text.insert(text.find('{') + 1, "\"blocs\": {}, ");
        c.expect = FuzzCase::Refusal;
        return;
    case 6: {
        c.category = "unknown type";
        const auto type = text.find("\"type\": \"");
        if (type == std::string::npos) break;
        text.insert(type + 9, m_random.Chance(50) ? "X" : "\\u0000");
        c.expect = FuzzCase::Refusal;
        return;
    }
    case 7: {
        c.category = "odd number";
        const auto digit = std::find_if(text.begin() + static_cast<long>(at), text.end(), [](char ch) { return std::isdigit(static_cast<unsigned char>(ch)); });
        if (digit == text.end()) break;
        text.insert(static_cast<std::size_t>(digit - text.begin()), EdgeNumber() + ", \"Y\": ");
        return;
    }
    default: break;
    }
    c.category = "as generated";
}

FuzzCase CaseGenerator::FlowsheetCase() {
    FuzzCase c;
    std::string text = ValidFlowsheet();
    if (m_random.Chance(85)) Mutate(text, c);
    else c.category = "generated";
    c.files.emplace_back("sheet.json", text);
    c.flowsheet = text;
    const std::vector<std::string> commands = {"solve", "analyse", "check-jacobian"};
    const std::string command = m_random.Pick(commands);
    c.args = {command, "@sheet.json"};
    if (command == "solve") {
        c.args.push_back("--no-log");
        if (m_random.Chance(50)) c.args.push_back("--json");
        if (m_random.Chance(30)) {
            c.files.emplace_back("results.csv", "earlier results\n");
            c.args.insert(c.args.end(), {"--csv", "@results.csv"});
            c.guardedFile = "@results.csv";
        }
    }
    // Sizes are kept to what a sanitizer build runs in moments; the limit that follows from
    // memory is met by the sizes no machine holds (2147483647 points).
    const std::vector<std::string> limits = {"50", "5000", "200000"};
    if (!m_random.Chance(10)) c.args.insert(c.args.end(), {"--max-unknowns", m_random.Pick(limits)});
    return c;
}

std::string CaseGenerator::OptionValue(const std::string& kind) {
    if (kind == "INT" || kind == "UINT")
        return m_random.Pick(std::vector<std::string>{"", "-1", "0", "1", "3", "50", "2147483648", "1e3", "x", "18446744073709551616"});
    if (kind == "FLOAT")
        return m_random.Pick(std::vector<std::string>{"", "nan", "inf", "-inf", "0", "-0", "1e-8", "1e-320", "1e309", "-1", "x"});
    return m_random.Pick(std::vector<std::string>{"", "x", "/nonexistent/x", "\xff", "a,b,,c", std::string(5000, 'y')});
}

FuzzCase CaseGenerator::CommandLineCase() {
    FuzzCase c;
    c.category = "command line";
    const CommandInfo& command = m_random.Pick(m_catalog.commands);
    c.args.push_back(command.name);
    if (command.positional == "FLOWSHEET") {
        c.files.emplace_back("sheet.json", ValidFlowsheet());
        c.args.push_back("@sheet.json");
    } else if (command.positional == "TYPE") {
        const TypeInfo& type = m_random.Pick(m_catalog.creatable);
        switch (m_random.Below(4)) {
        case 0: c.args.push_back(m_catalog.valueTypes.empty() ? type.name : m_random.Pick(m_catalog.valueTypes)); break;
        case 1: c.args.push_back(m_random.Pick(kOddTexts)); break;
        default: c.args.push_back(m_random.Chance(50) ? type.name : "vx_" + SwapCase(type.name));
        }
        // Values for the type's own properties, as PATH=VALUE.
        for (const PropertyInfo& p : type.properties) {
            if (!m_random.Chance(30)) continue;
            std::string value = ValueFor(p);
            if (value.size() >= 2 && value.front() == '"') value = value.substr(1, value.size() - 2);
            const std::string path = p.kind == PropertyInfo::Array ? p.name + "(" + std::to_string(m_random.Below(3)) + ")" : p.name;
            c.args.insert(c.args.end(), {"--set", path + "=" + value});
        }
    } else if (!command.positional.empty()) {
        c.args.push_back(OptionValue("TEXT"));   // a positional of a kind the harness does not know
    }
    for (const OptionInfo& o : command.options) {
        if (!m_random.Chance(35)) continue;
        c.args.push_back(o.name);
        if (!o.valueKind.empty()) c.args.push_back(OptionValue(o.valueKind));
    }
    if (m_random.Chance(10)) {
        c.args.push_back("--frobnicate");
        c.expect = FuzzCase::Refusal;
    }
    return c;
}

FuzzCase CaseGenerator::FileSystemCase() {
    FuzzCase c;
    c.category = "file system";
    const std::string sheet = m_examples.empty() ? ValidFlowsheet() : m_random.Pick(m_examples);
    switch (m_random.Below(8)) {
    case 0: c.args = {"solve", "@"}; c.expect = FuzzCase::Refusal; break;                      // the work folder itself
    case 1: c.args = {"solve", "@missing.json"}; c.expect = FuzzCase::Refusal; break;
    case 2: c.args = {"analyse", "/dev/null"}; c.expect = FuzzCase::Refusal; break;           // empty
    case 3: c.args = {"solve", "/dev/zero"}; c.expect = FuzzCase::Refusal; break;             // endless
    case 4:
        c.files.emplace_back("sheet.json", sheet);
        c.args = {"solve", "@sheet.json", "--csv", "@sheet.json"};
        c.guardedFile = "@sheet.json";
        c.expect = FuzzCase::Refusal;
        break;
    case 5:
        c.files.emplace_back("sheet.json", sheet);
        c.args = {"solve", "@sheet.json", "--csv", m_random.Chance(50) ? "@no/such/folder.csv" : "@"};
        c.expect = FuzzCase::Refusal;
        break;
    case 6:
        c.files.emplace_back("sheet.json", sheet);
        c.args = {"solve", "@sheet.json", "--no-log", m_random.Chance(50) ? "--json" : "--no-log"};
        c.stdoutPath = "/dev/full";
        c.expect = FuzzCase::NotSuccess;
        break;
    default:
        c.files.emplace_back("sheet.json", sheet);
        c.files.emplace_back("results.csv", "earlier results\n");
        c.args = {"solve", "@sheet.json", "--no-log", "--csv", "@results.csv", "--max-iterations", "1"};
        c.guardedFile = "@results.csv";
        break;
    }
    c.flowsheet = sheet;
    return c;
}

FuzzCase CaseGenerator::Next() {
    const std::size_t pick = m_random.Below(10);
    if (pick < 6) return FlowsheetCase();
    if (pick < 9) return CommandLineCase();
    return FileSystemCase();
}

std::string CaseGenerator::NextFlowsheet() {
    FuzzCase c;
    std::string text = ValidFlowsheet();
    if (m_random.Chance(85)) Mutate(text, c);
    return text;
}

std::string CaseGenerator::NextSetValue() {
    switch (m_random.Below(4)) {
    case 0: return EdgeNumber();
    case 1: return OddText();
    case 2: return EdgeNumber() + "," + EdgeNumber() + ":" + EdgeNumber();
    default: return m_random.Pick(std::vector<std::string>{"", " ", "true", "FALSE", "1", "0", "fixed", "a,b", ":", "1:", ",", "0:2147483647"});
    }
}

}  // namespace zx::fuzz
