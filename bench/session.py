"""What the measuring scripts share: their options, and a private bus with programs on it."""

import argparse
import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from gi.repository import Gio, GLib

import definitions
from definitions import PRESET

ROOT = Path(__file__).resolve().parents[1]
RESULTS = ROOT / "build/bench"
BUS = "org.freedesktop.DBus"
DAEMON = "org.norvix.preset"
PATIENCE = 60  # seconds until a program must own its name


def numbers(text):
    return [int(number) for number in text.split(",")]


def parse_options(description):
    """Reads the command line, which is the same for every script: each takes what it needs."""
    parser = argparse.ArgumentParser(description=description.partition("\n")[0],
                                     formatter_class=argparse.ArgumentDefaultsHelpFormatter)
    parser.add_argument("--sizes", type=numbers, default="1000,10000,100000",
                        help="numbers of keys, for requests")
    parser.add_argument("--memory-sizes", type=numbers, default="100,10000,100000,1000000",
                        help="numbers of keys, for memory")
    parser.add_argument("--parameters", type=numbers, default="100,1000,10000,100000",
                        help="numbers of parameters, for start-up")
    parser.add_argument("--rounds", type=int, default=15, help="samples of each program")
    parser.add_argument("--large-rounds", type=int, default=5,
                        help="samples above 100,000 keys and from 100,000 parameters on")
    parser.add_argument("--build", type=Path, default=ROOT / "build-bench", help="build folder")
    return parser.parse_args()


class Session:
    """A private bus, the programs on it and a folder for their files, which end with it."""

    def __init__(self, build):
        self.build, self.started, self.owners = build, [], {}
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = Path(self.temporary.name)
        self.keys, self.file = self.folder / "keys", self.folder / "file"
        self.bus = subprocess.Popen(
            ["dbus-daemon", f"--config-file={ROOT}/tests/service/bus.conf", "--nofork",
             "--print-address"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        address = self.bus.stdout.readline().strip()
        self.environment = {**os.environ, "DBUS_SESSION_BUS_ADDRESS": address}
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        self.connection.signal_subscribe(
            BUS, BUS, "NameOwnerChanged", None, "org.norvix",
            Gio.DBusSignalFlags.MATCH_ARG0_NAMESPACE, self._note_owner)
        self.call(BUS, "GetId")  # once it is answered, the bus knows of the subscription

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in reversed(self.started):
            process.kill()
            process.wait()
        self.connection.close_sync(None)
        self.bus.terminate()  # which lets it remove its socket
        self.bus.wait()
        self.bus.stdout.close()
        self.temporary.cleanup()

    def _note_owner(self, *signal):
        name, _, owner = signal[-1].unpack()
        self.owners[name] = owner

    def call(self, service, method, arguments=None, path="/"):
        """Calls a method of the interface that has the service's name."""
        self.connection.call_sync(service, path, service, method, arguments, None, 0, -1, None)

    def wait_for_name(self, name, process, owned=True):
        """Waits until a process owns a name, or nobody does any more."""
        deadline = time.monotonic() + PATIENCE
        look = GLib.timeout_add(100, lambda: True)  # the end of the process is no event here
        while bool(self.owners.get(name)) != owned:
            GLib.MainContext.default().iteration(True)
            if owned and process.poll() is not None:
                sys.exit(f"bench: {process.args[0]} ended before it owned {name}")
            if time.monotonic() > deadline:
                sys.exit(f"bench: the owner of {name} does not change")
        GLib.source_remove(look)

    def start(self, name, *command):
        """Starts a service. Returns its process as soon as it owns its name."""
        process = subprocess.Popen(command, env=self.environment, close_fds=False)
        self.started.append(process)
        self.wait_for_name(name, process)
        return process

    def start_daemon(self, *arguments, under=()):
        """Starts the daemon, `under` the command of another program."""
        return self.start(DAEMON, *under, self.build / "morvane", "--debug", *arguments)

    def start_daemon_with_keys(self, size, under=()):
        """Starts the daemon with PRESET, of as many keys, which are listed in the file `keys`."""
        files = definitions.write_keys(self.folder, size)
        self.keys.write_text(definitions.list_keys(self.build, files, PRESET))
        return self.start_daemon(*files, under=under)

    def request(self, method, rounds=1, services=(DAEMON,)):
        """Calls a method of services, interleaved, with PRESET and `file`, or a key. Returns a row
        for each round: elapsed and CPU time, in nanoseconds, of each service."""
        argument = self.file
        if method == "in_preset":
            keys = self.keys.read_text().splitlines()
            argument = keys[len(keys) // 2]
        output = self.run(self.build / "bench/request_client", self.keys, str(rounds), method,
                          PRESET, argument, *services)
        return [tuple(map(int, line.split())) for line in output.splitlines()]

    def keep_half(self):
        """Takes every second line out of the stored file."""
        lines = self.file.read_text().splitlines(keepends=True)
        self.file.write_text("".join(lines[::2]))

    def run(self, *command):
        """Runs a program to its end. Returns what it printed."""
        done = subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, text=True)
        if done.returncode != 0:
            sys.exit(f"bench: {command[0]} failed")
        return done.stdout
