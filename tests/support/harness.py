"""The processes around one service test: a private bus, the simulator, the daemon, a client.

Nothing outside the test's own folder is touched: the bus is private and the daemon's system log and
pauses go to a file, through a preloaded library. All waiting is for an event, with a deadline.
"""

import os
import re
import shlex
import signal
import subprocess
import time
from contextlib import suppress
from dataclasses import dataclass
from pathlib import Path
from xml.sax.saxutils import escape

from gi.repository import Gio, GLib
from raw_client import DEADLINE_SECONDS

SOURCE = Path(__file__).parents[2]
BUILD = Path(os.environ["MORVANE_BUILD_DIR"])
# A daemon for another architecture runs under an emulator, alongside this machine's simulator.
EMULATOR = [os.environ["MORVANE_EMULATOR"]] if os.environ.get("MORVANE_EMULATOR") else []
# Each start of a program costs many times what it costs on the device or the desk.
SLOW_STARTS = bool(EMULATOR) or os.environ.get("MORVANE_SANITIZE") == "ON"
DAEMON = [*EMULATOR, BUILD / "morvane"]
CTL = [*EMULATOR, BUILD / "morvanectl"]
SIMULATOR = Path(os.environ["MORVANE_SIMULATOR"])
SHIM = BUILD / "tests/support/shim/libmorvane-test-shim.so"
BUS_CONFIG = Path(__file__).parent / "bus.conf"

ERROR, INFO = 3, 6  # the priorities of syslog.h

_AWAITED = r"waiting for ((?:the bus|org\.[\w.]+) to answer(?: \w+)?)"
# A notice of morvanectl, as a line and as a line of JSON.
_NOTICE = re.compile(
    rf'^(?:morvanectl: {_AWAITED}|\{{"file":null,"line":null,"column":null,"severity":"note",'
    rf'"code":null,"text":"{_AWAITED}","variants":\[\]\}})\n', re.MULTILINE)


def without_notices(errors, awaited=()):
    """What morvanectl wrote to standard error, less its notices of what takes more than a second:
    on a busy machine, that may be anything. Notices of what a test itself delays stay: `awaited`
    has what follows "waiting for" in them."""
    return _NOTICE.sub(lambda notice: notice[0] if (notice[1] or notice[2]) in awaited else "",
                       errors)


def run_ctl(*arguments, awaited=(), wrapper=(), stdout=subprocess.PIPE, **options):
    """Runs morvanectl with options of subprocess.run. Returns its exit status, standard output and
    standard error, without notices except those of what is `awaited`."""
    outcome = subprocess.run([*wrapper, *CTL, *arguments], stdout=stdout, stderr=subprocess.PIPE,
                             text=True, check=False, **options)
    return outcome.returncode, outcome.stdout, without_notices(outcome.stderr, awaited)


def tools_on_path(folder):
    """A PATH on which the programs under test are found by their names."""
    tools = folder / "bin"
    tools.mkdir()
    for command in (DAEMON, CTL, [SIMULATOR]):
        program = tools / command[-1].name
        program.write_text(f'#!/bin/sh\nexec {shlex.join(map(str, command))} "$@"\n')
        program.chmod(0o755)
    return f"{tools}:{os.environ['PATH']}"


@dataclass(frozen=True)
class Pause:
    """A call of sleep."""

    seconds: int


def wait_until(condition, what):
    """Returns the first true answer of `condition`; fails the test after the deadline."""
    end = time.monotonic() + DEADLINE_SECONDS
    while time.monotonic() < end:
        answer = condition()
        if answer:
            return answer
        time.sleep(0.005)
    raise AssertionError(f"waited in vain for {what}")


class Bus:
    """A private session bus, or another one that `config` describes."""

    def __init__(self, config=BUS_CONFIG):
        self.process = subprocess.Popen(
            ["dbus-daemon", f"--config-file={config}", "--nofork", "--print-address"],
            stdout=subprocess.PIPE, text=True)
        self.address = self.process.stdout.readline().strip()

    def stop(self):
        self.process.terminate()  # which lets it remove its socket
        self.process.wait()
        self.process.stdout.close()

    def environment(self, **more):
        return {**os.environ, "DBUS_SESSION_BUS_ADDRESS": self.address, **more}


@dataclass(frozen=True)
class RemoteError:
    """An error reply."""

    name: str
    message: str


