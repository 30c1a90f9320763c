import json

import pytest

import zorexp


@pytest.mark.parametrize("args,call", [
    (("types", "--json"), lambda: zorexp.types()),
    (("describe", "TEMPERATURE", "--json"), lambda: zorexp.describe("TEMPERATURE")),
    (("describe", "RPLUG_TCOOL1", "--set", "NPTS=2", "--set", "CTYPE=TCool-Spec", "--fix", "U", "--json"),
     lambda: zorexp.describe("RPLUG_TCOOL1", NPTS=2, CTYPE="TCool-Spec", fix=["U"])),
    (("procedures", "--json"), lambda: zorexp.procedures()),
])
def test_same_content_as_the_command(cli, args, call):
    status, out, _ = cli(*args)
    assert status == 0
    assert call() == json.loads(out)


def test_catalogue_errors_are_the_command_lines(cli):
    status, _, err = cli("describe", "NOSUCHTYPE", "--json")
    assert status == 2
    with pytest.raises(zorexp.InputError) as raised:
        zorexp.describe("NOSUCHTYPE")
    assert err.strip() == "zorexp: " + str(raised.value)
    with pytest.raises(zorexp.InputError, match="NPTS"):
        zorexp.describe("RPLUG_TCOOL1", NPTS="many")
