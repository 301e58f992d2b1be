"""Measures the start of the daemon until it owns its name, interleaved with a bare program.

The bare program reads the same files into standard containers (bench/bare_reader.cpp) and stops.
CPU time is that of the whole process: the daemon is killed as soon as it has its name, the bare
program as soon as it has stopped, and neither of them frees its tables. The peak is the most memory
that was resident. Prints medians with their quartiles, and those of the ratios of neighbouring
starts.
"""

import os
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path

from measuring import (BUILD, DAEMON, SYSTEM_ARGUMENTS, Session, parse_options, print_head,
                       print_row, print_targets, ratios, spread, write_device)

TARGETS = {1000: 1.1, 10000: 0.8, 100000: 0.7}  # by parameters, the highest ratio of CPU times
PEAK_TARGET = 100000, 2.1  # parameters, and the highest ratio of peaks


def end(process):
    """Kills a process. Returns its CPU time, user and system, in milliseconds, and its peak, in
    MiB."""
    status = Path(f"/proc/{process.pid}/status").read_text()
    process.kill()
    _, code, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(code)
    peak = int(re.search(r"^VmHWM:\s*(\d+) kB", status, re.M)[1]) / 1024
    return (usage.ru_utime + usage.ru_stime) * 1e3, peak


def start_daemon(session, *arguments):
    """Returns elapsed and CPU time of a start, in milliseconds, and its peak."""
    begin = time.perf_counter()
    process = session.start_daemon(*arguments)
    elapsed = (time.perf_counter() - begin) * 1e3
    usage = end(process)
    session.wait_for_name(DAEMON, process, owned=False)
    return elapsed, *usage


def run_bare_reader(*arguments):
    """Returns elapsed and CPU time, in milliseconds, and the peak."""
    begin = time.perf_counter()
    process = subprocess.Popen([BUILD / "bench/bare_reader", *arguments], close_fds=False)
    _, status = os.waitpid(process.pid, os.WUNTRACED)
    elapsed = (time.perf_counter() - begin) * 1e3
    if not os.WIFSTOPPED(status):
        sys.exit("bench: bare_reader failed")
    return elapsed, *end(process)


def measure(session, count, rounds):
    """Prints the row of a number of parameters. Returns the median ratios of CPU times
    and of peaks."""
    parameters, presets, keys = write_device(session.folder, count)
    pairs = [(start_daemon(session, parameters, presets, *SYSTEM_ARGUMENTS),
              run_bare_reader(parameters, presets, keys)) for _ in range(rounds + 1)]
    daemon, bare = zip(*pairs[1:])  # the first round warms everything up
    cells, medians = [], []
    for ours, theirs in zip(zip(*daemon), zip(*bare)):
        compared = ratios(ours, theirs)
        cells += [spread(ours), spread(theirs), spread(compared)]
        medians.append(statistics.median(compared))
    print_row(count, *cells)
    return medians[1:]


def targets_of(measured):
    """The targets that were measured."""
    for count, (cpu, peak) in measured.items():
        if count in TARGETS:
            yield (f"start, CPU time against the bare program, {count} parameters", TARGETS[count],
                   cpu, "")
        if count == PEAK_TARGET[0]:
            yield (f"start, peak memory against the bare program, {count} parameters",
                   PEAK_TARGET[1], peak, "")


def main():
    options = parse_options(__doc__, [100, 1000, 10000, 100000])
    print_head("parameters", "daemon elapsed, ms", "bare elapsed, ms", "ratio", "daemon CPU, ms",
               "bare CPU, ms", "ratio", "daemon peak, MiB", "bare peak, MiB", "ratio")
    with Session() as session:
        measured = {count: measure(session, count, options.rounds) for count in options.sizes}
    print_targets(targets_of(measured))


main()
