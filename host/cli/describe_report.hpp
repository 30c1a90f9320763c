#pragma once
// What `describe` finds out, independent of how it is printed. A field without a value is
// an empty optional and is left out of every listing.
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zorexp_cli {

// A datum as the report shows it: logical, integer, real, text, or the members of a set.
using ReportValue = std::variant<bool, int, double, std::string, std::vector<int>, std::vector<std::string>>;

// Attributes of a variable or parameter (or of its type).
struct Attributes {
    std::optional<ReportValue> value, lower, upper;
    std::optional<std::string> spec, quantity, unit;
    std::optional<int> row, col;                  // position of the base unit in the units table
    std::optional<std::vector<ReportValue>> valid;
};

// One property of a container, an element of an array, or a member of a nested container.
struct PropertyReport {
    std::string name;   // path from the described object: "T_COOL", "T_PROCESS(0)", "IN_HS.Q"
    std::string kind;   // "variable", "integer parameter", ..., "array", "port", "model", ...
    std::string type;   // type name without VX_; for arrays, the element type
    std::optional<std::string> description;
    Attributes attributes;
    std::optional<std::vector<PropertyReport>> elements;     // arrays
    std::optional<std::vector<PropertyReport>> properties;   // nested containers
};

struct NonzeroReport {
    std::string variable;
    double jacobian;
};

struct EquationReport {
    std::string label;
    int group;
    double residual;
    std::vector<NonzeroReport> nonzeros;
};

// A model assignment the runtime refused: the property kept its value.
struct RefusalReport {
    std::string property, attribute, value, reason;
    int statement;
};

// `describe` of a container type.
struct ContainerReport {
    std::string type, id, kind, base;
    bool defined;
    bool equationsDefined;   // false: the properties are known, the equations not yet
    std::vector<PropertyReport> properties;
    std::vector<EquationReport> equations;
    // Why the equations could not be set up with these settings (they are then not listed).
    std::optional<std::string> equationsUnavailable;
    std::vector<RefusalReport> refusals;
};

// `describe` of a variable or parameter type.
struct TypeReport {
    std::string type, className, kind, base;
    std::optional<std::string> description;
    Attributes attributes;
};

// One row of `types`.
struct TypeListing {
    std::string name, kind, base;
    std::optional<std::string> id;      // containers only
    std::optional<bool> defined;        // containers only
    std::optional<bool> creatable;      // containers only: has an exported factory
    std::optional<bool> equationsDefined;   // containers only
};

}  // namespace zorexp_cli
