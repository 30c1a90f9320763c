// Library exports: the whole public face of the library, undecorated C names. Everything else
// in the library is hidden. Three library-wide entries, then four exports per EXPORTED row of
// registry.def: <NAME>Factory, <NAME>PropertyInfo, _JacData<NAME>, _Compatibility<NAME>.
#include <cstdint>

#include "frame/all_containers.hpp"
#include "frame/jac_data.hpp"
#include "frame/library_entry.hpp"
#include "frame/registry_macros.hpp"

#define VX_EXPORT extern "C" __attribute__((visibility("default")))

VX_EXPORT std::int32_t KRInitialize(const VX_InitRecord* record) { return VX_LibraryInitialize(record); }

VX_EXPORT VX_InitRecord* GetDLLInitializationData() { return VX_LibraryInitializationData(); }

VX_EXPORT std::int32_t RegisterDummyOptionsHandler(std::uintptr_t fallback) {
    return VX_RegisterProxyOptionsHandler(fallback);
}

// The compatibility level of every type of this library.
inline constexpr std::int32_t kCompatibility = 6;

// The property-information cell of a type belongs to the host, which caches its per-type
// property information there; the library never reads or writes it.
#define VX_TYPE_EXPORTS(NAME, KIND)                                                          \
    static_assert(sizeof(VX_CONTAINER_ID(KIND, NAME)) - 1 <= VX_JACDATA_ID_WORDS,             \
                  "container id of " #NAME " does not fit its Jacobian-data block");          \
    static void* s_propertyInfo_##NAME = nullptr;                                             \
    VX_EXPORT VX_Containable* NAME##Factory() {                                               \
        VX_Containable* object = new VX_##NAME(true);                                         \
        object->AddRef();                                                                     \
        return object;                                                                        \
    }                                                                                         \
    VX_EXPORT void** NAME##PropertyInfo() { return &s_propertyInfo_##NAME; }                  \
    VX_EXPORT const VX_JacDataBlock _JacData##NAME = VX_MakeJacData(VX_CONTAINER_ID(KIND, NAME)); \
    VX_EXPORT const std::int32_t _Compatibility##NAME = kCompatibility;

#define VX_CONTAINER(NAME, KIND, BASE, EXPORTS, CONTENT) VX_IF_EXPORTED(EXPORTS, VX_TYPE_EXPORTS(NAME, KIND))
#include "frame/registry.def"
#undef VX_CONTAINER
