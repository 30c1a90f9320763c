#pragma once
// Classes of the MODELLED rows of registry.def that derive from a generic base or from another
// modelled class. They are included before the empty classes are generated, so that an empty
// class may derive from one of them (e.g. REACTORBASE, still empty, on a modelled INLETMIXERFWD).
//
// When a row is flipped from EMPTY to MODELLED, its class is written in models/ or ports/ and
// its header is added here, in registry.def order. A modelled class whose base is still an empty
// class cannot come before the empty classes: its header goes into all_containers.hpp instead.
#include "runtime/runtime.hpp"

#include "models/unitops/rplug_tcool.hpp"
#include "models/unitops/rplug_tcool1.hpp"
