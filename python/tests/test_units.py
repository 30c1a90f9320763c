"""Values with units from Python, checked against pint as an independent reference."""
import copy

import numpy as np
import pint
import pytest

import zorexp
from zorexp.flowsheet import pint_unit

ureg = pint.UnitRegistry()


@pytest.fixture
def fs(example):
    return zorexp.Flowsheet.load(example("coolant_profile.json"))


def in_base(fs, path, value, unit):
    return ureg.Quantity(value, pint_unit(unit)).to(pint_unit(fs[path].unit)).magnitude


@pytest.mark.parametrize("path,value,unit", [
    ("WALL.T_PROCESS(2)", 500.0, "K"),
    ("WALL.T_PROCESS(2)", 520.0, "F"),
    ("WALL.T_PROCESS(2)", 900.0, "R"),
    ("WALL.T_PROCESS(2)", -10.0, "°C"),
    ("WALL.U", 60.0, "W/m2/K"),
    ("WALL.U", 0.05, "kW/m2/K"),
])
def test_tuples_convert_as_pint_does(fs, path, value, unit):
    fs[path] = (value, unit)
    assert float(fs[path]) == pytest.approx(in_base(fs, path, value, unit), rel=1e-12)
    assert "unit" not in str(fs.to_dict()["blocks"]["WALL"]["set"])   # the document holds base units
    assert float(zorexp.Flowsheet.load(fs.to_dict())[path]) == pytest.approx(float(fs[path]), rel=1e-15)


def test_pint_quantities_and_reading_in_a_unit(fs):
    temps = ureg.Quantity(np.linspace(500.0, 540.0, 9), "degF")
    fs["WALL.T_PROCESS"] = temps
    t = fs["WALL.T_PROCESS"]
    np.testing.assert_allclose(t, temps.to(pint_unit(t.unit)).magnitude, rtol=1e-12)
    np.testing.assert_allclose(t.to("F"), temps.magnitude, rtol=1e-12)
    np.testing.assert_allclose(t.quantity_of(ureg).to("kelvin").magnitude, temps.to("kelvin").magnitude, rtol=1e-12)
    fs["WALL.U"] = 50 * ureg.W / ureg.m**2 / ureg.K
    assert float(fs["WALL.U"]) == pytest.approx(in_base(fs, "WALL.U", 50.0, "W/m2/K"), rel=1e-12)


@pytest.mark.parametrize("value", [(300.0, "psi"), (300.0, "furlongs"), 300 * ureg.psi])
def test_a_unit_that_does_not_fit_is_refused_and_changes_nothing(fs, value):
    doc = copy.deepcopy(fs.to_dict())
    with pytest.raises(zorexp.InputError) as raised:
        fs["WALL.T_PROCESS(2)"] = value
    message = str(raised.value)
    assert "WALL.T_PROCESS(2)" in message and fs["WALL.T_PROCESS"].quantity in message and "accepts" in message
    assert fs.to_dict() == doc and fs["WALL.T_PROCESS"][2] == 271.0
    with pytest.raises(zorexp.InputError, match="psi"):
        fs["WALL.T_PROCESS"].to("psi")
