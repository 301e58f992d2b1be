"""morvanectl matrix: what the presets cover, in a pipe, on a terminal, as CSV, JSON and a page."""

import csv
import json
import os
import re
import subprocess
from collections import defaultdict

import pexpect
import pytest
from generated_device import generate
from harness import CTL, DEADLINE_SECONDS, SLOW_STARTS, SOURCE
from pages import data_of

YES, ERROR = 0, 2
DEVICES = 60 if SLOW_STARTS else 300
PARAMETERS = """\
input index { rangeValid { 1..(inputs) } }
empty index { rangeValid { 2..1 } }
gain rw { index { input } }
level ro { index { input } }
mode rw { ctrlValid (model == "studio") }
never rw { index { empty } }
serial rostrict { }
trigger wo { }
"""
PRESETS = """\
all preset { include ro { all } }
first preset { include ro { level { index { input { 1, 9 } } } } exclude rw { mode, gain } }
second preset { exclude rw { gain { index { not input { 2 } } }, mode } }
"""
VARIANTS = """\
field-a: inputs=1 model=field
field-b: inputs=1 model=field
studio: inputs=4 model=studio
"""
FIELD = """\
parameter access keys all first second
gain rw 1 +1 - -
level ro 1 +1 +1!1 -
never rw 0 - - -
serial rostrict 1 +1 - -
"""
STUDIO = """\
parameter access keys all first second
gain rw 4 +4 - ~1/4
level ro 4 +4 ~1/4!1 -
mode rw 1 +1 - -
never rw 0 - - -
serial rostrict 1 +1 - -
"""
DIFFERENCES = """\
parameter access variants keys all first second
gain rw field-* 1* +1* - -*
gain rw studio 4* +4* - ~1/4*
level ro field-* 1* +1* +1!1* -
level ro studio 4* +4* ~1/4!1* -
mode rw field-* -* -* - -
mode rw studio 1* +1* - -
"""
ALIKE = """\
never rw all 0 - - -
serial rostrict all 1 +1 - -
"""


def without(table, *presets):
    """The table without the columns of these presets."""
    lines = [line.split() for line in table.splitlines()]
    kept = [i for i, name in enumerate(lines[0]) if name not in presets]
    return "".join(" ".join(line[i] for i in kept) + "\n" for line in lines)


def tabbed(table):
    return table.replace(" ", "\t")


@pytest.fixture
def folder(tmp_path):
    (tmp_path / "p").write_text(PARAMETERS)
    (tmp_path / "d").write_text(PRESETS)
    (tmp_path / "variants").write_text(VARIANTS)
    return tmp_path


def run(folder, *arguments):
    outcome = subprocess.run([*CTL, "-p", "p", "-d", "d", *arguments], cwd=folder, text=True,
                             capture_output=True, check=False)
    return outcome.returncode, outcome.stdout, outcome.stderr


@pytest.mark.parametrize("options, table", [
    (["--variant", "field-a"], without(FIELD, "second")),
    (["--variant", "studio"], STUDIO),
    (["-s", "inputs=4", "-s", "model=studio"], STUDIO),
    (["--variant", "studio", "--for", "first"], without(STUDIO, "all", "second")),
    (["--variant", "studio", "--only", "[gl]*"], STUDIO[:STUDIO.index("mode")]),
    (["--all-variants"], DIFFERENCES + ALIKE),
    (["--all-variants", "inputs=4", "model=studio"], STUDIO),
    (["--all-variants", "--only-differences"], DIFFERENCES),
    (["--all-variants", "--only-differences", "--for", "second"],
     without(DIFFERENCES[:DIFFERENCES.index("level")], "all", "first")),
    (["--all-variants", "--only-differences", "--only", "serial"], ""),
])
def test_writes_one_line_for_variants_with_the_same_cells(folder, options, table):
    assert run(folder, "matrix", *options) == (YES, tabbed(table), "")


CSV = """\
parameter,access,preset,variant,keys,covered,unknown,extent,differs
level,ro,first,field-a,1,1,1,all,true
level,ro,first,field-b,1,1,1,all,true
level,ro,first,studio,4,1,1,some,true
mode,rw,first,field-a,,0,0,none,false
mode,rw,first,field-b,,0,0,none,false
mode,rw,first,studio,1,0,0,none,false
"""


