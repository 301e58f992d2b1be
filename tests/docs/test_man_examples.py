"""What the manual pages of the file formats show is what happens: every example is run.

A comment line precedes every literal block of man/*.5. This one says that the block is not an
example:

    .\\" grammar

These say that it is a file, KIND being "parameters" or "presets" for the two definition files:

    .\\" example: good KIND             is read to its end, without a report
    .\\" example: open KIND             ends inside a block, without a report
    .\\" example: error KIND            is reported; the report is the next block
    .\\" example: data                  a preset data file

And these say that it is the outcome of the files before it, compared byte for byte:

    .\\" example: report                standard output, about the erroneous file just before
    .\\" example: keys PRESET ...       the keys that a store of the preset asks for
    .\\" example: stored PRESET ...     the file that it writes
    .\\" example: set PRESET ...        what a load of the data tells the Parameter Handler to set
    .\\" example: errors PRESET ...     standard error, from the start to the end of that load
    .\\" example: log PRESET ...        the system log of that load, or of a store if there is no
                                       data; the file is named /tmp/scene.preset

"..." are system arguments. A file holds until one of the same kind comes; erroneous ones count only
for their report. New parameters reset the presets to `everything preset { include ro { all } }`,
and new presets remove the data. At the end of any mark, "@500-" says that each "@" in the block
stands for 500 times "-".
"""

import re
from dataclasses import dataclass, replace

import pytest
from harness import SOURCE

PAGES = {page.name: page.read_text() for page in sorted((SOURCE / "man").glob("*.5"))}
EVERYTHING = "everything preset { include ro { all } }\n"
ESCAPES = {"\\e": "\\", "\\(aq": "'", "\\(dq": '"', "\\(ha": "^", "\\(:a": "ä", "\\&": ""}
FILES = [(verdict, kind) for verdict in ("good", "open", "error")
         for kind in ("parameters", "presets")]
OUTCOMES = ("keys", "stored", "set", "errors", "log")


@dataclass(frozen=True)
class Given:
    """The files that an outcome is about."""

    parameters: str = ""
    presets: str = EVERYTHING
    data: str = ""


@dataclass(frozen=True)
class Block:
    """A literal block of a page."""

    place: str
    mark: tuple
    text: str

    def is_file(self, *verdicts):
        return self.mark in FILES and self.mark[0] in verdicts

    def is_outcome(self):
        return len(self.mark) > 1 and self.mark[0] in OUTCOMES

    def is_known(self):
        return (self.mark in FILES or self.mark in (("grammar",), ("data",), ("report",))
                or self.is_outcome())


def mark_of(line):
    """The words of a marking comment and what "@" stands for; no words if it is another line."""
    match = re.fullmatch(r'\.\\" (grammar|example: (.*?))(?: @(\d+)(.))?', line)
    if not match:
        return (), "@"
    words = (match[2] or match[1]).split()
    return tuple(words), (match[4] or "@") * int(match[3] or 1)


def unescaped(line):
    """A line of a literal block as a reader sees it; a KeyError for an escape that is not known."""
    return re.sub(r"\\(\(..|.)", lambda escape: ESCAPES[escape[0]], line)


def blocks_of(name, page):
    """Every display of the page. One that is not literal has no mark."""
    blocks, lines = [], page.splitlines()
    for number, line in enumerate(lines):
        if not re.match(r"\.(Bd|Dl|D1)\b", line):
            continue
        mark, repeated = mark_of(lines[number - 1])
        end = number + 1
        while line.startswith(".Bd -literal") and lines[end] != ".Ed":
            end += 1
        content = lines[number + 1:end]
        if not content or any(inner.startswith((".", "'")) for inner in content):
            mark = ()
        text = "".join(unescaped(inner) + "\n" for inner in content).replace("@", repeated)
        blocks.append(Block(f"{name}:{number}", mark, text))
    return blocks


def examples_of(name, page):
    """The examples with what they are about: their files, or the block just before a report."""
    given, before, examples = Given(), None, []
    for block in blocks_of(name, page):
        if block.is_file("good", "open"):
            kind = block.mark[1]
            given = (Given(block.text) if kind == "parameters"
                     else replace(given, presets=block.text, data=""))
        elif block.mark == ("data",):
            given = replace(given, data=block.text)
        if block.is_outcome() or block.is_file("good", "open") or block.mark == ("report",):
            examples.append((block, given, before))
        before = block
    return examples


EXAMPLES = [example for name, page in PAGES.items() for example in examples_of(name, page)]
IDS = ["-".join((block.place, *block.mark)) for block, _, _ in EXAMPLES]


