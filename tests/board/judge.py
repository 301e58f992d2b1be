"""Judges what a load finds after a power cut: each state of a recorded disk is repaired, read, and
compared with the versions that were answered before it."""

import json
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib
from base64 import b64decode
from collections import Counter
from dataclasses import dataclass, field, replace
from pathlib import Path

from image import HERE, SOURCE, run
from power_cuts import FILE_SYSTEMS, walk

sys.path.insert(0, str(HERE / "device"))
from versions import FILES, keys_of, text_of  # noqa: E402

DEFINITIONS = HERE / "device/definitions"
EXAMPLES = 5  # of what was lost
SECONDS_OF_A_STATE = 2  # at most, on the board; a fifth of one on a machine with nothing else to do


def version_of(file, folder):
    """The version that a load of the file from a folder sets, or what is wrong with it."""
    done = subprocess.run(
        [SOURCE / "build/morvanectl", "-p", DEFINITIONS / "parameters.def", "-d",
         DEFINITIONS / "presets.def", "load", FILES[file], folder / file, "--dry-run", "--json"],
        capture_output=True, text=True, check=False)
    if done.returncode != 0:
        return done.stderr.strip()
    values = {}
    for call in json.loads(done.stdout):
        values.update(zip(call.get("keys", []), call.get("values", [])))
    numbers = {text.partition(".")[0] for text in values.values()}
    number = min(numbers, default="")
    if sorted(values) != sorted(keys_of(file)):
        return f"{len(values)} of {len(keys_of(file))} keys"
    if len(numbers) > 1 or not number.isdigit() or set(values.values()) != {text_of(int(number))}:
        return f"versions {sorted(numbers)}"
    return int(number)


@dataclass
class Verdict:
    """What was found in the states of one disk."""

    states: int = 0
    lost: Counter = field(default_factory=Counter)  # by file
    examples: list = field(default_factory=list)
    unreadable: int = 0
    last: tuple = (-1, 0)  # the number of the last state, and how many versions were lost in it

    def add(self, other):
        self.last = max(self.last, other.last)
        self.states += other.states
        self.lost += other.lost
        self.unreadable += other.unreadable
        self.examples = (self.examples + other.examples)[:EXAMPLES]


class Judge:
    """Compares the files of a state with what was answered before it."""

    def __init__(self, folder):
        self.folder = folder / "files"
        self.found = {}  # what a load of given contents finds, which many states share

    def version(self, file, contents):
        pair = (file, contents.get(file), contents.get(file + "_bak"))
        if pair not in self.found:
            shutil.rmtree(self.folder, ignore_errors=True)
            self.folder.mkdir()
            for name, content in zip((file, file + "_bak"), pair[1:]):
                if content is not None:
                    (self.folder / name).write_bytes(content)
            self.found[pair] = version_of(file, self.folder)
        return self.found[pair]

    def judge(self, contents, state, verdict):
        """`contents` are those of the state's files by their names; None if nothing can be read."""
        verdict.states += 1
        verdict.unreadable += contents is None
        lost = 0
        for file, least in state.answered.items():
            version = self.version(file, contents or {})
            if not isinstance(version, int) or version < least:
                lost += 1
                verdict.lost[file] += 1
                if len(verdict.examples) < EXAMPLES:
                    verdict.examples.append(
                        f"state {state.number}: {file}: {version}, but {least} was answered")
        verdict.last = state.number, lost


def contents_of(system, scratch, folder):
    """Repairs the file system in the file `scratch` and returns the contents of its files; None if
    it cannot be repaired."""
    names = {"disk": scratch, "folder": folder}
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    for command in (system.repair, system.read):
        if subprocess.run(["sh", "-c", command.format(**names)], stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, check=False).returncode != 0:
            return None
    return {path.name: path.read_bytes() for path in folder.iterdir() if path.is_file()}


def write(path, writes):
    with path.open("r+b") as stream:
        for offset, data in writes:
            stream.seek(offset)
            stream.write(data)


def copy_sparse(source, target):
    run("cp", "--sparse=always", source, target)


def judge_states(kind, folder, wanted, part=0, parts=1):
    """Judges every `parts`-th of the recorded states in a folder, from the `part`-th on. Returns a
    Verdict."""
    system, verdict = FILE_SYSTEMS[kind], Verdict()
    with tempfile.TemporaryDirectory(dir="/dev/shm") as name:
        durable, scratch = Path(name) / "durable", Path(name) / "state"
        judge = Judge(Path(name))
        copy_sparse(folder / f"{kind}.part", durable)
        for state in walk(folder / f"{kind}.log", system.size, wanted):
            write(durable, state.durable)
            if state.number % parts != part:
                continue
            copy_sparse(durable, scratch)
            write(scratch, state.writes)
            contents = contents_of(system, scratch, Path(name) / "copied")
            judge.judge(contents, state, verdict)
    return verdict


STEP = struct.Struct("<cQQ")  # as device/replay.py reads them


def write_steps(path, log, size, wanted):
    """Writes the states as steps for the board. Returns them without their writes."""
    found = []
    with path.open("wb") as stream:
        def put(letter, number=0, data=b""):
            stream.write(STEP.pack(letter, number, len(data)) + data)

        for state in walk(log, size, wanted):
            for offset, data in state.durable:
                put(b"W", offset, data)
            put(b"S", state.number)
            for offset, data in state.writes:
                put(b"w", offset, data)
            put(b"M", state.number)
            found.append(replace(state, durable=[], writes=[]))
        put(b"E")
        stream.truncate(-(-stream.tell() // 512) * 512)
    return found


def judge_on_board(board, kind, folder, wanted):
    """Judges the recorded states of a file system that only a kernel can repair."""
    steps, verdict = folder / "steps", Verdict()
    found = write_steps(steps, folder / f"{kind}.log", FILE_SYSTEMS[kind].size, wanted)
    drives = []
    for name, path in (("stream", steps), ("base", folder / f"{kind}.part")):
        drives += ["-drive", f"if=none,id={name},format=raw,file={path}",
                   "-device", f"virtio-blk-device,drive={name},serial={name}"]
    report = board.run("replay", drives=drives, arguments=f"board.kind={kind}",
                       seconds=900 + SECONDS_OF_A_STATE * len(found))
    data = {r["content"]: zlib.decompress(b64decode(r["data"]))
            for r in report.others if "content" in r}
    seen = {r["state"]: r["files"] for r in report.others if "state" in r}
    with tempfile.TemporaryDirectory() as name:
        judge = Judge(Path(name))
        for state in found:
            files = seen[state.number]
            if isinstance(files, str):
                verdict.add(Verdict(examples=[f"state {state.number}: {files}"]))
                files = None
            judge.judge(files and {name: data[digest] for name, digest in files.items()},
                        state, verdict)
    return verdict
