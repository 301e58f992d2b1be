"""Counts the instructions of reading definitions that grow, for several shapes of them.

Prints a table: millions of instructions of morvanectl, which reads the definitions and makes the
same tables as the daemon, at N, 2N, 4N and 8N, and the last against the first. Growth with the
square would be 64. Callgrind counts, so other load on the machine does not matter.
"""

import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from measuring import BUILD, print_head, print_row, print_targets

STEPS = (1, 2, 4, 8)
TARGET = 10


def exclusions(count):
    """Exclusions of one parameter with as many values, one each."""
    items = ", ".join(f"p {{ index {{ i {{ {n} }} }} }}\n" for n in range(count))
    return (f"i index {{ rangeValid {{ 0..{count} }} }}\np rw {{ index {{ i }} }}\n",
            f"scene preset {{ exclude rw {{ {items} }} }}\n")


def inclusions(count):
    """Inclusions of one parameter, each of as many values, most of which others include, too."""
    items = ", ".join(f"p {{ index {{ i {{ {n}..{n + count} }} }} }}\n" for n in range(count))
    return (f"i index {{ rangeValid {{ 0..{count} }} }}\np ro {{ index {{ i }} }}\n",
            f"scene preset {{ include ro {{ {items} }} }}\n")


def clauses(count):
    """Clauses of a list, each for an index of its own, over four times as many parameters."""
    parameters = "".join(f"i{n} index {{ rangeValid {{ 0..3 }} }}\n"
                         + "".join(f"p{n}x{m} rw {{ index {{ i{n} }} }}\n" for m in range(4))
                         for n in range(count))
    items = ", ".join(f"index {{ i{n} {{ 1 }} }}\n" for n in range(count))
    return parameters, f"scene preset {{ exclude rw {{ {items} }} }}\n"


def clauses_of_one_index(count):
    """Clauses of a list, all for one index that all of four times as many parameters have."""
    parameters = "".join(f"p{n} rw {{ index {{ i }} }}\n" for n in range(4 * count))
    items = ", ".join(f"index {{ i {{ {n} }} }}\n" for n in range(count))
    return ("i index { rangeValid { 0..9 } }\nq rw { }\n" + parameters,
            f"scene preset {{ exclude rw {{ {items} }} }}\n")


def dimensions(count):
    """One parameter of many dimensions, which has no target: no device has them."""
    indices = "\n".join(["index { i }"] * count)
    return f"i index {{ rangeValid {{ 1 }} }}\np rw {{ {indices} }}\n", "scene preset { }\n"


SHAPES = (("exclusions of one parameter", exclusions, 500, TARGET),
          ("overlapping inclusions of one parameter", inclusions, 250, TARGET),
          ("list clauses, each of its own index", clauses, 100, TARGET),
          ("list clauses, all of one index", clauses_of_one_index, 100, TARGET),
          ("dimensions of one parameter", dimensions, 250, None))


def count_instructions(parameters, presets):
    valgrind = shutil.which("valgrind") or sys.exit("bench: valgrind is not installed")
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "parameters").write_text(parameters)
        (folder / "presets").write_text(presets)
        done = subprocess.run(
            [valgrind, "--quiet", "--tool=callgrind", "--toggle-collect=main",
             f"--callgrind-out-file={folder}/counts", BUILD / "morvanectl", "-p",
             folder / "parameters", "-d", folder / "presets", "presets"],
            stdout=subprocess.PIPE, text=True)
        if done.returncode != 0 or done.stdout != "scene\n":
            sys.exit(f"bench: morvanectl failed: {done.stdout}")
        return int(re.search(r"^totals: (\d+)$", (folder / "counts").read_text(), re.M)[1])


def main():
    print_head("shape", "N", "at N", "at 2N", "at 4N", "at 8N", "8N against N")
    targets = []
    for what, shape, size, target in SHAPES:
        counts = [count_instructions(*shape(step * size)) for step in STEPS]
        growth = counts[-1] / counts[0]
        print_row(what, size, *(f"{count / 1e6:.1f} M" for count in counts), f"{growth:.1f}")
        if target is not None:
            targets.append((f"{what}, {8 * size} against {size}", target, growth, ""))
    print_targets(targets)


main()
