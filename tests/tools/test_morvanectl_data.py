"""morvanectl with preset data files: translate, validate, diff and dry runs."""

import json
import os

import pytest
from harness import wait_until
from test_morvanectl import ERROR, NO, YES, ctl  # noqa: F401 - a fixture

OLD_FILE = """\
# from the year before
gain[1]=5
level=3
mood=quiet
gone=1
nowhere=2
temperature=50
gain=1
"""
UNMAPPED = ("PresetTranslate::translate() Error:Could not located index mapping for gain with 2 "
            "indices\n")
LEFT_OVER = "morvanectl: an interrupted store left old_bak, which a load puts back\n"
SPLIT = "a load reads 1023 bytes of a line at once: "
# Conditions and bounds that the definitions do not decide, and ranges that do not hold.
RANGES = """\
level rw { rangeValid { 0..9 } rangeValid (mode == 1) { 20..30 } }
echo rw { rangeValid { 1..(mode) } }
tone rw { rangeValid (model == "rack") { 1 } }
many rw { rangeValid { 1, 3, 5, 7, 9, 11, 13, 15, "on" } }
free rw { }
mode rw { rangeValid { "auto", "off", 1..3 } }
"""


@pytest.fixture
def ranges(world, ctl):  # noqa: F811
    """The same command line with RANGES; returns (status, stdout, stderr)."""
    world.write("parameters.def", RANGES)
    world.write("presets.def", "all preset { }\n")
    return lambda *arguments: ctl(*arguments, "-s", "model=desk", bus=False)


def finding(line, column, severity, code, text, file="old"):
    return {"file": file, "line": line, "column": column, "severity": severity, "code": code,
            "text": text, "variants": []}


def test_translates_each_line(world, ctl):  # noqa: F811
    world.write("old", OLD_FILE + "gain[1][2]=7\ngain[9]=1\ntrigger=1\ninput=1\nserial=B\nmode=")
    assert ctl("translate", "old") == (YES, """\
1: # from the year before (skipped: not NAME=VALUE)
2: gain[1]=5 (kept)
3: level=3 -> gain[2]=3 (renamed, re-indexed)
4: mood=quiet -> mode=off (renamed, value mapped)
5: gone=1 (dropped: gone is in a removed list)
6: nowhere=2 (dropped: no parameter nowhere on this variant)
7: temperature=50 (kept)
8: gain=1 -> gain[2]=1 (re-indexed)
9: gain[1][2]=7 (dropped: its 2 indices cannot be mapped)
10: gain[9]=1 (dropped: gain[9] is not on this variant)
11: trigger=1 (dropped: trigger is write-only)
12: input=1 (dropped: input is an index)
13: serial=B (kept)
14: mode= (skipped: not NAME=VALUE)
""", UNMAPPED + "old:8:1: note: gain[2] is set on line 3, too; this value is set after that one\n")
    world.write("old", "level=3\ngone=1\n")
    assert ctl("translate", "old", "--json") == (YES, json.dumps([
        {"line": 1, "column": 1, "before": "level=3", "after": "gain[2]=3",
         "what": "renamed, re-indexed"},
        {"line": 2, "column": 1, "before": "gone=1", "after": None,
         "what": "dropped: gone is in a removed list"}], indent=2) + "\n", "")


def test_translates_for_a_preset(world, ctl):  # noqa: F811
    world.write("old", "gain[1]=5\nserial=B\nmode=off\n")
    assert ctl("translate", "old", "--for", "scene") == (
        YES, "1: gain[1]=5 (kept)\n2: serial=B (dropped: serial is not in scene)\n"
        "3: mode=off (kept)\n", "")
    assert ctl("translate", "old", "--for", "single")[1].startswith(
        "1: gain[1]=5 (dropped: gain[1] is not in single)\n")
    assert ctl("translate", "old", "--for", "nothing") == (
        ERROR, "", "morvanectl: no preset nothing covers a key on this variant; see: morvanectl "
        "presets, morvanectl check\n")


def test_says_which_parameters_no_preset_covers(world, ctl):  # noqa: F811
    world.write("presets.def", "scene preset { exclude rw { mode } }\n")
    world.write("old", "mode=off\nserial=B\ngain[1]=2\n")
    assert ctl("translate", "old") == (
        YES, "1: mode=off (dropped: no preset covers mode)\n"
        "2: serial=B (dropped: no preset covers serial)\n3: gain[1]=2 (kept)\n", "")


