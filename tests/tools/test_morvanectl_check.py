"""morvanectl check: the daemon's errors, and a warning with its place for each likely mistake."""

import json

import pytest
from test_morvanectl import ERROR, NO, YES, ctl  # noqa: F401 - a fixture

PARAMETERS = """\
input index { rangeValid { 1..3 } }
gain rw { index { input } rangeValid { -60..12 } default { 0 } }
mode rw { rangeValid { "auto", "off", 1..3 } default { "auto" } }
temperature ro { default { 40 } }
"""
PRESETS = "scene preset { include ro { temperature } exclude rw { mode } }\n"


@pytest.fixture
def check(world, ctl):  # noqa: F811
    """Checks definitions; returns (status, stdout, stderr)."""

    def run(*arguments, parameters=PARAMETERS, presets=PRESETS):
        world.write("p", parameters)
        world.write("d", presets)
        return ctl("check", *arguments, definitions=("-p", "p", "-d", "d"), bus=False)

    return run


def test_has_nothing_to_say_about_good_definitions(check):
    assert check() == (YES, "", "")
    assert check("--json") == (YES, "[]\n", "")
    hexadecimal = 'level rw { rangeValid { 0..20 } default { "0x10" } }\n'
    assert check(parameters=PARAMETERS + hexadecimal) == (YES, "", "")


@pytest.mark.parametrize("parameters, presets, report", [
    ("input index { rangeValid { 1..3 }\nend\n", PRESETS,
     "Error on line 2\nSyntax error\nend\n^\n"),
    ("gain rx { }\n", PRESETS,
     "Error on line 1\nInvalid parameter access type\ngain rx { }\n     ^\n"),
    (PARAMETERS, "scene preset { exclude ro { gain } }\n",
     "PARSE_PRESET_INC_EXC_ACCESS_ERR Error on line 1\nscene preset { exclude ro { gain } }\n"
     "                         ^\n"),
    (PARAMETERS, "scene preset { exclude rw { volume } }\n",
     "Preset Definition Error on line 1.\n volume - is an undefined system parameter\n"),
    (PARAMETERS, "scene preset { exclude rw { gain { index { port } } } }\n",
     "Preset Definition Error on line 1.\nport - is an undefined system index\n"),
    (PARAMETERS, "translate {\nremoved { gain }\n}\n" + PRESETS,
     "Preset Definition Error on line 2.\ngain - In translate removed list, but still a defined "
     "system parameter\n"),
])
def test_prints_errors_as_the_daemon_does(world, check, parameters, presets, report):
    status, output, problem = check(parameters=parameters, presets=presets)
    assert (status, output) == (ERROR, report)
    assert problem == ("morvanectl: cannot use p and d; without a reason above, one is empty or "
                       "ends inside a block\n")
    daemon = world.daemon(parameters=world.folder / "p", presets=world.folder / "d")
    assert daemon.stdout.read_text() == report


