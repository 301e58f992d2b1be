"""What the measuring scripts share: options, a private bus with the daemon on it, and tables."""

import argparse
import os
import signal
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from gi.repository import Gio, GLib

ROOT = Path(__file__).resolve().parents[1]
BUILD = ROOT / "build-bench"
BUS = "org.freedesktop.DBus"
DAEMON = "org.norvix.preset"
PRESET = "scene"  # the only preset of write_keys(), with all keys
PATIENCE = 60  # seconds until a program must own its name

# Ten parameters of a unit, with 41 keys: half of them are indexed, a third of the ranges is
# conditional.
UNIT = """
# Unit {unit}
unit{unit}Level rw {{
    rangeValid (model == "studio") {{ -90..12 }}
    rangeValid (model != "studio") {{ -60..12 }}
    default {{ 0 }}
}}
unit{unit}Mute rw {{ index {{ channel }} rangeValid {{ 0..1 }} default {{ 0 }} }}
unit{unit}Mode rw {{
    rangeValid {{ "auto", "manual", "off" }}
    default {{ "auto" }}
}}
unit{unit}Gain rw {{ index {{ channel }} rangeValid {{ -15..15 }} default {{ 0 }} }}
unit{unit}Delay rw {{
    index {{ channel }}
    rangeValid (delay > 0 && options $ "delay") {{ 0..(delay) }}
    default {{ (delay / 10) }}
}}
unit{unit}Equalizer rw {{
    index {{ channel }} index {{ band }}
    rangeValid {{ -120..120 }}
    default {{ 0 }}
}}
unit{unit}Source rw {{
    rangeValid {{ "analog", "digital" }}
    rangeValid (model == "studio") {{ "network" }}
    default {{ "analog" }}
}}
unit{unit}Status ro {{ rangeValid {{ "none", "warning", "critical" }} default {{ "none" }} }}
unit{unit}Width rw {{
    ctrlValid (model == "studio")
    rangeValid {{ 1..10 }}
    default {{ 3 }}
}}
unit{unit}Meter ro {{ index {{ channel }} rangeValid {{ -120..20 }} default {{ -120 }} }}
"""
PRESETS = """
everything preset { }
snapshot preset { include ro { all } }
scalars preset { exclude rw { index { channel } } }
status preset {
    include ro { all }
    exclude rw { all }
}
"""
PRESET_NAMES = ("everything", "snapshot", "scalars", "status")
SYSTEM_ARGUMENTS = ("model=studio", "delay=500", "options=delay,meter")

# Ends what is running, as Ctrl-C does.
signal.signal(signal.SIGTERM, lambda *_: sys.exit("bench: terminated"))


def parse_options(description, sizes):
    """Reads the command line, which is the same for each script that bench/run hands it to.
    `sizes` are the default ones."""
    def numbers(text):
        return [int(number) for number in text.split(",")]
    parser = argparse.ArgumentParser(description=description.partition("\n")[0],
                                     formatter_class=argparse.ArgumentDefaultsHelpFormatter)
    parser.add_argument("--sizes", type=numbers, default=sizes, metavar="N,...",
                        help="numbers of keys, or of parameters for starts")
    parser.add_argument("--rounds", type=int, default=15, metavar="N",
                        help="samples of each program, for requests and starts")
    options = parser.parse_args()
    if options.rounds < 2:
        parser.error("--rounds: at least 2, which quartiles need")
    return options


