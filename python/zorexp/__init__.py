"""zorexp: flowsheets of the Morvanex220_1 model library from Python.

    import zorexp
    fs = zorexp.Flowsheet.load("examples/coolant_profile.json")
    fs["WALL.U"] = 0.4
    result = fs.solve()
    q = fs["WALL.Q_FLUX"]          # a numpy view of the solver's values

See docs/python.md.
"""
import os as _os

# The compiled part finds the model library beside the build's or installation's lib folder
# unless ZOREXP_MODEL_LIBRARY names it.
_here = _os.path.dirname(_os.path.abspath(__file__))
for _candidate in (_os.path.join(_here, "..", "..", "lib", "libMorvanex220_1.so"),
                   _os.path.join(_here, "..", "..", "..", "libMorvanex220_1.so")):
    if "ZOREXP_MODEL_LIBRARY" not in _os.environ and _os.path.exists(_candidate):
        _os.environ["ZOREXP_MODEL_LIBRARY"] = _os.path.normpath(_candidate)

from ._zorexp import InputError, SolveError  # noqa: E402
from .catalogue import describe, procedures, types  # noqa: E402
from .flowsheet import Flowsheet, SolveResult, Values  # noqa: E402
from .case_study import sweep  # noqa: E402

__all__ = ["Flowsheet", "SolveResult", "Values", "InputError", "SolveError", "types", "describe", "procedures",
           "sweep"]
