#pragma once
// The model library as a host sees it: a loadable file found beside the host (or named by
// ZOREXP_MODEL_LIBRARY), initialised once through KRInitialize, whose types are reached only
// through exports looked up by name.
#include <cstdint>
#include <string>

#include "host_services.hpp"

class VX_Containable;

namespace zorexp_cli {

// The initialisation record: version, host datum, options handler, host service.
struct InitializationRecord {
    std::uintptr_t version;   // words are pointer-sized
    std::uintptr_t hostDatum;
    HostOptionsHandler* optionsHandler;
    HostService* hostService;
};

class ModelLibrary {
public:
    using Factory = VX_Containable* (*)();

    // Loads and initialises the library; throws HostFailure naming every path tried and why
    // each failed, or the refusal of KRInitialize.
    static ModelLibrary& Instance();

    // The factory export of a type ("<name>Factory"), or null when the library has none.
    Factory FindFactory(const std::string& typeName) const;
    const std::string& Path() const { return m_path; }

    ModelLibrary(const ModelLibrary&) = delete;
    ModelLibrary& operator=(const ModelLibrary&) = delete;

private:
    ModelLibrary() = default;
    void Load();
    void Initialize();

    // The library stays loaded until the process ends: objects it made (the runtime's globals
    // among them) may be destroyed only while their code is still mapped.
    void* m_handle = nullptr;
    std::string m_path;
    HostOptionsHandler m_options;
    HostService m_service;
    InitializationRecord m_record{};
};

}  // namespace zorexp_cli
