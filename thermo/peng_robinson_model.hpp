#pragma once
// PENG-ROBINSON: the Peng-Robinson (1976) equation of state with van der Waals mixing,
// a = sum_ij z_i z_j (1 - k_ij) sqrt(a_i a_j), b = sum_i z_i b_i, and the Soave-type alpha
// function below Tc; above Tc alpha follows Boston and Mathias's exponential form, which
// matches it and its slope at Tc and stays positive at high temperature. Enthalpy, entropy,
// heat capacities and fugacity coefficients are the ideal-gas values plus the EOS departures,
// with analytic derivatives. The liquid uses the smallest root above b, the vapour the largest;
// where the cubic has one real root both phases use it. Liquid density is the saturated-liquid
// correlation (Rackett, ideal mixing) as in IDEAL, because PR liquid volumes are typically
// 5-20 % off; the vapour density is the EOS's.
#include "thermo/property_model.hpp"

namespace zx::thermo {

class PengRobinsonModel final : public PropertyModel {
public:
    explicit PengRobinsonModel(Mixture mixture);
    void Evaluate(Phase phase, double T, double P, const double* z, unsigned request, PhaseProperties& out) override;

private:
    // sqrt(a_i(T)) and its first three temperature derivatives, per component.
    void AlphaTerms(double T);
    std::vector<double> ac_, b_, kappa_, tc_, m_;  // m = 1 - kij, n x n
    bool no_kij_ = true;
    std::vector<double> s_[4], r_[4], q_[4];  // sqrt(a_i)^(k); r_i^(k) = sum_j m_ij z_j s_j^(k); q = d^k/dT^k of sum_j z_j a_ij
};

}  // namespace zx::thermo