def test_writes_comma_separated_values(folder):
    arguments = ["matrix", "--for", "first", "--only", "[lm]*"]
    assert run(folder, *arguments, "--all-variants", "--csv") == (YES, CSV, "")
    of_studio = [line.replace("true", "false") for line in CSV.splitlines()
                 if "field" not in line]
    assert run(folder, *arguments, "--variant", "studio", "--csv")[1].splitlines() == of_studio
    assert run(folder, *arguments, "-s", "inputs=4", "-s", "model=studio", "--csv")[
        1].splitlines() == [line.replace("studio", "") for line in of_studio]
    assert run(folder, "matrix", "--only", "serial", "--all-variants", "--only-differences",
               "--csv") == (YES, CSV.splitlines()[0] + "\n", "")


def test_quotes_what_separates_values(folder):
    (folder / "d").write_text("a\"b preset { }\nplain preset { }\n")
    (folder / "variants").write_text("x,y: inputs=1 model=studio\n")
    output = run(folder, "matrix", "--only", "gain", "--variant", "x,y", "--csv")[1]
    assert output.splitlines()[1:] == [
        'gain,rw,"a""b","x,y",1,1,0,all,false', 'gain,rw,plain,"x,y",1,1,0,all,false']
    assert [row["preset"] for row in csv.DictReader(output.splitlines())] == ['a"b', "plain"]


def test_writes_json(folder):
    arguments = ["matrix", "--for", "first", "--only", "[lm]*", "--all-variants", "--json"]
    status, output, problem = run(folder, *arguments)
    assert (status, problem) == (YES, "")
    fields, *rows = (line.split(",") for line in CSV.splitlines())
    assert json.loads(output) == [
        {name: value if name in fields[:4] + ["extent"] else json.loads(value or "null")
         for name, value in zip(fields, row)} for row in rows]
    assert output.splitlines()[:2] == [
        "[", '{"parameter":"level","access":"ro","preset":"first","variant":"field-a","keys":1,'
        '"covered":1,"unknown":1,"extent":"all","differs":true},']
    assert run(folder, "matrix", "--only", "serial", "--all-variants", "--only-differences",
               "--json") == (YES, "[]\n", "")


# The same number of keys, but others.
def test_sees_that_keys_differ_where_their_numbers_do_not(folder):
    (folder / "p").write_text("input index { rangeValid { (first)..3 } rangeValid { 5..(last) } }\n"
                              "gain rw { index { input } }\nmode rw { }\n")
    (folder / "d").write_text("all preset { }\nthree preset { exclude rw { mode, "
                              "gain { index { not input { 3 } } } } }\n")
    assert run(folder, "matrix", "--all-variants", "first=2", "last=4") == (
        YES, tabbed("parameter access keys all three\ngain rw 2 +2 ~1/2\nmode rw 1 +1 -\n"), "")
    (folder / "variants").write_text("a: first=2 last=4\nb: first=3 last=5\nc: first=2 last=4\n")
    assert run(folder, "matrix", "--all-variants") == (
        YES, tabbed("parameter access variants keys all three\n"
                    "gain rw all 2* +2* ~1/2*\nmode rw all 1 +1 -\n"), "")


@pytest.mark.parametrize("options, problem", [
    (["--variant", "field-a", "--for", "second"],
     "no preset second covers a key on this variant; see: morvanectl presets, morvanectl check"),
    (["--all-variants", "--for", "third"],
     "no preset third covers a key on any of these variants; see: morvanectl presets, "
     "morvanectl check"),
    (["--variant", "field-a", "--only", "mode"],
     "no ro, rostrict or rw parameter of this variant matches mode"),
    (["--all-variants", "--only", "trigger"],
     "no ro, rostrict or rw parameter of any of these variants matches trigger"),
    (["--variant", "studio", "--csv", "--json"], "matrix takes one of --csv, --html and --json"),
    (["--variant", "studio", "--csv", "--html", "page"],
     "matrix takes one of --csv, --html and --json"),
    (["--variant", "studio", "--html", "page", "--json"],
     "matrix takes one of --csv, --html and --json"),
    (["--all-variants", "--variants", "/dev/null"],
     "there are no named variants; see --variants, or give --all-variants system arguments with "
     "all their values"),
])
def test_refuses_what_there_is_not(folder, options, problem):
    status, output, said = run(folder, "matrix", *options)
    assert (status, output) == (ERROR, "")
    assert problem in said and (said == f"morvanectl: {problem}\n" or "--json" in options)


