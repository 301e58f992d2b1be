"""morvanectl release: what becomes of stored presets when a release is installed."""

import json

import pytest
from harness import SOURCE, run_ctl
from pages import data_of, rows_of

YES, NO, ERROR = 0, 1, 2
OLD = {
    "parameters.def": """\
input index { rangeValid { 1..(inputs) } }
output index { rangeValid { 1, 2 } }
gain rw { index { input } rangeValid { 0..20 } }
gian rw { index { input } }
mute rw { rangeValid { "on", "off" } }
tone rw { }
label rw { index { input } }
pan rw { index { input } }
temp rw { }
extra rw { ctrlValid (inputs == 2) }
matrix rw { index { input } }
mode rw { rangeValid { 0..5 } }
""",
    "presets.def": """\
all preset { }
sound preset { exclude rw { label } }
third preset { exclude rw { label, mode } }
gone preset { exclude rw { index { none } } }
""",
    "variants": "a: inputs=1\nb: inputs=2\nc: inputs=3\n"}
NEW = {
    "parameters.def": """\
input index { rangeValid { 1..(inputs) } }
output index { rangeValid { 1, 2 } }
level rw { index { input } rangeValid { 0..12, 15 } default { 0 } }
mute rw { index { input } rangeValid { 0..1 } }
pan rw { index { input } }
temp ro { }
label rw { index { input } }
extra rw { ctrlValid (inputs == 3) }
fresh rw { default { 1 } }
matrix rw { index { input } index { output } }
mode rw { rangeValid { 0..3 } rangeValid (pan == 1) { 4, 5 } }
""",
    "presets.def": """\
all preset { }
sound preset { exclude rw { label } }
third preset { exclude rw { label, pan, mode } }
translate {
    removed { tone }
    level { from { gain { 20 = 15 } } }
    mute { from { mute { on = 1, off = 0 } } index 0 { input = 1 } }
}
""",
    "variants": "b: inputs=1\na: inputs=1\n"}
REPORT = """\
old -> new
gone: variant c
gone: preset gone
lost, which no translate section says:
    2 keys of 1 parameter: not defined any more, and not in a removed list
    1 key of 1 parameter: defined, but no parameter of the variant any more
    2 keys of 1 parameter: of another number of indices, without an index mapping
    3 keys of 3 parameters: with an index value that is gone
    1 key of 1 parameter: with values that no range has: a load of one fails
not loaded, as the definitions say:
    1 key of 1 parameter: in a removed list
    1 key of 1 parameter: not in the preset any more
    1 key of 1 parameter: read-only now, and not in the preset
taken over:
    1 key of 1 parameter: with values that parameters decide about
    2 keys of 2 parameters: with values that are mapped
    1 key of 1 parameter: renamed
    1 key of 1 parameter: re-indexed
    3 keys of 3 parameters: kept
new, so that no file has them:
    1 key of 1 parameter: reset by a load with defaults
    2 keys of 1 parameter: without a default

not defined any more, and not in a removed list:
    gian[1]
    gian[2] [on 1 of 2: b]

defined, but no parameter of the variant any more:
    extra [on 1 of 2: b]

of another number of indices, without an index mapping:
    matrix[1]
    matrix[2] [on 1 of 2: b]

with an index value that is gone:
    gain[2] [on 1 of 2: b]
    label[2] [in all on 1 of 2: b]
    pan[2] [on 1 of 2: b]

with values that no range has: a load of one fails:
    gain[1] -> level[1]: 13..14, 16..19

in a removed list:
    tone

not in the preset any more:
    pan[1] [in third]

read-only now, and not in the preset:
    temp

with values that parameters decide about:
    mode: 4..5 [in all, sound]

with values that are mapped:
    gain[1] -> level[1]: 20 -> 15
    mute -> mute[1]: "off" -> 0, "on" -> 1

renamed:
    gain[1] -> level[1]

re-indexed:
    mute -> mute[1]

reset by a load with defaults:
    fresh

without a default:
    matrix[1][1] and 1 more
"""
MISSING = ("morvanectl: cannot read none/parameters.def: No such file or directory; name the "
           "definition files with --parameters and --presets\n")
