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
// variable type, the runtime's parameter kinds for parameter types, the runtime's matrix for any
// array, and the class's own id otherwise.
template <class T>
const char* VX_ReferenceTypeId() {
    if constexpr (std::is_base_of_v<VX_Variable, T>) return VX_RealVariableContainerId();
    else if constexpr (std::is_base_of_v<VX_REALPARAMETER, T>) return VX_RealParameterContainerId();
    else if constexpr (std::is_base_of_v<VX_INTEGERPARAMETER, T>) return VX_IntegerParameterContainerId();
    else if constexpr (std::is_base_of_v<VX_STRINGPARAMETER, T>) return VX_StringParameterContainerId();
    else if constexpr (std::is_base_of_v<VX_LOGICALPARAMETER, T>) return VX_LogicalParameterContainerId();
    else if constexpr (std::is_base_of_v<VX_Matrix, T>) return VX_MatrixContainerId();
    else return T::VX_ContainerId();
}

// What dereferencing a reference to T yields. The runtime accepts any property of T's kind (the
// check is by container id), so a reference to a variable or parameter type yields the kind's
// root class, which is what every type of that kind is; other references yield T.
template <class T>
using VX_ReferenceTarget = std::conditional_t<
    std::is_base_of_v<VX_Variable, T>, VX_Variable,
    std::conditional_t<std::is_base_of_v<VX_REALPARAMETER, T>, VX_REALPARAMETER,
    std::conditional_t<std::is_base_of_v<VX_INTEGERPARAMETER, T>, VX_INTEGERPARAMETER,
    std::conditional_t<std::is_base_of_v<VX_STRINGPARAMETER, T>, VX_STRINGPARAMETER,
    std::conditional_t<std::is_base_of_v<VX_LOGICALPARAMETER, T>, VX_LOGICALPARAMETER, T>>>>>;

template <class T>
class VX_External : public VX_ExternalBase {
public:
    using TargetType = VX_ReferenceTarget<T>;
    explicit VX_External(bool = true) {}
    const char* ExternalTypeName() const override { return VX_ReferenceTypeId<T>(); }

    // The linked object. Only valid once linked (IsLinked()).
    TargetType& operator*() const { return *static_cast<TargetType*>(m_target); }
    TargetType* operator->() const { return static_cast<TargetType*>(m_target); }

protected:
    VX_Type* NewStandIn() const override {
        if constexpr (std::is_base_of_v<VX_Matrix, T>) return nullptr;   // sized over sets it cannot know
        else return new T(true);
    }
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
