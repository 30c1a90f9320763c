"""Every unit of the conversion table (`zorexp units --json`) against pint, an independent
reference: a value in the unit, converted by the table's factor and offset, must equal what pint
makes of it in the family's reference unit. Run by ctest with ZOREXP set to the command."""
import json
import os
import re
import subprocess

import pint
import pytest

ureg = pint.UnitRegistry()
# Units pint does not define, from pint's own pound, gram and mole.
ureg.define("lbmol = pound / gram * mole")
ureg.define("percent = 0.01")
ureg.define("ppm = 1e-6")

# Symbols as pint spells them where ours differ.
SYMBOLS = {
    "hr": "hour", "h": "hour", "min": "minute", "day": "day",
    "L": "liter", "gal": "gallon", "bbl": "oil_barrel",   # pint's bbl is a 31.5 gal barrel
    "Btu": "Btu_it", "kcal": "kilocal_it",
    "cP": "centipoise", "P": "poise", "rev": "revolution", "deg": "degree",
    "um": "micrometer", "in": "inch", "mi": "mile", "%": "percent",
    "°C": "degC", "°F": "degF", "°R": "degR", "C": "degC", "F": "degF", "R": "degR",
}
# In a temperature difference, degrees are intervals.
DIFFERENCES = {"C": "delta_degC", "°C": "delta_degC", "degC": "delta_degC", "F": "delta_degF", "°F": "delta_degF", "degF": "delta_degF"}

FACTOR = re.compile(r"^(.*?)(\d+(?:\.\d+)?)?$")


def pint_unit(text, family):
    """'kJ/kmol/K' -> 'kJ / (kmol) / (K)'; a digit after a symbol is a power, a blank multiplies."""
    symbols = DIFFERENCES if family == "TemperatureDifference" else {}

    def factor(f):
        symbol, power = FACTOR.match(f).groups()
        if not symbol:
            return f   # a plain number, as in "1/m"
        symbol = symbols.get(symbol, SYMBOLS.get(symbol, symbol))
        return f"{symbol}**{power}" if power else symbol

    parts = [" * ".join(factor(f) for f in part.split(" ")) for part in text.split("/")]
    return parts[0] if len(parts) == 1 else " / ".join(f"({p})" for p in parts)


def table():
    out = subprocess.run([os.environ["ZOREXP"], "units", "--json"], check=True, capture_output=True, text=True).stdout
    return json.loads(out)["quantities"]


QUANTITIES = table()
# Families that take another's units list the same rows: check each list once.
ROWS = [(q["quantity"], q["units"][0]["unit"], u) for q in QUANTITIES if q["units_of"] == q["quantity"] for u in q["units"]]


@pytest.mark.parametrize("family,reference,unit", ROWS, ids=[f"{f}:{u['unit']}" for f, _, u in ROWS])
def test_unit_matches_pint(family, reference, unit):
    for x in (1.0, 37.5, -12.25):
        ours = x * unit["factor"] + unit["offset"]
        theirs = ureg.Quantity(x, pint_unit(unit["unit"], family)).to(pint_unit(reference, family)).magnitude
        assert ours == pytest.approx(theirs, rel=1e-12, abs=1e-12), unit["unit"]


def test_every_family_names_a_source_for_every_unit():
    assert all(u["source"] for q in QUANTITIES for u in q["units"])


def test_temperature_and_its_difference_disagree_only_by_the_offset():
    temperature = {u["unit"]: u for q in QUANTITIES if q["quantity"] == "Temperature" for u in q["units"]}
    difference = {u["unit"]: u for q in QUANTITIES if q["quantity"] == "TemperatureDifference" for u in q["units"]}
    # 10 degrees warmer is 10 degrees of difference, in every unit both accept.
    for name in temperature.keys() & difference.keys():
        t, d = temperature[name], difference[name]
        assert (30 * t["factor"] + t["offset"]) - (20 * t["factor"] + t["offset"]) == pytest.approx(10 * d["factor"])
        assert d["offset"] == 0