EXAMPLE = """\
examples -> examples/next
not loaded, as the definitions say:
    1 key of 1 parameter: in a removed list
taken over:
    1 key of 1 parameter: with values that are mapped
    1 key of 1 parameter: renamed
    4 keys of 1 parameter: re-indexed
    283 keys of 84 parameters: kept
new, so that no file has them:
    6 keys of 2 parameters: reset by a load with defaults

in a removed list:
    keyTone [in everything, panel, snapshot]

with values that are mapped:
    meterStyle: "loudness" -> "peak" [in everything, panel, snapshot]

renamed:
    videoTransitionTime -> transitionTime [in everything, scene, snapshot]

re-indexed:
    inputDelay[1] -> inputDelay[1][left] [in everything, input1, room, scene, snapshot]
    inputDelay[2] -> inputDelay[2][left] [in everything, room, scene, snapshot]
    inputDelay[3] -> inputDelay[3][left] and 1 more [in everything, scene, snapshot]

reset by a load with defaults:
    inputDelay[1][right] [in everything, input1, room, scene, snapshot]
    inputDelay[2][right] [in everything, room, scene, snapshot]
    inputDelay[3][right] and 1 more [in everything, scene, snapshot]
    outputTrim[1] [in everything, room, scene, snapshot]
    outputTrim[2] [in everything, room, scene, snapshot on 2 of 4: studio-*]
"""


def write(folder, files):
    folder.mkdir()
    for name, text in files.items():
        (folder / name).write_text(text)


@pytest.fixture
def release(tmp_path):
    """Runs `morvanectl release` in a folder with the releases old, new and same, which is old."""
    for name, files in ("old", OLD), ("new", NEW), ("same", OLD):
        write(tmp_path / name, files)
    return lambda *arguments: run_ctl("release", *arguments, cwd=tmp_path)


def tiny(tmp_path, name, parameters, presets="all preset { }\n"):
    write(tmp_path / name, {"parameters.def": parameters, "presets.def": presets})


def test_shows_what_is_lost_first(release):
    assert release("old", "new") == (NO, REPORT, "")


def test_shows_every_older_release(release):
    kept = "old -> same\ntaken over:\n    20 keys of 10 parameters: kept\n"
    assert release("old", "same") == (YES, kept, "")
    assert release("old", "old", "same") == (YES, f"{kept}\n{kept}", "")
    status, output, problems = release("old", "new", "same")
    assert (status, problems) == (NO, "")
    assert output.startswith(f"{kept}\nnew -> same\nlost,")


def test_the_example_loses_nothing():
    assert run_ctl("release", "examples", "examples/next", cwd=SOURCE) == (YES, EXAMPLE, "")


@pytest.mark.parametrize("options", [["a"], ["b", "-s", "inputs=1"]])
def test_takes_one_variant(release, options):
    status, output, problems = release("old", "new", "--variant", *options)
    assert (status, problems) == (NO, "")
    assert output.startswith("old -> new\ngone: preset gone\nlost, which")
    assert "[on" not in output and "[2]" not in output


def test_says_that_the_only_variant_is_gone(release):
    assert release("old", "new", "--variant", "c") == (NO, "old -> new\ngone: variant c\n", "")


def test_takes_the_same_arguments_without_a_list_of_variants(release, tmp_path):
    for name in "old", "new":
        (tmp_path / name / "variants").unlink()
    status, output, problems = release("old", "new", "-s", "inputs=1", "--json")
    assert (status, problems) == (NO, "")
    places = [place for row in json.loads(output)[0]["rows"] for place in row["places"]]
    assert {place["variant"] for place in places} == {""}


def test_takes_other_names_of_files(release, tmp_path):
    for name in "old", "new":
        for file in OLD:
            (tmp_path / name / file).rename(tmp_path / name / f"my-{file}")
    assert release("old", "new", "-p", "my-parameters.def", "-d", "my-presets.def", "--variants",
                   "my-variants") == (NO, REPORT, "")


def test_writes_json(release, tmp_path):
    tiny(tmp_path, "1", "gain rw { }\nmode rw { rangeValid { 1, 2 } }\n",
         "all preset { }\ngone preset { }\n")
    tiny(tmp_path, "2", "mode rw { rangeValid { 1 } }\nlevel rw { }\n")
    status, output, problems = release("1", "2", "--json")
    everywhere = [{"variant": "", "presets": ["all"]}]

    def row(fate, lost, parameter, before, after, values=()):
        return {"fate": fate, "lost": lost, "parameter": parameter, "values": list(values),
                "keys": [{"before": before, "after": after}], "places": everywhere}

    assert (status, problems) == (NO, "")
    assert json.loads(output) == [{
        "release": "1", "lost": True, "goneVariants": [],
        "gonePresets": [{"variant": "", "presets": ["gone"]}],
        "rows": [row("unlisted", True, "gain", "gain", None),
                 row("bad-value", True, "mode", "mode", "mode", ["2"]),
                 row("kept", False, "mode", "mode", "mode"),
                 row("new-without-default", False, "level", None, "level")]}]