def write_keys(folder, size):
    """Writes definitions with one preset of `size` keys, of 24 characters each. Returns the paths
    of the parameter and the preset definition file."""
    names, columns = 10, min(100, size // 10)
    rows = size // (names * columns) if columns > 0 else 0
    if names * rows * columns != size or not 0 < rows <= 9000:
        sys.exit(f"bench: {size} keys: not 10 times up to 100, nor 1,000 times up to 9,000")
    parameters, presets = folder / "parameters.def", folder / "presets.def"
    parameters.write_text(
        f"row index {{ rangeValid {{ 1000..{1000 + rows - 1} }} }}\n"
        f"column index {{ rangeValid {{ 100..{100 + columns - 1} }} }}\n"
        + "".join(f"mixer{n:02}Volume rw {{ index {{ row }} index {{ column }} }}\n"
                  for n in range(names)))
    presets.write_text(f"{PRESET} preset {{ }}\n")
    return parameters, presets


def output_of(*command, environment=None):
    """Runs a program to its end. Returns what it printed."""
    done = subprocess.run(command, env=environment, stdout=subprocess.PIPE, text=True)
    if done.returncode != 0:
        sys.exit(f"bench: {command[0]} failed")
    return done.stdout


def list_keys(definitions, preset, *arguments):
    """The keys of a preset, one a line, sorted. `arguments` are system arguments."""
    parameters, presets = definitions
    system = [part for argument in arguments for part in ("-s", argument)]
    return output_of(BUILD / "morvanectl", "-p", parameters, "-d", presets, *system, "keys", preset)


def write_device(folder, count):
    """Writes definitions of `count` parameters, in a mix typical of devices, and PRESETS. Returns
    the paths of both files, and that of a list of the keys of all presets."""
    if count % 10 != 0:
        sys.exit(f"bench: {count} parameters: not ten times a whole number")
    parameters, presets = folder / "parameters.def", folder / "presets.def"
    keys = folder / "keys"
    units = "".join(UNIT.format(unit=f"{unit:05}") for unit in range(count // 10))
    parameters.write_text("channel index { rangeValid { 1..4 } }\n"
                          f"band index {{ rangeValid {{ 1..5 }} }}\n{units}")
    presets.write_text(PRESETS)
    keys.write_text("".join(list_keys((parameters, presets), preset, *SYSTEM_ARGUMENTS)
                            for preset in PRESET_NAMES))
    return parameters, presets, keys


class Session:
    """A private bus, the programs on it and a folder for their files, which end with it."""

    def __init__(self):
        self.started, self.owners = [], {}
        self.temporary = tempfile.TemporaryDirectory()
        self.folder = Path(self.temporary.name)
        self.keys, self.file = self.folder / "keys", self.folder / "file"
        self.bus = subprocess.Popen(
            ["dbus-daemon", f"--config-file={ROOT}/tests/support/bus.conf", "--nofork",
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
        look = GLib.timeout_add(100, lambda: True)  # to notice when the process has ended
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
        return self.start(DAEMON, *under, BUILD / "morvane", "--debug", *arguments)

    def start_daemon_with_keys(self, size, under=()):
        """Starts the daemon with PRESET, of `size` keys, which are listed in the file `keys`."""
        definitions = write_keys(self.folder, size)
        self.keys.write_text(list_keys(definitions, PRESET))
        return self.start_daemon(*definitions, under=under)

    def request(self, method, rounds=1, services=(DAEMON,)):
        """Calls a method of services, interleaved, with PRESET and `file`, or a key. Returns a row
        for each round: elapsed and CPU time, in nanoseconds, of each service."""
        argument = self.file
        if method == "in_preset":
            keys = self.keys.read_text().splitlines()
            argument = keys[len(keys) // 2]
        output = output_of(BUILD / "bench/request_client", self.keys, str(rounds), method, PRESET,
                           argument, *services, environment=self.environment)
        return [tuple(map(int, line.split())) for line in output.splitlines()]

    def keep_half(self):
        """Takes every second line out of the stored file."""
        lines = self.file.read_text().splitlines(keepends=True)
        self.file.write_text("".join(lines[::2]))


def spread(values, digits=3):
    """The median with the quartiles, as text."""
    low, middle, high = statistics.quantiles(values, n=4)
    return f"{middle:.{digits}f} ({low:.{digits}f} to {high:.{digits}f})"


def ratios(values, baselines):
    """The ratios of neighbouring samples. On a virtual machine that had to wait for its processor,
    a call of microseconds may show no CPU time at all."""
    return [value / baseline for value, baseline in zip(values, baselines) if baseline > 0]


def print_row(*cells):
    print(f"| {' | '.join(map(str, cells))} |", flush=True)


def print_head(*columns):
    """Begins a table."""
    print()
    print_row(*columns)
    print_row(*["---"] * len(columns))


def print_targets(targets):
    """Prints the targets with what was measured: (what, at most, measured, unit). No script
    fails if a target is not met."""
    print_head("what", "at most", "measured", "met")
    for what, most, measured, unit in targets:
        print_row(what, f"{most}{unit}", f"{measured:.3f}{unit}",
                  "yes" if measured <= most else "no")
