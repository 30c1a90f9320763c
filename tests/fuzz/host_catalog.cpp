#include "host_catalog.hpp"

#include <dlfcn.h>

#include <cctype>
#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

#include "zorexp/zorexp.hpp"

namespace zx::fuzz {
namespace {

// What a command prints on stdout (it must succeed).
std::string Output(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen((command + " 2>/dev/null").c_str(), "r"), &::pclose);
    if (!pipe) throw std::runtime_error("cannot run " + command);
    std::string out;
    char buffer[4096];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe.get())) > 0;) out.append(buffer, n);
    return out;
}

bool AllCaps(const std::string& word) {
    if (word.empty()) return false;
    for (char c : word)
        if (!std::isupper(static_cast<unsigned char>(c)) && c != '_') return false;
    return true;
}

// The lines of one section of CLI11's help ("Subcommands:", "Positionals:", "Options:").
std::vector<std::string> Section(const std::string& help, const std::string& title) {
    std::vector<std::string> lines;
    std::istringstream in(help);
    bool inside = false;
    for (std::string line; std::getline(in, line);) {
        if (line == title) {
            inside = true;
        } else if (inside && (line.empty() || line[0] != ' ')) {
            if (!line.empty()) break;
        } else if (inside && line.size() > 2 && line[2] != ' ') {
            lines.push_back(line.substr(2));
        }
    }
    return lines;
}

CommandInfo LearnCommand(const std::string& zorexp, const std::string& name) {
    const std::string help = Output("'" + zorexp + "' " + name + " --help");
    CommandInfo command{name, {}, {}};
    for (const std::string& line : Section(help, "Positionals:")) command.positional = line.substr(0, line.find(' '));
    for (const std::string& line : Section(help, "Options:")) {
        std::istringstream words(line);
        std::string names, kind;
        words >> names >> kind;
        const auto dashes = names.rfind("--");
        if (dashes == std::string::npos || names.find("--help") != std::string::npos) continue;
        OptionInfo option{names.substr(dashes, names.find('{') - dashes), {}};
        kind = kind.substr(0, kind.find(':'));
        if (AllCaps(kind)) option.valueKind = kind;
        command.options.push_back(option);
    }
    return command;
}

PropertyInfo::Kind KindOf(VX_Type& object) {
    if (object.IsValue()) {
        switch (static_cast<VX_VarParam&>(object).GetKind()) {
        case VX_VarParam::RealVariable: return PropertyInfo::Variable;
        case VX_VarParam::IntegerParameter: return PropertyInfo::Integer;
        case VX_VarParam::RealParameter: return PropertyInfo::Real;
        case VX_VarParam::StringParameter: return PropertyInfo::Text;
        case VX_VarParam::LogicalParameter: return PropertyInfo::Logical;
        case VX_VarParam::IntegerSet: return PropertyInfo::IntegerSet;
        case VX_VarParam::StringSet: return PropertyInfo::TextSet;
        }
    }
    if (dynamic_cast<VX_Matrix*>(&object)) return PropertyInfo::Array;
    if (dynamic_cast<VX_Container*>(&object)) return PropertyInfo::Container;
    return PropertyInfo::Reference;
}

// The properties an object of the type registers when its factory makes it.
std::vector<PropertyInfo> LearnProperties(void* library, const std::string& type) {
    using Factory = VX_Containable* (*)();
    auto factory = reinterpret_cast<Factory>(::dlsym(library, (type + "Factory").c_str()));
    if (!factory) return {};
    VX_Containable* made = factory();
    std::vector<PropertyInfo> properties;
    if (auto* container = dynamic_cast<VX_Container*>(made)) {
        for (const VX_PropertyEntry& p : container->Properties()) {
            if (!p.object) continue;
            PropertyInfo info{p.name, KindOf(*p.object), {}};
            if (info.kind == PropertyInfo::Text)
                info.valid = static_cast<VX_STRINGPARAMETER&>(*p.object).Valid().Members();
            properties.push_back(std::move(info));
        }
    }
    if (made) made->Release();
    return properties;
}

}  // namespace

HostCatalog LearnHost(const std::string& zorexp, const std::string& libraryPath) {
    HostCatalog catalog;
    for (const std::string& line : Section(Output("'" + zorexp + "' --help"), "Subcommands:"))
        catalog.commands.push_back(LearnCommand(zorexp, line.substr(0, line.find(' '))));
    if (catalog.commands.empty()) throw std::runtime_error(zorexp + " --help lists no commands");

    void* library = ::dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) throw std::runtime_error("cannot load " + libraryPath + ": " + ::dlerror());
    for (const auto& t : nlohmann::json::parse(Output("'" + zorexp + "' types --json"))) {
        const std::string name = t.at("name");
        if (t.value("creatable", false)) catalog.creatable.push_back(TypeInfo{name, LearnProperties(library, name)});
        else if (!t.contains("creatable")) catalog.valueTypes.push_back(name);
    }
    if (catalog.creatable.empty()) throw std::runtime_error(zorexp + " types --json lists no creatable types");
    return catalog;
}

}  // namespace zx::fuzz