def test_makes_control_characters_visible(release, tmp_path):
    tiny(tmp_path, "1", 'gain rw { }\nmode rw { rangeValid { "\x1b[31m" } }\n',
         "all preset { }\np\x1b[31m preset { exclude rw { mode } }\n"
         "q\x1b[31m preset { exclude rw { mode } }\n")
    tiny(tmp_path, "2", 'gain ro { }\nmode rw { rangeValid { 1 } }\n',
         "all preset { }\np\x1b[31m preset { include ro { gain } }\n")
    output = release("1", "2")[1]
    assert "\x1b" not in output and output.count("\\x1b[31m") == 4


def test_does_not_repeat_what_the_older_release_says_about_its_own_past(release, tmp_path):
    translate = "translate { mode { index 0 { input = 1 } } }\n"
    parameters = ("input index { rangeValid { 1 } }\n"
                  "gain rw { }\nmode rw { index { input } ctrlValid (0) }\n")
    tiny(tmp_path, "1", parameters, translate + "all preset { }\n")
    tiny(tmp_path, "2", "gain rw { }\n")
    assert release("1", "2") == (
        YES, "1 -> 2\ntaken over:\n    1 key of 1 parameter: kept\n", "")


@pytest.mark.parametrize("arguments, problem", [
    (["old", "none"], MISSING),
    (["none", "new"], MISSING),
    (["old", "new", "--variant", "d"],
     "morvanectl: no variant d in old/variants, which has: a, b, c\n"),
    (["old", "new", "--variants", "none"],
     "morvanectl: cannot read new/none: No such file or directory\n"),
])
def test_says_what_it_cannot_read(release, arguments, problem):
    assert release(*arguments) == (ERROR, "", problem)


def test_needs_two_releases(release):
    status, output, problems = release("old")
    assert (status, output) == (ERROR, "")
    assert "releases" in problems


def test_points_at_an_error_in_a_release(release, tmp_path):
    (tmp_path / "new/parameters.def").write_text("gain what { }\n")
    status, output, problems = release("old", "new")
    assert (status, output) == (ERROR, "")
    assert problems.startswith("new/parameters.def:1:6: error: ")


# Suggestions.

NAMES = "# New names, guessed from the old ones.\n"
INDICES = "# New indices; what is not idx:: and a number is guessed: the first value.\n"
COMMON = """\
input index { rangeValid { 3, 4 } }
output index { rangeValid { 1, 2 } }
blank index { rangeValid { "a b" } }
stays rw { }
"""
ALL = "all preset { }\n"


@pytest.mark.parametrize("before, after, presets, suggested", [
    ("gain rw { }", "", "", "translate { removed { gain } }\n"),
    ("pan rw { } gain rw { }", "", "", "translate { removed { gain, pan } }\n"),
    ("gain rw { }", "gains rw { }", "", NAMES + "translate { gains { from { gain } } }\n"),
    ("gaia rw { } gain rw { }", "gaim rw { }", "",
     "translate { removed { gain } }\n" + NAMES + "translate { gaim { from { gaia } } }\n"),
    ("gain rw { }", "gains ro { }", "all preset { include ro { all } }\n",
     NAMES + "translate { gains { from { gain } } }\n"),
    ("gain rw { }", "gains wo { }", "", "translate { removed { gain } }\n"),
    ("gain rw { }", "gains rw { ctrlValid (0) }", "", "translate { removed { gain } }\n"),
    ("remove rw { }", "removed rw { }", "", "translate { removed { remove } }\n"),
    ("gain rw { }", "gain rw { index { output } }", "",
     INDICES + "translate { gain { index 0 { output = 1 } } }\n"),
    ("gain rw { index { input } }", "gain rw { index { output } index { input } }", "",
     INDICES + "translate { gain { index 1 { output = 1, input = idx::0 } } }\n"),
    ("gain rw { index { input } index { output } }", "gain rw { index { output } }", "",
     INDICES + "translate { gain { index 2 { output = idx::1 } } }\n"),
    ("gain rw { index { input } }", "gains rw { index { input } index { input } }", "",
     NAMES + "translate { gains { from { gain } } }\n"
     + INDICES + "translate { gains { index 1 { input = idx::0, input = 3 } } }\n"),
    ("gain rw { }", "level rw { index { input } }", "translate { level { from { gain } } }\n",
     INDICES + "translate { level { index 0 { input = 3 } } }\n"),
])
def test_finds_nothing_lost_with_what_it_suggests(release, tmp_path, before, after, presets,
                                                  suggested):
    presets = presets if " preset " in presets else ALL + presets
    tiny(tmp_path, "1", COMMON + before, ALL)
    tiny(tmp_path, "2", COMMON + after, presets)
    assert release("1", "2", "--suggest") == (NO, suggested, "")
    assert release("1", "1", "2", "--suggest") == (NO, suggested, "")
    (tmp_path / "2/presets.def").write_text(presets + suggested)
    status, output, problems = release("1", "2")
    assert (status, problems) == (YES, ""), output
    assert release("1", "2", "--suggest") == (YES, "", "")


