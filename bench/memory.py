#!/usr/bin/python3
"""Measures what the daemon takes while it runs: memory at rest and at its peak, and time when idle.

Memory is resident size; bytes a key are over that of the daemon with almost empty definitions.
"""

import re
import tempfile
import time
from pathlib import Path

import definitions
from report import Report
from session import ROOT, Session, parse_options

EXAMPLE_ARGUMENTS = ("variant=studio", "inputs=4", "outputs=2", "delay=500", "region=us",
                     "options=genlock,hdr")
IDLE_SECONDS = 10
REST_SECONDS = 0.5  # in which a process that has done its work gives back what it does
STATES = ("idle", "store", "load", "afterwards")


class Process:
    """What the system says about a running process."""

    def __init__(self, number):
        self.folder = Path("/proc") / str(number)

    def status(self, field):
        """A number of the process's status; sizes are in kB."""
        return int(re.search(rf"^{field}:\s*(\d+)", (self.folder / "status").read_text(), re.M)[1])

    def resident(self):
        return self.status("VmRSS") * 1024

    def peak(self):
        return self.status("VmHWM") * 1024

    def reset_peak(self):
        (self.folder / "clear_refs").write_text("5")

    def computing_time(self):
        """In nanoseconds."""
        return int((self.folder / "schedstat").read_text().split()[0])

    def switches(self):
        return self.status("voluntary_ctxt_switches") + self.status("nonvoluntary_ctxt_switches")


def start_daemon(session, *arguments):
    process = Process(session.start_daemon(*arguments).pid)
    time.sleep(REST_SECONDS)
    return process


def request(session, process, method):
    """Calls the daemon; returns the most that was resident meanwhile, in bytes."""
    process.reset_peak()
    session.request(method)
    return process.peak()


def resident_at_rest(options, files, *arguments):
    with Session(options.build) as session:
        return start_daemon(session, *files, *arguments).resident()


def sizes_with(options, size):
    """Resident bytes of the daemon in each of STATES, with a preset of `size` keys."""
    with Session(options.build) as session:
        process = Process(session.start_daemon_with_keys(size).pid)
        time.sleep(REST_SECONDS)
        sizes = [process.resident(), request(session, process, "store"),
                 request(session, process, "load")]
        time.sleep(REST_SECONDS)
        return dict(zip(STATES, [*sizes, process.resident()]))


def mebibytes(size):
    return f"{size / 2**20:.2f}"


def measure_sizes(report, options):
    with tempfile.TemporaryDirectory() as folder:
        empty = resident_at_rest(options, definitions.write_almost_empty(Path(folder)))
    example = resident_at_rest(options, (ROOT / "examples/parameters.def",
                                         ROOT / "examples/presets.def"), *EXAMPLE_ARGUMENTS)
    report.data.update(empty=empty, example=example)
    report.line("\nResident at rest, MiB: "
                f"{mebibytes(empty)} with almost empty definitions, "
                f"{mebibytes(example)} with those of examples/.")
    report.head("keys", "idle, MiB", "peak of a store, MiB", "peak of a load, MiB",
                "afterwards, MiB", "idle, bytes/key", "store", "load", "afterwards")
    measured = report.data["sizes"] = []
    for size in options.memory_sizes:
        resident = sizes_with(options, size)
        per_key = {state: (resident[state] - empty) / size for state in STATES}
        measured.append({"keys": size, "resident": resident, "per_key": per_key})
        report.row(size, *(mebibytes(resident[state]) for state in STATES),
                   *(f"{per_key[state]:.1f}" for state in STATES))


def measure_idleness(report, options):
    with tempfile.TemporaryDirectory() as folder, Session(options.build) as session:
        process = start_daemon(session, *definitions.write_almost_empty(Path(folder)))
        computed, switched = process.computing_time(), process.switches()
        time.sleep(IDLE_SECONDS)
        computed = process.computing_time() - computed
        switched = process.switches() - switched
    report.data["idle"] = {"seconds": IDLE_SECONDS, "nanoseconds": computed, "switches": switched}
    report.line(f"\nIn {IDLE_SECONDS} idle seconds: {computed} ns computed, "
                f"{switched} context switches.")


def main():
    options = parse_options(__doc__)
    with Report("memory") as report:
        measure_sizes(report, options)
        measure_idleness(report, options)


main()
