#pragma once
// RPLUG_TCOOL1: heat flux from the process side of a plug-flow reactor to its coolant, per
// unit area, at the node points 0 ... NPTS. The coolant temperature is one value (CTYPE
// "TCool-Spec") or a profile over the points ("TCool-Prof"); any other CTYPE gives no equations.
#include "frame/arrays.hpp"
#include "runtime/runtime.hpp"
#include "types/parameter_types.hpp"
#include "types/variable_types.hpp"

class VX_RPLUG_TCOOL1 : public VX_GENERICMODEL {
public:
    explicit VX_RPLUG_TCOOL1(bool constructProperties = true);
    VX_RPLUG_TCOOL1(const VX_RPLUG_TCOOL1& o);
    VX_RPLUG_TCOOL1& operator=(const VX_RPLUG_TCOOL1& o);
    ~VX_RPLUG_TCOOL1() override;
    void Construct();
    static const char* VX_ContainerId() { return "Model RPLUG_TCOOL1\tV7.0"; }
    const char* VX_DefaultDESCRIPTION() const override { return VX_ContainerId(); }
    bool ContainerDerivesFrom(const char* id) const override;
    void SetDims() override;
    int ExecuteAssignments(int level, int context) override;
    int SetUpEquations() override;
    int Residuals(double* r, int group, int start) override;
    int Jacobian(double* values, int group, int start) override;
    int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override;

    VX_INTEGERPARAMETER NPTS;
    VX_INTEGERSET NRANGE;
    VX_COOLTYPEOPT CTYPE;
    VX_ARRAY_I<VX_TEMPERATURE, VX_TEMPERATURE> T_PROCESS;
    VX_ARRAY_I<VX_HEAT_FLUX, VX_HEAT_FLUX> Q_FLUX;
    VX_HEAT_TRANS_COEFF U;
    VX_TEMPERATURE T_COOL;
    VX_ARRAY_I<VX_TEMPERATURE, VX_TEMPERATURE> T_COOL_;

    int m_firstGroup = 0, m_localEqnCount = 0, m_localNZCount = 0;

private:
    // The alternative of the CTYPE conditional that the last SetUpEquations declared (0: none,
    // 1: "VX_Eqn1", 2: "VX_Eqn2"). JacPattern, Residuals and Jacobian follow it, so they always
    // agree with the declared counts and compare no text on the hot path.
    int m_ctypeEquation = 0;
};
