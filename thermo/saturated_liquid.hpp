#pragma once
// Saturated-liquid correlations of one pure component that need its critical temperature:
//   molar volume by the Rackett equation, V = (R Tc/Pc) Zc^(1 + (1 - Tr)^(2/7));
//   heat of vaporisation by Watson's relation from its value at the normal boiling point,
//   dHv = dHn ((Tc - T)/(Tc - Tb))^0.38.
// Both have an infinite slope at Tc. From Tr = 0.99 on, ln V continues linearly in T and dHv
// linearly in T down to zero (then stays zero), with value and slope matched at Tr = 0.99.
namespace zx::thermo {

struct CorrelationValues {
    double value = 0.0, d1 = 0.0, d2 = 0.0;  // value and its first two temperature derivatives
    bool outside = false;
};

inline constexpr double kSmoothLimitTr = 0.99;

struct RackettVolume {
    double tc = 0.0, pc = 0.0, zc = 0.0;  // K, Pa, -
    CorrelationValues At(double T) const;  // m3/mol
};

struct WatsonHeatOfVaporisation {
    double dh_nb = 0.0, tb = 0.0, tc = 0.0;  // J/mol at tb, K, K
    CorrelationValues At(double T) const;    // J/mol
};

}  // namespace zx::thermo
