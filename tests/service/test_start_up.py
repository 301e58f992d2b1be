"""Start-up and the end: the order of the steps, the log in both modes, exit statuses."""

import os
import signal
import subprocess
from pathlib import Path

import pytest
from harness import DAEMON, ERROR, INFO, wait_until
from jeepney import DBusAddress
from raw_client import RawClient

STARTED = [
    (INFO, "Connecting to Session D-Bus for Parameter Handler\n"),
    (INFO, "morvane:main Connecting to the Session D-Bus.\n"),
    (INFO, "morvane:main Registering the well-known name (org.norvix.preset)\n"),
    (INFO, "morvane:main RequestName returned 1.\n"),
    (INFO, "morvane:main Creating one Value object.\n"),
    (INFO, "morvane:main Registering it on the D-Bus.\n"),
    (INFO, "morvane:main Ready to serve requests (daemonizing).\n"),
]


@pytest.mark.parametrize("option", ["--debug", "-d"])
def test_debug_stays_in_the_foreground_and_ends_with_status_1(world, option):
    daemon = world.daemon(options=[option])
    client = world.client()
    assert daemon.process_ids() == [daemon.process.pid]
    assert client.preset("die") == ()
    assert daemon.wait() == 1
    assert daemon.records() == STARTED + [(INFO, "morvane: Not daemonizing\n")]
    assert daemon.stdout.read_bytes() == b""
    assert daemon.stderr.read_bytes() == b""


def test_detaches_without_debug(world):
    daemon = world.launch(options=[])
    assert daemon.wait() == 0, "the process that was started ends when the daemon is ready"
    client = world.client()
    assert client.preset("is_preset", "scene") is True, "so the rest detached completely"
    (pid,) = daemon.process_ids()
    assert os.getsid(pid) == pid, "in a session of its own"
    assert os.readlink(f"/proc/{pid}/cwd") == "/"
    assert {os.readlink(f"/proc/{pid}/fd/{fd}") for fd in (0, 1, 2)} == {"/dev/null"}
    assert client.preset("die") == ()
    wait_until(lambda: not daemon.process_ids(), "the daemon to end")
    assert daemon.records() == STARTED


def test_a_second_instance_ends_with_status_1(world):
    world.daemon()
    second = world.launch(name="second")
    assert second.wait() == 1
    assert second.records() == STARTED[:3] + [
        (INFO, "morvane:main RequestName returned 2.\n"),
        (ERROR, "morvane: ERROR: Failed to get the primary well-known name."
                " (RequestName result != 1)\n"),
    ]
    assert world.client().preset("is_preset", "scene") is True, "the first one goes on"


def test_a_second_instance_fails_before_it_detaches(world):
    world.daemon()
    assert world.launch(name="second", options=[]).wait() == 1


@pytest.mark.parametrize("options", [["--debug"], []])
@pytest.mark.parametrize("redirection", ["<&-", ">&-", "2>&-", "<&- >&- 2>&-"])
def test_a_closed_standard_stream_is_the_null_device(world, redirection, options):
    world.simulator()
    presets = world.write("presets.def", "scene preset { }\n"
                                         "translate { gain { index 2 { input = idx::9 } } }\n")
    daemon = world.launch(options=options, presets=presets,
                          wrapper=["sh", "-c", f'exec "$0" "$@" {redirection}']).wait_ready()
    client = world.client()
    wait_until(lambda: client.owns("org.norvix.preset"), "the service")
    path = world.write("p", "gain[1][1]=1\nmode=off\n")  # the first line is reported
    assert client.preset("load", "scene", str(path)) is True
    assert client.preset("store", "scene", str(path)) is True, "and the service goes on"
    wait_until(lambda: len(daemon.process_ids()) == 1, "one process to be left")
    (pid,) = daemon.process_ids()
    for closed in redirection.split():
        stream = {"<&-": 0, ">&-": 1, "2>&-": 2}[closed]
        assert os.readlink(f"/proc/{pid}/fd/{stream}") == "/dev/null"


