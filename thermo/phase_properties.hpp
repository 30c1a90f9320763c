#pragma once
// What a property model computes for one phase at (T, P, z): values in SI units and, when asked,
// their partial derivatives with respect to T, P and each mole fraction z_k taken as independent
// (the routines turn these into derivatives with respect to unnormalised fractions).
#include <cstddef>
#include <vector>

namespace zx::thermo {

enum class Phase { Liquid, Vapour };

// What to compute (bits).
enum Request : unsigned {
    kEnthalpy = 1u,      // h, J/mol
    kEntropy = 2u,       // s, J/(mol K)
    kHeatCapacity = 4u,  // cp and cv, J/(mol K)
    kVolume = 8u,        // v, m3/mol
    kFugacity = 16u,     // ln phi_i
    kGradients = 32u,    // derivatives of everything asked for
};

// d/dT (1/K), d/dP (1/Pa) and d/dz_k.
struct Gradient {
    double dT = 0.0, dP = 0.0;
    std::vector<double> dz;
};

// Correlations used outside their range during one evaluation, per component (bits).
enum RangeNote : unsigned char {
    kNoteHeatCapacity = 1,
    kNoteVapourPressure = 2,
    kNoteLiquidVolume = 4,
    kNoteHeatOfVaporisation = 8,
};

struct PhaseProperties {
    double h = 0.0, s = 0.0, cp = 0.0, cv = 0.0, v = 0.0;
    double compressibility = 0.0;  // Z of the equation of state's root; 0 for IDEAL
    Gradient dh, ds, dcp, dcv, dv;
    std::vector<double> ln_phi;
    // d ln phi_i: row i holds d/dT, d/dP, then d/dz_k; n + 2 entries per row.
    std::vector<double> d_ln_phi;
    std::vector<unsigned char> notes;  // RangeNote bits per component

    void Resize(std::size_t n);
    void ClearNotes();
};

}  // namespace zx::thermo
