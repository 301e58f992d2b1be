"""morvanectl monitor: every line of it, how it ends, and what it makes of odd signals."""

import json
import os
import signal
import subprocess
from contextlib import suppress
from pathlib import Path

import pytest
from gi.repository import GLib
from harness import CTL, DEADLINE_SECONDS, Bus, run_ctl, wait_until, without_notices

YES, ERROR = 0, 2
PRESET, HANDLER = "org.norvix.preset", "org.norvix.transaction"
MARK = "dbus_norvix_transaction: "


class Monitor:
    """A monitor that listens."""

    def __init__(self, world, *arguments, bus=None):
        self.errors = world.folder / "monitor.stderr"
        with self.errors.open("w") as errors:
            self.process = subprocess.Popen(
                [*CTL, "monitor", *arguments], stdout=subprocess.PIPE, stderr=errors, text=True,
                env=(bus or world.bus).environment())
        world.started.append(self.kill)
        self.first = self.lines(2)  # it listens before it knows who is there

    def lines(self, count):
        return [self.process.stdout.readline() for _ in range(count)]

    def objects(self, count):
        return [json.loads(line) for line in self.lines(count)]

    def outcome(self, awaited=()):
        """The exit status, the rest of the output, and standard error; see without_notices."""
        status = self.process.wait(DEADLINE_SECONDS)
        return (status, self.process.stdout.read(),
                without_notices(self.errors.read_text(), awaited))

    def interrupt(self, number=signal.SIGTERM, awaited=()):
        self.process.send_signal(number)
        return self.outcome(awaited)

    def kill(self):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()


def commit(client, *pairs):
    transaction = client.handler("start")
    for key, value in pairs:
        assert client.handler("set", "(uss)", transaction, key, value) == ()
    assert client.handler("commit", "(u)", transaction) == ()
    assert client.handler("end", "(u)", transaction) == ()


class StandIn:
    """A process with the Parameter Handler's name and nothing else, which may signal anything."""

    def __init__(self, world):
        self.connection = world.client().connection
        owner = "org.freedesktop.DBus"
        self.connection.call_sync(owner, "/", owner, "RequestName",
                                  GLib.Variant("(su)", (HANDLER, 0)), None, 0, -1, None)

    def signal(self, arguments, path="/transaction", name="transaction"):
        self.connection.emit_signal(None, path, HANDLER, name, arguments)
        self.connection.flush_sync(None)


def test_shows_what_commits_change(world):
    world.simulator()
    world.daemon()
    client = world.client()
    monitor = Monitor(world)
    assert monitor.first == [f"{PRESET} is running\n", f"{HANDLER} is running\n"]
    commit(client, ("mode", "off"), ("gain[1]", "-3"))
    assert monitor.lines(2) == ["gain[1]=-3\n", "mode=off\n"]
    commit(client, ("mode", "off"))  # no change, and no line
    commit(client, ("gain[1]", "6"))
    assert monitor.lines(1) == ["gain[1]=6\n"]
    assert monitor.interrupt() == (YES, "", "")


def test_writes_an_object_a_line(world):
    world.simulator()
    client = world.client()
    owner = client.driver("GetNameOwner", "(s)", HANDLER)
    monitor = Monitor(world, "--json")
    assert monitor.first == [f'{{"name":"{PRESET}","owner":null}}\n',
                             f'{{"name":"{HANDLER}","owner":"{owner}"}}\n']
    commit(client, ("mode", "off"), ("gain[1]", "-3"))
    commit(client)
    assert monitor.lines(2) == [
        '{"values":[{"key":"gain[1]","value":"-3"},{"key":"mode","value":"off"}]}\n',
        '{"values":[]}\n']
    assert monitor.interrupt() == (YES, "", "")


def test_shows_a_load_as_the_values_that_it_changed(world):
    world.simulator()
    world.daemon()
    monitor = Monitor(world)
    data = world.write("data", "mode=off\ngain[2]=1\n")
    assert world.client().preset("load", "scene", str(data)) is True
    assert monitor.lines(2) == ["gain[2]=1\n", "mode=off\n"]


def test_shows_the_services_come_and_go(world):
    monitor = Monitor(world)
    assert monitor.first == [f"{PRESET} is not running\n", f"{HANDLER} is not running\n"]
    simulator = world.simulator()
    assert monitor.lines(1) == [f"{HANDLER} is running\n"]
    daemon = world.daemon()
    assert monitor.lines(1) == [f"{PRESET} is running\n"]
    daemon.kill()
    assert monitor.lines(1) == [f"{PRESET} is not running\n"]
    simulator.process.terminate()
    assert monitor.lines(1) == [f"{HANDLER} is not running\n"]
    assert monitor.interrupt(signal.SIGINT) == (YES, "", "")


def test_shows_a_key_that_cannot_be_read(world):
    world.simulator()
    client = world.client()
    monitor = Monitor(world)
    objects = Monitor(world, "--json")
    commit(client, ("trigger", "1"), ("mode", "off"))
    why = MARK + "trigger is write-only"
    assert monitor.lines(2) == ["mode=off\n", f"trigger ({why})\n"]
    assert objects.objects(1) == [{"values": [
        {"key": "mode", "value": "off"}, {"key": "trigger", "value": None, "error": why}]}]


