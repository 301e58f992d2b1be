"""Measures the daemon's resident memory, at rest and at its peak, and what it does when idle.

Bytes per key are relative to the daemon at rest with the first of the sizes. What is live is
what is allocated and not freed, as valgrind counts it; what of it was never written to is not
resident. The size of the
program file is without symbols, for this machine and, if it is built, for armhf.
"""

import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from measuring import (BUILD, PRESET, ROOT, SYSTEM_ARGUMENTS, Session, parse_options, print_head,
                       print_row, print_targets, write_device, write_keys)

EXAMPLES = (ROOT / "examples/parameters.def", ROOT / "examples/presets.def", "variant=studio",
            "inputs=4", "outputs=2", "delay=500", "region=us", "options=genlock,hdr")
SMALLEST, LARGEST = 100, 1000000  # keys that have targets
PARAMETERS = 100000, 10  # of a large device, with about four keys for each, and of a small one
PRESETS, PRESET_KEYS, STARTS = 100, 100000, 9
IDLE_SECONDS = 10
REST_SECONDS = 0.5  # in which a process that has its name comes to rest
PROGRAMS = (("this machine", "strip", BUILD / "morvane"),
            ("armhf", "arm-linux-gnueabihf-strip", ROOT / "build-armhf/morvane"))


class Process:
    """What the system says about a running process."""

    def __init__(self, process):
        self.folder = Path("/proc") / str(process.pid)
        time.sleep(REST_SECONDS)

    def bytes_of(self, field):
        """VmRSS is what is resident now, VmHWM the most since reset_peak()."""
        kibibytes = re.search(rf"^{field}:\s*(\d+) kB", (self.folder / "status").read_text(), re.M)
        return int(kibibytes[1]) * 1024

    def reset_peak(self):
        (self.folder / "clear_refs").write_text("5")

    def work(self):
        """The CPU time in nanoseconds, and how often the process ran."""
        cpu, _, runs = map(int, (self.folder / "schedstat").read_text().split())
        return cpu, runs


def measure_examples():
    with Session() as session:
        process = Process(session.start_daemon(*EXAMPLES))
        print(f"\nWith the definitions of examples/: {process.bytes_of('VmRSS') / 2**20:.2f} MiB.")
        cpu, runs = process.work()
        time.sleep(IDLE_SECONDS)
        cpu_then, runs_then = process.work()
        print(f"In {IDLE_SECONDS} idle seconds: {cpu_then - cpu} ns of CPU time, "
              f"woken {runs_then - runs} times.", flush=True)


def measure_size(size):
    """Bytes with a preset of `size` keys: at rest, at the peak of a store and of a load, and at
    rest after them."""
    def peak_of(method):
        process.reset_peak()
        session.request(method)
        return process.bytes_of("VmHWM")
    with Session() as session:
        process = Process(session.start_daemon_with_keys(size))
        return (process.bytes_of("VmRSS"), peak_of("store"), peak_of("load"),
                process.bytes_of("VmRSS"))


def live_bytes(*arguments):
    """What the daemon has allocated when it has its name, less what it has freed."""
    valgrind = shutil.which("valgrind") or sys.exit("bench: valgrind is not installed")
    with Session() as session:
        log = session.folder / "log"
        process = session.start_daemon(
            *arguments, under=[valgrind, "--vgdb=no", "--leak-check=no", f"--log-file={log}"])
        process.terminate()
        process.wait()
        count = re.search(r"in use at exit: ([\d,]+) bytes", log.read_text())[1]
        return int(count.replace(",", ""))


def measure_start():
    """Returns what is resident after the start with a large device, relative to what is live, each
    above that of a small one."""
    print_head("parameters", "resident after the start, MiB", "live, MiB")
    rows = []
    for count in PARAMETERS:
        with Session() as session:
            *definitions, _ = write_device(session.folder, count)
            arguments = (*definitions, *SYSTEM_ARGUMENTS)
            process = Process(session.start_daemon(*arguments))
            rows.append((process.bytes_of("VmRSS"), live_bytes(*arguments)))
        print_row(count, *(f"{number / 2**20:.2f}" for number in rows[-1]))
    (resident, live), (least_resident, least_live) = rows
    return (resident - least_resident) / (live - least_live)


