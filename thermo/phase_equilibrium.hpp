#pragma once
// Bubble and dew temperatures at a given pressure: Newton's method on ln(sum K_i x_i) (bubble)
// or ln(sum y_i / K_i) (dew) in 1/T, with K_i = phi_i(liquid)/phi_i(vapour) from the mixture's
// method and the incipient phase's composition updated by successive substitution.
#include <vector>

#include "thermo/property_model.hpp"

namespace zx::thermo {

class PhaseEquilibrium {
public:
    explicit PhaseEquilibrium(PropertyModel& model);

    // Temperature in K at which the liquid `x` starts to boil at P (Pa); `incipient` receives
    // the first vapour's composition. PropertyError when it does not converge.
    double BubbleTemperature(double P, const double* x, std::vector<double>& incipient);
    // Temperature in K at which the vapour `y` starts to condense at P.
    double DewTemperature(double P, const double* y, std::vector<double>& incipient);

    // Range notes gathered over the last solve, per component (RangeNote bits).
    const std::vector<unsigned char>& Notes() const { return notes_; }

private:
    double Solve(bool bubble, double P, const double* feed, std::vector<double>& incipient);
    double InitialTemperature(bool bubble, double P, const double* feed, std::vector<double>& incipient) const;

    PropertyModel& model_;
    PhaseProperties liquid_, vapour_;
    std::vector<double> k_;
    std::vector<unsigned char> notes_;
};

}  // namespace zx::thermo
