#pragma once
// RPLUG_TCOOL: heat flow from the process side of a plug-flow reactor to its coolant, per cell,
// over the cells 1 ... NPTS, with one coolant temperature and the reactor's geometry. The cell
// temperature is the mean of the cell's inlet and outlet temperatures.
#include "frame/arrays.hpp"
#include "runtime/runtime.hpp"
#include "types/parameter_types.hpp"
#include "types/variable_types.hpp"

class VX_RPLUG_TCOOL : public VX_GENERICMODEL {
public:
    explicit VX_RPLUG_TCOOL(bool constructProperties = true);
    VX_RPLUG_TCOOL(const VX_RPLUG_TCOOL& o);
    VX_RPLUG_TCOOL& operator=(const VX_RPLUG_TCOOL& o);
    ~VX_RPLUG_TCOOL() override;
    void Construct();
    static const char* VX_ContainerId() { return "Model RPLUG_TCOOL\tV7.0"; }
    const char* VX_DefaultDESCRIPTION() const override { return VX_ContainerId(); }
    bool ContainerDerivesFrom(const char* id) const override;
    void SetDims() override;
    int ExecuteAssignments(int level, int context) override;
    int SetUpEquations() override;
    int Residuals(double* r, int group, int start) override;
    int Jacobian(double* values, int group, int start) override;
    int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override;

    VX_Global<VX_REALPARAMETER> PI;
    VX_Global<VX_REALPARAMETER> UCF6;
    VX_INTEGERPARAMETER NPTS;
    VX_INTEGERSET NPOINTS;
    VX_TEMPERATURE T_CELL0;
    VX_ARRAY_I<VX_TEMPERATURE, VX_TEMPERATURE> T_CELL;
    VX_ARRAY_I<VX_ENTHFLOW, VX_ENTHFLOW> Q;
    VX_HEAT_TRANS_COEFF U;
    VX_TEMPERATURE T_COOL;
    VX_LENGTH DIAM;
    VX_CONSTANT NTUBE;
    VX_LENGTH L;
    VX_LENGTH DX;

    int m_firstGroup = 0, m_localEqnCount = 0, m_localNZCount = 0;
};
