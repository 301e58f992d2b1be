"""Measures the requests of the daemon, interleaved with the least that they can cost.

That is the baseline (bench/baseline.cpp). Prints tables of medians and quartiles, and of the ratios
of neighbouring calls.
"""

import statistics

from measuring import (BUILD, DAEMON, PRESET, Session, parse_options, print_head, print_row,
                       print_targets, ratios, spread)

BASELINE = "org.norvix.baseline"
OPERATIONS = ("store", "load", "load_with_default", "load_default")
QUERIES = ("is_preset", "in_preset")
QUESTION_ROUNDS = 20  # times as many samples of what takes microseconds
ELAPSED, CPU = 0, 1  # columns of a sample of the daemon; the baseline's come two later
TIMES = ("elapsed", "CPU time")
TARGETS = (
    ("store", ELAPSED, 1.12), ("store", CPU, 1.35), ("load", ELAPSED, 1.12), ("load", CPU, 1.40),
    ("load_with_default", ELAPSED, 1.15), ("is_preset", ELAPSED, 1.05),
    ("in_preset", ELAPSED, 1.05))
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


def targets_of(measured):
    """The worst ratio of all sizes, and how the cost of a key grows, if that was measured."""
    sizes = f"{min(measured)} to {max(measured)} keys"
    for method, column, most in TARGETS:
        worst = max(statistics.median(ratios_of(measured[size][method], column))
                    for size in measured)
        yield f"{method}, {TIMES[column]} against the baseline, {sizes}", most, worst, ""
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
