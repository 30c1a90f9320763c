#pragma once
// The empty containers: one class VX_<NAME> per EMPTY row of registry.def. An empty class holds
// no properties or equations of its own; it follows the protocol of every container class, so
// it can be created, driven and derived from like a modelled one until its content is written.
// tools/modelgen writes one header per empty type that expands this macro after its base.
#include "frame/registry_macros.hpp"

#define VX_EMPTY_CONTAINER_CLASS(NAME, KIND, BASE)                                   \
    class VX_##NAME : public VX_##BASE {                                             \
    public:                                                                          \
        explicit VX_##NAME(bool constructProperties = true);                         \
        VX_##NAME(const VX_##NAME& o);                                               \
        VX_##NAME& operator=(const VX_##NAME& o);                                    \
        ~VX_##NAME() override;                                                       \
        void Construct();                                                            \
        static const char* VX_ContainerId() { return VX_CONTAINER_ID(KIND, NAME); }  \
        const char* VX_DefaultDESCRIPTION() const override { return VX_ContainerId(); } \
        bool ContainerDerivesFrom(const char* id) const override;                    \
        void SetDims() override;                                                     \
        int ExecuteAssignments(int level, int context) override;                     \
        int SetUpEquations() override;                                               \
        int Residuals(double* r, int group, int start) override;                     \
        int Jacobian(double* values, int group, int start) override;                 \
        int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override;    \
        int m_firstGroup = 0, m_localEqnCount = 0, m_localNZCount = 0;               \
    };

