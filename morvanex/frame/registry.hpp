#pragma once
// The container types of the library as data, one entry per row of registry.def and in its
// order (bases before the types derived from them). Shared by the library and the host; it
// depends on nothing but the table, so the host can describe types without loading classes.
#include <cstddef>
#include <span>

struct VX_RegistryEntry {
    const char* name;          // "RPLUG_TCOOL1"; the class is VX_<name>
    const char* kind;          // "Model", "Structure" or "Port"
    const char* base;          // "GENERICMODEL", ... or the name of another entry
    bool exported;             // has <name>Factory, <name>PropertyInfo, _JacData<name>, _Compatibility<name>
    bool modelled;             // false: an empty container whose content is not defined yet
    const char* containerId;   // "Model RPLUG_TCOOL1\tV7.0"
    bool equationsDefined;     // false for an empty container and for one whose properties are
                               // written out but whose equations are not defined yet
};

// All entries in table order.
std::span<const VX_RegistryEntry> VX_RegistryEntries();

// The entry of the named type, compared without regard to case; null when there is none.
const VX_RegistryEntry* VX_RegistryFind(const char* name);
