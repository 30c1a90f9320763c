#pragma once
// Every container class of registry.def, in an order in which each base is complete before the
// classes derived from it:
//   1. modelled classes on generic or modelled bases (modelled_containers.hpp),
//   2. the empty classes, generated in registry.def order (empty_containers.hpp),
//   3. modelled classes whose base is an empty class (listed below).
// A chain that alternates more than once (modelled, empty, modelled, empty) cannot be ordered
// this way; the middle empty type must then be modelled as well.
#include "frame/empty_containers.hpp"

// Modelled classes derived from an empty class, in registry.def order:
// (none yet)
