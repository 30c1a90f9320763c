"""The model library's catalogue, with the same content as `zorexp types|describe|procedures --json`."""
import json

from . import _zorexp


def types():
    """Every container, variable and parameter type."""
    return json.loads(_zorexp.types_json())


def describe(type_name, components=None, fix=(), free=(), **settings):
    """One type described: a container with the given settings (NPTS=2, CTYPE="TCool-Spec",
    or {"T_PROCESS(1)": 300} through settings=...), fixes and frees; or a variable or parameter
    type's effective defaults."""
    extra = settings.pop("settings", {}) or {}
    sets = [f"{path}={_text(value)}" for path, value in {**settings, **extra}.items()]
    components = [components] if isinstance(components, str) else list(components or [])
    return json.loads(_zorexp.describe_json(type_name, sets, list(fix), list(free), components))


def procedures(name=""):
    """Every procedure declaration with whether its routine is found, or the one named."""
    return json.loads(_zorexp.procedures_json(name))


def _text(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    return str(value)
