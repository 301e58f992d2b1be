#!/usr/bin/python3
"""Measures the requests of the daemon, interleaved with the least that they can cost.

That is the baseline (bench/baseline.cpp). Prints tables of medians and quartiles, and of the ratios
of neighbouring calls.
"""

import statistics

from definitions import PRESET
from report import Report, ratios, spread
from session import DAEMON, Session, parse_options

BASELINE = "org.norvix.baseline"
OPERATIONS = ("store", "load", "load_with_default", "load_default")
QUESTIONS = ("is_preset", "in_preset")
QUESTION_ROUNDS = 20  # times as many samples of what takes microseconds
GROWTH_FROM = 10000  # keys; below, the fixed part of a request counts


def measure(session, method, rounds):
    """Rows of elapsed and CPU time of the daemon, and of the baseline. The first round, which warms
    everything up, is left out."""
    if method == "load_with_default":
        session.keep_half()
    return session.request(method, rounds + 1, (DAEMON, BASELINE))[1:]


def cells(samples, column, digits):
    """Of the daemon, of the baseline, and of their ratio. Column 0 is elapsed, 1 CPU time."""
    daemon, baseline = ([row[at] / 1e6 for row in samples] for at in (column, column + 2))
    return spread(daemon, digits), spread(baseline, digits), spread(ratios(zip(daemon, baseline)))


def measure_requests(report, options):
    report.head("keys", "operation", "daemon elapsed, ms", "baseline elapsed, ms", "ratio",
                "daemon CPU, ms", "baseline CPU, ms", "ratio")
    measured = report.data["requests"] = []
    for size in options.sizes:
        with Session(options.build) as session:
            session.start_daemon_with_keys(size)
            session.start(BASELINE, options.build / "bench/baseline", PRESET, session.keys)
            rounds = options.rounds if size <= 100000 else options.large_rounds
            for method in OPERATIONS + QUESTIONS:
                question = method in QUESTIONS
                samples = measure(session, method, rounds * QUESTION_ROUNDS if question else rounds)
                measured.append({"keys": size, "operation": method, "samples": samples})
                digits = 4 if question else 3
                report.row(size, method, *cells(samples, 0, digits), *cells(samples, 1, digits))


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
            row = [f"{costs[size]:.1f}" for size in options.sizes]
            if grows:
                ratio = costs[largest] / costs[base]
                growth.append({"operation": operation, "process": process, "keys": largest,
                               "ratio": ratio})
                row.append(f"{ratio:.3f}")
            report.row(operation, process, *row)


def main():
    options = parse_options(__doc__)
    with Report("requests") as report:
        measure_requests(report, options)
        report_growth(report, options)


main()
