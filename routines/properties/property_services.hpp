#pragma once
// What every property routine library shares: the host's services, the component database,
// failure and note reporting, and the notes already said in the current solve. A solve starts
// at attach and at every prepare or initialise call; each range note and each normalised
// composition is said once per solve. Calls come from one thread (the host's), so nothing here
// locks.
#include <stdexcept>
#include <string>

#include <zorexp/routine_library.h>

#include "thermo/component_database.hpp"
#include "thermo/phase_properties.hpp"
#include "thermo/mixture.hpp"

namespace zx::routines {

// A routine cannot compute its outputs; the message names the routine and the value.
struct RoutineError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// The inputs name something the database does not know (a component): the user's data is
// wrong, whatever the values of the unknowns.
struct RoutineInputError : RoutineError {
    using RoutineError::RoutineError;
};

void AttachServices(const zorexp_host_services* services);
const zorexp_host_services* Services();

// The database: $ZOREXP_COMPONENT_DATABASE, else share/zorexp/components.json two folders above
// the routine library (lib/routines/ in the build tree and after installation). Loaded once.
const thermo::ComponentDatabase& Database();

// Forget what was said in this solve and the lists' resolved mixtures.
void StartSolve();

void ReportError(const char* entry, const std::string& message);
// Says `message` unless the same key was said in this solve.
void NoteOnce(const char* entry, const void* key, const std::string& message);
// Says, once per solve and component, which correlations were used outside their range.
void NoteRanges(const char* entry, const char* routine, const thermo::Mixture& mixture, const unsigned char* notes);

}  // namespace zx::routines
