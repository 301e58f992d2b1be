"""The files that teach vim and nano the three formats, used by the editors themselves: what of a
line gets which group of vim, or which colour of nano, and which files they take for theirs."""

import fcntl
import json
import os
import pty
import re
import select
import signal
import struct
import subprocess
import termios
import time

import pyte
import pytest
from harness import DEADLINE_SECONDS, SOURCE

EDITORS = SOURCE / "packaging/editors"
EXAMPLES = SOURCE / "examples"

# Writes the type of the file, and for each line the names of the groups of its characters.
VIM_SCRIPT = """
let groups = map(range(1, line('$')), {_, line -> map(range(1, len(getline(line))),
    \\ {_, column -> synIDattr(synID(line, column, 1), 'name')})})
call writefile([json_encode([&filetype, groups])], $OUTPUT)
quitall!
"""


def vim(folder, file):
    """What vim makes of a file: its type, and for each line the pairs of group and text."""
    start = folder / "pack/dist-bundle/start"  # where the packages put it, below vimfiles/
    if not start.exists():
        start.mkdir(parents=True)
        (start / "morvane").symlink_to(EDITORS / "vim")
    (folder / "vimrc").write_text(
        # Not what is installed on this machine, but vim's own.
        "set nocompatible runtimepath=$VIMRUNTIME packpath=$PACKS,$VIMRUNTIME\n"
        "filetype on\nsyntax on\n")
    (folder / "script.vim").write_text(VIM_SCRIPT)
    output = folder / "output"
    result = subprocess.run(
        ["vim", "-es", "-i", "NONE", "-n", "-u", folder / "vimrc", "-S", folder / "script.vim",
         file], stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False,
        timeout=DEADLINE_SECONDS,
        env={**os.environ, "PACKS": str(folder), "OUTPUT": str(output), "HOME": str(folder)})
    assert (result.returncode, result.stdout + result.stderr) == (0, "")
    filetype, groups = json.loads(output.read_text())
    output.unlink()
    lines = file.read_text().splitlines() if file.exists() else []
    return filetype, [runs(names, line) for names, line in zip(groups, lines)]


def runs(marks, line):
    """Neighbours with one mark together, as (mark, text); blanks have none of their own."""
    found = []
    for word in re.finditer(r"\S+", line):
        for place in range(*word.span()):
            if found and found[-1][0] == marks[place]:
                gap = " " if place == word.start() else ""
                found[-1] = (marks[place], found[-1][1] + gap + line[place])
            else:
                found.append((marks[place], line[place]))
    return found


def unprefixed(found, filetype):
    return [(mark.removeprefix(filetype), text) for mark, text in found]


