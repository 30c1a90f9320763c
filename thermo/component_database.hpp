#pragma once
// The component database: read from one JSON file, components found by id or alias without
// regard to case. An unknown name is refused with the nearest ids as suggestions.
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "thermo/component.hpp"

namespace zx::thermo {

struct DatabaseError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A binary interaction parameter given in the database.
struct InteractionParameter {
    std::string method;  // "PENG-ROBINSON"
    std::size_t i = 0, j = 0;
    double kij = 0.0;
    std::string source;
};

class ComponentDatabase {
public:
    static ComponentDatabase Load(const std::filesystem::path& file);

    const std::vector<Component>& Components() const { return components_; }
    const std::vector<InteractionParameter>& Interactions() const { return interactions_; }
    const std::filesystem::path& File() const { return file_; }

    // Index of the component named `name` (id or alias, any case), or npos.
    std::size_t Find(std::string_view name) const;
    // Index of the component, or DatabaseError: "unknown component "X" (did you mean A, B?)".
    std::size_t Require(std::string_view name) const;
    // Up to three ids close to `name`, nearest first.
    std::vector<std::string> Suggest(std::string_view name) const;

    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

private:
    std::filesystem::path file_;
    std::vector<Component> components_;
    std::vector<InteractionParameter> interactions_;
    std::vector<std::pair<std::string, std::size_t>> names_;  // upper-case id or alias -> index, sorted
};

// Where the database is: $ZOREXP_COMPONENT_DATABASE when set, else share/zorexp/components.json
// under `prefix` (the build tree or the install prefix).
std::filesystem::path DatabasePath(const std::filesystem::path& prefix);
inline constexpr const char* kDatabaseEnvironmentVariable = "ZOREXP_COMPONENT_DATABASE";
inline constexpr const char* kDatabaseRelativePath = "share/zorexp/components.json";

std::string UpperCase(std::string_view text);

}  // namespace zx::thermo
