#!/usr/bin/python3
"""Water from the property package against IAPWS reference values computed by Debian's
python3-iapws: saturation pressure, saturated-liquid density and heat of vaporisation from
IAPWS-IF97, ideal-gas heat capacity from the ideal part of IAPWS-95. Exits 1 on any value
outside its stated tolerance; prints one line per comparison and a closing count."""
import json
import subprocess
import sys

from iapws import IAPWS95, IAPWS97

TEMPERATURES_C = [5, 25, 50, 75, 100, 150, 200, 250, 300]

# Relative tolerance per property, what the correlations in the database achieve for water:
#   Antoine (0-200 C, extrapolated above)           1 %
#   Rackett with the tabulated Zc: 0-10 % above 50 C, up to 13 % too dense near 0 C (Rackett's
#   known weakness for water)                     14 %
#   Watson from the value at the boiling point      3 %
#   SVNA ideal-gas cp (fitted 298-2000 K)           1 %
TOLERANCE = {"psat_bar": 0.01, "rho_liquid": 0.14, "dhvap": 0.03, "cp_ideal_gas": 0.01}


def reference(t_c):
    T = t_c + 273.15
    liquid, vapour = IAPWS97(T=T, x=0), IAPWS97(T=T, x=1)
    ideal = IAPWS95(T=T, P=0.001)  # the ideal-gas part does not depend on pressure
    return {"psat_bar": liquid.P * 10.0, "rho_liquid": liquid.rho, "dhvap": vapour.h - liquid.h, "cp_ideal_gas": ideal.cp0}


def main():
    probe = sys.argv[1]
    lines = subprocess.run([probe] + [str(t) for t in TEMPERATURES_C], check=True, capture_output=True, text=True).stdout.splitlines()
    passed = failed = 0
    for line in lines:
        ours = json.loads(line)
        ref = reference(ours["t"])
        for key, tolerance in TOLERANCE.items():
            error = (ours[key] - ref[key]) / ref[key]
            ok = abs(error) <= tolerance
            passed, failed = passed + ok, failed + (not ok)
            print(f"{'ok  ' if ok else 'FAIL'} {key:13s} {ours['t']:6.1f} C  ours {ours[key]:12.6g}  IAPWS {ref[key]:12.6g}  "
                  f"error {100 * error:+6.2f} % (tolerance {100 * tolerance:.0f} %)")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