@pytest.mark.parametrize("before, after", [
    ("gain,pan rw { }", ""),
    ("gain rw { rangeValid { 1 } }", "gain rw { rangeValid { 2 } }"),
    ("gain rw { index { input } }", "gain rw { }"),
    ("gain rw { index { input } }", "gain rw { index { output } }"),
    ("gain rw { }", "gain rw { index { blank } }"),
    ("gain rw { }", "gain rw { index { none } }"),
])
def test_suggests_nothing_that_cannot_be_said(release, tmp_path, before, after):
    tiny(tmp_path, "1", COMMON + before)
    tiny(tmp_path, "2", COMMON + after)
    assert release("1", "2", "--suggest") == (NO, "", "")


def test_suggests_lines_for_every_variant(release, tmp_path):
    status, suggested, problems = release("old", "new", "--suggest")
    assert (status, suggested, problems) == (
        NO, "translate { removed { gian } }\n" + INDICES
        + "translate { matrix { index 1 { input = idx::0, output = 1 } } }\n", "")
    with (tmp_path / "new/presets.def").open("a") as file:
        file.write(suggested)
    assert release("old", "new", "--suggest")[1] == ""


@pytest.mark.parametrize("other", [["--suggest"], ["--html", "page"]])
def test_writes_json_and_nothing_else(release, other):
    assert release("old", "new", *other, "--json") == (
        ERROR, "", '{"file":null,"line":null,"column":null,"severity":"error","code":null,"text":'
        '"release takes one of --html, --json and --suggest","variants":[]}\n')


# Files.

LOST = """\
files/sub/second.preset:1:1: warning: no parameter gian on this variant [on b]
gian[1]=1
^
"""


@pytest.fixture
def files(tmp_path):
    """A folder with preset data files of the older release."""
    folder = tmp_path / "files"
    (folder / "sub").mkdir(parents=True)
    (folder / "first.preset").write_text("gain[1]=20\nmute=on\ntone=3\n")
    return folder


def test_reads_files(release, files, tmp_path):
    (tmp_path / "new/variants").write_text(NEW["variants"].replace("b: inputs=1", "b: inputs=2"))
    good = "files -> new\n1 of 1 file without a warning\n"
    status, output, problems = release("old", "new", "--files", "files")
    assert (status, problems) == (NO, "") and output.endswith("\n\n" + good)
    assert release("old", "old", "--files", "files") == (
        YES, "old -> old\ntaken over:\n    20 keys of 10 parameters: kept\n\n"
        "files -> old\n1 of 1 file without a warning\n", "")
    (files / "sub/second.preset").write_text("gian[1]=1\ngain[2]=1\n")
    status, output, problems = release("old", "new", "--files", "files")
    assert (status, problems) == (NO, "")
    assert output.endswith(f"\n\nfiles -> new\n1 of 2 files without a warning\n{LOST}")


def test_counts_what_it_finds_in_files(release, files, tmp_path):
    tiny(tmp_path, "1", "gain rw { rangeValid { 1, 2 } }\n")
    (files / "first.preset").write_text("gain=2\n")
    kept = "1 -> 1\ntaken over:\n    1 key of 1 parameter: kept\n\nfiles -> 1\n"
    assert release("1", "1", "--files", "files") == (
        YES, f"{kept}1 of 1 file without a warning\n", "")
    (files / "first.preset").write_text("gain=3\n")
    assert release("1", "1", "--files", "files") == (
        NO, f"{kept}0 of 1 file without a warning\n"
        'files/first.preset:1:6: warning: gain: "3" is none of its values: 1, 2\ngain=3\n'
        "     ^\n", "")


