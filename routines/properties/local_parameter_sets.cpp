#include "local_parameter_sets.hpp"

#include <cmath>
#include <memory>

#include <fmt/format.h>

#include "property_services.hpp"

namespace zx::routines {
namespace {

// Sets stay where they are (their ids index this list), so the list holds pointers.
std::vector<std::unique_ptr<LocalParameters>> g_sets;

}  // namespace

LocalParameters& LocalParametersAt(const void* site, bool liquid) {
    for (auto& set : g_sets)
        if (set->site == site && set->liquid == liquid) return *set;
    g_sets.push_back(std::make_unique<LocalParameters>());
    LocalParameters& set = *g_sets.back();
    set.id = static_cast<double>(g_sets.size());
    set.site = site;
    set.liquid = liquid;
    return set;
}

const LocalParameters& FindLocalParameters(double id, bool liquid) {
    const char* fitter = liquid ? "PLIQUID_PAR" : "PVAPOR_PAR";
    if (!(id >= 1.0) || id != std::floor(id) || id > static_cast<double>(g_sets.size()))
        throw RoutineError(fmt::format("parameter set id {} was not returned by {}", id, fitter));
    const LocalParameters& set = *g_sets[static_cast<std::size_t>(id) - 1];
    if (set.liquid != liquid) throw RoutineError(fmt::format("parameter set id {} is a {} set, not one of {}", id, set.liquid ? "liquid" : "vapour", fitter));
    return set;
}

}  // namespace zx::routines
