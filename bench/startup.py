#!/usr/bin/python3
"""Measures the start of the daemon until it owns its name, interleaved with a bare program.

The bare program reads the same files into standard containers (bench/bare_reader.cpp) and ends. CPU
time is that of the whole process: the daemon is killed as soon as it has its name, and neither of
them frees its tables. Prints medians with their quartiles, and those of the ratios of neighbouring
starts.
"""

import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import definitions
from definitions import DEVICE_ARGUMENTS, DEVICE_PRESET_NAMES
from report import Report, ratios, spread
from session import DAEMON, Session, parse_options


def cpu_time(process):
    """Waits for the end of a process. Returns its CPU time, user and system, in milliseconds."""
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return (usage.ru_utime + usage.ru_stime) * 1e3


def start_daemon(session, *arguments):
    """Returns elapsed and CPU time of a start, in milliseconds."""
    begin = time.perf_counter()
    process = session.start_daemon(*arguments)
    elapsed = time.perf_counter() - begin
    process.kill()
    cpu = cpu_time(process)
    session.wait_for_name(DAEMON, process, owned=False)
    return elapsed * 1e3, cpu


def run_bare_reader(session, *arguments):
    """Returns elapsed and CPU time, in milliseconds."""
    begin = time.perf_counter()
    process = subprocess.Popen([session.build / "bench/bare_reader", *arguments], close_fds=False)
    cpu = cpu_time(process)
    if process.returncode != 0:
        sys.exit("bench: bare_reader failed")
    return (time.perf_counter() - begin) * 1e3, cpu


def measure(session, folder, count, rounds):
    """A list of (elapsed, CPU) of the daemon, and one of the bare program. The first round, which
    warms everything up, is left out."""
    files = definitions.write_device(folder, count)
    keys = folder / "keys"
    keys.write_text("".join(definitions.list_keys(session.build, files, preset, *DEVICE_ARGUMENTS)
                            for preset in DEVICE_PRESET_NAMES))
    pairs = [(start_daemon(session, *files, *DEVICE_ARGUMENTS),
              run_bare_reader(session, *files, keys)) for _ in range(rounds + 1)]
    return zip(*pairs[1:])


def main():
    options = parse_options(__doc__)
    with Report("startup") as report, Session(options.build) as session:
        report.head("parameters", "daemon elapsed, ms", "bare elapsed, ms", "ratio",
                    "daemon CPU, ms", "bare CPU, ms", "ratio")
        measured = report.data["growth"] = []
        for count in options.parameters:
            rounds = options.rounds if count < 100000 else options.large_rounds
            with tempfile.TemporaryDirectory() as folder:
                daemon, bare = measure(session, Path(folder), count, rounds)
            measured.append({"parameters": count, "daemon": daemon, "bare": bare})
            cells = []
            for ours, least in zip(zip(*daemon), zip(*bare)):
                cells += [spread(ours), spread(least), spread(ratios(zip(ours, least)))]
            report.row(count, *cells)


main()
