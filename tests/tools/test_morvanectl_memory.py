"""morvanectl: what it says when memory runs out. Its address space is limited, which neither a
sanitizer nor an emulator leaves room for."""

from harness import run_ctl


def test_says_that_there_is_not_enough_memory(world):
    world.write("p", "i index { rangeValid { 1..60000 } }\nall rw { index { i } index { i } }\n")
    world.write("d", "all preset { }\n")
    assert run_ctl("-p", "p", "-d", "d", "keys", "all", wrapper=["prlimit", "--as=300000000"],
                   cwd=world.folder) == (
        2, "", "morvanectl: there is not enough memory\n")
