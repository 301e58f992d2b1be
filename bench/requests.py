#!/usr/bin/python3
"""Measures stores and loads of the daemon against the floor, called in turns on a private bus.

Usage: bench/requests.py [--sizes N,N...] [--rounds N] [--build FOLDER]

Prints a table: for each operation and number of keys the medians of the time that the client waits
and of the time that the process computes, and the median of the ratios of neighbouring calls with
its quartiles.
"""

import argparse
import os
import statistics
import subprocess
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
OPERATIONS = ("store", "load", "load_with_default", "is_preset")
PRESET = "scene"


def write_definitions(folder, size):
    """Definitions of `size` keys of about 24 characters; a size is 1,000 times a whole number."""
    parameters = folder / "parameters.def"
    names = "".join(f"mixer{n:02}Level rw {{ index {{ row }} index {{ column }} }}\n"
                    for n in range(10))
    parameters.write_text(
        f"row index {{ rangeValid {{ 100..{100 + size // 1000 - 1} }} }}\n"
        f"column index {{ rangeValid {{ 100..199 }} }}\n{names}")
    presets = folder / "presets.def"
    presets.write_text(f"{PRESET} preset {{ }}\n")
    return parameters, presets


class Processes:
    """The bus and what runs on it."""

    def __init__(self, build, folder, size):
        self.build, self.folder, self.started = build, folder, []
        parameters, presets = write_definitions(folder, size)
        self.keys = folder / "keys"
        with self.keys.open("w") as keys:
            subprocess.run([build / "morvanectl", "-p", parameters, "-d", presets, "keys", PRESET],
                           stdout=keys, check=True)
        bus = subprocess.Popen(
            ["dbus-daemon", f"--config-file={ROOT}/tests/service/bus.conf", "--nofork",
             "--print-address"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.started.append(bus)
        self.environment = {**os.environ,
                            "DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().strip()}
        self.start_and_wait("bench/lean_handler", self.keys)
        self.start_and_wait("bench/floor", self.keys)
        self.start("morvane", "--debug", parameters, presets)
        self.run("gdbus", "wait", "--session", "--timeout=60", "org.norvix.preset")

    def start(self, program, *arguments):
        process = subprocess.Popen([self.build / program, *arguments], env=self.environment,
                                   stdout=subprocess.PIPE, text=True)
        self.started.append(process)
        return process

    def start_and_wait(self, program, *arguments):
        assert self.start(program, *arguments).stdout.readline() == "ready\n"

    def run(self, *command):
        return subprocess.run(command, env=self.environment, check=True, stdout=subprocess.PIPE,
                              text=True).stdout

    def stop(self):
        for process in reversed(self.started):
            process.kill()
            process.wait()
            process.stdout.close()


def samples_of(processes, method, rounds):
    """Rows of four times in nanoseconds, without the first round, which warms everything up."""
    output = processes.run(processes.build / "bench/request_client", str(rounds + 1), method,
                           PRESET, str(processes.folder / "file."))
    return [tuple(map(int, line.split())) for line in output.splitlines()][1:]


def ratio_text(pairs):
    ratios = sorted(a / b for a, b in pairs)
    low, middle, high = statistics.quantiles(ratios, n=4)
    return f"{middle:.3f} ({low:.3f} to {high:.3f})"


def row(size, method, samples):
    waiting = [(a, b) for a, _, b, _ in samples]
    computing = [(a, b) for _, a, _, b in samples]
    medians = " | ".join(f"{statistics.median(column) / 1e6:.3f}" for column in zip(*samples))
    return f"| {size} | {method} | {medians} | {ratio_text(waiting)} | {ratio_text(computing)} |"


def measure(build, size, rounds):
    with tempfile.TemporaryDirectory() as folder:
        processes = Processes(build, Path(folder), size)
        try:
            for method in OPERATIONS:
                if method == "load_with_default":
                    keep_half(processes.folder)
                print(row(size, method, samples_of(processes, method, rounds)), flush=True)
        finally:
            processes.stop()


def keep_half(folder):
    """Takes every second line out of the stored files."""
    for path in folder.glob("file.*"):
        lines = path.read_text().splitlines(keepends=True)
        path.write_text("".join(lines[::2]))


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("--sizes", default="1000,10000,100000", help="numbers of keys")
    parser.add_argument("--rounds", type=int, default=15, help="calls of each service")
    parser.add_argument("--build", type=Path, default=ROOT / "build-bench", help="build folder")
    options = parser.parse_args()
    print("| keys | operation | daemon waits, ms | computes | floor waits, ms | computes "
          "| ratio of waiting | ratio of computing |\n| --- " + "| --- " * 7 + "|")
    for size in options.sizes.split(","):
        measure(options.build, int(size), options.rounds)


if __name__ == "__main__":
    main()