def test_says_what_the_bus_does_not_carry(world, ctl):  # noqa: F811
    """The daemon sends nothing of a file of which it cannot send everything."""
    world.write("old", b"gain[1]=1\nmode=\xe4\nnowhere=\xe4\n")
    assert [line["what"] for line in json.loads(ctl("translate", "old", "--json")[1])] == [
        "kept", "refused: its value is not UTF-8, so the whole load fails",
        "dropped: no parameter nowhere on this variant"]
    status, output, _ = ctl("validate", "old", "--json")
    assert (status, json.loads(output)) == (NO, [
        finding(2, 6, "warning", "not-utf8", "its value is not UTF-8, so the whole load fails"),
        finding(3, 1, "warning", "unknown-key", "no parameter nowhere on this variant")])
    world.simulator()
    world.daemon()
    assert ctl("load", "scene", "old")[0] == ERROR


def test_counts_the_lines_that_an_editor_shows(world, ctl):  # noqa: F811
    """The reader takes a long line in pieces, and nothing behind a null byte."""
    value = "1" * 1018
    world.write("old", f"mode={value}2\nmode={value}\nmode={value}gain[1]=5\n".encode()
                + b"# " + b"x" * 2000 + b"\nmode=off\0=5\ngain[2]=1\n")
    lines = json.loads(ctl("translate", "old", "--json")[1])
    assert [(line["line"], line["column"], line["after"]) for line in lines] == [
        (1, 1, f"mode={value}"), (1, 1024, None), (2, 1, f"mode={value}"), (2, 1024, None),
        (3, 1, f"mode={value}"), (3, 1024, "gain[1]=5"), (4, 1, None), (4, 1024, None),
        (5, 1, "mode=off"), (6, 1, "gain[2]=1")]
    assert ctl("translate", "old")[1].splitlines()[-1] == "6: gain[2]=1 (kept)"
    assert ctl("translate", "old")[1].splitlines()[1] == "1:1024: 2 (skipped: not NAME=VALUE)"
    status, output, problem = ctl("validate", "old", "--json")
    assert (status, problem) == (NO, "")
    assert [(found["line"], found["column"], found["severity"], found["text"])
            for found in json.loads(output) if found["code"] in ("long-line", "null-byte")] == [
        (1, 1024, "warning", SPLIT + "the value ends here, and the rest is a line of its own"),
        (3, 1024, "warning", SPLIT + "the value ends here, and the rest is a line of its own"),
        (4, 1024, "note", SPLIT + "the rest is a line of its own"),
        (5, 9, "warning",
         "a load reads nothing between a null byte and the end of the line")]


def test_writes_the_file_that_this_release_would_have_stored(world, ctl):  # noqa: F811
    world.write("old", OLD_FILE + "gain[3]x=7\nserial=B\n")
    status, output, _ = ctl("translate", "old", "--output", "new")
    assert (status, output.splitlines()[1]) == (YES, "2: gain[1]=5 (kept)")
    assert (world.folder / "new").read_text() == (
        "gain[1]=5\ngain[2]=1\ngain[3]=7\nmode=off\nserial=B\ntemperature=50\n")
    (world.folder / "link").symlink_to("new")
    assert ctl("translate", "old", "--for", "scene", "--output", "link")[0] == YES
    stored = "gain[1]=5\ngain[2]=1\ngain[3]=7\nmode=off\ntemperature=50\n"
    assert (world.folder / "new").read_text() == stored
    assert (world.folder / "link").is_symlink()
    world.simulator()
    world.daemon()
    assert ctl("load", "scene", "old")[0] == YES
    assert ctl("store", "scene", "stored")[0] == YES
    assert (world.folder / "stored").read_text() == stored, "what a store itself writes"


