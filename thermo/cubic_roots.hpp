#pragma once
// Real roots of z^3 + c2 z^2 + c1 z + c0 = 0, ascending, each polished by Newton steps.
namespace zx::thermo {

int CubicRealRoots(double c2, double c1, double c0, double roots[3]);

}  // namespace zx::thermo
