import copy
import json

import numpy as np
import pytest

import zorexp

COOLANT = "coolant_profile.json"


@pytest.fixture
def fs(example):
    return zorexp.Flowsheet.load(example(COOLANT))


def test_solution_matches_the_command(fs, expected):
    result = fs.solve()
    assert result.converged and result.status == "converged" and result.wall_time >= 0
    want = expected(COOLANT)["blocks"]["WALL"]
    q = fs["WALL.Q_FLUX"]
    assert q.shape == (9,)
    np.testing.assert_allclose(q, [want[f"Q_FLUX({k})"] for k in range(9)], rtol=1e-12)
    assert result.largest_residuals and all(abs(r) < 1e-6 for _, r in result.largest_residuals)
    assert "WALL" in result.largest_residuals[0][0]


def test_views_alias_the_solver_values(fs):
    q = fs["WALL.Q_FLUX"]
    u = fs["WALL.U"]
    assert u.ndim == 0 and float(u) == 0.35
    assert np.shares_memory(q, fs["WALL.Q_FLUX"])
    fs.solve()
    before = q.copy()
    u[...] = 0.7                      # written through the view: the equations read it
    assert fs["WALL.U"] == 0.7
    fs.solve()
    np.testing.assert_allclose(q, 2 * before, rtol=1e-12)   # the old view sees the new solution
    q[:] = 0.0                        # and the solver starts from what the view wrote
    assert np.all(fs["WALL.Q_FLUX"] == 0.0)


def test_values_round_trip_through_the_document(fs):
    fs["WALL.U"] = 0.5
    fs["WALL.T_PROCESS"] = np.linspace(250, 290, 9)
    fs["WALL.T_PROCESS(3)"] = 300          # an element after its whole array: both kept
    fs["WALL.T_COOL_(0)"] = 221
    assert fs["WALL.T_PROCESS"][3] == 300 and fs["WALL.T_PROCESS"][4] == 270
    again = zorexp.Flowsheet.load(json.loads(json.dumps(fs.to_dict())))
    for path in ("WALL.U", "WALL.T_PROCESS", "WALL.T_COOL_"):
        np.testing.assert_array_equal(again[path], fs[path])
    assert again.get("WALL.T_PROCESS(3)", "spec") == "Fixed"
    np.testing.assert_allclose(again.solve() and again["WALL.Q_FLUX"], fs.solve() and fs["WALL.Q_FLUX"])


def test_attributes_come_with_every_path(fs):
    t = fs["WALL.T_PROCESS"]
    assert t.unit and t.quantity
    assert t.spec == ["Fixed"] * 9
    assert t.lower.shape == (9,) and np.all(t.lower <= t) and np.all(t <= t.upper)
    assert fs["WALL.U"].spec == "Fixed"
    assert fs["WALL.NPTS"] == 8 and fs["WALL.CTYPE"] == "TCool-Prof"
    with pytest.raises(AttributeError):
        t[1:].unit                      # a slice is plain values, not the property


def test_fix_free_and_analyse(fs):
    assert fs.analyse()["status"] == "solvable"
    fs.free("WALL.U")
    assert fs.analyse()["status"] == "under_specified"
    with pytest.raises(zorexp.SolveError, match="WALL.U"):
        fs.solve()
    fs.fix("WALL.U")
    assert fs.solve().converged
    assert fs.to_dict()["blocks"]["WALL"]["set"]["U"] == {"value": 0.35, "spec": "Fixed"}


BAD_VALUES = [
    ("WALL.NOSUCH", 1.0, "NOSUCH"),
    ("NOBLOCK.U", 1.0, "NOBLOCK"),
    ("U", 1.0, "BLOCK.PROPERTY"),
    ("WALL.U", "hot", "'hot'"),
    ("WALL.U", float("nan"), "nan"),
    ("WALL.U", True, "True"),
    ("WALL.T_PROCESS", [1.0, 2.0], "9 elements, the list gives 2"),
    ("WALL.T_PROCESS", ["a"] * 9, "'a'"),
    ("WALL.T_PROCESS", np.zeros((3, 3)), "WALL.T_PROCESS"),
    ("WALL.U", {"spec": "Sideways"}, "Sideways"),
    ("WALL.NPTS", -3, "-3"),
    ("WALL.CTYPE", "NoSuchType", "NoSuchType"),
]