PARAMETERS = [
    ("# Comment \"with\" { all }", [("Comment", "# Comment \"with\" { all }")]),
    ("band index {", [("Name", "band"), ("Access", "index"), ("Brace", "{")]),
    ("    rangeValid (variant == \"studio\" && x) { \"sub\", -0x10..(a * 2), }",
     [("Attribute", "rangeValid"), ("Parenthesis", "("), ("Expression", "variant"),
      ("Operator", "=="), ("Text", "\"studio\""), ("Operator", "&&"), ("Expression", "x"),
      ("Parenthesis", ")"), ("Brace", "{"), ("Text", "\"sub\""), ("Values", ","),
      ("Number", "-0x10"), ("Span", ".."), ("Parenthesis", "("), ("Expression", "a"),
      ("Operator", "*"), ("Number", "2"), ("Parenthesis", ")"), ("Values", ","), ("Brace", "}")]),
    ("    valueChange { 1 -> \"vu\" }",
     [("Attribute", "valueChange"), ("Brace", "{"), ("Number", "1"), ("Span", "->"),
      ("Text", "\"vu\""), ("Brace", "}")]),
    ("    # Another", [("Comment", "# Another")]),
    ("    defualt { 1 }", [("Error", "defualt"), ("Brace", "{"), ("Number", "1"), ("Brace", "}")]),
    ("}", [("Brace", "}")]),
    ("gain rw { index { input } default { 0 } } next", [
        ("Name", "gain"), ("Access", "rw"), ("Brace", "{"), ("Attribute", "index"), ("Brace", "{"),
        ("Values", "input"), ("Brace", "}"), ("Attribute", "default"), ("Brace", "{"),
        ("Number", "0"), ("Brace", "} }"), ("Name", "next")]),
    ("    rostrict", [("Access", "rostrict")]),
    ("{ default { \"one # text", [("Brace", "{"), ("Attribute", "default"), ("Brace", "{"),
                                  ("Text", "\"one # text")]),
    ("# no text", [("Comment", "# no text")]),
    ("text\" } }", [("Text", "text\""), ("Brace", "} }")]),
    ("gain wr { }", [("Name", "gain"), ("WrongAccess", "wr"), ("Brace", "{ }")]),
]
PRESETS = [
    ("# Comment", [("Comment", "# Comment")]),
    ("scene preset {", [("Name", "scene"), ("Preset", "preset"), ("Brace", "{")]),
    ("    include ro { allOf, index { none }, clip { index { not input {1..2, left} } }, all }", [
        ("Kind", "include ro"), ("Brace", "{"), ("Items", "allOf,"), ("Index", "index"),
        ("Brace", "{"), ("SelectorWord", "none"), ("Brace", "}"), ("Items", ", clip"),
        ("Brace", "{"), ("Index", "index"), ("Brace", "{"), ("SelectorWord", "not"),
        ("Selectors", "input"), ("Brace", "{"), ("Number", "1"), ("Span", ".."), ("Number", "2"),
        ("Values", ", left"), ("Brace", "} } }"), ("Items", ","), ("Special", "all"),
        ("Brace", "}")]),
    ("    exclude ro { }", [("Error", "exclude ro"), ("Brace", "{ }")]),
    ("}", [("Brace", "}")]),
    ("presets preset { exclude rw { all } }", [
        ("Name", "presets"), ("Preset", "preset"), ("Brace", "{"), ("Kind", "exclude rw"),
        ("Brace", "{"), ("Special", "all"), ("Brace", "} }")]),
    ("translate {", [("Translate", "translate"), ("Brace", "{")]),
    ("    removed { tone, tally }", [("Removed", "removed"), ("Brace", "{"),
                                     ("Old", "tone, tally"), ("Brace", "}")]),
    ("    mode { from { way { on = 1, \"half on\" = 2 } }"
     " index 2 { input = idx::0, side = left } }",
     [("Mapped", "mode"), ("Brace", "{"), ("Mapping", "from"), ("Brace", "{"), ("Old", "way"),
      ("Brace", "{"), ("Old", "on"), ("Equals", "="), ("Old", "1,"), ("Text", "\"half on\""),
      ("Equals", "="), ("Old", "2"), ("Brace", "} }"), ("Mapping", "index"), ("Count", "2"),
      ("Brace", "{"), ("Old", "input"), ("Equals", "="), ("OldIndex", "idx::0"),
      ("Old", ", side"), ("Equals", "="), ("Old", "left"), ("Brace", "} }")]),
    ("}", [("Brace", "}")]),
    ("scene presett {", [("Name", "scene"), ("WrongWord", "presett"), ("Brace", "{")]),
]
DATA = [
    ("A line that is no entry", [("Skipped", "A line that is no entry")]),
    ("gain[1][left]=-6 = b", [("Name", "gain"), ("Index", "[1][left]"), ("Equals", "="),
                              ("Value", "-6 = b")]),
    ("mode=a[1]", [("Name", "mode"), ("Equals", "="), ("Value", "a[1]")]),
    ("mode=", [("Skipped", "mode=")]),
    ("=1", [("Skipped", "=1")]),
]


