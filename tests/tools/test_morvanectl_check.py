"""morvanectl check: the daemon's errors, and a warning with its place for each likely mistake."""

import json
import os
import threading

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
    assert check("--as-daemon", parameters=parameters, presets=presets) == (ERROR, report, "")
    daemon = world.daemon(parameters=world.folder / "p", presets=world.folder / "d")
    assert daemon.stdout.read_text() == report


@pytest.mark.parametrize("parameters, presets, report", [
    ("", "none preset { exclude rw { all } }\n", """\
d:1:1: warning: preset none covers no key, so there is no such preset
none preset { exclude rw { all } }
^
"""),
    ('fan rw { ctrlValid ("a" == "b") }\n', "a preset { exclude rw { mode,\n    fan } }\n", """\
d:2:5: warning: item fan selects nothing: no parameter fan on this variant
    fan } }
    ^
"""),
    ("", "a preset { exclude rw { index { input, not input } } }\n", """\
d:1:31: warning: index clause selects nothing
a preset { exclude rw { index { input, not input } } }
                              ^
"""),
    ("", "a preset { exclude rw { gain { index { input { 4 } } } } }\n", """\
d:1:38: warning: item gain, index clause on line 1 selects nothing
a preset { exclude rw { gain { index { input { 4 } } } } }
                                     ^
d:1:40: warning: index input does not have the value 4
a preset { exclude rw { gain { index { input { 4 } } } } }
                                       ^
"""),
    ("", "a preset { exclude rw { gain { index {\n  input { 2..5, 1 } } } } }\n", """\
d:2:3: warning: a value set of mixed kinds: only its numbers count
  input { 2..5, 1 } } } } }
  ^
"""),
    ("fan rw { ctrlValid (model == 3) }\n", PRESETS, """\
p:5:21: warning: nothing gives a value to model, so what uses it cannot be computed
fan rw { ctrlValid (model == 3) }
                    ^
"""),
    ("fan rw { ctrlValid (mode ==) ctrlRO (mode 1) }\n", PRESETS, """\
p:5:21: warning: the condition (mode ==) has a bad structure, but counts as met because it names a \
parameter
fan rw { ctrlValid (mode ==) ctrlRO (mode 1) }
                    ^
p:5:38: warning: the condition (mode 1) has a bad structure and never holds
fan rw { ctrlValid (mode ==) ctrlRO (mode 1) }
                                     ^
"""),
    ("fan rw { ctrlValid (1==) ctrlRO (10 / 0) }\n", PRESETS, """\
p:5:21: warning: the condition (1==) has a bad structure and never holds
fan rw { ctrlValid (1==) ctrlRO (10 / 0) }
                    ^
"""),
    ("fan rw { ctrlValid (10 / 0) }\n", PRESETS, """\
p:5:21: warning: the condition (10 / 0) cannot be evaluated and does not hold
fan rw { ctrlValid (10 / 0) }
                    ^
"""),
    ("level rw { rangeValid { 0..9, \"max\" } default { 10 } default (1) { \"max\" } }\n", PRESETS,
     """\
p:5:49: warning: the default 10 of level is none of its values
level rw { rangeValid { 0..9, "max" } default { 10 } default (1) { "max" } }
                                                ^
"""),
    ("port index { rangeValid { 1..0 } }\n", PRESETS, """\
p:5:1: warning: index port has no value, so parameters that have it have no key
port index { rangeValid { 1..0 } }
^
"""),
    ("port index { rangeValid { 1..(ports) } }\n", PRESETS, """\
p:5:1: warning: index port has no value, so parameters that have it have no key
port index { rangeValid { 1..(ports) } }
^
p:5:31: warning: nothing gives a value to ports, so what uses it cannot be computed
port index { rangeValid { 1..(ports) } }
                              ^
"""),
    ("led rw { index { port } }\n", PRESETS, """\
p:5:18: warning: there is no index port, so led has no key
led rw { index { port } }
                 ^
"""),
    ('fan rw { ctrlValid ("a" == "b") index { input } }\n',
     "translate {\nfan { index 0 { input = 1 } }\n}\n" + PRESETS, """\
d:2:1: warning: no parameter fan on this variant: its index mappings and those after it in the \
section are not used
fan { index 0 { input = 1 } }
^
"""),
    ("", "translate {\ngain { index 1 { input = idx::1 } }\n}\n" + PRESETS, """\
d:2:26: warning: idx::1 refers to an index that entries of gain with 1 indices do not have
gain { index 1 { input = idx::1 } }
                         ^
"""),
    ("",
     "translate {\nmode { from { old { a = off } } }\ngain { from { old } }\n}\n" + PRESETS, """\
d:3:15: warning: old has a mapping already, on line 2, which counts
gain { from { old } }
              ^
"""),
    ("",
     "translate {\nmode { from { old } }\n}\n"
     "translate {\ngain { from { old } }\n}\n" + PRESETS, """\
d:5:15: warning: old has a mapping already, on line 2, which counts
gain { from { old } }
              ^
"""),
    ("", "translate {\ngain { index 0 { input = 1 }\n  index 0 { input = 2 } }\n}\n" + PRESETS, """\
d:3:9: warning: entries of gain with 0 indices have an index mapping already, on line 2, \
which counts
  index 0 { input = 2 } }
        ^
"""),
    ("", "a preset { exclude rw { gain { index { input { 2..9 } } } } }\n", """\
d:1:40: warning: index input does not have the value 9
a preset { exclude rw { gain { index { input { 2..9 } } } } }
                                       ^
"""),
    ("", "a preset { exclude rw { gain { index { input { 0..2, 3..3 } } } } }\n", """\
d:1:40: warning: index input does not have the value 0
a preset { exclude rw { gain { index { input { 0..2, 3..3 } } } } }
                                       ^
"""),
    ("", "a preset { }\na preset { exclude rw { mode } }\n", """\
d:2:1: warning: there is a preset a already, on line 1; the first that covers a key counts
a preset { exclude rw { mode } }
^
"""),
    ("", "a preset { exclude rw {\nindex { none { 3 } } } include ro {\nindex { input } } }\n", """\
d:3:7: warning: index clause selects nothing
index { input } } }
      ^
"""),
    ("port index { rangeValid (0) { 1 } }\n"
     "fan rw { rangeValid (0) { 1 } rangeValid (1 > 2) { 2 } }\n", PRESETS, """\
p:5:1: warning: index port has no value, so parameters that have it have no key
port index { rangeValid (0) { 1 } }
^
p:6:1: warning: the condition of no range of fan holds, so it has no valid value
fan rw { rangeValid (0) { 1 } rangeValid (1 > 2) { 2 } }
^
"""),
    ("level rw { rangeValid { 0..9 } default { (10 / 0) } }\n", PRESETS, """\
p:5:43: warning: the default of level cannot be computed
level rw { rangeValid { 0..9 } default { (10 / 0) } }
                                          ^
"""),
    # Spelling.
    ("led rw { index { input, mode } }\n", PRESETS, """\
p:5:25: warning: an index attribute has one name: only input counts
led rw { index { input, mode } }
                        ^
"""),
    ("a=b rw { }\n", PRESETS, """\
p:5:1: warning: the name "a=b" cannot stand in a preset data file
a=b rw { }
^
"""),
    ('port index { rangeValid { "a]b", "c=d", "e[f" } }\n', PRESETS, """\
p:5:27: warning: a key with the index value "a]b" cannot stand in a preset data file
port index { rangeValid { "a]b", "c=d", "e[f" } }
                          ^
p:5:34: warning: a key with the index value "c=d" cannot stand in a preset data file
port index { rangeValid { "a]b", "c=d", "e[f" } }
                                 ^
"""),
    ("", "translate {\nremoved { old[1] }\nmode { from { a]b } from { x=y } }\n}\n" + PRESETS, """\
d:2:11: warning: the name "old[1]" has a bracket, which no parameter can have
removed { old[1] }
          ^
d:3:15: warning: the name "a]b" has a bracket, which no parameter can have
mode { from { a]b } from { x=y } }
              ^
d:3:28: warning: the name "x=y" cannot stand in a preset data file
mode { from { a]b } from { x=y } }
                           ^
"""),
    ("", "translate { mode { from { old {\n  a = x, b = y, \"a\" = z } } } }\n" + PRESETS, """\
d:2:18: warning: the old value "a" is mapped already; the first mapping counts
  a = x, b = y, "a" = z } } } }
                 ^
"""),
    ("", "translate { mode { from { gain }\n from { mode { a = off } } } }\n" + PRESETS, """\
d:1:27: warning: gain is a parameter still, but what files have of it goes to mode
translate { mode { from { gain }
                          ^
"""),
    ("", 'translate { mode { from { old { "a\n= "x y\n} } } }\n' + PRESETS, """\
d:1:34: warning: the line ends before the quote does, and its end becomes part of the text
translate { mode { from { old { "a
                                 ^
d:2:4: warning: the line ends before the quote does, and its end becomes part of the text
= "x y
   ^
"""),
    ("", "translate { gain {\nindex 2 { input = idx::x }\nindex 0 { input = idx:0 }\n"
     "index 3 { input = 9 }\nindex 4 { input = idx::01 } } }\n" + PRESETS, """\
d:2:19: warning: idx::x counts as idx::0
index 2 { input = idx::x }
                  ^
d:3:19: warning: index input does not have the value idx:0
index 0 { input = idx:0 }
                  ^
d:3:19: warning: idx:0 is the new index itself; an old one is idx::0, idx::1 ...
index 0 { input = idx:0 }
                  ^
d:4:19: warning: index input does not have the value 9
index 3 { input = 9 }
                  ^
d:5:19: warning: idx::01 counts as idx::1
index 4 { input = idx::01 } } }
                  ^
"""),
    ("", "a preset { exclude rw { index { input { 1 } { 2 } },\n"
     " index { input { 1 }, input { 2 }, not input { 3 } } } }\n", """\
d:1:33: warning: of the value sets of one selector only the last counts
a preset { exclude rw { index { input { 1 } { 2 } },
                                ^
d:2:23: warning: index input is selected already in this clause; the last selector counts
 index { input { 1 }, input { 2 }, not input { 3 } } } }
                      ^
d:2:40: warning: index input is selected already in this clause; the last selector counts
 index { input { 1 }, input { 2 }, not input { 3 } } } }
                                       ^
"""),
    ("# " + "-" * 508 + "\n# " + "-" * 509 + "fan rw { }\n", PRESETS, f"""\
p:6:1: warning: a line of more than 510 bytes is read as several: a word is cut there, and a \
comment ends
# {"-" * 509}
^
"""),
    ("fan\trw\t{\tctrlValid (\"ä\" == 10 / 0)\t}\n", PRESETS, """\
p:5:21: warning: the condition ("ä" == 10 / 0) cannot be evaluated and does not hold
fan\trw\t{\tctrlValid ("ä" == 10 / 0)\t}
   \t  \t \t           ^
"""),
])
def test_warns_of_likely_mistakes(check, parameters, presets, report):
    status, output, _ = check(parameters=PARAMETERS + parameters, presets=presets)
    assert output == report
    assert status == YES


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
    status, output, problem = check(*options, "--verbose", parameters=VARIANTS, presets=presets)
    assert (status, problem) == (YES, "")
    assert output == """\
p:1:1: note: index port has no value, so parameters that have it have no key \
[on 2 of 6: model=none leds=*]
p:2:60: warning: the default 3 of led is none of its values \
[on 3 of 6: model=rack leds=2, model=desk leds=2, model=none leds=2]
led rw { index { port } rangeValid { 0..(leds) } default { 3 } }
                                                           ^
d:1:1: note: preset a covers no key, so there is no such preset [on 2 of 6: model=none leds=*]
d:1:37: note: item led, index clause on line 1 selects nothing \
[on 4 of 6: model=desk leds=3, model=desk leds=2, model=none leds=3, model=none leds=2]
d:1:39: note: index port does not have the value 2 \
[on 4 of 6: model=desk leds=3, model=desk leds=2, model=none leds=3, model=none leds=2]
"""
    default = {
        "file": "p", "line": 2, "column": 60, "severity": "warning", "code": "bad-default",
        "text": "the default 3 of led is none of its values",
        "variants": ["model=rack leds=2", "model=desk leds=2", "model=none leds=2"]}
    listed = check(*options, "--json", parameters=VARIANTS, presets=presets)
    assert (listed[0], json.loads(listed[1]), listed[2]) == (YES, [default], "")
    status, output, problem = check(*options, "--json", "--verbose", "--strict",
                                    parameters=VARIANTS, presets=presets)
    listed = json.loads(output)
    assert (status, len(listed), problem) == (NO, 5, "")
    assert listed[1] == default
    assert listed[0] == {
        "file": "p", "line": 1, "column": 1, "severity": "note", "code": "empty-index",
        "text": "index port has no value, so parameters that have it have no key",
        "variants": ["model=none leds=3", "model=none leds=2"]}