class Client:
    """A connection to the bus."""

    def __init__(self, bus):
        self.connection = Gio.DBusConnection.new_for_address_sync(
            bus.address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        self.connection.set_exit_on_close(False)

    def start_call(self, destination, path, interface, method, signature="()", *arguments,
                   timeout_seconds=DEADLINE_SECONDS, flags=Gio.DBusCallFlags.NO_AUTO_START):
        """Sends a call. Returns a function that waits for the answer and returns it: the tuple of
        the reply's values, a single value by itself, or a RemoteError for an error reply."""
        loop, results = GLib.MainLoop(), []

        def done(_, result):
            results.append(result)
            loop.quit()

        def answer():
            if not results:
                loop.run()
            return self._answer(results[0])

        self.connection.call(
            destination, path, interface, method, GLib.Variant(signature, arguments), None,
            flags, timeout_seconds * 1000, None, done)
        self.connection.flush_sync(None)
        return answer

    def _answer(self, result):
        try:
            values = self.connection.call_finish(result).unpack()
        except GLib.Error as error:
            name = Gio.DBusError.get_remote_error(error)
            if name is None:
                raise
            return RemoteError(name, error.message.removeprefix(f"GDBus.Error:{name}: "))
        return values[0] if len(values) == 1 else values

    def call(self, *arguments, **options):
        """Sends a call and returns its answer."""
        return self.start_call(*arguments, **options)()

    def start_preset(self, method, *arguments):
        """Sends a call to the preset service; strings and lists of strings only."""
        signature = "(" + "".join("s" if isinstance(a, str) else "as" for a in arguments) + ")"
        return self.start_call("org.norvix.preset", "/preset", "org.norvix.preset", method,
                               signature, *arguments)

    def preset(self, method, *arguments):
        """Calls a method of the preset service."""
        return self.start_preset(method, *arguments)()

    def handler(self, method, signature="()", *arguments):
        """Calls a method of the Parameter Handler."""
        return self.call("org.norvix.transaction", "/transaction", "org.norvix.transaction",
                         method, signature, *arguments)

    def driver(self, method, signature="()", *arguments):
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                         method, signature, *arguments)

    def owns(self, name):
        return self.driver("NameHasOwner", "(s)", name)

    def close(self):
        try:
            self.connection.close_sync(None)
        except GLib.Error as error:  # a test may have stopped the bus
            if not error.matches(Gio.io_error_quark(), Gio.IOErrorEnum.CLOSED):
                raise


class Simulator:
    """The simulated Parameter Handler. Its log is in `folder`/sim.log."""

    def __init__(self, bus, folder, parameters, *arguments, faults=None, values=None):
        self.log = folder / "sim.log"
        options = ["--print-ready", "--verbose"]
        for option, text in (("--faults", faults), ("--values", values)):
            if text is not None:
                path = folder / option.strip("-")
                path.write_text(text)
                options += [option, str(path)]
        with self.log.open("a") as log:
            self.process = subprocess.Popen(
                [SIMULATOR, *options, parameters, *arguments], stdout=subprocess.PIPE, stderr=log,
                text=True, env=bus.environment())
        ready = self.process.stdout.readline()
        assert ready.startswith("ready :"), ready + self.log.read_text()

    def position(self):
        """Where the log ends now, for `calls`."""
        return self.log.stat().st_size

    def calls(self, since=0):
        """The calls so far, or since a position: method names with their arguments as Python
        values."""
        calls = []
        with self.log.open() as log:
            log.seek(since)
            lines = log.read().splitlines()
        for line in lines:
            match = re.fullmatch(r"call (\w+) (\(.*\))", line)
            if match:
                arguments = GLib.Variant.parse(None, match[2], None, None).unpack()
                calls.append((match[1], *arguments))
        return calls

    def methods(self):
        return [call[0] for call in self.calls()]

    def stop(self):
        """Ends the simulator and returns its exit status."""
        self.process.terminate()
        status = self.process.wait(DEADLINE_SECONDS)
        self.process.stdout.close()
        return status