def measure_presets():
    """Returns CPU time and peak memory of a start with many presets, each of which leaves out other
    keys, relative to one with a single preset."""
    def start(*arguments):
        with Session() as session:
            parameters, presets = write_keys(session.folder, PRESET_KEYS)
            presets.write_text("".join(arguments))
            process = Process(session.start_daemon(parameters, presets))
            return process.work()[0] / 1e6, process.bytes_of("VmHWM") / 2**20
    many = [f"{PRESET}{i:02} preset {{ exclude rw {{ index {{ row {{ {1000 + i} }} }} }} }}\n"
            for i in range(PRESETS)]
    starts = [(start(f"{PRESET} preset {{ }}\n"), start(*many)) for _ in range(STARTS)]
    one, hundred = ([statistics.median(column) for column in zip(*row)] for row in zip(*starts))
    print_head("presets", "CPU time of the start, ms", "peak, MiB")
    for count, measured in ((1, one), (PRESETS, hundred)):
        print_row(count, *(f"{number:.2f}" for number in measured))
    return [ours / theirs for ours, theirs in zip(hundred, one)]


def cost_of_key(measured, size):
    """Bytes per key, relative to the daemon at rest with the first of the sizes."""
    first, *_ = measured
    return [(number - measured[first][0]) / (size - first) for number in measured[size]]


def measure_sizes(sizes):
    """Returns the bytes of each size."""
    print_head("keys", "at rest, MiB", "peak of a store, MiB", "peak of a load, MiB",
               "afterwards, MiB", "at rest, bytes/key", "store", "load", "afterwards")
    measured = {}
    for size in sizes:
        measured[size] = measure_size(size)
        costs = cost_of_key(measured, size) if len(measured) > 1 else []
        print_row(size, *(f"{number / 2**20:.2f}" for number in measured[size]),
                  *([f"{cost:.1f}" for cost in costs] or [""] * 4))
    return measured


def measure_stripped():
    """Returns KiB by the machine that a program is for."""
    sizes = {}
    for machine, strip, program in PROGRAMS:
        if program.exists():
            with tempfile.TemporaryDirectory() as folder:
                stripped = Path(folder) / "stripped"
                subprocess.run([strip, "-o", stripped, program], check=True)
                sizes[machine] = stripped.stat().st_size / 1024
    print("\nStripped: " + ", ".join(f"{size:.1f} KiB for {machine}"
                                     for machine, size in sizes.items()) + ".", flush=True)
    return sizes


def targets_of(measured, stripped, resident, presets):
    """The targets that were measured."""
    yield f"resident after the start against live, {PARAMETERS[0]} parameters", 1.3, resident, ""
    yield f"start with {PRESETS} presets against one, CPU time", 3, presets[0], ""
    yield f"start with {PRESETS} presets against one, peak memory", 3, presets[1], ""
    if LARGEST in measured and len(measured) > 1:
        rest, *peaks, _ = cost_of_key(measured, LARGEST)
        yield f"memory at rest, {LARGEST} keys", 48, rest, " bytes/key"
        yield f"memory at the peak, {LARGEST} keys", 240, max(peaks), " bytes/key"
    if SMALLEST in measured:
        yield (f"memory at the peak, {SMALLEST} keys", 7.3, max(measured[SMALLEST]) / 2**20, " MiB")
    if "armhf" in stripped:
        yield "armhf daemon, stripped", 350, stripped["armhf"], " KiB"


def main():
    options = parse_options(__doc__, [SMALLEST, 10000, 100000, LARGEST])
    measure_examples()
    measured = measure_sizes(options.sizes)
    resident, presets = measure_start(), measure_presets()
    print_targets(targets_of(measured, measure_stripped(), resident, presets))


main()