def test_shows_what_is_missing_on_every_variant(check):
    presets = "a preset { exclude rw { led { index { port { 3 } } } } }\n"
    status, output, problem = check("--all-variants", "model=rack,desk", "-s", "leds=3", "--strict",
                                    parameters=VARIANTS, presets=presets)
    assert ": warning: index port does not have the value 3\na preset" in output
    assert (status, problem) == (NO, "")


def test_what_is_missing_on_some_variants_is_no_warning(check):
    presets = "a preset { exclude rw { led { index { port { 2 } } } } }\n"
    options = ["--all-variants", "model=rack,desk", "-s", "leds=3", "--strict"]
    assert check(*options, parameters=VARIANTS, presets=presets) == (YES, "", "")
    for model, status in (("rack", YES), ("desk", NO)):
        assert check("--strict", "-s", "leds=3", "-s", f"model={model}", parameters=VARIANTS,
                     presets=presets)[0] == status


def test_a_name_of_all_variants_counts_more_than_a_single_argument(check):
    options = ["--all-variants", "leds=3,2", "-s", "leds=9", "-s", "model=rack"]
    _, output, _ = check(*options, parameters=VARIANTS, presets="a preset { }\n")
    assert [line for line in output.splitlines() if "warning" in line] == [
        "p:2:60: warning: the default 3 of led is none of its values [on 1 of 2: leds=2]"]


