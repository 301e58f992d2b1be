#!/usr/bin/python3
"""Measures the start of the daemon, until it owns its name, in turns with the least it can cost.

For many parameters that is a bare program, which reads the same files into standard containers; for
almost none it is the start of a program that does nothing. Prints tables of medians and quartiles,
and of what neighbouring starts have to do with each other.
"""

import tempfile
from pathlib import Path

import definitions
from definitions import DEVICE_ARGUMENTS, DEVICE_PRESET_NAMES
from report import Report, ratios, spread
from session import Session, parse_options

FIXED_ROUNDS = 5  # times as many rounds for starts of some milliseconds


def samples(session, rounds, *commands):
    """For each command a list of (passed, computed) in milliseconds, the same rounds in each. The
    first round, which warms everything up, is left out."""
    arguments = [str(part) for command in commands for part in (*command, "--")][:-1]
    output = session.run(session.build / "bench/starter", str(rounds + 1), *arguments)
    rows = [[int(time) / 1e6 for time in line.split()] for line in output.splitlines()][1:]
    return [[row[2 * i:2 * i + 2] for row in rows] for i in range(len(commands))]


def bare_reader(session, folder, files):
    """The command of the bare program for these definition files."""
    keys = folder / "keys"
    keys.write_text("".join(definitions.list_keys(session.build, files, preset, *DEVICE_ARGUMENTS)
                            for preset in DEVICE_PRESET_NAMES))
    return session.build / "bench/bare_reader", *files, keys


def measure_growth(report, session, options):
    report.head("parameters", "daemon passed, ms", "bare passed, ms", "ratio",
                "daemon computes, ms", "bare computes, ms", "ratio")
    measured = report.data["growth"] = []
    for count in options.parameters:
        rounds = options.rounds if count < 100000 else options.large_rounds
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            files = definitions.write_device(folder, count)
            daemon, bare = samples(
                session, rounds,
                (session.build / "morvane", "--debug", *files, *DEVICE_ARGUMENTS),
                bare_reader(session, folder, files))
        measured.append({"parameters": count, "daemon": daemon, "bare": bare})
        cells = []
        for ours, least in zip(zip(*daemon), zip(*bare)):
            cells += [spread(ours), spread(least), spread(ratios(zip(ours, least)))]
        report.row(count, *cells)


def measure_fixed_part(report, session, options):
    """What a start costs that has nothing to read."""
    with tempfile.TemporaryDirectory() as name:
        files = definitions.write_almost_empty(Path(name))
        daemon, linked, static = samples(
            session, FIXED_ROUNDS * options.rounds,
            (session.build / "morvane", "--debug", *files),
            (session.build / "bench/bare_exec_linked",),
            (session.build / "bench/bare_exec_static",))
    report.data["fixed"] = {"daemon": daemon, "linked": linked, "static": static}
    report.head("with almost empty definitions", "passed, ms", "more than it", "computes, ms",
                "more than it")
    for name, program in (("daemon", daemon),
                          ("nothing, the daemon's libraries", linked), ("nothing, static", static)):
        cells = []
        for ours, least in zip(zip(*daemon), zip(*program)):
            cells += [spread(least),
                      "" if program is daemon else spread([a - b for a, b in zip(ours, least)])]
        report.row(name, *cells)


def main():
    options = parse_options(__doc__)
    with Report("startup") as report, Session(options.build) as session:
        measure_growth(report, session, options)
        measure_fixed_part(report, session, options)


main()
