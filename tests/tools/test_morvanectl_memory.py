"""morvanectl: what it says when memory runs out. Its address space is limited, which neither a
sanitizer nor an emulator leaves room for."""

import subprocess

from harness import CTL


def test_says_that_there_is_not_enough_memory(world):
    world.write("p", "i index { rangeValid { 1..60000 } }\nall rw { index { i } index { i } }\n")
    world.write("d", "all preset { }\n")
    outcome = subprocess.run(
        ["prlimit", "--as=300000000", *CTL, "-p", "p", "-d", "d", "keys", "all"],
        cwd=world.folder, capture_output=True, text=True, check=False)
    assert (outcome.returncode, outcome.stdout, outcome.stderr) == (
        2, "", "morvanectl: there is not enough memory\n")