def test_finds_only_mistakes_in_defaults_that_may_be_used(check):
    """The first default whose condition holds is the one, unless that depends on a parameter."""
    hidden = ('level rw { rangeValid { 0..9 } default (model == "a") { 7 } default { 99 } }\n'
              'text rw { rangeValid { 0..9 } default { 5 } default { (10 / 0) } }\n')
    assert check("-s", "model=a", "--strict", parameters=PARAMETERS + hidden) == (YES, "", "")
    used = ("level rw { rangeValid { 0..9 } default (0) { 98 } default (mode == 1) { 7 } "
            "default { 99 } }\n")
    assert check("--strict", parameters=PARAMETERS + used) == (NO, f"""\
p:5:87: warning: the default 99 of level is none of its values
{used}{" " * used.index("99")}^
""", "")


def test_points_at_the_name_itself(check):
    """The name stands on its line within longer ones, and in other blocks before."""
    parameters = "".join(f"{name} rw {{ }}\n" for name in ("mode", "subgain", "gain2", "gain3"))
    parameters += "gain rw { ctrlValid (0) }\n"
    presets = "gain preset { exclude rw { subgain, gain2, gain, gain3 } }\n"
    _, output, _ = check(parameters=parameters, presets=presets)
    assert output == f"""\
d:1:44: warning: item gain selects nothing: no parameter gain on this variant
{presets}{" " * presets.index(" gain,")} ^
"""