@pytest.mark.parametrize("parameters, presets, report", [
    ("", "none preset { exclude rw { all } }\n", """\
d:1: warning: preset none covers no key, so there is no such preset
none preset { exclude rw { all } }
^
"""),
    ('fan rw { ctrlValid ("a" == "b") }\n', "a preset { exclude rw { mode,\n    fan } }\n", """\
d:2: warning: item fan selects nothing: no parameter fan on this variant
    fan } }
    ^
"""),
    ("", "a preset { exclude rw { index { input, not input } } }\n", """\
d:1: warning: index clause selects nothing
a preset { exclude rw { index { input, not input } } }
                        ^
"""),
    ("", "a preset { exclude rw { gain { index { input { 4 } } } } }\n", """\
d:1: warning: item gain, index clause on line 1 selects nothing
a preset { exclude rw { gain { index { input { 4 } } } } }
                               ^
d:1: warning: index input does not have the value 4
a preset { exclude rw { gain { index { input { 4 } } } } }
                                       ^
"""),
    ("", "a preset { exclude rw { gain { index {\n  input { 2..5, 1 } } } } }\n", """\
d:2: warning: a value set of mixed kinds: only its numbers count
  input { 2..5, 1 } } } } }
  ^
"""),
    ("fan rw { ctrlValid (model == 3) }\n", PRESETS, """\
p:5: warning: the condition (model == 3) cannot be evaluated and does not hold (model has no value)
fan rw { ctrlValid (model == 3) }
                    ^
"""),
    ("fan rw { ctrlValid (mode ==) ctrlRO (mode 1) }\n", PRESETS, """\
p:5: warning: the condition (mode ==) has a bad structure, but counts as met because it names a \
parameter
fan rw { ctrlValid (mode ==) ctrlRO (mode 1) }
                    ^
p:5: warning: the condition (mode 1) has a bad structure and never holds
fan rw { ctrlValid (mode ==) ctrlRO (mode 1) }
                                     ^
"""),
    ("fan rw { ctrlValid (1==) ctrlRO (10 / (model - 1)) }\n", PRESETS, """\
p:5: warning: the condition (1==) has a bad structure and never holds
fan rw { ctrlValid (1==) ctrlRO (10 / (model - 1)) }
                    ^
"""),
    ("fan rw { ctrlValid (10 / (model - 1)) }\n", PRESETS, """\
p:5: warning: the condition (10 / (model - 1)) cannot be evaluated and does not hold \
(model has no value)
fan rw { ctrlValid (10 / (model - 1)) }
                    ^
"""),
    ("level rw { rangeValid { 0..9, \"max\" } default { 10 } default (1) { \"max\" } }\n", PRESETS,
     """\
p:5: warning: the default 10 of level is none of its values
level rw { rangeValid { 0..9, "max" } default { 10 } default (1) { "max" } }
                                                ^
"""),
    ("port index { rangeValid { 1..0 } }\n", PRESETS, """\
p:5: warning: index port has no value, so parameters that have it have no key
port index { rangeValid { 1..0 } }
^
"""),
    ("port index { rangeValid { 1..(ports) } }\n", PRESETS, """\
p:5: warning: index port has no value, so parameters that have it have no key
port index { rangeValid { 1..(ports) } }
^
p:5: warning: a value of port cannot be computed and is left out (ports has no value)
port index { rangeValid { 1..(ports) } }
                              ^
"""),
    ("led rw { index { port } }\n", PRESETS, """\
p:5: warning: there is no index port, so led has no key
led rw { index { port } }
                 ^
"""),
    ('fan rw { ctrlValid ("a" == "b") index { input } }\n',
     "translate {\nfan { index 0 { input = 1 } }\n}\n" + PRESETS, """\
d:2: warning: no parameter fan on this variant: its index mappings and those after it in the \
section are not used
fan { index 0 { input = 1 } }
^
"""),
    ("", "translate {\ngain { index 1 { input = idx::1 } }\n}\n" + PRESETS, """\
d:2: warning: idx::1 refers to an index that entries of gain with 1 indices do not have
gain { index 1 { input = idx::1 } }
                 ^
"""),
    ("",
     "translate {\nmode { from { old { a = off } } }\ngain { from { old } }\n}\n" + PRESETS, """\
d:3: warning: old has a mapping already, on line 2, which counts
gain { from { old } }
              ^
"""),
    ("",
     "translate {\nmode { from { old } }\n}\n"
     "translate {\ngain { from { old } }\n}\n" + PRESETS, """\
d:5: warning: old has a mapping already, on line 2, which counts
gain { from { old } }
              ^
"""),
    ("", "translate {\ngain { index 0 { input = 1 }\n  index 0 { input = 2 } }\n}\n" + PRESETS, """\
d:3: warning: entries of gain with 0 indices have an index mapping already, on line 2, which counts
  index 0 { input = 2 } }
  ^
"""),
    ("", "a preset { exclude rw { gain { index { input { 2..9 } } } } }\n", """\
d:1: warning: index input does not have the value 9
a preset { exclude rw { gain { index { input { 2..9 } } } } }
                                       ^
"""),
    ("", "a preset { exclude rw { gain { index { input { 0..2, 3..3 } } } } }\n", """\
d:1: warning: index input does not have the value 0
a preset { exclude rw { gain { index { input { 0..2, 3..3 } } } } }
                                       ^
"""),
    ("", "a preset { }\na preset { exclude rw { mode } }\n", """\
d:2: warning: there is a preset a already, on line 1; the first that covers a key counts
a preset { exclude rw { mode } }
^
"""),
])
def test_warns_of_likely_mistakes(check, parameters, presets, report):
    status, output, _ = check(parameters=PARAMETERS + parameters, presets=presets)
    assert output == report
    assert status == NO