def mistakes_in(name, page):
    """The places of blocks that would not be run."""
    blocks = blocks_of(name, page)
    mistakes = [block.place for block in blocks if not block.is_known()]
    for block, after in zip(blocks, [*blocks[1:], Block("", (), "")]):
        if block.is_file("error") != (after.mark == ("report",)):
            mistakes.append(block.place)
        if block.mark == ("data",) and not after.is_outcome():
            mistakes.append(block.place)
    return mistakes


@pytest.mark.parametrize("name", PAGES)
def test_every_block_is_marked(name):
    assert mistakes_in(name, PAGES[name]) == []
    assert any(name in block.place for block, _, _ in EXAMPLES)


@pytest.mark.parametrize("page, mistakes", [
    ('.\\" example: good parameters\n.Bd -literal\np rw { }\n.Ed\n', []),
    ('.\\" grammar\n.Bd -literal\nfile = .\n.Ed\n', []),
    ('.Pp\n.Bd -literal\np rw { }\n.Ed\n', ["page:1"]),
    ('.\\" example: good\n.Bd -literal\np rw { }\n.Ed\n', ["page:1"]),
    ('.\\" example: good parameters\n.Pp\n.Bd -literal\np rw { }\n.Ed\n', ["page:2"]),
    ('.\\" example: good parameters\n.Bd -literal\n.Li p\n.Ed\n', ["page:1"]),
    ('.\\" example: good parameters\n.Dl p rw { }\n', ["page:1"]),
    ('.\\" example: error presets\n.Bd -literal\nx\n.Ed\n', ["page:1"]),
    ('.\\" grammar\n.Bd -literal\nx\n.Ed\n.\\" example: report\n.Bd -literal\nx\n.Ed\n',
     ["page:1"]),
    ('.\\" example: data\n.Bd -literal\np=1\n.Ed\n', ["page:1"]),
])
def test_a_block_that_would_not_be_run_is_found(page, mistakes):
    assert mistakes_in("page", page) == mistakes


def start(world, given, *arguments):
    world.write("parameters.def", given.parameters)
    world.write("presets.def", given.presets)
    return world.daemon(*arguments)


def stop(world, daemon):
    world.client().preset("die")
    daemon.wait()


def is_read_to_the_end(world, given):
    """Whether text appended to the files is read, too."""
    end = "endOfFile"
    daemon = start(world, Given(given.parameters + f"{end} rw {{ }}\n",
                                given.presets + f"{end} preset {{ }}\n"))
    found = world.client().preset("in_preset", end, [end])
    stop(world, daemon)
    return found


def check_file(world, block, given):
    verdict, kind = block.mark
    assert is_read_to_the_end(world, given) == (verdict == "good")
    daemon = start(world, given)
    assert daemon.stdout.read_text() == ""
    if verdict == "open":
        presets = re.findall(r"(\S+) preset", given.presets)
        known = [world.client().preset("is_preset", name) for name in presets]
        assert known == [kind == "parameters"] * len(presets) != []


def check_report(world, block, given, before):
    daemon = start(world, replace(given, **{before.mark[1]: before.text}))
    assert daemon.stdout.read_text() == block.text
    assert daemon.stderr.read_text() == ""


def requested(world, given, preset, *arguments):
    """Starts everything, and stores the preset, or loads it if there is data."""
    path = world.folder / "scene.preset"
    world.write("parameters.def", given.parameters)
    handler = world.simulator(*arguments)
    daemon = start(world, given, *arguments)
    assert daemon.stdout.read_text() == ""
    if given.data:
        path.write_text(given.data)
    world.client().preset("load" if given.data else "store", preset, str(path))
    return handler, daemon, path


def asked_keys(calls):
    keys = [call[-1] for call in calls if call[0] in ("get", "get_bulk")][-1]
    return keys if isinstance(keys, list) else [keys]


def set_values(calls):
    values = []
    for method, *arguments in calls:
        if method in ("set", "set_status"):
            values.append("=".join(arguments[1:]))
        elif method in ("set_bulk", "set_status_bulk"):
            values += map("=".join, zip(*arguments[1:]))
    return values


def lines(texts):
    return "".join(text + "\n" for text in texts)


def outcome_of(what, handler, daemon, path):
    if what == "keys":
        return lines(asked_keys(handler.calls()))
    if what == "stored":
        return path.read_text()
    if what == "set":
        return lines(set_values(handler.calls()))
    if what == "errors":
        return daemon.stderr.read_text()
    texts = [text.removesuffix("\n") for _, text in daemon.records_after_start()]
    return lines(texts).replace(str(path.parent), "/tmp")


@pytest.mark.parametrize("block, given, before", EXAMPLES, ids=IDS)
def test_example(world, block, given, before):
    if block.mark[0] in OUTCOMES:
        what, preset, *arguments = block.mark
        assert outcome_of(what, *requested(world, given, preset, *arguments)) == block.text
    elif block.mark == ("report",):
        check_report(world, block, given, before)
    else:
        check_file(world, block, given)