@pytest.mark.parametrize("output, problem", [
    ("old", "it is the file that is read"),
    ("hard", "it is the file that is read"),
    ("folder", "not a regular file"),
    ("lost", "an interrupted store left lost_bak, which a load would put back"),
    ("nowhere/new", "No such file or directory"),
])
def test_writes_nothing_but_a_new_file(world, ctl, output, problem):  # noqa: F811
    world.write("old", "mode=off\n")
    (world.folder / "hard").hardlink_to(world.folder / "old")
    (world.folder / "folder").mkdir()
    world.write("lost_bak", "mode=1\n")
    before = sorted(os.listdir(world.folder))
    assert ctl("translate", "old", "--output", output) == (
        ERROR, "1: mode=off (kept)\n", f"morvanectl: cannot write {output}: {problem}\n")
    assert sorted(os.listdir(world.folder)) == before
    assert (world.folder / "old").read_text() == "mode=off\n"


def test_writes_no_file_without_a_line(world, ctl):  # noqa: F811
    world.write("old", "nowhere=1\n")
    assert ctl("translate", "old", "--output", "new")[0::2] == (
        ERROR, "morvanectl: cannot write new: no line would be set\n")
    assert not (world.folder / "new").exists()


def test_validates_a_file(world, ctl):  # noqa: F811
    world.write("old", "gain[1]=5\n\tmode=off\nmode=\t7\nserial=B\n# nowhere = 1\n=5\nmode=\n")
    assert ctl("validate", "old", "--for", "scene") == (NO, """\
old:2:1: warning: no parameter \\x09mode on this variant
\tmode=off
^
old:3:6: warning: mode: "\\x097" is none of its values: "auto", "off", 1..3
mode=\t7
     ^
old:4:1: warning: serial is not in scene
serial=B
^
old:6:1: warning: a load skips a line without a name
=5
^
old:7:1: warning: a load skips a line without a value
mode=
^
""", "")
    assert ctl("validate", "old", "--for", "scene", "--json") == (NO, json.dumps([
        finding(2, 1, "warning", "unknown-key", "no parameter \\x09mode on this variant"),
        finding(3, 6, "warning", "bad-value",
                'mode: "\\x097" is none of its values: "auto", "off", 1..3'),
        finding(4, 1, "warning", "not-in-preset", "serial is not in scene"),
        finding(6, 1, "warning", "no-entry", "a load skips a line without a name"),
        finding(7, 1, "warning", "no-entry", "a load skips a line without a value"),
    ], indent=2) + "\n", "")
    world.write("old", "gain[1]=0xc\nmode=auto\n# a comment\n\n")
    assert ctl("validate", "old") == (YES, "", "")
    assert ctl("validate", "old", "--json") == (YES, "[]\n", "")


def test_puts_the_caret_under_the_byte(world, ctl):  # noqa: F811
    world.write("old", "a\tb=1\0\n")
    assert ctl("validate", "old")[1].splitlines()[2:6] == [
        "^", "old:1:6: warning: a load reads nothing between a null byte and the end of the line",
        "a\tb=1", " \t   ^"]


@pytest.mark.parametrize("line, severity, text", [
    ("level=9", None, None),
    ("level=10", "warning", 'level: "10" is none of its values: 0..9, 20..30'),
    ("level=20", "note", 'level: whether "20" is one of its values is not known: (mode == 1) '
                         "counts as met because it names a parameter"),
    ("echo=2", "note", 'echo: whether "2" is one of its values is not known: a bound names a '
                       "parameter, whose value is not known yet"),
    ("tone=1", "warning", 'tone: "1" is none of its values: it has none on this variant'),
    ("many=2", "warning", 'many: "2" is none of its values: 1, 3, 5, 7, 9, 11, 13, 15 and 1 more'),
    ("many=" + "2" * 61, "warning", f'many: "{"2" * 60}..." is none of its values: 1, 3, 5, 7, 9, '
                                    "11, 13, 15 and 1 more"),
    ("free=anything", None, None),
])
def test_says_of_values_what_the_definitions_decide(world, ranges, line, severity, text):
    world.write("old", line + "\n")
    status, output, problem = ranges("validate", "old", "--json")
    code = {"warning": "bad-value", "note": "undecided-value"}.get(severity)
    column = line.index("=") + 2
    assert (status, problem) == (NO if severity == "warning" else YES, "")
    assert json.loads(output) == ([finding(1, column, severity, code, text)] if text else [])
    notes = f"old:1:{column}: note: {text}\n" if text else ""
    assert ranges("translate", "old") == (YES, f"1: {line} (kept)\n", notes)
    name = line.split("=")[0]
    assert ranges("load", "all", "old", "--dry-run") == (
        YES, f"start\nset\n    {line}\ncommit\nend\n", notes)
    assert name in line


