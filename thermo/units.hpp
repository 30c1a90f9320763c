#pragma once
// Physical constants and the unit conversions between the thermo library's internal SI units
// (K, Pa, J/mol, J/mol/K, m3/mol) and the variable types' base units (C, bar, GJ/kmol,
// kJ/kmol/K, kmol/m3).
namespace zx::thermo {

inline constexpr double kGasConstant = 8.314462618;     // J/(mol K)
inline constexpr double kReferenceTemperature = 298.15;  // K, of the formation data
inline constexpr double kReferencePressure = 1.0e5;      // Pa, standard state of the ideal gas
inline constexpr double kAtmosphere = 101325.0;          // Pa, defines the normal boiling point
inline constexpr double kCelsiusOffset = 273.15;
inline constexpr double kPascalPerBar = 1.0e5;
inline constexpr double kGJPerKmolPerJPerMol = 1.0e-6;  // 1 J/mol = 1e-6 GJ/kmol

}  // namespace zx::thermo