@pytest.mark.parametrize("path,value,named", BAD_VALUES)
def test_bad_input_raises_and_changes_nothing(fs, path, value, named):
    doc = copy.deepcopy(fs.to_dict())
    view = fs["WALL.T_PROCESS"]
    before = view.copy()
    with pytest.raises(zorexp.InputError, match=None) as raised:
        fs[path] = value
    assert named in str(raised.value) and "\n" not in str(raised.value)
    assert fs.to_dict() == doc
    np.testing.assert_array_equal(fs["WALL.T_PROCESS"], before)
    assert fs["WALL.U"] == 0.35 and fs.get("WALL.U", "spec") == "Fixed"
    assert fs.solve().converged


def test_a_structural_change_sets_the_flowsheet_up_again():
    fs = zorexp.Flowsheet()
    with pytest.raises(zorexp.InputError, match="no blocks"):
        fs["WALL.U"]
    fs.add_block("WALL", "RPLUG_TCOOL1", NPTS=8, CTYPE="TCool-Prof")
    old = fs["WALL.Q_FLUX"]
    old[:] = 1.5
    fs["WALL.NPTS"] = 4
    assert fs["WALL.Q_FLUX"].shape == (5,) and fs.to_dict()["blocks"]["WALL"]["set"]["NPTS"] == 4
    assert old.shape == (9,) and np.all(old == 1.5)   # a view of the earlier set-up stays valid
    fs["WALL.T_PROCESS"] = [300.0] * 5
    with pytest.raises(zorexp.InputError, match=r"WALL.NPTS = 6: .*T_PROCESS has 7 elements, the list gives 5"):
        fs["WALL.NPTS"] = 6
    assert fs["WALL.NPTS"] == 4


def test_file_errors_carry_the_command_line(tmp_path, cli):
    bad = tmp_path / "bad.json"
    bad.write_text('{"version": 1, "blocks": {"R": {"type": "NOSUCHTYPE"}}}')
    status, _, err = cli("solve", bad)
    assert status == 2
    with pytest.raises(zorexp.InputError) as raised:
        zorexp.Flowsheet.load(bad)
    assert err.strip() == str(raised.value)
    with pytest.raises(zorexp.InputError, match="cannot read"):
        zorexp.Flowsheet.load(tmp_path / "missing.json")


def test_building_in_code_matches_the_file(example, fs):
    doc = json.loads(example(COOLANT).read_text())
    wall = doc["blocks"]["WALL"]
    built = zorexp.Flowsheet({"components": doc["components"]})
    built.add_block("WALL", wall["type"], **wall["set"])
    with pytest.raises(zorexp.InputError, match="already"):
        built.add_block("wall", "RPLUG_TCOOL1")
    with pytest.raises(zorexp.InputError, match="NOSUCHTYPE"):
        built.add_block("X", "NOSUCHTYPE")
    assert [b for b, _ in built.blocks()] == ["WALL"]
    built.solve()
    fs.solve()
    np.testing.assert_array_equal(built["WALL.Q_FLUX"], fs["WALL.Q_FLUX"])


def test_connections_in_code(example, expected):
    doc = json.loads(example("mixer_two_feeds.json").read_text())
    built = zorexp.Flowsheet({"components": doc["components"]})
    for name, block in doc["blocks"].items():
        built.add_block(name, block["type"], block.get("components"), **block.get("set", {}))
    for c in doc["connections"]:
        built.connect(c["from"], c["to"], c.get("name"))
    with pytest.raises(zorexp.InputError, match="NOWHERE"):
        built.connect("NOWHERE.OUT", doc["connections"][0]["to"])
    assert built.solve().converged
    want = expected("mixer_two_feeds.json")["blocks"]
    block = next(iter(want))
    path, value = next((p, v) for p, v in want[block].items() if isinstance(v, float))
    assert float(built[f"{block}.{path}"]) == pytest.approx(value, rel=1e-9)


def test_several_flowsheets_live_side_by_side(example):
    a = zorexp.Flowsheet.load(example(COOLANT))
    b = zorexp.Flowsheet.load(example(COOLANT))
    b["WALL.U"] = 0.7
    del a
    assert b.solve().converged and float(b["WALL.U"]) == 0.7