DAEMON_ERRORS = [
    (PARAMETERS + "fan rw {\n  rangeVald { 1 } }\n", PRESETS, """\
p:6:3: error: Syntax error
  rangeVald { 1 } }
  ^
p:6:3: note: an attribute is index, rangeValid, rangeDoc, default, valueChange, ctrlValid or \
ctrlRO, the last two with their ( on the same line; a } ends the parameter
p:6:3: note: did you mean rangeValid?
""", "syntax-error"),
    ("gain rx { }\n", PRESETS, """\
p:1:6: error: Invalid parameter access type
gain rx { }
     ^
p:1:6: note: the access type is index, ro, rostrict, rw or wo
p:1:6: note: did you mean ro?
""", "invalid-access"),
    ("gain wo { ctrlRO (1) }\n", PRESETS, """\
p:1:20: error: Invalid parameter access type
gain wo { ctrlRO (1) }
                   ^
p:1:20: note: nobody reads a wo parameter, so it cannot have ctrlRO
""", "invalid-access"),
    (PARAMETERS, "scene preset {\n\texclude ro { gain } }\n", """\
d:2:10: error: PARSE_PRESET_INC_EXC_ACCESS_ERR
\texclude ro { gain } }
\t        ^
d:2:10: note: presets have "include ro" and "exclude rw" lists, and no others
""", "PARSE_PRESET_INC_EXC_ACCESS_ERR"),
    (PARAMETERS, "scene preset { exclude rw { mode, gian } }\n", """\
d:1:35: error: gian - is an undefined system parameter
scene preset { exclude rw { mode, gian } }
                                  ^
d:1:35: note: did you mean gain?
""", "PARSE_PRESET_ACCESS_ERR"),
    (PARAMETERS, "scene preset { exclude rw { gain { index { imput } } } }\n", """\
d:1:44: error: imput - is an undefined system index
scene preset { exclude rw { gain { index { imput } } } }
                                           ^
d:1:44: note: did you mean input?
""", "PARSE_PRESET_INVALID_INDEX"),
    (PARAMETERS, "translate {\nremoved { old, gain }\n}\n" + PRESETS, """\
d:2:16: error: gain - In translate removed list, but still a defined system parameter
removed { old, gain }
               ^
""", "PARSE_PRESET_SYNTAX"),
    (PARAMETERS + "\n  fan rw { default { 1 }\n", PRESETS, """\
p:6:3: error: the file ends inside this parameter
  fan rw { default { 1 }
  ^
p:6:3: note: the daemon uses what it has read of it
""", "open-block"),
    (PARAMETERS, "a preset { } b preset {\nexclude rw { mode }\n", """\
d:1:14: error: the file ends inside this block, and the daemon cannot use it
a preset { } b preset {
             ^
""", "open-block"),
    ("", PRESETS, """\
p:1:1: error: the file is empty, and the daemon cannot use it

^
""", "empty-file"),
    (PARAMETERS, "", """\
d:1:1: error: the file is empty, and the daemon cannot use it

^
""", "empty-file"),
    # The errors of the first file are said first, and those of the second not at all.
    ("gain rx { }\n", "scene preset { exclude ro { gain } }\n", """\
p:1:6: error: Invalid parameter access type
gain rx { }
     ^
p:1:6: note: the access type is index, ro, rostrict, rw or wo
p:1:6: note: did you mean ro?
""", "invalid-access"),
    (f"# {'-' * 508}\n#{'-' * 510}a ry {{\n", PRESETS, """\
p:2:514: error: Invalid parameter access type
a ry {
  ^
p:2:514: note: the daemon calls it line 3, because it reads a line of more than 510 bytes as \
several lines
p:2:514: note: the access type is index, ro, rostrict, rw or wo
p:2:514: note: did you mean ro?
""", "invalid-access"),
]


