#pragma once
// Library-wide state set up by the host: the initialisation record, the current options handler
// and the host service. The exported entries (exports.cpp) forward here.
#include <cstdint>

#include "frame/host_service.hpp"
#include "frame/options_handlers.hpp"

// The record the host hands to KRInitialize. Its words are pointer-sized.
struct VX_InitRecord {
    std::uintptr_t version;          // 1, 2 or 3 are accepted
    std::uintptr_t hostDatum;        // kept for the runtime; the library does not interpret it
    std::uintptr_t optionsHandler;   // the host's ZormOptionsHandler, or 0
    std::uintptr_t hostService;      // the host's VX_HostService (versions 2 and 3 only)
};

// KRInitialize: 1 when the record was taken, 0 when refused (null record, unknown version).
// Any record that is not null clears the host service pointer first, even one that is refused.
std::int32_t VX_LibraryInitialize(const VX_InitRecord* record);

// GetDLLInitializationData: the stored copy of the last record taken; all zeros before that.
VX_InitRecord* VX_LibraryInitializationData();

// RegisterDummyOptionsHandler: installs the library's proxy in front of the current handler,
// with fallback as the handler asked last. 1 when no handler was current, 0 otherwise.
std::int32_t VX_RegisterProxyOptionsHandler(std::uintptr_t fallback);

// The working state taken from the record.
std::uintptr_t VX_HostDatum();
ZormOptionsHandler* VX_CurrentOptionsHandler();
VX_HostService* VX_CurrentHostService();
ProxyOptionsHandler& VX_TheProxyOptionsHandler();
