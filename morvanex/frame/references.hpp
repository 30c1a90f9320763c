#pragma once
// Reference templates the generated classes instantiate:
//  - VX_External<T>: an object of type T held outside the container, linked by the runtime
//    (ExternalLink), which checks the object against ExternalTypeName().
//  - VX_Virtual<T>: a member whose object the user chooses later; when nobody chooses, the
//    runtime makes the default object with NewDefaultVirtual().
// Global parameters (PI, UCF6, ...) use the runtime's VX_Global<T> directly.
#include <type_traits>

#include "runtime/runtime.hpp"

// The container id a reference to T is checked against: the runtime's real variable for any
// variable type, the runtime's matrix for any array, and the class's own id otherwise.
template <class T>
const char* VX_ReferenceTypeId() {
    if constexpr (std::is_base_of_v<VX_Variable, T>) return VX_RealVariableContainerId();
    else if constexpr (std::is_base_of_v<VX_Matrix, T>) return VX_MatrixContainerId();
    else return T::VX_ContainerId();
}

// What dereferencing a reference to T yields. The runtime accepts any real variable for a
// variable type (the check is by container id), so a variable reference yields VX_Variable,
// which is what every variable type is; other references yield T.
template <class T>
using VX_ReferenceTarget = std::conditional_t<std::is_base_of_v<VX_Variable, T>, VX_Variable, T>;

template <class T>
class VX_External : public VX_ExternalBase {
public:
    using TargetType = VX_ReferenceTarget<T>;
    explicit VX_External(bool = true) {}
    const char* ExternalTypeName() const override { return VX_ReferenceTypeId<T>(); }

    // The linked object. Only valid once linked (IsLinked()).
    TargetType& operator*() const { return *static_cast<TargetType*>(m_target); }
    TargetType* operator->() const { return static_cast<TargetType*>(m_target); }
};

template <class T>
class VX_Virtual : public VX_VirtualBase {
public:
    using TargetType = VX_ReferenceTarget<T>;
    explicit VX_Virtual(bool = true) : VX_VirtualBase() { InitializeSystemAttributes(); }
    // A copy starts without an object: the object belongs to the member it was placed in (it
    // may be of any type derived from T), and the copy makes its own default on VirtualLink.
    VX_Virtual(const VX_Virtual&) : VX_VirtualBase() { InitializeSystemAttributes(); }
    VX_Virtual& operator=(const VX_Virtual&) { return *this; }

    const char* VirtualBaseType() const override { return VX_ReferenceTypeId<T>(); }
    // The default object: a new T with its properties constructed (for an array, an empty array).
    VX_Type* NewDefaultVirtual() override { return new T(true); }

    // The object placed in the member. Only valid once placed (Target() not null).
    TargetType& operator*() const { return *static_cast<TargetType*>(m_target); }
    TargetType* operator->() const { return static_cast<TargetType*>(m_target); }
};