@pytest.mark.parametrize("parameters, presets, report, code", DAEMON_ERRORS)
def test_explains_errors(check, parameters, presets, report, code):
    assert check(parameters=parameters, presets=presets) == (ERROR, report, "")
    status, output, problem = check("--json", parameters=parameters, presets=presets)
    assert (status, problem) == (ERROR, "")
    findings = json.loads(output)
    assert [f"{f['file']}:{f['line']}:{f['column']}: {f['severity']}: {f['text']}"
            for f in findings] == [
        line for line in report.splitlines() if ": error: " in line or ": note: " in line]
    assert {(f["code"], tuple(f["variants"])) for f in findings} == {(code, ())}


def test_errors_are_no_part_of_other_answers(check, ctl):  # noqa: F811
    for parameters, presets, report, _ in DAEMON_ERRORS:
        check(parameters=parameters, presets=presets)
        outcome = ctl("presets", definitions=("-p", "p", "-d", "d"), bus=False)
        if "the daemon uses what it has read" in report:
            assert outcome == (YES, "scene\n", report)
        else:
            assert outcome == (ERROR, "", report)


def test_warns_of_bytes_that_are_not_text(world, ctl):  # noqa: F811
    (world.folder / "p").write_bytes(
        b"\xef\xbb\xbfa rw { }\nb\xff rw { }\nc index { rangeValid { \"\xfe\" } }\n")
    (world.folder / "d").write_bytes(b"all\xff preset { }\n")
    outcome = ctl("check", "--json", definitions=("-p", "p", "-d", "d"), bus=False)
    assert [(f["file"], f["line"], f["column"], f["code"]) for f in json.loads(outcome[1])] == [
        ("p", 1, 1, "byte-order-mark"), ("p", 2, 1, "not-utf8"), ("p", 3, 24, "not-utf8"),
        ("d", 1, 1, "not-utf8")]
    assert (outcome[0], outcome[2]) == (YES, "")


@pytest.mark.parametrize("options", [[], ["--all-variants", "a=1,2"]])
def test_reads_definitions_from_pipes(world, ctl, options):  # noqa: F811
    """Each is read once, for however many variants."""
    for name, text in (("p", PARAMETERS), ("d", PRESETS)):
        os.mkfifo(world.folder / name)
        threading.Thread(target=(world.folder / name).write_text, args=[text], daemon=True).start()
    assert ctl("check", "--strict", *options, definitions=("-p", "p", "-d", "d"), bus=False) == (
        YES, "", "")


def test_says_why_a_file_cannot_be_read(check, ctl):  # noqa: F811
    check()
    hint = "; name the definition files with --parameters and --presets"
    assert ctl("check", definitions=("-p", "nowhere", "-d", "d"), bus=False) == (
        ERROR, "", f"morvanectl: cannot read nowhere: No such file or directory{hint}\n")
    assert ctl("check", definitions=("-p", "p", "-d", "."), bus=False) == (
        ERROR, "", "morvanectl: cannot read .: Is a directory\n")
