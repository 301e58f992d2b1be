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

from measuring import (BUILD, DAEMON, Session, list_keys, parse_options, print_head, print_row,
                       print_targets, ratios, spread)

TARGET_FROM, TARGET = 10000, 0.8  # parameters, and the highest ratio of CPU times

# Ten parameters of a unit: one in five has a small index, one in five depends on the model.
UNIT = """
# Unit {unit}
unit{unit}Level rw {{ rangeValid {{ -60..12 }} default {{ 0 }} }}
unit{unit}Mute rw {{ rangeValid {{ 0..1 }} default {{ 0 }} }}
unit{unit}Mode rw {{
    rangeValid {{ "auto", "manual", "off" }}
    default {{ "auto" }}
}}
unit{unit}Gain rw {{ index {{ channel }} rangeValid {{ -15..15 }} default {{ 0 }} }}
unit{unit}Delay rw {{ rangeValid {{ 0..(delay) }} default {{ (delay / 10) }} }}
unit{unit}Label rw {{ default {{ "unnamed" }} }}
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
SYSTEM_ARGUMENTS = ("model=studio", "delay=500")


def write_device(folder, count):
    """Writes definitions of `count` parameters, in a mix typical of devices, and PRESETS. Returns
    the paths of both files, and that of a list of the keys of all presets."""
    if count % 10 != 0:
        sys.exit(f"bench: {count} parameters: not ten times a whole number")
    parameters, presets = folder / "parameters.def", folder / "presets.def"
    keys = folder / "keys"
    units = "".join(UNIT.format(unit=f"{unit:05}") for unit in range(count // 10))
    parameters.write_text(f"channel index {{ rangeValid {{ 1..4 }} }}\n{units}")
    presets.write_text(PRESETS)
    keys.write_text("".join(list_keys((parameters, presets), preset, *SYSTEM_ARGUMENTS)
                            for preset in PRESET_NAMES))
    return parameters, presets, keys


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
