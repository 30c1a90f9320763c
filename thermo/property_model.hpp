#pragma once
// A thermodynamic method bound to one mixture: evaluates the properties of one phase at
// (T in K, P in Pa, mole fractions z summing to one). Evaluate allocates nothing once `out` has
// been sized for the mixture, so the routines can call it on their hot path.
#include <memory>
#include <vector>

#include "thermo/ideal_gas_state.hpp"
#include "thermo/mixture.hpp"
#include "thermo/phase_properties.hpp"

namespace zx::thermo {

// Database items a property needs (bits).
enum DataItem : unsigned {
    kDataIdealGas = 1u,               // ideal-gas heat capacity and formation enthalpy
    kDataFormationGibbs = 2u,         // formation Gibbs energy (entropy)
    kDataVapourPressure = 4u,
    kDataHeatOfVaporisation = 8u,     // value at the normal boiling point, Tb and Tc
    kDataLiquidVolume = 16u,          // Rackett
    kDataCritical = 32u,              // Tc, Pc and acentric factor (Peng-Robinson)
};

class PropertyModel {
public:
    explicit PropertyModel(Mixture mixture);
    virtual ~PropertyModel() = default;
    PropertyModel(const PropertyModel&) = delete;
    PropertyModel& operator=(const PropertyModel&) = delete;

    static std::unique_ptr<PropertyModel> Create(Mixture mixture);

    // Fills what `request` asks for. PropertyError when T or P is not positive, when the
    // database lacks a value the property needs, or when the equation of state has no root.
    virtual void Evaluate(Phase phase, double T, double P, const double* z, unsigned request, PhaseProperties& out) = 0;

    const Mixture& GetMixture() const { return mixture_; }
    std::size_t Size() const { return mixture_.Size(); }

    // PropertyError naming the first component without every item of `items`.
    void Require(unsigned items, const char* property) const;

protected:
    // Ideal-gas mixture at (T, P, z): h, s (with ideal mixing), cp, cv and their gradients.
    void IdealGasMixture(double T, double P, const double* z, unsigned request, PhaseProperties& out);
    // Saturated-liquid volume with ideal mixing (Rackett per component), into out.v and out.dv.
    void LiquidVolume(double T, const double* z, bool gradients, PhaseProperties& out);
    static void CheckState(double T, double P);

    Mixture mixture_;
    std::vector<unsigned> has_;  // DataItem bits per component
    unsigned has_all_ = 0;
    std::vector<IdealGasState> ig_;  // per component, filled by IdealGasMixture
};

// -R sum z ln z and its derivatives, with ln z bounded below so that zero fractions stay finite.
double SafeLog(double z);

}  // namespace zx::thermo