def test_reads_the_backup_of_a_file(release, files, tmp_path):
    tiny(tmp_path, "1", "gain rw { }\n")
    (files / "first.preset").write_text("mode=3\n")
    (files / "first.preset_bak").write_text("gain=3\n")
    assert release("1", "1", "--files", "files") == (
        YES, "1 -> 1\ntaken over:\n    1 key of 1 parameter: kept\n\n"
        "files -> 1\n1 of 1 file without a warning\n",
        "morvanectl: an interrupted store left files/first.preset_bak, which a load puts back\n")


def test_writes_files_as_json(release, files, tmp_path):
    (files / "sub/second.preset").write_text("gian[1]=1\n")
    status, output, problems = release("old", "new", "--files", "files", "--json")
    assert (status, problems) == (NO, "")
    assert json.loads(output)[1:] == [{
        "files": "files", "lost": True, "count": 2, "good": 1, "findings": [{
            "file": "files/sub/second.preset", "line": 1, "column": 1, "severity": "warning",
            "code": "unknown-key", "text": "no parameter gian on this variant",
            "variants": ["b"]}]}]


@pytest.mark.parametrize("arguments, problem", [
    (["none"], "cannot read none: No such file or directory"),
    (["empty"], "no preset data file in empty"),
])
def test_says_that_there_are_no_files(release, tmp_path, arguments, problem):
    (tmp_path / "empty").mkdir()
    status, _, problems = release("old", "old", "--files", *arguments)
    assert (status, problems) == (ERROR, f"morvanectl: {problem}\n")


@pytest.mark.parametrize("other", ["--files", "--html"])
def test_suggests_lines_and_writes_nothing_else(release, other):
    status, output, problems = release("old", "new", other, "x", "--suggest")
    assert (status, output) == (ERROR, "")
    assert "excludes" in problems


# As a page; tests/browser opens it.

def test_writes_a_page(release, files, tmp_path):
    (files / "sub/second.preset").write_text("gian[1]=1\n")
    folders = ["old", "same", "new"]
    assert release(*folders, "--files", "files", "--html", "page") == (NO, "", "")
    data = data_of((tmp_path / "page").read_text())
    reports = json.loads(release(*folders, "--json")[1])
    assert [older["name"] for older in data["releases"]] == ["old", "same"]
    assert [rows_of(data, older) for older in data["releases"]] == [
        report["rows"] for report in reports]
    text = release(*folders, "--files", "files")[1]
    assert [older["gone"] for older in data["releases"]] == 2 * [
        ["gone: variant c", "gone: preset gone"]]
    assert [older["lost"] for older in data["releases"]] == [True, True]
    assert data["files"] == {"count": 2, "good": 1,
                             "text": text[text.index("files -> new\n"):]}
    assert data["suggestion"] == release(*folders, "--suggest")[1] != ""


def test_says_on_the_page_where_parameters_are_defined(release, tmp_path):
    assert release("old", "new", "--html", "page")[0] == NO
    data = data_of((tmp_path / "page").read_text())
    older, newest = data["releases"][0]["parameters"], data["parameters"]
    assert (older["file"], newest["file"]) == ("old/parameters.def", "new/parameters.def")
    gain, level = ("gain rw { index { input } rangeValid { 0..20 } }",
                   "level rw { index { input } rangeValid { 0..12, 15 } default { 0 } }")
    assert (older["blocks"]["gain"], newest["blocks"]["level"]) == (
        [{"line": 3, "text": gain}], [{"line": 3, "text": level}])
    assert "gain" not in newest["blocks"] and "level" not in older["blocks"]
    assert older["indices"]["gain"] == newest["indices"]["level"] == ["input"]
    assert older["blocks"]["input"] == [{"line": 1, "text": OLD["parameters.def"].split("\n")[0]}]


def test_writes_a_page_without_anything_that_is_lost(release, tmp_path):
    assert release("old", "same", "--html", "page") == (YES, "", "")
    data = data_of((tmp_path / "page").read_text())
    assert (data["suggestion"], data["files"], data["releases"][0]["lost"]) == ("", None, False)


def test_says_that_a_page_cannot_be_written(release):
    assert release("old", "same", "--html", "/dev/full") == (
        ERROR, "", "morvanectl: cannot write /dev/full: No space left on device\n")


def test_writes_no_page_that_is_too_big_for_a_browser(release, tmp_path):
    comments = f"# {'x' * 497}\n" * 21_000  # which the page shows of both releases
    tiny(tmp_path, "1", f"gain rw {{\n{comments}}}\n")
    assert release("1", "1", "--html", "page") == (
        ERROR, "", "morvanectl: the page would have 22 MB, and at most 20 are written; compare "
        "fewer releases, or one variant with --variant\n")
    assert not (tmp_path / "page").exists()
