import json
import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
EXAMPLES = pathlib.Path(os.environ.get("ZOREXP_EXAMPLES", ROOT / "examples"))


def _build_dir():
    import zorexp
    return pathlib.Path(zorexp.__file__).resolve().parents[2]


@pytest.fixture
def example():
    return lambda name: EXAMPLES / name


@pytest.fixture
def expected():
    return lambda name: json.loads((EXAMPLES / name.replace(".json", ".expected.json")).read_text())


@pytest.fixture
def cli():
    """Runs the zorexp command of the same build: (exit status, stdout, stderr)."""
    command = _build_dir() / "bin" / "zorexp"

    def run(*args):
        p = subprocess.run([str(command), *map(str, args)], capture_output=True, text=True)
        return p.returncode, p.stdout, p.stderr
    return run


@pytest.fixture(scope="session", autouse=True)
def local_cluster_closed_at_the_end():
    """The sweep's local cluster is closed before pytest closes its output streams."""
    yield
    import zorexp.case_study
    zorexp.case_study._close_default()
