"""Measures the start of the daemon until it owns its name, interleaved with a bare program.

The bare program reads the same files into standard containers (bench/bare_reader.cpp) and ends. CPU
time is that of the whole process: the daemon is killed as soon as it has its name, and neither of
them frees its tables. Prints medians with their quartiles, and those of the ratios of neighbouring
starts.
"""

import os
import statistics
import subprocess
import sys
import time

from measuring import (BUILD, DAEMON, SYSTEM_ARGUMENTS, Session, parse_options, print_head,
                       print_row, print_targets, ratios, spread, write_device)

TARGET_FROM, TARGET = 10000, 0.8  # parameters, and the highest ratio of CPU times


def cpu_time(process):
    """Waits for the end of a process. Returns its CPU time, user and system, in milliseconds."""
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    return (usage.ru_utime + usage.ru_stime) * 1e3


def start_daemon(session, *arguments):
    """Returns elapsed and CPU time of a start, in milliseconds."""
    begin = time.perf_counter()
    process = session.start_daemon(*arguments)
    elapsed = (time.perf_counter() - begin) * 1e3
    process.kill()
    cpu = cpu_time(process)
    session.wait_for_name(DAEMON, process, owned=False)
    return elapsed, cpu


def run_bare_reader(*arguments):
    """Returns elapsed and CPU time, in milliseconds."""
    begin = time.perf_counter()
    process = subprocess.Popen([BUILD / "bench/bare_reader", *arguments], close_fds=False)
    cpu = cpu_time(process)
    elapsed = (time.perf_counter() - begin) * 1e3
    if process.returncode != 0:
        sys.exit("bench: bare_reader failed")
    return elapsed, cpu


def measure(session, count, rounds):
    """Prints the row of a number of parameters. Returns the median ratio of CPU times."""
    parameters, presets, keys = write_device(session.folder, count)
    pairs = [(start_daemon(session, parameters, presets, *SYSTEM_ARGUMENTS),
              run_bare_reader(parameters, presets, keys)) for _ in range(rounds + 1)]
    daemon, bare = zip(*pairs[1:])  # the first round warms everything up
    cells = []
    for ours, theirs in zip(zip(*daemon), zip(*bare)):
        compared = ratios(ours, theirs)
        cells += [spread(ours), spread(theirs), spread(compared)]
    print_row(count, *cells)
    return statistics.median(compared)


def main():
    options = parse_options(__doc__, [100, 1000, 10000, 100000])
    print_head("parameters", "daemon elapsed, ms", "bare elapsed, ms", "ratio", "daemon CPU, ms",
               "bare CPU, ms", "ratio")
    with Session() as session:
        measured = {count: measure(session, count, options.rounds) for count in options.sizes}
    targets = {count: ratio for count, ratio in measured.items() if count >= TARGET_FROM}
    if targets:
        print_targets([("start, CPU time against the bare program, "
                        f"{min(targets)} to {max(targets)} parameters", TARGET,
                        max(targets.values()), "")])


main()
