#pragma once
// What the fuzz harness knows about the host, learnt at the start of each run rather than
// written down, so that new commands, options and model types are fuzzed without editing the
// harness: the commands and their options from `zorexp --help`, the type names from
// `zorexp types --json`, and the properties of each creatable type from an object made by the
// model library's own factory.
#include <string>
#include <vector>

namespace zx::fuzz {

struct OptionInfo {
    std::string name;        // "--tolerance"
    std::string valueKind;   // "INT", "FLOAT", "TEXT", "UINT", ...; empty for a flag
};

struct CommandInfo {
    std::string name;         // "solve"
    std::string positional;   // "FLOWSHEET", "TYPE", or empty
    std::vector<OptionInfo> options;
};

struct PropertyInfo {
    enum Kind { Variable, Integer, Real, Text, Logical, IntegerSet, TextSet, Array, Container, Reference };
    std::string name;
    Kind kind;
    std::vector<std::string> valid;   // of a text (option) parameter
};

struct TypeInfo {
    std::string name;
    std::vector<PropertyInfo> properties;
};

struct HostCatalog {
    std::vector<CommandInfo> commands;
    std::vector<TypeInfo> creatable;           // containers that can be blocks or described
    std::vector<std::string> valueTypes;       // variable and parameter types (describe only)
};

// Runs zorexp to learn commands and type names, and loads the model library at libraryPath
// to learn each creatable type's properties. Throws std::runtime_error when zorexp cannot be
// run or its answers cannot be read.
HostCatalog LearnHost(const std::string& zorexp, const std::string& libraryPath);

}  // namespace zx::fuzz
