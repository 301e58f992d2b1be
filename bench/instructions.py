"""Counts the instructions of the daemon with callgrind and compares them with kept numbers.

For bench/run, with the option --keep.

Prints a table: for each name the kept number of instructions, the number now, the change in percent
and, of a request, the instructions for each key. Kept numbers are those of bench/instructions.txt;
--keep rewrites it. Exits with a status other than 0 if something could not be counted, never for
a change.

A start-up counts from main() to the main loop, which is entered when the name is owned. A request
counts what the handler of its method does, with the calls of the Parameter Handler below it: not
the dispatch of the request, its answer, or the end of a transaction after its commit. Of several
requests the median counts, without the first, which warms everything up.

Runs of one build differ, on an idle machine as on a busy one, by up to 0.2 % for a store and
1.5 % for a start-up and a load: messages arrive in different pieces, memory lies elsewhere. A
longer path of the folder for temporary files made 1 %. Processors may differ more, through the
variants of memcpy() and the like that the C library picks for them.
"""

import argparse
import os
import re
import shutil
import statistics
import sys

from gi.repository import GLib

from measuring import (BUILD, DAEMON, PRESET, ROOT, Session, output_of, print_head, print_row,
                       write_keys)

KEPT = ROOT / "bench/instructions.txt"
HEAD = "# Written by bench/run --keep instructions: name, instructions, those for each key.\n"
SIZES = (1000, 10000)
METHODS = ("store", "load", "load_with_default")
ROUNDS = 8  # requests of each kind, of which the first does not count
START_UP = "start_up"
PLAIN_PARAMETERS = 1000


def callgrind(folder, collect, dumps):
    """The command prefix that counts the instructions within the functions `collect`, and writes
    them to a file in `folder` at each of `dumps`. A function may be in only one of the two."""
    valgrind = shutil.which("valgrind") or sys.exit("bench: valgrind is not installed")
    return [valgrind, "--quiet", "--vgdb=no", "--tool=callgrind",
            f"--callgrind-out-file={folder}/counts",
            *(f"--toggle-collect={function}" for function in collect),
            *(f"--dump-{dump}" for dump in dumps)]


def counts_of(folder, trigger, number):
    """The counts of a dump option, in order; there must be as many as `number`."""
    counts = {}
    for path in folder.glob("counts.*"):
        text = path.read_text()
        if f"\ndesc: Trigger: --dump-{trigger}" in text:
            counts[int(path.suffix[1:])] = int(re.search(r"^totals: (\d+)$", text, re.M)[1])
    if len(counts) != number or 0 in counts.values():
        sys.exit(f"bench: not {number} counts of {trigger}, but {list(counts.values())}")
    return [counts[part] for part in sorted(counts)]


def count_requests(size):
    """The counts of each request of `size` keys, by name: of what the handler of a method does,
    written out after the function that unpacks its arguments. Both are called through the table of
    methods, which keeps the linker from merging them into others."""
    unpacked = "after=dbus_glib_marshal_value_object_BOOLEAN__STRING_STRING_POINTER_POINTER"
    handlers = [f"value_object_{method}(*" for method in METHODS]
    with Session() as session:
        session.start_daemon_with_keys(size, callgrind(session.folder, handlers, [f"{unpacked}*"]))
        for method in METHODS:
            if method == "load_with_default":
                session.keep_half()
            session.request(method, ROUNDS)
        counts = iter(counts_of(session.folder, unpacked, ROUNDS * len(METHODS)))
        return {f"{method}_{size}":
                round(statistics.median([next(counts) for _ in range(ROUNDS)][1:]))
                for method in METHODS}


def count_start_up():
    """The count of a start with 1,000 parameters, and 10 indexed ones of 1,000 keys."""
    with Session() as session:
        parameters, presets = write_keys(session.folder, 1000)
        with parameters.open("a") as text:
            text.writelines(f"plain{n:04}Level rw {{ rangeValid {{ -60..12 }} default {{ 0 }} }}\n"
                            for n in range(PLAIN_PARAMETERS))
        under = callgrind(session.folder, ["main"], ["before=g_main_loop_run"])
        session.start_daemon(parameters, presets, under=under)
        # Its answer comes from within the main loop.
        session.call(DAEMON, "is_preset", GLib.Variant("(s)", (PRESET,)), "/preset")
        return {START_UP: counts_of(session.folder, "before=g_main_loop_run", 1)[0]}


def tools_line():
    """What the numbers depend on besides the sources."""
    compiler = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", (BUILD / "CMakeCache.txt").read_text(),
                         re.M)[1]
    libraries = [f"{library} {output_of('pkg-config', '--modversion', library).strip()}"
                 for library in ("dbus-1", "dbus-glib-1", "glib-2.0")]
    compiler_version = output_of(compiler, "--version").partition("\n")[0]
    return "# " + ", ".join([os.uname().machine, compiler_version, *libraries]) + "\n"


def each_key(name, count):
    """The instructions for each key, as text; empty for a start-up."""
    return "" if name == START_UP else f"{count / int(name.rpartition('_')[2]):.1f}"


def print_table(kept, counts):
    print_head("name", "kept", "now", "change, %", "each key")
    for name, count in counts.items():
        change = f"{100 * (count / kept[name] - 1):+.2f}" if name in kept else ""
        print_row(name, kept.get(name, ""), count, change, each_key(name, count))


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("--keep", action="store_true", help="rewrite bench/instructions.txt")
    options = parser.parse_args()
    lines = KEPT.read_text().splitlines(keepends=True) if KEPT.exists() else []
    kept = {line.split()[0]: int(line.split()[1]) for line in lines if not line.startswith("#")}
    counts = count_start_up()
    for size in SIZES:
        counts |= count_requests(size)
    print_table(kept, counts)
    tools = tools_line()
    if kept and tools not in lines:
        print(f"The kept numbers are from other tools than {tools[2:]}", end="")
    if options.keep:
        KEPT.write_text(HEAD + tools + "".join(
            f"{name} {count} {each_key(name, count)}".rstrip() + "\n"
            for name, count in counts.items()))


if __name__ == "__main__":
    main()
