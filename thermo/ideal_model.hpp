#pragma once
// IDEAL: ideal-gas vapour; ideal liquid by Raoult's law, its enthalpy the ideal gas's less the
// heat of vaporisation (Watson), its entropy consistent with a fugacity of Psat, its volume the
// mole-fraction average of the saturated-liquid volumes (Rackett). The liquid is taken as
// incompressible: its cv equals its cp and nothing depends on pressure but ln phi = ln(Psat/P).
#include "thermo/property_model.hpp"

namespace zx::thermo {

class IdealModel final : public PropertyModel {
public:
    explicit IdealModel(Mixture mixture);
    void Evaluate(Phase phase, double T, double P, const double* z, unsigned request, PhaseProperties& out) override;

private:
    void Liquid(double T, double P, const double* z, unsigned request, PhaseProperties& out);
    std::vector<CorrelationValues> hv_;
    std::vector<VapourPressureValues> ps_;
};

}  // namespace zx::thermo
