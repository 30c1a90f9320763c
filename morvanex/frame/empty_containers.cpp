// The operations of the empty containers, generated from registry.def. Each one does what the
// base does; its own part is empty: no properties, no arrays, no assignments, no equations.
#include "frame/all_containers.hpp"

#define VX_EMPTY_CONTAINER_OPERATIONS(NAME, BASE)                                     \
    VX_##NAME::VX_##NAME(bool constructProperties) : VX_##BASE(false) {               \
        if (constructProperties) Construct();                                         \
    }                                                                                 \
    VX_##NAME::VX_##NAME(const VX_##NAME& o)                                          \
        : VX_##BASE(o), m_firstGroup(o.m_firstGroup), m_localEqnCount(o.m_localEqnCount), \
          m_localNZCount(o.m_localNZCount) {}                                         \
    VX_##NAME& VX_##NAME::operator=(const VX_##NAME& o) {                             \
        VX_##BASE::operator=(o);                                                      \
        m_firstGroup = o.m_firstGroup;                                                \
        m_localEqnCount = o.m_localEqnCount;                                          \
        m_localNZCount = o.m_localNZCount;                                            \
        return *this;                                                                 \
    }                                                                                 \
    VX_##NAME::~VX_##NAME() = default;                                                \
    void VX_##NAME::Construct() { VX_##BASE::Construct(); }                           \
    bool VX_##NAME::ContainerDerivesFrom(const char* id) const {                      \
        return (id && VX_EqualCI(id, VX_ContainerId())) || VX_##BASE::ContainerDerivesFrom(id); \
    }                                                                                 \
    void VX_##NAME::SetDims() { VX_##BASE::SetDims(); }                               \
    int VX_##NAME::ExecuteAssignments(int level, int context) {                       \
        return VX_##BASE::ExecuteAssignments(level - 1, context);                     \
    }                                                                                 \
    int VX_##NAME::SetUpEquations() {                                                 \
        const int n = VX_##BASE::SetUpEquations();                                    \
        if (n < 0) return n;                                                          \
        m_firstGroup = VX_ModelType::m_stLastGroup;                                   \
        m_localEqnCount = 0;                                                          \
        return SetLocalEqnCount(n);                                                   \
    }                                                                                 \
    int VX_##NAME::Residuals(double* r, int group, int start) {                       \
        const int idx = VX_##BASE::Residuals(r, group, start);                        \
        if (idx < 0) return idx;                                                      \
        return idx + m_localEqnCount;                                                 \
    }                                                                                 \
    int VX_##NAME::Jacobian(double* values, int group, int start) {                   \
        const int idx = VX_##BASE::Jacobian(values, group, start);                    \
        if (idx < 0) return idx;                                                      \
        return idx + m_localNZCount;                                                  \
    }                                                                                 \
    int VX_##NAME::JacPattern(int*& rows, int*& cols, VX_EquationType** types) {      \
        const int n = VX_##BASE::JacPattern(rows, cols, types);                       \
        if (n < 0) return n;                                                          \
        m_localNZCount = 0;                                                           \
        return n;                                                                     \
    }

#define VX_CONTAINER(NAME, KIND, BASE, EXPORTS, CONTENT) \
    VX_IF_EMPTY(CONTENT, VX_EMPTY_CONTAINER_OPERATIONS(NAME, BASE))
#include "frame/registry.def"
#undef VX_CONTAINER
