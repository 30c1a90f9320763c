// Library-wide entries.
#include "frame/library_entry.hpp"

namespace {

struct ModuleState {
    std::uintptr_t hostDatum = 0;                 // word 1 of the record taken
    ZormOptionsHandler* optionsHandler = nullptr; // word 2, or the proxy once installed
    VX_HostService* hostService = nullptr;        // word 3, for versions 2 and 3 only
    VX_InitRecord stored{};                       // the whole record, as handed back to the host
    ProxyOptionsHandler proxy;
};

ModuleState g_state;

}  // namespace

std::int32_t VX_LibraryInitialize(const VX_InitRecord* record) {
    if (!record) return 0;
    // Cleared before the version is looked at: a record of an unknown version still drops the
    // host service, while everything else stays as it was.
    g_state.hostService = nullptr;
    switch (record->version) {
    case 1:
        break;
    case 2:
    case 3:
        g_state.hostService = reinterpret_cast<VX_HostService*>(record->hostService);
        break;
    default:
        return 0;
    }
    g_state.hostDatum = record->hostDatum;
    g_state.optionsHandler = reinterpret_cast<ZormOptionsHandler*>(record->optionsHandler);
    g_state.stored = *record;
    return 1;
}

VX_InitRecord* VX_LibraryInitializationData() { return &g_state.stored; }

std::int32_t VX_RegisterProxyOptionsHandler(std::uintptr_t fallback) {
    ProxyOptionsHandler& proxy = g_state.proxy;
    const bool noneBefore = g_state.optionsHandler == nullptr;
    // Installing the proxy again only replaces its fallback: the proxy is never its own previous.
    if (g_state.optionsHandler != &proxy) proxy.previous = g_state.optionsHandler;
    proxy.fallback = reinterpret_cast<ZormOptionsHandler*>(fallback);
    g_state.optionsHandler = &proxy;
    g_state.stored.optionsHandler = reinterpret_cast<std::uintptr_t>(&proxy);
    if (noneBefore && g_state.stored.version == 0) g_state.stored.version = 1;
    if (fallback == 1) VX_LibraryInitialize(nullptr);
    return noneBefore ? 1 : 0;
}

std::uintptr_t VX_HostDatum() { return g_state.hostDatum; }
ZormOptionsHandler* VX_CurrentOptionsHandler() { return g_state.optionsHandler; }
VX_HostService* VX_CurrentHostService() { return g_state.hostService; }
ProxyOptionsHandler& VX_TheProxyOptionsHandler() { return g_state.proxy; }