@pytest.mark.parametrize("name, filetype, lines", [
    ("parameters.def", "morvaneparameters", PARAMETERS), ("presets.def", "morvanepresets", PRESETS),
    ("scene.preset", "morvanedata", DATA)])
def test_vim_marks_each_part_of_a_line(tmp_path, name, filetype, lines):
    file = tmp_path / name
    file.write_text("".join(line + "\n" for line, _ in lines))
    found, groups = vim(tmp_path, file)
    assert found == filetype
    for (line, expected), marked in zip(lines, groups, strict=True):
        assert (line, unprefixed(marked, filetype)) == (line, expected)


@pytest.mark.parametrize("name, filetype, marks", [
    ("parameters.def", "morvaneparameters", 9), ("presets.def", "morvanepresets", 12),
    ("older.preset", "morvanedata", 5)])
def test_vim_finds_no_mistake_in_the_examples(tmp_path, name, filetype, marks):
    found, groups = vim(tmp_path, EXAMPLES / name)
    assert found == filetype
    used = {mark.removeprefix(filetype) for line in groups for mark, _ in line}
    assert not used & {"Error", "WrongAccess", "WrongWord", ""}
    assert len(used) >= marks


@pytest.mark.parametrize("name, text, filetype", [
    ("any.def", "# Comment\n\ngain rw {\n}\n", "morvaneparameters"),
    ("any.def", "gain\tindex\n{ }\n", "morvaneparameters"),
    ("any.def", "\n  # Comment\nscene preset { }\n", "morvanepresets"),
    ("any.def", "translate {\n", "morvanepresets"),
    ("any.def", "LIBRARY gain\nEXPORTS\n  rw @1\n", "def"),
    ("any.def", "#ifndef X\nX(1)\n", "def"),
    ("parameters.def", "LIBRARY gain\n", "def"),
    ("parameters.def", "# Comment\n", "morvaneparameters"),
    ("presets.def", None, "morvanepresets"),
    ("any.def", None, "def"),
    ("morvane/presets.def", "scene prest {\n", "morvanepresets"),
    ("any.preset", "# Comment\ngain[1]=1\n", "morvanedata"),
    ("any.preset", "enable gain.service\n", ""),
    ("any.preset", "[gain]\ngain=1\n", ""),
    ("any.txt", "gain=1\n", "text"),
])
def test_vim_knows_the_files_by_their_text(tmp_path, name, text, filetype):
    file = tmp_path / name
    file.parent.mkdir(exist_ok=True)
    if text is not None:
        file.write_text(text)
    assert vim(tmp_path, file)[0] == filetype


def nano(file, rules):
    """The screen that nano shows of a short file, as soon as all of it is there, with the message
    about the start."""
    screen = pyte.Screen(100, 40)
    stream = pyte.ByteStream(screen)
    child, terminal = pty.fork()
    if child == 0:
        fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", screen.lines, screen.columns, 0, 0))
        # That of Python: in that of C, readline, which pytest imports, leaves the LINES and COLUMNS
        # of another terminal.
        environment = {**os.environ, "TERM": "xterm-256color", "LC_ALL": "C.UTF-8"}
        os.execlpe("nano", "nano", f"--rcfile={rules}", "--view", str(file), environment)
    end, message = time.monotonic() + DEADLINE_SECONDS, None
    lines = set(file.read_text().splitlines())
    try:
        while not message or not lines <= {line.rstrip() for line in screen.display}:
            readable, _, _ = select.select([terminal], [], [], max(0, end - time.monotonic()))
            assert readable, screen.display
            stream.feed(os.read(terminal, 65536))
            message = re.search(r"\[ (Read \d+ lines?|Mistakes in .*) \]", screen.display[-3])
    finally:
        os.kill(child, signal.SIGKILL)
        os.waitpid(child, 0)
        os.close(terminal)
    return screen, message[1]


