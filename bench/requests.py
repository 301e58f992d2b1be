#!/usr/bin/python3
"""Measures the requests of the daemon, in turns with the least that they can cost.

Stores and loads stand beside the baseline (bench/baseline.cpp); questions about presets beside a
round trip without a question: a ping of the daemon's process, and an empty service on the same
libraries.
Prints tables of medians and quartiles, and of the ratios of neighbouring calls.
"""

import statistics
import tempfile
from contextlib import contextmanager
from pathlib import Path

import definitions
from definitions import PRESET
from report import Report, ratios, spread
from session import Session, parse_options

OPERATIONS = ("store", "load", "load_with_default", "load_default")
QUESTIONS = ("is_preset", "in_preset")
GROWTH_FROM = 10000  # keys; below, the fixed part of a request counts


@contextmanager
def running_services(build, size, kind=Session):
    """Runs the daemon, the baseline and the empty service beside a Parameter Handler of `size`
    keys. Hands out their session, of a `kind` of it, a folder for their files, and the keys."""
    with tempfile.TemporaryDirectory() as name, kind(build) as session:
        folder = Path(name)
        files = definitions.write_keys(folder, size)
        keys = definitions.list_keys(build, files, PRESET)
        keys_file = folder / "keys"
        keys_file.write_text(keys)
        session.start("org.norvix.transaction", build / "bench/lean_handler", keys_file)
        session.start("org.norvix.baseline", build / "bench/baseline", keys_file)
        session.start("org.norvix.empty", build / "bench/empty_service")
        session.start_daemon(*files)
        yield session, folder, keys.splitlines()


def samples_of(session, rounds, method, argument):
    """The rows that the client prints, without the first one, which warms everything up."""
    output = session.run(session.build / "bench/request_client", str(rounds + 1), method, PRESET,
                         argument)
    return [tuple(map(int, line.split())) for line in output.splitlines()][1:]


def keep_half(folder):
    """Takes every second line out of the stored files."""
    for path in folder.glob("file.*"):
        lines = path.read_text().splitlines(keepends=True)
        path.write_text("".join(lines[::2]))


def milliseconds(column):
    return spread([sample / 1e6 for sample in column])


def request_row(size, operation, samples):
    waiting, computing, baseline_waiting, baseline_computing = zip(*samples)
    return (size, operation, milliseconds(waiting), milliseconds(baseline_waiting),
            spread(ratios(zip(waiting, baseline_waiting))), milliseconds(computing),
            milliseconds(baseline_computing), spread(ratios(zip(computing, baseline_computing))))


def measure_requests(report, options):
    report.head("keys", "operation", "daemon waits, ms", "baseline waits, ms", "ratio",
                "daemon computes, ms", "baseline computes, ms", "ratio")
    measured = report.data["requests"] = []
    for size in options.sizes:
        rounds = options.rounds if size <= 100000 else options.large_rounds
        with running_services(options.build, size) as (session, folder, _):
            for operation in OPERATIONS:
                if operation == "load_with_default":
                    keep_half(folder)
                samples = samples_of(session, rounds, operation, folder / "file.")
                measured.append({"keys": size, "operation": operation, "samples": samples})
                report.row(*request_row(size, operation, samples))


def round_trip_cells(least, daemon):
    return (*(spread([sample / 1e3 for sample in column], 1) for column in (least, daemon)),
            spread(ratios(zip(daemon, least))))


def measure_round_trips(report, options):
    report.head("keys", "question", "ping, us", "daemon, us", "ratio", "empty service, us",
                "daemon, us", "ratio")
    measured = report.data["round_trips"] = []
    for size in options.sizes:
        with running_services(options.build, size) as (session, _, keys):
            for question in QUESTIONS:
                samples = samples_of(session, options.trips, question, keys[len(keys) // 2])
                measured.append({"keys": size, "operation": question, "samples": samples})
                ping, behind_ping, empty, behind_empty = zip(*samples)
                report.row(size, question, *round_trip_cells(ping, behind_ping),
                           *round_trip_cells(empty, behind_empty))


def report_growth(report, options):
    """What a key costs to compute at each size, and how that grows."""
    base, largest = GROWTH_FROM, max(options.sizes)
    grows = base in options.sizes and largest > base
    report.head("operation", "process", *(f"{size} keys, ns/key" for size in options.sizes),
                *([f"{largest} against {base}"] if grows else []))
    growth = report.data["growth"] = []
    for operation in OPERATIONS:
        for process, column in (("daemon", 1), ("baseline", 3)):
            costs = {row["keys"]: statistics.median(sample[column] for sample in row["samples"])
                     / row["keys"]
                     for row in report.data["requests"] if row["operation"] == operation}
            cells = [f"{costs[size]:.1f}" for size in options.sizes]
            if grows:
                ratio = costs[largest] / costs[base]
                growth.append({"operation": operation, "process": process, "keys": largest,
                               "ratio": ratio})
                cells.append(f"{ratio:.3f}")
            report.row(operation, process, *cells)


def main():
    options = parse_options(__doc__)
    with Report("requests") as report:
        measure_requests(report, options)
        report_growth(report, options)
        measure_round_trips(report, options)


if __name__ == "__main__":
    main()