def test_finds_keys_that_only_a_preset_has(world, ctl):  # noqa: F811
    """An include list may name values that the index does not have."""
    world.write("parameters.def",
                "input index { rangeValid { 1 } }\nstate ro { index { input } }\n")
    world.write("presets.def", "scene preset { include ro { state { index { input { 7 } } } } }\n")
    world.write("old", "state[7]=1\n")
    assert ctl("validate", "old") == (NO, """\
old:1:1: warning: a load sets state[7], which a preset includes, but which is not on this variant
state[7]=1
^
""", "")


@pytest.mark.parametrize("command", [
    ["translate", "old"], ["validate", "old"], ["diff", "old", "same"], ["diff", "same", "old"],
    ["diff", "old", "--live", "single"], ["load", "single", "old", "--dry-run"]])
def test_reads_a_left_over_backup_as_a_load_would(world, ctl, command):  # noqa: F811
    world.simulator()
    world.write("old", "mode=wrong\n")
    world.write("old_bak", "mode=auto\n")
    world.write("same", "mode=auto\n")
    status, output, problem = ctl(*command)
    assert (status, problem) == (YES, LEFT_OVER)
    assert "wrong" not in output
    assert (world.folder / "old").read_text() == "mode=wrong\n"
    assert (world.folder / "old_bak").exists()


def test_names_the_backup_that_it_has_read(world, ctl):  # noqa: F811
    world.write("old_bak", "mode=x\n")
    assert ctl("validate", "old") == (NO, """\
old_bak:1:6: warning: mode: "x" is none of its values: "auto", "off", 1..3
mode=x
     ^
""", LEFT_OVER)


@pytest.mark.parametrize("make, problem", [
    (os.mkdir, "not a regular file"), (os.mkfifo, "not a regular file"),
    (lambda path: None, "No such file or directory")])
@pytest.mark.parametrize("command", [
    ["translate", "x"], ["validate", "x"], ["diff", "x", "x"], ["diff", "x", "--live", "scene"]])
def test_reads_nothing_but_files(world, ctl, make, problem, command):  # noqa: F811
    make(world.folder / "x")
    status, output, problems = ctl(*command)
    assert (status, output) == (ERROR, "")
    assert set(problems.splitlines()) == {f"morvanectl: cannot read x: {problem}"}


@pytest.mark.parametrize("method, arguments", [
    ("load", ["old"]), ("load", ["two"]), ("load-with-default", ["old"]), ("load-default", [])])
def test_a_dry_run_shows_the_calls_that_a_load_makes(
        world, ctl, method, arguments):  # noqa: F811
    world.write("old", OLD_FILE)
    world.write("two", "mode=off\ngain[1]=5\n")
    status, output, _ = ctl(method, "scene", *arguments, "--dry-run", "--json", bus=False)
    assert status == YES
    handler = world.simulator()
    world.daemon()
    assert ctl(method, "scene", *arguments)[0] == YES
    wait_until(lambda: "end" in handler.methods(), "the end of the load")
    calls = []
    for name, *rest in handler.calls():
        lists = [value if isinstance(value, list) else [value] for value in rest[1:]]
        calls.append({"method": name, **dict(zip(("keys", "values"), lists))})
    assert json.loads(output) == calls


def test_a_dry_run_as_text(world, ctl):  # noqa: F811
    world.write("old", OLD_FILE + "serial=B\nmode=on\ngain[1][2]=7\n")
    assert ctl("load-with-default", "scene", "old", "--dry-run", bus=False) == (YES, """\
start
set_bulk
    gain[1]=5
    gain[2]=3
    mode=off
    gain[2]=1
    mode=on
set_status
    temperature=50
reset
    gain[3]
commit
end
""", UNMAPPED + """\
old:6:1: note: no parameter nowhere on this variant
old:8:1: note: gain[2] is set on line 3, too; this value is set after that one
old:9:1: note: serial is not in scene
old:10:1: note: mode is set on line 4, too; this value is set after that one
old:10:6: note: mode: "on" is none of its values: "auto", "off", 1..3
old:11:1: note: its 2 indices cannot be mapped
""")
    assert ctl("load", "scene", "none", "--dry-run", bus=False) == (
        ERROR, "", "morvanectl: Error opening file: none\n")
    assert ctl("load", "scenes", "old", "--dry-run", bus=False) == (
        ERROR, "", UNMAPPED + "morvanectl: Unknown preset definition: scenes\n")