def test_compares_several_variants_only(folder):
    assert run(folder, "matrix", "--only-differences") == (
        ERROR, "", "--only-differences requires --all-variants\n"
        "Run with --help for more information.\n")


def test_warns_once_of_names_that_nothing_gives(folder):
    (folder / "variants").unlink()
    assert run(folder, "matrix", "--only", "gain", "--all-variants", "model=a,b") == (
        YES, tabbed("parameter access variants keys all first\ngain rw all 0 - -\n"),
        "morvanectl: warning: nothing gives a value to inputs, which p uses; describe the device "
        "with --system or --variant\n")


# As a page; tests/browser opens it.

def test_writes_a_page_that_needs_nothing_else(folder):
    assert run(folder, "matrix", "--all-variants", "--html", "page") == (YES, "", "")
    page = (folder / "page").read_text()
    assert page.startswith("<!DOCTYPE html>\n") and page.endswith("</html>\n")
    assert re.findall(r"(?:src|href|url|import)\s*[=(]\s*[^,>]*", page) == ['href="data:']
    assert "@" not in re.sub(r"@(media|page)\b", "", page)
    version = run(folder, "--version")[1].strip()
    assert f'<meta name="generator" content="morvanectl {version}">' in page
    data = data_of(page)
    assert data["files"] == {"parameters": "p", "presets": "d"}
    assert [preset["name"] for preset in data["presets"]] == ["all", "first", "second"]
    assert [parameter["blocks"][0]["text"] for parameter in data["parameters"]] == [
        line for line in sorted(PARAMETERS.splitlines()) if " index { range" not in line
        and " wo " not in line]


def test_shows_on_the_page_what_is_asked_for(folder):
    assert run(folder, "matrix", "--all-variants", "--only-differences", "--for", "second",
               "--html", "page") == (YES, "", "")
    data = data_of((folder / "page").read_text())
    assert data["only"] == ["preset second", "what differs between variants"]
    assert [parameter["name"] for parameter in data["parameters"]] == ["gain"]
    assert [preset["name"] for preset in data["presets"]] == ["second"]


def test_no_name_ends_the_data_of_a_page(folder):
    name = "</script><!--<script>"
    (folder / "variants").write_text(f"{name}: inputs=1 model=field\n")
    assert run(folder, "matrix", "--all-variants", "--html", "page") == (YES, "", "")
    page = (folder / "page").read_text()
    assert data_of(page)["variants"][0]["name"] == name and name not in page


@pytest.mark.parametrize("file, problem", [
    ("nowhere/page", "No such file or directory"), (".", "Is a directory"),
    ("", "No such file or directory"),
    ("/dev/full", "No space left on device")])
def test_says_why_a_page_cannot_be_written(folder, file, problem):
    assert run(folder, "matrix", "--variant", "studio", "--html", file) == (
        ERROR, "", f"morvanectl: cannot write {file}: {problem}\n")


def test_writes_no_page_that_is_too_big_for_a_browser(folder):
    (folder / "p").write_text("input index {\n" + "".join(
        f'rangeValid {{ "{"x" * 450}{number}" }}\n' for number in range(220)) + "}\n"
        "gain rw { index { input } }\nmode rw { }\n")
    (folder / "d").write_text("".join(
        f"s{number} preset {{ exclude rw {{ gain {{ index {{ input {{\n"
        f"{'x' * 450}{number} }} }} }} }} }}\n" for number in range(220)))
    assert run(folder, "matrix", "--html", "page") == (
        ERROR, "", "morvanectl: the page would have 23 MB, and at most 20 are written; show less "
        "of it with --for or --only\n")
    assert not (folder / "page").exists()
    assert run(folder, "matrix", "--html", "page", "--only", "mode") == (YES, "", "")


# On a terminal.

LEGEND = """+4    all 4 keys
~2/4  2 of 4 keys
-     none
!1    1 key with an index value that does not exist
"""


