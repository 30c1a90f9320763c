#pragma once
// Routine libraries, loaded by name. A routine library "Name" is the file lib<Name>.so in one of
// the directories of the routine search path:
//   1. the directories listed in the environment variable ZOREXP_ROUTINE_PATH (separated by
//      ':'), in order; entries that are empty or relative are ignored, so the current directory
//      is never searched;
//   2. the runtime's own routine directory: "routines" beside libzorexp.so (in the build
//      tree and after installation alike).
// File names match without regard to case, so "Fabrik" and "fabrik" name one file, loaded once.
// A library must export zorexp_routine_interface(); it serves a declaration of interface version
// v only when it reports at least v.
#include <string>
#include <vector>

struct zorexp_host_services;

struct VX_RoutineLibrary {
    std::string name;    // as first asked for
    std::string path;    // absolute path of the file loaded
    void* handle = nullptr;
    int interfaceVersion = 0;   // what zorexp_routine_interface() reported; 0 when not exported
};

// Name of the environment variable listing extra routine directories.
constexpr const char* VX_ROUTINE_PATH_VARIABLE = "ZOREXP_ROUTINE_PATH";
// Name of the runtime's own routine directory, beside libzorexp.so.
constexpr const char* VX_ROUTINE_DIRECTORY_NAME = "routines";

// The directories searched, in order, as they stand now.
std::vector<std::string> VX_RoutineSearchPath();
// Entries of ZOREXP_ROUTINE_PATH that are ignored because they are empty or relative.
std::vector<std::string> VX_IgnoredRoutinePathEntries();
// The runtime's own routine directory.
std::string VX_OwnRoutineDirectory();

// Outcome of finding a library or one of its entry points.
struct VX_RoutineLookup {
    int status = 0;                      // VX_S_OK or a VX_E_ROUTINE_... code
    const VX_RoutineLibrary* library = nullptr;
    void* entry = nullptr;
    std::string why;                     // on failure: one line saying what and where
};

// Finds and loads library `name` (once per file for the whole process) and checks that it
// reports at least `version`; with a non-null entry, also resolves that entry point.
VX_RoutineLookup VX_FindRoutine(const char* name, int version, const char* entry);

// The services table handed to every library that exports zorexp_routine_attach.
const zorexp_host_services* VX_RoutineHostServices();
// A message a routine reported as an error during the call now running; taken (and cleared)
// by the runtime when the call fails. Empty when the routine said nothing.
std::string VX_TakeRoutineError();
// True when a routine reported an error since the last VX_TakeRoutineError.
bool VX_RoutineErrorPending();
