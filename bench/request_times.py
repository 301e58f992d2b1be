"""Measures the requests of the daemon, interleaved with the least that they can cost.

That is the baseline (bench/baseline.cpp). Prints tables of medians and quartiles, and of the ratios
of neighbouring calls.
"""

import math
import statistics

from measuring import (BUILD, DAEMON, PRESET, Session, parse_options, print_head, print_row,
                       print_targets, ratios, spread)

BASELINE = "org.norvix.baseline"
OPERATIONS = ("store", "load", "load_with_default", "load_default")
QUERIES = ("is_preset", "in_preset")
QUESTION_ROUNDS = 20  # times as many samples of what takes microseconds
ELAPSED, CPU = 0, 1  # columns of a sample of the daemon; the baseline's come two later
TIMES = ("elapsed", "CPU time")
TARGETS = (  # the highest ratio, for this number of keys and more, and for less than that
    ("store", ELAPSED, 1.18, 0, 10000), ("store", ELAPSED, 1.12, 10000, math.inf),
    ("store", CPU, 1.35, 0, math.inf),
    ("load", ELAPSED, 1.18, 0, 100000), ("load", ELAPSED, 1.12, 100000, math.inf),
    ("load", CPU, 1.50, 0, 100000), ("load", CPU, 1.35, 100000, math.inf),
    ("load_with_default", ELAPSED, 1.15, 0, math.inf), ("is_preset", ELAPSED, 1.05, 0, math.inf),
    ("in_preset", ELAPSED, 1.05, 0, math.inf))
GROWTH_FROM, GROWTH_TO, GROWTH = 10000, 1000000, 1.15  # keys, and the highest ratio


def measure(session, method, rounds):
    """Samples: elapsed and CPU time of the daemon, and of the baseline, in milliseconds. The first
    round, which warms everything up, is left out."""
    if method == "load_with_default":
        session.keep_half()
    rows = session.request(method, rounds + 1, (DAEMON, BASELINE))
    return [[time / 1e6 for time in row] for row in rows[1:]]


def column_of(samples, column):
    return [sample[column] for sample in samples]


def ratios_of(samples, column):
    return ratios(column_of(samples, column), column_of(samples, column + 2))


def print_samples(size, method, samples, digits):
    cells = []
    for column in (ELAPSED, CPU):
        cells += [spread(column_of(samples, at), digits) for at in (column, column + 2)]
        cells.append(spread(ratios_of(samples, column)))
    print_row(size, method, *cells)


def measure_size(size, rounds):
    """Prints the rows of a size. Returns the samples of each method."""
    with Session() as session:
        session.start_daemon_with_keys(size)
        session.start(BASELINE, BUILD / "bench/baseline", PRESET, session.keys)
        measured = {}
        for method in OPERATIONS + QUERIES:
            question = method in QUERIES
            samples = measure(session, method, rounds * (QUESTION_ROUNDS if question else 1))
            print_samples(size, method, samples, digits=4 if question else 3)
            measured[method] = samples
        return measured


def cost_of_key(measured, size, method, column):
    """Nanoseconds, the median."""
    return statistics.median(column_of(measured[size][method], column)) * 1e6 / size


def print_growth(measured):
    """Prints the CPU time per key at each size."""
    print_head("operation", "process", *(f"{size} keys, ns/key" for size in measured))
    for method in OPERATIONS:
        for process, column in (("daemon", CPU), ("baseline", CPU + 2)):
            print_row(method, process, *(f"{cost_of_key(measured, size, method, column):.1f}"
                                         for size in measured))


def keys_text(sizes):
    """Numbers of keys, as text."""
    first, last = min(sizes), max(sizes)
    return f"{first} keys" if first == last else f"{first} to {last} keys"


def targets_of(measured):
    """The worst ratio of the sizes of a target, and how the cost of a key grows, as far as they
    were measured."""
    for method, column, most, least, end in TARGETS:
        sizes = [size for size in measured if least <= size < end]
        if sizes:
            worst = max(statistics.median(ratios_of(measured[size][method], column))
                        for size in sizes)
            yield (f"{method}, {TIMES[column]} against the baseline, {keys_text(sizes)}", most,
                   worst, "")
    if GROWTH_FROM in measured and GROWTH_TO in measured:
        for method in OPERATIONS[:3]:
            costs = [cost_of_key(measured, size, method, CPU) for size in (GROWTH_TO, GROWTH_FROM)]
            yield (f"{method}, CPU time for a key, {GROWTH_TO} keys against {GROWTH_FROM}", GROWTH,
                   costs[0] / costs[1], "")


def main():
    options = parse_options(__doc__, [1000, 10000, 100000])
    print_head("keys", "operation", "daemon elapsed, ms", "baseline elapsed, ms", "ratio",
               "daemon CPU, ms", "baseline CPU, ms", "ratio")
    measured = {size: measure_size(size, options.rounds) for size in options.sizes}
    print_growth(measured)
    print_targets(targets_of(measured))


main()
