#pragma once
// One property of one phase from (T in C, P in bar, composition) as a routine output, in the
// variable types' base units, with its derivatives with respect to T, P and each fraction.
#include "list_context.hpp"
#include "thermo/phase_properties.hpp"

namespace zx::routines {

enum class Quantity { Enthalpy, Entropy, MolarDensity, MassDensity, HeatCapacityP, HeatCapacityV };

// Evaluates `quantity` of `phase` for the call's (T, P, x) inputs 0, 1, 2 into output 0.
void PhasePropertyRoutine(const DenseCall& call, const char* entry, const char* routine, thermo::Phase phase, Quantity quantity);

// The input array of dimension-list entry `dim` checked against the list size; returns it.
std::size_t CompositionSize(const DenseCall& call, int dim, const ListContext& context);
// RoutineError unless the first output array has one element per component of the list.
void RequireOutputPerComponent(const DenseCall& call, const ListContext& context);

}  // namespace zx::routines
