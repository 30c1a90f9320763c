#pragma once
// VX_Type: every property object and container. Adds property registration and naming.
#include <string>

#include "zorexp/containable.hpp"
#include "zorexp/small_object_pool.hpp"

class VX_Type : public VX_Containable {
public:
    // Attaches member to owner under name; the order of calls is the order users see.
    // description may be null. flags and reserved are kept for the host (0 in generated code).
    static VX_Type* AddProperty(VX_Type* member, VX_Type* owner, const char* name,
                                const char* description, int flags, int reserved);

    // The name of this object inside its owner: "T_COOL", "T_PROCESS(0)" or "" for a top object.
    std::string LocalName() const;
    // The path from the top object: "IN_HS.Q", "T_PROCESS(0)", "COEF(A,1)".
    std::string Path() const;
    // The registered description, or null.
    const char* Description() const;
    // The class name without its VX_ prefix ("TEMPERATURE", "RPLUG_TCOOL1").
    std::string TypeName() const;

    // Small runtime objects (variables, parameters) come from a pool without per-object headers.
    static void* operator new(std::size_t size) { return VX_PoolAllocate(size); }
    static void operator delete(void* p, std::size_t size) { VX_PoolFree(p, size); }
};

