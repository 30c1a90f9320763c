import os

import numpy as np
import pytest

import zorexp

VALVE = "vapour_relief_valve.json"


@pytest.fixture
def fs(example):
    return zorexp.Flowsheet.load(example(VALVE))


def one_by_one(fs, etas, ratios):
    """The same cases solved through the public calls, each from the file's own start."""
    out = []
    for eta in etas:
        for ratio in ratios:
            case = zorexp.Flowsheet.load(fs.to_dict())
            case["V1.ETA"] = eta
            case["V1.AREA_RATIO"] = ratio
            out.append((case.solve().converged, float(case["V1.FLUX"])))
    return out


def test_local_cluster_matches_cases_solved_one_by_one(fs):
    etas, ratios = np.linspace(0.2, 0.9, 20), np.linspace(0.05, 0.5, 10)
    table = zorexp.sweep(fs, {"V1.ETA": etas, "V1.AREA_RATIO": ratios}, outputs=["V1.FLUX", "V1.Y"], workers=2)
    assert len(table) == 200
    np.testing.assert_array_equal(table["V1.ETA"], np.repeat(etas, 10))
    np.testing.assert_array_equal(table["V1.AREA_RATIO"], np.tile(ratios, 20))
    reference = one_by_one(fs, etas, ratios)
    assert list(table["converged"]) == [c for c, _ in reference]
    assert table["converged"].all() and set(table["status"]) == {"converged"}
    # Equal within what the solver's tolerance leaves between different starts.
    np.testing.assert_allclose(table["V1.FLUX"], [f for _, f in reference], rtol=1e-6)
    assert table["V1.Y"].shape == (200, 2)
    sequential = zorexp.sweep(fs, {"V1.ETA": etas, "V1.AREA_RATIO": ratios}, outputs="V1.FLUX", scheduler="sequential")
    np.testing.assert_allclose(sequential["V1.FLUX"], table["V1.FLUX"], rtol=1e-6)


def test_failed_cases_are_recorded_and_the_study_goes_on(fs):
    table = zorexp.sweep(fs, {"V1.ETA": [0.5, 1.5, 0.7]}, outputs=["V1.FLUX"], scheduler="sequential")
    assert list(table["converged"]) == [True, False, True]
    assert table["status"][1] != "converged" and table["message"][1] and np.isnan(table["V1.FLUX"][1])
    assert np.isfinite(table["V1.FLUX"][[0, 2]]).all()


def _die_on_third_case(values):
    if values[0] == 0.3:
        os._exit(3)


def test_a_dying_worker_loses_only_its_case(fs):
    ratios = [0.1, 0.2, 0.3, 0.4, 0.5, 0.6]
    table = zorexp.sweep(fs, {"V1.AREA_RATIO": ratios}, outputs=["V1.FLUX"], workers=2,
                         case_hook=_die_on_third_case)
    assert list(table["converged"]) == [True, True, False, True, True, True]
    assert "failed twice" in table["message"][2]


@pytest.mark.parametrize("variables,outputs,named", [
    ({"V1.FLUX": [1.0]}, [], "free variable"),
    ({"V1.NOSUCH": [1.0]}, [], "NOSUCH"),
    ({"V1.ETA": ["x"]}, [], "not numbers"),
    ({"V1.ETA": []}, [], "one or more"),
    ({"V1.ETA": [0.5]}, ["V1.NOSUCH"], "NOSUCH"),
    ({}, [], "BLOCK.PATH"),
])
def test_bad_studies_are_refused_before_anything_runs(fs, variables, outputs, named):
    with pytest.raises(zorexp.InputError, match=named):
        zorexp.sweep(fs, variables, outputs=outputs, scheduler="sequential")


def test_pandas_table(fs):
    frame = zorexp.sweep(fs, {"V1.ETA": [0.4, 0.6]}, outputs=["V1.FLUX"], scheduler="sequential", table="pandas")
    assert list(frame["V1.ETA"]) == [0.4, 0.6] and frame["converged"].all()