def on_terminal(folder, *arguments, columns=80, rows=50, **environment):
    variables = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
    command, *rest = map(str, [*CTL, "-p", "p", "-d", "d", "matrix", *arguments])
    child = pexpect.spawn(command, rest, timeout=DEADLINE_SECONDS, encoding="utf-8",
                          cwd=str(folder), dimensions=(rows, columns),
                          env={**variables, "TERM": "xterm", **environment})
    output = child.read()
    child.close()
    return child.exitstatus, output.replace("\r\n", "\n")


WIDE = """parameter  access    keys  all  first   second
gain       rw        4     +4   -       ~1/4
level      ro        4     +4   ~1/4!1  -
mode       rw        1     +1   -       -
never      rw        0     -    -       -
serial     rostrict  1     +1   -       -

"""


def test_aligns_the_columns_on_a_terminal(folder):
    assert on_terminal(folder, "--variant", "studio", NO_COLOR="1") == (YES, WIDE + LEGEND)


def columns_of(table, *slices):
    return "".join("".join(line[part] for part in slices).rstrip() + "\n"
                   for line in table.splitlines())


@pytest.mark.parametrize("columns, blocks", [
    (46, [slice(27, None)]),
    (45, [slice(27, 40), slice(40, None)]),
    (38, [slice(27, 40), slice(40, None)]),
    (37, [slice(27, 32), slice(32, 40), slice(40, None)]),
    (5, [slice(27, 32), slice(32, 40), slice(40, None)]),
])
def test_splits_what_is_wider_than_the_terminal(folder, columns, blocks):
    table = "".join(columns_of(WIDE, slice(0, 27), block) for block in blocks)
    status, output = on_terminal(folder, "--variant", "studio", columns=columns, NO_COLOR="1")
    assert (status, output) == (YES, table + LEGEND)


def test_repeats_the_names_of_columns_on_every_screen(folder):
    header, *lines = WIDE.splitlines(keepends=True)
    assert on_terminal(folder, "--variant", "studio", rows=4, NO_COLOR="1")[1] == "".join(
        [header, *lines[:2], header, *lines[2:4], header, *lines[4:], LEGEND])


def test_colours_have_a_legend(folder):
    status, output = on_terminal(folder, "--variant", "studio", "--only", "[gl]*")
    shown = re.sub(r"\x1b\[1;(\d+)m(.*?)\x1b\[0m", r"<\1 \2>", output)
    assert (status, shown) == (YES, """\
parameter  access  keys  all  first   second
gain       rw      4     <32 +4>   -       <33 ~1/4>
level      ro      4     <32 +4>   <31 ~1/4!1>  -

<32 +4>    all 4 keys
<33 ~2/4>  2 of 4 keys
-     none
<31 !1>    1 key with an index value that does not exist
""")


def test_numbers_long_lists_of_variants_on_a_terminal(folder):
    (folder / "variants").write_text("".join(
        f"{name}: inputs={inputs} model=field\n" for name, inputs in [
            ("garden", 1), ("hall", 2), ("kitchen", 1), ("workshop-downstairs", 1)]))
    assert on_terminal(folder, "--all-variants", "--only", "gain", NO_COLOR="1")[1] == """\
parameter  access  variants  keys  all  first  second
gain       rw      [1]       1*    +1*  -      -*
gain       rw      hall      2*    +2*  -      ~1/2*

""" + LEGEND + """\
*     not the same on all variants
[1]   garden, kitchen, workshop-downstairs
"""


# Every number is that of the keys that `keys` lists.

class Keys:
    """The keys of presets on variants, by parameter, as `keys` lists them."""

    def __init__(self, folder):
        self.folder, self.known = folder, {}

    def of(self, preset, variant):
        """No keys of a preset that does not exist."""
        if (preset, variant) not in self.known:
            by_parameter = defaultdict(set)
            for key in run(self.folder, "keys", preset, *variant)[1].split("\n"):
                by_parameter[key.split("[")[0]].add(key)
            self.known[preset, variant] = by_parameter
        return self.known[preset, variant]


