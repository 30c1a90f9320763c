#include "local_parameter_sets.hpp"

#include <cmath>

#include <fmt/format.h>

#include "property_services.hpp"

namespace zx::routines {
namespace {

std::vector<LocalParameters> g_sets(kLocalParameterSets);
double g_issued = 0.0;  // ids issued so far; set k lives in slot (k - 1) mod capacity

}  // namespace

LocalParameters& NewLocalParameters() {
    g_issued += 1.0;
    LocalParameters& set = g_sets[static_cast<std::size_t>(std::fmod(g_issued - 1.0, static_cast<double>(kLocalParameterSets)))];
    set.id = g_issued;
    return set;
}

const LocalParameters& FindLocalParameters(double id, bool liquid) {
    if (!(id >= 1.0) || id != std::floor(id) || id > g_issued)
        throw RoutineError(fmt::format("parameter set id {} was not issued by {}", id, liquid ? "PLIQUID_PAR" : "PVAPOR_PAR"));
    const LocalParameters& set = g_sets[static_cast<std::size_t>(std::fmod(id - 1.0, static_cast<double>(kLocalParameterSets)))];
    if (set.id != id) throw RoutineError(fmt::format("parameter set id {} is no longer held (only the latest {} are); fit it again", id, kLocalParameterSets));
    if (set.liquid != liquid) throw RoutineError(fmt::format("parameter set id {} is a {} set", id, set.liquid ? "liquid" : "vapour"));
    return set;
}

}  // namespace zx::routines