def test_warns_of_mixed_kinds_once_and_of_their_values(check):
    _, output, _ = check(presets="a preset { exclude rw { gain { index { input { 9, x } } } } }\n")
    texts = [line.split("warning: ")[1] for line in output.splitlines() if "warning" in line]
    assert texts == ["item gain, index clause on line 1 selects nothing",
                     "a value set of mixed kinds: only its names count",
                     "index input does not have the value x"]


VARIANTS = """\
port index { rangeValid (model == "rack") { 1..2 } rangeValid (model == "desk") { 1 } }
led rw { index { port } rangeValid { 0..(leds) } default { 3 } }
"""


def test_checks_every_variant(check):
    presets = "a preset { exclude rw { led { index { port { 2 } } } } }\n"
    options = ["--all-variants", "model=rack,desk,none", "leds=3,2"]
    status, output, problem = check(*options, parameters=VARIANTS, presets=presets)
    assert (status, problem) == (NO, "")
    assert output == """\
p:1: warning: index port has no value, so parameters that have it have no key \
[model=none leds=3; model=none leds=2]
port index { rangeValid (model == "rack") { 1..2 } rangeValid (model == "desk") { 1 } }
^
p:2: warning: the default 3 of led is none of its values \
[model=rack leds=2; model=desk leds=2; model=none leds=2]
led rw { index { port } rangeValid { 0..(leds) } default { 3 } }
                                                           ^
d:1: warning: preset a covers no key, so there is no such preset \
[model=none leds=3; model=none leds=2]
a preset { exclude rw { led { index { port { 2 } } } } }
^
d:1: warning: item led, index clause on line 1 selects nothing \
[model=desk leds=3; model=desk leds=2; model=none leds=3; model=none leds=2]
a preset { exclude rw { led { index { port { 2 } } } } }
                              ^
d:1: warning: index port does not have the value 2 \
[model=desk leds=3; model=desk leds=2; model=none leds=3; model=none leds=2]
a preset { exclude rw { led { index { port { 2 } } } } }
                                      ^
"""
    listed = json.loads(check(*options, "--json", parameters=VARIANTS, presets=presets)[1])
    assert listed[1] == {
        "file": "p", "line": 2, "column": 60, "text": "the default 3 of led is none of its values",
        "variants": ["model=rack leds=2", "model=desk leds=2", "model=none leds=2"]}


def test_says_when_every_variant_has_a_warning(check):
    presets = "a preset { exclude rw { led { index { port { 3 } } } } }\n"
    _, output, _ = check("--all-variants", "model=rack,desk", "-s", "leds=3",
                         parameters=VARIANTS, presets=presets)
    assert "d:1: warning: index port does not have the value 3 [every variant]\n" in output


def test_a_name_of_all_variants_counts_more_than_a_single_argument(check):
    options = ["--all-variants", "leds=3,2", "-s", "leds=9", "-s", "model=rack"]
    _, output, _ = check(*options, parameters=VARIANTS, presets="a preset { }\n")
    assert [line for line in output.splitlines() if "warning" in line] == [
        "p:2: warning: the default 3 of led is none of its values [leds=2]"]


def test_finds_whole_words(check):
    """The name stands on its line within longer ones, before and after, and then by itself."""
    presets = "a preset { exclude rw { subgain, gain2, sub_gain, gain, mode } }\n"
    parameters = ("subgain rw { }\ngain2 rw { }\nsub_gain rw { }\nmode rw { }\nleft rw { }\n"
                  "gain rw { ctrlValid (0) }\n")
    _, output, _ = check(parameters=parameters, presets=presets)
    assert output == f"""\
d:1: warning: item gain selects nothing: no parameter gain on this variant
{presets}{" " * presets.index(" gain,")} ^
"""
    _, output, _ = check(parameters=parameters, presets=presets.replace(" gain,", "\ngain,"))
    assert output.startswith("d:2: warning: item gain selects nothing")