def check_record(record, keys, variants):
    """@return the number of keys that are covered."""
    name, preset, variant = record["parameter"], record["preset"], variants[record["variant"]]
    covered = keys.of(preset, variant)[name]
    own = keys.of("everything", variant)[name]
    assert int(record["keys"] or 0) == len(own), record
    assert int(record["covered"]) == len(covered & own), record
    assert int(record["unknown"]) == len(covered - own), record
    assert record["extent"] == ("none" if not covered & own else
                                "all" if own <= covered else "some"), record
    shares = [(keys.of(preset, other)[name], keys.of("everything", other)[name])
              for other in variants.values()]
    differs = any(one[0] and one != other for one in shares for other in shares)
    assert record["differs"] == str(differs).lower(), record
    return len(covered)


def check_page(folder, keys, variants, *axes):
    """What the page has behind each of its cells."""
    assert run(folder, "matrix", "--all-variants", *axes, "--html", "page")[:2] == (YES, "")
    data = data_of((folder / "page").read_text())
    for on, name in enumerate(variant["name"] for variant in data["variants"]):
        for preset in data["presets"]:
            there = preset["on"][on]
            covered = keys.of(preset["name"], variants[name])
            assert (there is None) == (not any(map(any, covered.values())))
            decisions = there and {"items": dict(there["items"]), "groups": dict(there["groups"])}
            for number, parameter in enumerate(data["parameters"]):
                if there is None or parameter["groups"][on] is None:
                    continue
                decision = data["decisions"][decisions["items"].get(
                    number, decisions["groups"].get(parameter["groups"][on]))]
                check_cell(decision, parameter["name"], covered,
                           keys.of("everything", variants[name]))


def check_cell(decision, parameter, covered, existing):
    of_standing = defaultdict(set)
    for standing, _, endings in decision["keys"]:
        of_standing[standing] |= {parameter + ending for ending in endings}
    assert of_standing["in"] | of_standing["unknown"] == covered[parameter], parameter
    assert of_standing["in"] | of_standing["out"] == existing[parameter], parameter
    assert decision["own"] == len(of_standing["in"]), parameter
    assert decision["unknown"] == len(of_standing["unknown"]), parameter


def check_against_keys(folder, variants, *axes):
    """@param variants  options that describe a variant, by its name.
    @return the number of keys of all presets on all variants."""
    status, output, problem = run(folder, "matrix", "--csv", "--all-variants", *axes)
    assert status == YES, problem
    keys, counts = Keys(folder), defaultdict(int)
    for record in csv.DictReader(output.splitlines()):
        counts[record["preset"], record["variant"]] += check_record(record, keys, variants)
    check_page(folder, keys, variants, *axes)
    names = re.findall(r"(?m)^(\S+) preset", (folder / "d").read_text())
    for preset in names:
        for name, variant in variants.items():
            listed = sum(len(of_one) for key, of_one in keys.of(preset, variant).items() if key)
            assert counts[preset, name] == listed, (preset, name)
    return sum(counts.values())


EVERYTHING = "everything preset { include ro { all } }\n"


def test_agrees_with_keys_on_the_examples(tmp_path):
    examples = SOURCE / "examples"
    (tmp_path / "p").write_text((examples / "parameters.def").read_text())
    (tmp_path / "d").write_text(
        (examples / "presets.def").read_text().replace("everything preset {", EVERYTHING
                                                       + "settings preset {"))
    (tmp_path / "variants").write_text((examples / "variants").read_text())
    names = re.findall(r"(?m)^([\w-]+):", (examples / "variants").read_text())
    assert len(names) == 4
    assert check_against_keys(tmp_path, {name: ("--variant", name) for name in names}) > 1000


@pytest.mark.parametrize("seed", range(DEVICES))
def test_agrees_with_keys_on_generated_devices(tmp_path, seed):
    device = generate(seed)
    # An index that a preset names has to be there.
    undefined = "i9 index { rangeValid { 1..2 } }\n" if "i9" in device.presets else ""
    (tmp_path / "p").write_text(device.parameters + undefined)
    # Without the translate section, which may be wrong.
    (tmp_path / "d").write_text(re.sub(r"(?m)^translate .*\n", "", device.presets) + EVERYTHING)
    variants = {f"model={model} n={n}": ("-s", f"model={model}", "-s", f"n={n}")
                for model in "ab" for n in "13"}
    check_against_keys(tmp_path, variants, "model=a,b", "n=1,3")
