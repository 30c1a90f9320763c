#pragma once
// A mixture: the components of one component list, in list order, the thermodynamic method
// chosen for it and its binary interaction parameters.
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "thermo/component_database.hpp"

namespace zx::thermo {

enum class Method { Ideal, PengRobinson };

inline constexpr const char* kMethodOption = "PROPERTY-METHOD";
inline constexpr const char* kInteractionOption = "PR-KIJ";

// A property that cannot be computed for a mixture: bad input or data the database lacks.
struct PropertyError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// A mixture names a component the database does not have.
struct UnknownComponentError : PropertyError {
    using PropertyError::PropertyError;
};

// "IDEAL" or "PENG-ROBINSON", any case; anything else is a PropertyError naming the valid values.
Method ParseMethod(std::string_view text);
const char* MethodName(Method method);

struct Mixture {
    const ComponentDatabase* database = nullptr;
    std::vector<std::size_t> indices;            // into database->Components()
    std::vector<const Component*> components;    // same order
    Method method = Method::Ideal;
    std::vector<double> kij;                     // n x n, symmetric, zero diagonal

    std::size_t Size() const { return components.size(); }
    const std::string& Id(std::size_t i) const { return components[i]->id; }
};

// Resolves the ids (unknown ones refused with suggestions), takes the database's interaction
// parameters for the method, then those of `interactions`: "ID1:ID2=value; ..." (a list option).
Mixture MakeMixture(const ComponentDatabase& db, const std::vector<std::string>& ids, Method method,
                    std::string_view interactions = {});

}  // namespace zx::thermo
