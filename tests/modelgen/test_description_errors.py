"""The compiler refuses descriptions that misuse the set and flag forms, with one line naming
the place and what is wrong. Run by ctest; needs only the repository (the library's tables)."""
import contextlib
import io
import os
import sys
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "tools"))
sys.dont_write_bytecode = True

from modelgen.__main__ import main  # noqa: E402

HEAD = '''model TESTERRORS extends GENERICMODEL
properties
    NAMES : string set
    NUMS  : integer set
    T     : TEMPERATURE
    Q     : ENTHFLOW
'''


def compile_text(text, keep=None):
    """(status, stderr) of compiling one test description; keep(out) may read what it wrote."""
    with tempfile.TemporaryDirectory() as tmp:
        path = os.path.join(tmp, "errors.model")
        with open(path, "w", encoding="utf-8") as f:
            f.write(text)
        err = io.StringIO()
        out = os.path.join(tmp, "out")
        with contextlib.redirect_stderr(err):
            status = main(["--library", os.path.join(ROOT, "morvanex"), "--out", out, "--test", "--", path])
        if keep is not None and status == 0:
            keep(out)
        return status, err.getvalue()


class SetAndFlagForms(unittest.TestCase):
    def refused(self, body, line, message):
        status, err = compile_text(HEAD + body)
        self.assertEqual(status, 1, err)
        self.assertIn(f"errors.model:{line}:", err)
        self.assertIn(message, err)

    def test_accepted_forms_compile(self):
        status, err = compile_text(HEAD + '''assignments
    NAMES := {"A", "b"} * components
    NUMS := {3, -1} * (0 .. 5)
    if T.ISMATCHED and not Q.RECORD then
        Q.SPEC := Fixed
    end
''')
        self.assertEqual(status, 0, err)

    def test_members_of_the_wrong_kind(self):
        self.refused('assignments\n    NUMS := {1, "two"}\n', 8, "NUMS is a set of integers")
        self.refused('assignments\n    NAMES := {"A", 2}\n', 8, "NAMES is a set of texts")

    def test_a_member_given_twice(self):
        self.refused('assignments\n    NAMES := {"A", "a"}\n', 8, "member a given twice")

    def test_an_option_is_a_set_of_texts(self):
        self.refused('assignments\n    NUMS := option("N") * (1 .. 3)\n', 8, "a list option gives a set of texts")

    def test_a_set_is_not_a_number(self):
        self.refused('equations\n    Q = T * {1, 2}\n', 8, "can only be assigned to a set")

    def test_conditions_read_flags_only(self):
        self.refused('assignments\n    if T.LOWER > 0 then\n        Q.SPEC := Fixed\n    end\n', 8,
                     "conditions read the flags ISMATCHED, ISCONNECTED, RECORD of variables only")

    def test_a_flag_is_not_read_at_each_evaluation(self):
        self.refused('equations\n    when T.ISMATCHED then\n        Q = T\n    else\n        Q = 0\n    end\n', 8,
                     "cannot read a variable's flags")


class InternalSetPasses(unittest.TestCase):
    BODY = ("    IDX : internal integer set\n    N : INTEGERPARAMETER\nassignments\n"
            "    [1] IDX := 1 .. N pass 0\n    N := 4\n    [1] IDX := 1 .. N pass 1\n")

    def test_each_pass_keeps_its_ordinal_and_hands_its_pass(self):
        written = []

        def keep(out):
            for folder, _dirs, files in os.walk(out):
                for name in files:
                    if name.endswith(".cpp"):
                        with open(os.path.join(folder, name), encoding="utf-8") as f:
                            written.append(f.read())
        status, err = compile_text(HEAD + self.BODY, keep)
        self.assertEqual(status, 0, err)
        code = "".join(written)
        self.assertRegex(code, r"VX_Value (\w+)\(VX_IntSetValue\(1, N\.v\(\)\), context, level, 1\);\s*"
                               r"InitialiseInternalIndexSet\(IDX, \1, 0\);")
        self.assertRegex(code, r"VX_Value (\w+)\(4, context, level, 2\);")
        self.assertRegex(code, r"VX_Value (\w+)\(VX_IntSetValue\(1, N\.v\(\)\), context, level, 1\);\s*"
                               r"InitialiseInternalIndexSet\(IDX, \1, 1\);")

    def test_only_internal_sets_take_a_pass(self):
        status, err = compile_text(HEAD + "assignments\n    NUMS := 1 .. 3 pass 1\n")
        self.assertEqual(status, 1, err)
        self.assertIn("NUMS is not an internal index set", err)
        status, err = compile_text(HEAD + "    IDX : internal integer set\nassignments\n    IDX := 1 .. 3 pass\n")
        self.assertEqual(status, 1, err)
        self.assertIn("expected the pass as an integer", err)


class FilteredReductions(unittest.TestCase):
    def test_a_filter_reads_parameters_and_loop_variables(self):
        status, err = compile_text(HEAD + '''    N     : INTEGERPARAMETER
    X     : TEMPERATURE over NUMS
equations
    Q = sum(j in NUMS where j <= N and j <> 2: X(j)) * prod(j in NUMS where j > N: X(j) - T)
''')
        self.assertEqual(status, 0, err)

    def test_a_filter_reading_a_variable_is_refused(self):
        status, err = compile_text(HEAD + '''    X     : TEMPERATURE over NUMS
equations
    Q = sum(j in NUMS where X(j) > 0: X(j))
''')
        self.assertEqual(status, 1, err)
        self.assertIn("errors.model:9:", err)
        self.assertIn("the filter of a sum reads integer and logical parameters", err)


if __name__ == "__main__":
    unittest.main()
