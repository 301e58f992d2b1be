"""morvanectl's calls of the services: what is waited for, and what is sent."""

import os
import signal
import socket
import subprocess
from pathlib import Path

import pytest
from harness import CTL, wait_until
from test_morvanectl import ERROR, YES, SlowBus, ctl, json_message  # noqa: F401 - a fixture

NO_BUS = ("morvanectl: cannot reach the bus (it did not answer within {} s); set "
          "DBUS_SESSION_BUS_ADDRESS, or name the bus with --address\n")


@pytest.fixture
def stopped():
    """Stops processes; they go on when the test ends."""
    processes = []

    def stop(process):
        os.kill(process.pid, signal.SIGSTOP)
        processes.append(process)
        wait_until(lambda: "\nState:\tT" in open(f"/proc/{process.pid}/status").read(),
                   "the process to stop")

    yield stop
    for process in processes:
        os.kill(process.pid, signal.SIGCONT)


@pytest.fixture
def silent_bus(world):
    """The address of a socket whose connections are taken by nobody."""
    path = world.folder / "silent"
    with socket.socket(socket.AF_UNIX) as server:
        server.bind(str(path))
        server.listen()
        yield f"unix:path={path}"


COMMANDS = [("is-preset", "scene"), ("status",), ("diff", "p", "--live", "scene")]


@pytest.mark.parametrize("command", COMMANDS)
def test_gives_up_a_bus_that_takes_no_connection(world, ctl, silent_bus, command):  # noqa: F811
    world.write("p", "mode=off\n")
    assert ctl(*command, "--address", silent_bus, "--timeout", "0.25") == (
        ERROR, "", NO_BUS.format(0.25))


def test_says_that_it_waits_for_the_bus(ctl, silent_bus):  # noqa: F811
    assert ctl("status", "--address", silent_bus, "--timeout", "1.5") == (
        ERROR, "", "morvanectl: waiting for the bus to answer\n" + NO_BUS.format(1.5))
    assert ctl("status", "--timeout", "1.5", environment={"DBUS_SESSION_BUS_ADDRESS": silent_bus}
               ) == (ERROR, "", "morvanectl: waiting for the bus to answer\n" + NO_BUS.format(1.5))
    status, output, problem = ctl(
        "status", "--json", "--address", silent_bus, "--timeout", "1.5")
    assert (status, output) == (ERROR, "")
    assert problem == (json_message("note", "waiting for the bus to answer")
                       + json_message("error", NO_BUS.format(1.5)[len("morvanectl: "):-1]))


def test_gives_up_a_bus_that_leaves_the_first_call_unanswered(world, ctl):  # noqa: F811
    path = world.folder / "bus"
    bus = SlowBus(path, calls=1, seconds=15)
    bus.start()
    assert ctl("status", "--address", f"unix:path={path}", "--timeout", "1.5") == (
        ERROR, "", "morvanectl: waiting for the bus to answer\n" + NO_BUS.format(1.5))
    bus.close()
    assert bus.was_left, "it waited for the answer"


def test_waits_for_a_bus_without_a_time_limit(world, ctl):  # noqa: F811
    path = world.folder / "bus"
    bus = SlowBus(path, calls=1, seconds=1.5)
    bus.start()
    status, _, problem = ctl("die", "--address", f"unix:path={path}")
    bus.close()
    assert (status, problem.splitlines()[0]) == (
        ERROR, "morvanectl: waiting for the bus to answer")


def test_gives_up_a_service_that_does_not_answer(world, ctl, stopped):  # noqa: F811
    stopped(world.simulator().process)
    world.daemon()
    assert ctl("store", "scene", "p", "--timeout", "1.5") == (
        ERROR, "", "morvanectl: waiting for org.norvix.preset to answer store\n"
        "morvanectl: org.norvix.preset did not answer store within 1.5 s\n")
    assert ctl("--timeout=0.2", "is-preset", "scene") == (
        ERROR, "", "morvanectl: org.norvix.preset did not answer is_preset within 0.2 s\n")
    world.write("p", "mode=off\n")
    assert ctl("diff", "p", "--live", "scene", "--timeout", "0.2") == (
        ERROR, "",
        "morvanectl: org.norvix.transaction did not answer single_get_bulk within 0.2 s\n")


def test_an_answer_within_the_time_limit_counts(world, ctl):  # noqa: F811
    world.simulator()
    world.daemon()
    assert ctl("is-preset", "scene", "--timeout", "1000000") == (YES, "yes\n", "")


@pytest.mark.parametrize("text", ["0", "-1", "1000001", "nan", "inf", "1s", "", " 1"])
def test_refuses_what_is_no_time_limit(ctl, text):  # noqa: F811
    status, output, problem = ctl("status", f"--timeout={text}", "--json")
    assert (status, output, problem) == (ERROR, "", json_message(
        "error", "--timeout: a time limit is a number of seconds, above 0, at most 1000000"))


def test_refuses_a_folder_that_the_bus_does_not_carry(world, ctl):  # noqa: F811
    world.simulator()
    world.daemon()
    folder = Path(os.fsdecode(bytes(world.folder) + b"/sc\xffne"))
    folder.mkdir()
    for arguments in (["store", "scene", "p"], ["load", "scene", "p"],
                      ["store-subpreset", "scene", "p", "mode"]):
        outcome = subprocess.run([*CTL, *arguments], cwd=folder, env=world.bus.environment(),
                                 capture_output=True, text=True, check=False)
        assert (outcome.returncode, outcome.stdout, outcome.stderr) == (
            ERROR, "", "morvanectl: names, keys and paths must be UTF-8; the name of the working "
            "folder is not\n")
    assert list(folder.iterdir()) == []
    assert subprocess.run([*CTL, "is-preset", "scene"], cwd=folder, env=world.bus.environment(),
                          capture_output=True, check=False).stdout == b"yes\n"


def test_does_not_send_a_path_whose_folder_is_gone(world, ctl):  # noqa: F811
    """The daemon would look for the file in its own folder."""
    world.simulator()
    world.daemon()
    folder = world.folder / "gone"
    folder.mkdir()
    outcome = subprocess.run(
        ["sh", "-c", 'rmdir "$PWD" && exec "$@"', "sh", *CTL, "store", "scene", "p"], cwd=folder,
        env=world.bus.environment(), capture_output=True, text=True, check=False)
    assert (outcome.returncode, outcome.stdout, outcome.stderr) == (
        ERROR, "", "morvanectl: cannot tell the folder of p: No such file or directory\n")


def test_a_comparison_sends_no_key_that_the_bus_does_not_carry(world, ctl):  # noqa: F811
    handler = world.simulator()
    world.write("bytes.def", b'input index { rangeValid { "a\xff" } }\n'
                             b"gain rw { index { input } }\nmode rw { }\n")
    world.write("all.def", "all preset { }\n")
    world.write("p", b"gain[a\xff]=1\n")
    definitions = ("-p", "bytes.def", "-d", "all.def")
    assert ctl("diff", "p", "--live", "all", definitions=definitions) == (
        ERROR, "", "morvanectl: ERROR: parm_set_() - set failed (p: key of gain[a\\xff] is not "
        "valid UTF-8)\n")
    world.write("p", "mode=1\n")
    assert ctl("diff", "p", "--live", "all", "--with-defaults", definitions=definitions) == (
        ERROR, "", "morvanectl: ERROR: parm_reset_() - reset failed (p: key of gain[a\\xff] is "
        "not valid UTF-8)\n")
    assert handler.methods() == []