def test_a_dry_run_puts_no_backup_of_a_backup_back(world, ctl):  # noqa: F811
    for name in ("old", "old_bak", "old_bak_bak"):
        world.write(name, f"mode={name}\n")
    assert ctl("load", "scene", "old", "--dry-run", bus=False) == (
        ERROR, "", LEFT_OVER + "morvanectl: old_bak has a backup, too: old_bak_bak\n")
    for name in ("old", "old_bak", "old_bak_bak"):
        assert (world.folder / name).read_text() == f"mode={name}\n"


def test_a_dry_run_refuses_what_cannot_be_sent(world, ctl):  # noqa: F811
    world.write("bytes", b"mode=\xff\n")
    assert ctl("load", "scene", "bytes", "--dry-run", bus=False) == (
        ERROR, "",
        "morvanectl: ERROR: parm_set_() - set failed (bytes: value of mode is not valid UTF-8)\n"
        "bytes:1:6: note: its value is not UTF-8, so the whole load fails\n")


def test_compares_two_files(world, ctl):  # noqa: F811
    world.write("a", "mode=auto\ngain[1]=1\ngain[2]=0\nmode=off\n")
    world.write("b", "gain[1]=2\nmode=off\ngain[3]=3\n")
    assert ctl("diff", "a", "b") == (
        NO, "- gain[1]=1\n+ gain[1]=2\n- gain[2]=0\n+ gain[3]=3\n", "")
    assert ctl("diff", "a", "b", "--json") == (NO, json.dumps([
        {"key": "gain[1]", "first": "1", "second": "2", "reset": False},
        {"key": "gain[2]", "first": "0", "second": None, "reset": False},
        {"key": "gain[3]", "first": None, "second": "3", "reset": False}], indent=2) + "\n", "")
    assert ctl("diff", "a", "a") == (YES, "", "")
    for arguments in (["a"], ["a", "b", "--live", "scene"]):
        assert ctl("diff", *arguments) == (
            ERROR, "", "morvanectl: diff needs another FILE, or --live PRESET\n")


def test_shows_what_a_load_would_change(world, ctl):  # noqa: F811
    world.simulator()
    world.write("a", "gain[1]=0\ngain[2]=7\ngain[2]=8\nmood=quiet\nserial=B\n")
    assert ctl("diff", "a", "--live", "scene") == (
        NO, "- gain[2]=8\n+ gain[2]=0\n- mode=off\n+ mode=auto\n", "")
    assert ctl("diff", "a", "--live", "scene", "--with-defaults") == (NO, """\
- gain[2]=8
+ gain[2]=0
- gain[3] (reset to its default)
+ gain[3]=0
- mode=off
+ mode=auto
- temperature (reset to its default)
+ temperature=40
""", "")
    world.write("a", "temperature=50\n")
    assert ctl("diff", "a", "--live", "states", "--with-defaults", "--json") == (NO, json.dumps([
        {"key": "serial", "first": None, "second": "A-17", "reset": True},
        {"key": "temperature", "first": "50", "second": "40", "reset": False}],
        indent=2) + "\n", "")
    world.write("a", "mode=auto\n")
    assert ctl("diff", "a", "--live", "single") == (YES, "", "")
    world.write("a", "nowhere=1\n")
    assert ctl("diff", "a", "--live", "single") == (YES, "", "")


def test_a_load_that_fails_changes_nothing_that_could_be_shown(world, ctl):  # noqa: F811
    world.simulator()
    world.write("a", b"mode=\xff\n")
    assert ctl("diff", "a", "--live", "scene") == (
        ERROR, "",
        "morvanectl: ERROR: parm_set_() - set failed (a: value of mode is not valid UTF-8)\n")


def test_the_defaults_need_a_device(world, ctl):  # noqa: F811
    world.write("a", "mode=auto\n")
    status, output, problem = ctl("diff", "a", "a", "--with-defaults")
    assert (status, output) == (ERROR, "")
    assert problem.startswith("--with-defaults requires --live\n")