class Daemon:
    """morvane under test. Standard output and error are in `folder`/stdout and stderr."""

    def __init__(self, bus, folder, parameters, presets, *arguments, options=("--debug",),
                 name="daemon", wrapper=(), fault=None, clock_rate=1):
        self._prepare(folder, name)
        shim = {"MORVANE_TEST_CLOCK_RATE": str(clock_rate)}
        if fault is not None:  # "FUNCTION N ACTION", and the file that it is about
            shim |= zip(("MORVANE_TEST_FAULT", "MORVANE_TEST_FAULT_PATH"), fault)
        with self.stdout.open("wb") as out, self.stderr.open("wb") as err:
            self.process = subprocess.Popen(
                [*wrapper, *DAEMON, *options, parameters, presets, *arguments],
                stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                env=bus.environment(**self.environment(), **shim))

    def _prepare(self, folder, name):
        self.folder, self.name = folder, name
        self.log_file = folder / f"{name}.log"
        self.log_file.write_bytes(b"")

    def environment(self):
        """What makes the daemon write to its log file."""
        return {
            # By name: LD_PRELOAD cannot hold a path with blanks.
            "LD_PRELOAD": SHIM.name, "LD_LIBRARY_PATH": str(SHIM.parent),
            "MORVANE_TEST_LOG": str(self.log_file),
            "ASAN_OPTIONS": "verify_asan_link_order=0"}  # the shim comes first

    @property
    def stdout(self):
        return self.folder / f"{self.name}.stdout"

    @property
    def stderr(self):
        return self.folder / f"{self.name}.stderr"

    def records(self):
        """Everything in the log file so far: (priority, text) pairs and pauses."""
        data, records = self.log_file.read_bytes(), []
        while data:
            head = re.match(rb"(log|sleep) (\d+) (\d+) ", data)
            assert head, data[:200]
            end = head.end() + int(head[3])
            if end >= len(data):
                break  # a record that is being written
            text = data[head.end():end].decode()
            records.append((int(head[2]), text) if head[1] == b"log" else Pause(int(head[2])))
            data = data[end + 1:]
        return records

    def records_after_start(self):
        """The records since the service was ready."""
        records = self.records()
        texts = [r[1] if isinstance(r, tuple) else "" for r in records]
        last = "morvane: Not daemonizing\n"
        start = texts.index(last if last in texts else READY)
        return records[start + 1:]

    def wait_ready(self):
        """Waits for the last message of the start."""
        wait_until(lambda: self.process.poll() is not None or (INFO, READY) in self.records(),
                   "the daemon to be ready")
        return self

    def wait_logged(self, record, count=1):
        wait_until(lambda: self.records().count(record) >= count, f"the log to hold {record}")

    def wait(self):
        """Waits for the end of the process that was started and returns its exit status."""
        return self.process.wait(DEADLINE_SECONDS)

    def open_files(self):
        """How many files it has open, without the log, which the shim opens for each message."""
        names = []
        for link in Path(f"/proc/{self.process.pid}/fd").iterdir():
            with suppress(FileNotFoundError):  # closed meanwhile
                names.append(os.readlink(link))
        return len(names) - names.count(str(self.log_file))

    def process_ids(self):
        """The living processes of this daemon, including one that detached."""
        mark = f"MORVANE_TEST_LOG={self.log_file}".encode()
        found = []
        for pid in filter(str.isdigit, os.listdir("/proc")):
            try:
                if mark in Path("/proc", pid, "environ").read_bytes().split(b"\0"):
                    found.append(int(pid))
            except OSError:
                pass  # it ended meanwhile
        return found

    def kill(self):
        for pid in self.process_ids():
            os.kill(pid, signal.SIGKILL)
        self.process.wait()


class ActivatedDaemon(Daemon):
    """morvane under test that a bus is to start, by the activation file of `build/packaging`."""

    def __init__(self, folder, parameters, presets):
        self._prepare(folder, "activated")
        services = folder / "services"
        services.mkdir()
        variables = [f"{name}={value}" for name, value in self.environment().items()]
        text = (BUILD / "packaging/org.norvix.preset.service").read_text()
        for installed, here in (
                ("/usr/sbin/morvane", ["/usr/bin/env", *variables, *DAEMON]),
                ("/etc/morvane/parameters.def", [parameters]),
                ("/etc/morvane/presets.def", [presets])):
            assert text.count(installed) == 1, text
            text = text.replace(installed, shlex.join(map(str, here)))
        (services / "org.norvix.preset.service").write_text(text)
        self.config = folder / "bus.conf"
        self.config.write_text(BUS_CONFIG.read_text().replace(
            "</listen>", f"</listen><servicedir>{escape(str(services))}</servicedir>"))

    def kill(self):
        for pid in self.process_ids():
            os.kill(pid, signal.SIGKILL)


READY = "morvane:main Ready to serve requests (daemonizing).\n"
