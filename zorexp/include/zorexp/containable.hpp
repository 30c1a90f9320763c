#pragma once
// VX_Containable: the root of every runtime object. It declares the primary interface, whose
// virtual operations stand in a fixed slot order, so that a host can reach QueryInterface,
// AddRef and Release through slots 0, 1 and 2 as with any object of the component-object kind.
// Operations this runtime does not provide yet answer VX_E_NOTIMPL (or an empty result).
#include <cstdint>
#include <string>

#include "zorexp/guid.hpp"
#include "zorexp/status.hpp"

class VX_Type;
class VX_Container;
class VX_COMPONENTLISTNAME;
class VX_EquationType;
class VX_VarParam;

#define VX_NOTIMPL_OP(name) \
    virtual VX_HRESULT name() { return VX_E_NOTIMPL; }

class VX_Containable {
public:
    VX_Containable() = default;
    VX_Containable(const VX_Containable&) : VX_Containable() {}   // identity is never copied
    VX_Containable& operator=(const VX_Containable&) { return *this; }

    // --- slots 0-6: component-object and automation entries
    virtual VX_HRESULT QueryInterface(const VX_GUID& iid, void** out);
    virtual std::uint32_t AddRef() { return static_cast<std::uint32_t>(++m_refCount); }
    virtual std::uint32_t Release();
    virtual VX_HRESULT GetTypeInfoCount(unsigned* count) { if (count) *count = 0; return VX_E_NOTIMPL; }
    virtual VX_HRESULT GetTypeInfo(unsigned, unsigned, void**) { return VX_E_NOTIMPL; }
    virtual VX_HRESULT GetIDsOfNames(const VX_GUID&, char**, unsigned, unsigned, std::int32_t*) { return VX_E_NOTIMPL; }
    virtual VX_HRESULT Invoke(std::int32_t, const VX_GUID&, unsigned, unsigned short, void*, void*, void*, unsigned*) { return VX_E_NOTIMPL; }
    // --- object life and naming
    virtual ~VX_Containable() = default;
    virtual void Destroy() { delete this; }
    virtual VX_HRESULT Name(std::string& out) const;
    VX_NOTIMPL_OP(UpdateInitialise)
    VX_NOTIMPL_OP(UpdateAssignments)
    VX_NOTIMPL_OP(UpdateEquations)
    VX_NOTIMPL_OP(ValidateProblem)
    VX_NOTIMPL_OP(UpdateProblem)
    VX_NOTIMPL_OP(OnDependencyChange)
    virtual bool IsTopObject() const { return m_owner == nullptr; }
    virtual VX_HRESULT SetDescription(const char*) { return VX_E_NOTIMPL; }
    // --- containment
    virtual VX_Containable* Containment() const;
    VX_NOTIMPL_OP(ContainedObjects)
    virtual VX_Type* ContainedObject(int index) const;
    VX_NOTIMPL_OP(AddPropertyToContainer)
    VX_NOTIMPL_OP(ReplacePropertyInContainer)
    VX_NOTIMPL_OP(AddExternalToContainer)
    VX_NOTIMPL_OP(ExternalsMap)
    virtual VX_Type* FindProperty(const char* name) const;
    virtual VX_Type* FindPropertyById(int id) const;
    // Adds the identifier of the named property to id and returns true, or returns false.
    virtual bool PropertyNameToId(const char* name, int& id) const;
    VX_NOTIMPL_OP(CreateMissingProperty)
    VX_NOTIMPL_OP(FindExternal)
    VX_NOTIMPL_OP(RegisterComponentListManager)
    VX_NOTIMPL_OP(ComponentListManager)
    VX_NOTIMPL_OP(SetUpdateController)
    VX_NOTIMPL_OP(UpdateController)
    VX_NOTIMPL_OP(RemoveDependenceOn)
    VX_NOTIMPL_OP(CheckForInactiveAssignmentsNeedingResetting)
    virtual VX_HRESULT RetractNonModelAssignment() { return VX_E_NOTIMPL; }
    VX_NOTIMPL_OP(ClipValue)
    VX_NOTIMPL_OP(ReconcileEOToSM)
    VX_NOTIMPL_OP(DestroyingEO)
    virtual VX_COMPONENTLISTNAME* ComponentList() const { return nullptr; }
    virtual bool IsMatched() const { return false; }
    virtual bool IsConnected() const { return false; }
    VX_NOTIMPL_OP(RefreshComponents)
    VX_NOTIMPL_OP(RefreshOptions)
    VX_NOTIMPL_OP(SetVirtualHolder)
    virtual VX_Type* VirtualHolder() const { return nullptr; }
    virtual bool IsAnArray() const { return false; }
    virtual bool IsAMultiport() const { return false; }
    virtual bool IsAPort() const { return false; }
    virtual bool IsComponentListName() const { return false; }
    virtual bool IsStructureType() const { return false; }
    virtual bool HasValue() const { return false; }
    virtual bool IsValue() const { return false; }
    virtual bool IsSolverVariable() const { return false; }
    virtual bool IsActive() const { return true; }
    VX_NOTIMPL_OP(FindPortVariable)
    VX_NOTIMPL_OP(MatchPortVariables)
    VX_NOTIMPL_OP(DumpStructure)
    VX_NOTIMPL_OP(PropertyIterator)
    virtual bool IsReadOnly() const { return false; }
    virtual bool IsQRMFSupported() const { return false; }
    virtual const char* VX_DESCRIPTIONValue() const;
    virtual VX_VarParam* OwnerVarParam() const { return nullptr; }
    VX_NOTIMPL_OP(RemoveActivityAndCancelDependencyForPropertiesControlledBy)
    VX_NOTIMPL_OP(PropertyChanged)
    VX_NOTIMPL_OP(RemoveFromDependencySystem)
    VX_NOTIMPL_OP(GetParamsAndActiveVars)
    // --- container protocol: sizing, identity, equations
    virtual void SetDims() {}
    VX_NOTIMPL_OP(SetDirection)
    virtual int Direction() const { return 0; }
    virtual bool IsToBeExported() const { return false; }
    VX_NOTIMPL_OP(UnsetIsToBeExported)
    virtual VX_HRESULT HostPortType(int type);
    VX_NOTIMPL_OP(UpdateStatus)
    virtual const char* VX_DefaultDESCRIPTION() const { return nullptr; }
    virtual bool ContainerDerivesFrom(const char* id) const;
    virtual int PortCount() const { return 0; }
    virtual VX_Type* GetPort(int) const { return nullptr; }
    virtual int JacPattern(int*& rows, int*& cols, VX_EquationType** types);
    virtual int Jacobian(double* values, int group, int start);
    virtual int Residuals(double* r, int group, int start);
    virtual VX_HRESULT Reset() { return VX_E_NOTIMPL; }
    virtual VX_HRESULT CountEqnsAndNZs(int& equations, int& nonzeros) const;
    virtual int Dimensions() const { return 0; }
    virtual int MaxGroupNo() const { return 0; }
    virtual int ExecuteAssignments(int level, int context);
    virtual int SetUpEquations();
    VX_NOTIMPL_OP(CreateConnectionPort)
    VX_NOTIMPL_OP(FindConnectionPort)
    // The text of a model script (wide text, as hosts display it); null when there is none.
    virtual const wchar_t* Script(const char*, int) const { return nullptr; }
    VX_NOTIMPL_OP(Precall)
    VX_NOTIMPL_OP(Postcall)

    // --- runtime bookkeeping (not part of the interface)
    int RefCount() const { return m_refCount; }
    VX_Type* Owner() const { return m_owner; }
    int SlotInOwner() const { return m_slot; }
    void SetOwner(VX_Type* owner, int slot) { m_owner = owner; m_slot = slot; }

private:
    VX_Type* m_owner = nullptr;   // container or array that holds this object
    std::int32_t m_refCount = 0;
    std::int32_t m_slot = -1;     // property index in the owner, or element position in an array
};