def colours(screen, line):
    """The colours of a line on the screen. Terminals differ in how they say "bright"."""
    row = [shown.rstrip() for shown in screen.display].index(line)
    return runs([screen.buffer[row][column].fg.removeprefix("bright")
                 for column in range(len(line))], line)


NANO_PARAMETERS = [
    ("# Comment \"with\" { all }", [("cyan", "# Comment \"with\" { all }")]),
    ("band index {", [("blue", "band"), ("cyan", "index"), ("default", "{")]),
    ("    rangeValid (x == \"studio\") { \"sub\", 1..0x10 }",
     [("green", "rangeValid"), ("default", "(x =="), ("brown", "\"studio\""), ("default", ") {"),
      ("brown", "\"sub\""), ("default", ","), ("magenta", "1"), ("default", ".."),
      ("magenta", "0x10"), ("default", "}")]),
    ("}", [("default", "}")]),
    ("gain rw { index { input } default { -5 } }",
     [("blue", "gain"), ("cyan", "rw"), ("default", "{"), ("green", "index"),
      ("default", "{ input }"), ("green", "default"), ("default", "{"), ("magenta", "-5"),
      ("default", "} }")]),
]
NANO_PRESETS = [
    ("scene preset {", [("blue", "scene"), ("cyan", "preset"), ("default", "{")]),
    ("    include ro { clip { index { not input {1..2} } }, all }",
     [("cyan", "include ro"), ("default", "{ clip {"), ("green", "index"), ("default", "{"),
      ("magenta", "not"), ("default", "input {"), ("magenta", "1"), ("default", ".."),
      ("magenta", "2"), ("default", "} } },"), ("magenta", "all"), ("default", "}")]),
    ("}", [("default", "}")]),
    ("translate {", [("cyan", "translate"), ("default", "{")]),
    ("    mode { from { way { \"half on\" = 2 } } index 2 { input = idx::0 } }",
     [("default", "mode {"), ("green", "from"), ("default", "{ way {"), ("brown", "\"half on\""),
      ("default", "="), ("magenta", "2"), ("default", "} }"), ("green", "index 2"),
      ("default", "{ input ="), ("magenta", "idx::0"), ("default", "} }")]),
    ("# Comment", [("cyan", "# Comment")]),
]
NANO_DATA = [
    ("A line that is no entry", [("cyan", "A line that is no entry")]),
    ("gain[1][left]=-6 = b", [("blue", "gain"), ("magenta", "[1][left]"), ("brown", "=-6 = b")]),
    ("mode=a[1]", [("blue", "mode"), ("brown", "=a[1]")]),
    ("mode=", [("cyan", "mode=")]),
]
RULES = EDITORS / "nano/morvane.nanorc"


@pytest.mark.parametrize("name, lines", [
    ("parameters.def", NANO_PARAMETERS), ("presets.def", NANO_PRESETS),
    ("scene.preset", NANO_DATA)])
def test_nano_colours_each_part_of_a_line(tmp_path, name, lines):
    file = tmp_path / name
    file.write_text("".join(line + "\n" for line, _ in lines))
    screen, message = nano(file, RULES)
    assert message == f"Read {len(lines)} lines"
    for line, expected in lines:
        assert (line, colours(screen, line)) == (line, expected)


def test_nano_leaves_files_of_others_alone(tmp_path):
    file = tmp_path / "any.def"
    file.write_text("band index {\n")
    screen, _ = nano(file, RULES)
    assert colours(screen, "band index {") == [("default", "band index {")]


def test_a_mistake_in_the_rules_of_nano_is_found(tmp_path):
    """It looks at the rules of the file's kind only: those for data are the last ones."""
    rules = tmp_path / "nanorc"
    rules.write_text(RULES.read_text() + 'color green "(unclosed"\n')
    file = tmp_path / "scene.preset"
    file.write_text("mode=1\n")
    assert nano(file, rules)[1] == f"Mistakes in '{rules}'"