def test_shows_that_values_cannot_be_read(world):
    """They are those at the time of the read, which comes after the signal."""
    world.simulator(faults="single_get_bulk 1 error busy\nsingle_get_bulk 3 fewer-values\n")
    client = world.client()
    monitor = Monitor(world, "--json")
    for why in ("busy", "the Parameter Handler answered another number of values"):
        commit(client, ("mode", "off"), ("gain[1]", "1"))
        assert monitor.objects(1) == [{"values": [
            {"key": key, "value": None, "error": why} for key in ("gain[1]", "mode")]}]
        commit(client, ("mode", "auto"), ("gain[1]", "0"))
        monitor.lines(1)


@pytest.mark.parametrize("text, shown", [
    ("()", "()"), ("('mode',)", "(s)"), ("(['mode'], 1)", "(asi)"), ("([1],)", "(ai)"),
    ("([b'mode'],)", "(aay)"), ("({'mode': <'off'>},)", "(a{sv})")])
def test_survives_signals_of_another_type(world, text, shown):
    handler = StandIn(world)
    monitor = Monitor(world)
    handler.signal(GLib.Variant.parse(None, text, None, None) if text != "()" else None)
    handler.signal(GLib.Variant("(as)", (["mode"],)))
    line = monitor.lines(1)[0]
    assert line.startswith("mode ("), "the next signal counts"
    assert monitor.interrupt() == (
        YES, "",
        f"morvanectl: warning: a signal of the Parameter Handler has values of type {shown}\n")


def test_shows_odd_keys_on_one_line(world):
    handler = StandIn(world)
    monitor = Monitor(world)
    handler.signal(GLib.Variant("(as)", (["a\nmode=off\x1b[2J", ""],)))
    lines = monitor.lines(2)
    assert [line.partition(" (")[0] for line in lines] == ["a\\x0amode=off\\x1b[2J", ""]


def test_listens_to_the_parameter_handler_alone(world):
    world.simulator()
    client, other = world.client(), world.client()
    monitor = Monitor(world)
    other.connection.emit_signal(None, "/transaction", HANDLER, "transaction",
                                 GLib.Variant("(as)", (["mode"],)))
    other.driver("GetId")  # the bus has the signal
    commit(client, ("gain[1]", "1"))
    assert monitor.lines(1) == ["gain[1]=1\n"]


def test_ends_while_it_waits_for_values(world):
    world.simulator(faults="single_get_bulk always no-reply\n")
    client = world.client()
    monitor = Monitor(world)
    commit(client, ("mode", "off"))
    awaited = f"{HANDLER} to answer single_get_bulk"
    wait_until(lambda: f"{awaited}\n" in monitor.errors.read_text(),
               "the monitor to read the value")
    assert monitor.interrupt(awaited=[awaited]) == (
        YES, "", f"morvanectl: waiting for {awaited}\n")


@pytest.mark.parametrize("arguments", [(), ("--json",)])
def test_says_that_the_bus_ended(world, arguments):
    bus = Bus()
    monitor = Monitor(world, *arguments, bus=bus)
    bus.stop()
    status, output, problem = monitor.outcome()
    assert (status, output) == (ERROR, "")
    if arguments:
        assert json.loads(problem)["text"] == "the bus ended"
    else:
        assert problem == "morvanectl: the bus ended\n"


def test_ends_quietly_when_nobody_reads(world):
    """As in "morvanectl monitor | head -1": without waiting for the next event."""
    monitor = Monitor(world)
    monitor.process.stdout.close()
    assert monitor.process.wait(DEADLINE_SECONDS) == YES
    assert without_notices(monitor.errors.read_text()) == ""


def test_ends_quietly_when_a_write_finds_nobody_who_reads(world):
    """The pipe is full, so that the first line waits for the reader, who leaves."""
    read_end, write_end = os.pipe()
    os.set_blocking(write_end, False)
    with suppress(BlockingIOError):
        while True:
            os.write(write_end, b"x" * 512)
    os.set_blocking(write_end, True)
    with subprocess.Popen([*CTL, "monitor"], stdout=write_end, stderr=subprocess.PIPE, text=True,
                          env=world.bus.environment()) as process:
        os.close(write_end)
        waits_in = Path(f"/proc/{process.pid}/wchan")
        wait_until(lambda: "pipe_write" in waits_in.read_text(), "the monitor to write")
        os.close(read_end)
        assert (process.wait(DEADLINE_SECONDS), without_notices(process.stderr.read())) == (YES, "")


def test_says_that_its_output_cannot_be_written(world):
    with open("/dev/full", "w") as full:
        status, _, problem = run_ctl("monitor", stdout=full, env=world.bus.environment(),
                                     timeout=DEADLINE_SECONDS)
    assert (status, problem) == (ERROR, "morvanectl: cannot write: No space left on device\n")
