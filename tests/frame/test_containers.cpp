// Every creatable type made by its factory and driven as a host drives it; ports, which are
// never created by a host, through the classes linked into the test.
#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>

#include "frame/all_containers.hpp"
#include "frame/registry.hpp"
#include "loaded_library.hpp"

namespace {

using FactoryFn = VX_Containable* (*)();
using QueryFn = VX_HRESULT (*)(void*, const VX_GUID*, void**);
using CountFn = std::uint32_t (*)(void*);

// The primary interface's first three slots, reached through the object's table as a host does.
struct Slots {
    explicit Slots(void* object) : object(object), table(*static_cast<void***>(object)) {}
    VX_HRESULT Query(const VX_GUID& iid, void** out) { return reinterpret_cast<QueryFn>(table[0])(object, &iid, out); }
    std::uint32_t AddRef() { return reinterpret_cast<CountFn>(table[1])(object); }
    std::uint32_t Release() { return reinterpret_cast<CountFn>(table[2])(object); }
    void* object;
    void** table;
};

std::string GenericId(const std::string& base) {
    if (base == "GENERICMODEL") return VX_GENERICMODEL::VX_ContainerId();
    if (base == "GENERICSTREAM") return VX_GENERICSTREAM::VX_ContainerId();
    if (base == "GENERICPORT") return VX_GENERICPORT::VX_ContainerId();
    if (base == "GENERICSTRUCTURE") return VX_GENERICSTRUCTURE::VX_ContainerId();
    return "";
}

// The ids a type derives from: its own, those of its registry bases and of the generic root.
std::set<std::string> AncestorIds(const VX_RegistryEntry& e) {
    std::set<std::string> ids{e.containerId};
    const VX_RegistryEntry* at = &e;
    while (const VX_RegistryEntry* base = VX_RegistryFind(at->base)) {
        ids.insert(base->containerId);
        at = base;
    }
    ids.insert(GenericId(at->base));
    return ids;
}

std::string Lowered(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// Derivation answers exactly the ancestors, without regard to case, on the whole id text.
void ExpectDerivation(const VX_Containable& object, const VX_RegistryEntry& e) {
    const std::set<std::string> ancestors = AncestorIds(e);
    for (const std::string& id : ancestors) {
        EXPECT_TRUE(object.ContainerDerivesFrom(id.c_str())) << id;
        EXPECT_TRUE(object.ContainerDerivesFrom(Lowered(id).c_str())) << id;
    }
    for (const VX_RegistryEntry& other : VX_RegistryEntries()) {
        if (!ancestors.count(other.containerId)) {
            EXPECT_FALSE(object.ContainerDerivesFrom(other.containerId)) << other.containerId;
        }
    }
    const std::string own = e.containerId;
    EXPECT_FALSE(object.ContainerDerivesFrom(own.substr(0, own.find('\t')).c_str()));
    EXPECT_FALSE(object.ContainerDerivesFrom((own + " ").c_str()));
    EXPECT_FALSE(object.ContainerDerivesFrom(nullptr));
}

// True when a type derives, through the registry, from a type whose content is defined.
bool InheritsContent(const VX_RegistryEntry& e) {
    for (const VX_RegistryEntry* base = VX_RegistryFind(e.base); base; base = VX_RegistryFind(base->base))
        if (base->modelled) return true;
    return false;
}

}  // namespace

TEST(Containers, EveryCreatableTypeRunsTheProtocolAndIsFreedByItsLastRelease) {
    LoadedLibrary& lib = LoadedLibrary::Shared();
    int made = 0;
    for (const VX_RegistryEntry& e : VX_RegistryEntries()) {
        if (!e.exported) continue;
        SCOPED_TRACE(e.name);
        VX_Containable* object = lib.Function<FactoryFn>(std::string(e.name) + "Factory")();
        ASSERT_NE(object, nullptr);
        ++made;
        Slots slots(object);
        EXPECT_EQ(slots.AddRef(), 2u);
        EXPECT_EQ(slots.Release(), 1u);
        void* unknown = nullptr;
        EXPECT_EQ(slots.Query(VX_IID_IUnknown, &unknown), VX_S_OK);
        EXPECT_EQ(unknown, object);
        EXPECT_EQ(slots.Release(), 1u);

        EXPECT_STREQ(object->VX_DefaultDESCRIPTION(), e.containerId);
        EXPECT_EQ(static_cast<VX_Type*>(object)->TypeName(), e.name);
        EXPECT_EQ(object->IsStructureType(), std::string(e.kind) == "Structure");
        EXPECT_NE(object->FindProperty("ComponentList"), nullptr);
        ExpectDerivation(*object, e);

        // An empty container on a generic base adds nothing to the protocol; a modelled one, or
        // one that inherits a model's content, is tested with that model.
        if (!e.modelled && !InheritsContent(e)) {
            object->SetDims();
            EXPECT_EQ(object->ExecuteAssignments(5, VX_CTX_MODEL), VX_S_OK);
            VX_Session::Current().ResetNumbering();
            EXPECT_EQ(object->SetUpEquations(), 0);
            int equations = -1, nonzeros = -1;
            EXPECT_EQ(object->CountEqnsAndNZs(equations, nonzeros), VX_S_OK);
            EXPECT_EQ(equations, 0);
            EXPECT_EQ(nonzeros, 0);
            int *rows = nullptr, *cols = nullptr;
            EXPECT_EQ(object->JacPattern(rows, cols, nullptr), 0);
            double out[1] = {-1.0};
            EXPECT_EQ(object->Residuals(out, 0, 7), 7);
            EXPECT_EQ(object->Residuals(out, 3, 7), 7);
            EXPECT_EQ(object->Jacobian(out, 0, 7), 7);
            EXPECT_EQ(out[0], -1.0);
        }
        EXPECT_EQ(slots.Release(), 0u);   // frees the object (the leak checker watches)
    }
    EXPECT_EQ(made, 147);
}

TEST(Containers, PortsFollowTheirBaseChainToTheGenericPort) {
    const VX_RegistryEntry* entry = VX_RegistryFind("apport");
    ASSERT_NE(entry, nullptr);
    VX_APPORT port(true);
    EXPECT_TRUE(port.IsAPort());
    EXPECT_NE(port.FindProperty("ISCONNECTED"), nullptr);
    EXPECT_EQ(port.TypeName(), "APPORT");
    ExpectDerivation(port, *entry);
    EXPECT_GE(AncestorIds(*entry).size(), 8u);   // APPORT sits seven levels above the generic port
}

TEST(Containers, CopiesCarryTheBookkeepingIntegers) {
    VX_ModelType::m_stLastGroup = 41;
    VX_TEEMIXER original(true);
    EXPECT_EQ(original.SetUpEquations(), 0);
    EXPECT_EQ(original.m_firstGroup, 41);

    VX_TEEMIXER copy(original);
    EXPECT_EQ(copy.m_firstGroup, 41);
    VX_TEEMIXER assigned(false);
    assigned = original;
    EXPECT_EQ(assigned.m_firstGroup, 41);
    EXPECT_STREQ(copy.VX_DefaultDESCRIPTION(), "Model TEEMIXER\tV7.0");
    VX_ModelType::m_stLastGroup = 0;
}