def test_sends_every_answer_before_it_ends(served):
    """More than its socket holds, as the bus does not read for a while."""
    client = RawClient(served.bus.address)
    daemon, bus = served.morvane.process, served.bus.process
    daemon.send_signal(signal.SIGSTOP)
    introspection = DBusAddress(
        "/preset", "org.norvix.preset", "org.freedesktop.DBus.Introspectable")
    calls = [client.send("Introspect", address=introspection) for _ in range(200)]
    calls.append(client.send("die"))
    for _ in range(2):
        assert client.signals() == [], "all calls have come to the bus, and then to the daemon"
    bus.send_signal(signal.SIGSTOP)
    daemon.send_signal(signal.SIGCONT)
    wait_until(lambda: Path(f"/proc/{daemon.pid}/stat").read_text().split()[2] in "SZ",
               "the daemon to wait for the bus, or to have ended")
    bus.send_signal(signal.SIGCONT)
    assert [client.receive()[0] for _ in calls] == calls
    assert served.morvane.wait() == 1


def test_ends_with_status_1_without_a_bus(world):
    world.bus.stop()
    daemon = world.launch()
    assert daemon.wait() == 1
    first, (priority, text) = daemon.records()
    assert first == STARTED[0]
    assert priority == ERROR
    assert text.startswith("ERROR: Couldn't connect to the Session bus (")
    assert text.endswith(")\n")


def test_needs_no_parameter_handler_to_start(world):
    world.daemon()
    client = world.client()
    assert client.owns("org.norvix.preset")
    assert not client.owns("org.norvix.transaction")
    assert client.preset("in_preset", "scene", ["gain[1]"]) is True


def test_reads_the_definitions_before_it_claims_the_name(world):
    """The bus name says that the tables are complete."""
    fifo = world.folder / "slow.def"
    os.mkfifo(fifo)
    daemon = world.launch(presets=fifo)
    daemon.wait_logged(STARTED[0])
    writer = os.open(fifo, os.O_WRONLY)  # succeeds when the daemon has opened the other end
    assert daemon.records() == STARTED[:1]
    os.write(writer, b"late preset { }\n")
    os.close(writer)
    daemon.wait_ready()
    assert world.client().preset("is_preset", "late") is True


def run_program(*arguments):
    """The outcome without any bus to connect to."""
    environment = {k: v for k, v in os.environ.items() if k != "DBUS_SESSION_BUS_ADDRESS"}
    return subprocess.run([*DAEMON, *arguments], capture_output=True, text=True, check=False,
                          env=environment)


@pytest.mark.parametrize("arguments", [
    [], ["p"], ["p", "q", "novalue"], ["p", "q", "a=1", "novalue"], ["p", "q", "--debug", "x"]])
def test_prints_the_usage_before_anything_is_connected(arguments):
    outcome = run_program(*arguments)
    assert outcome.returncode == 64
    assert outcome.stdout == ""
    assert outcome.stderr == (
        "Usage: morvane [OPTION...] param_def_file preset_def_file system_arguments\n"
        "Try `morvane --help' or `morvane --usage' for more information.\n")


def test_prints_its_version():
    outcome = run_program("--version")
    assert (outcome.returncode, outcome.stdout, outcome.stderr) == (
        0, "morvane 1.07 velline-preset trunk 181\n", "")


def test_prints_its_help():
    outcome = run_program("--help")
    assert (outcome.returncode, outcome.stderr) == (0, "")
    lines = outcome.stdout.splitlines()
    assert lines[:3] == [
        "Usage: morvane [OPTION...] param_def_file preset_def_file system_arguments",
        "morvane -- Preset load/store system",
        "",
    ]
    assert "  -d, --debug                Allow debugging - do not daemonize" in lines


def test_prints_its_short_usage():
    outcome = run_program("--usage")
    assert (outcome.returncode, outcome.stderr) == (0, "")
    assert " ".join(outcome.stdout.split()) == (
        "Usage: morvane [-d?V] [--debug] [--help] [--usage] [--version] param_def_file "
        "preset_def_file system_arguments")
