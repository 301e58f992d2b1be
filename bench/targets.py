#!/usr/bin/python3
"""Prints what the daemon may cost, what this run measured, and whether that is met.

Reads the samples that the measuring scripts left in build/bench. Fails on nothing.
"""

import statistics

from report import Report, ratios, read_data

LARGEST, GROWTH_KEYS = 1000000, 10000  # numbers of keys
FROM_KEYS, FROM_PARAMETERS = 1000, 10000
NOT_MEASURED = (None, "")


def median_ratio(samples, column, least_column):
    return statistics.median(ratios((row[column], row[least_column]) for row in samples))


def worst(figures):
    """The largest of the (size, figure) of a run, with the range of sizes as a remark."""
    figures = list(figures)
    if not figures:
        return NOT_MEASURED
    sizes = [size for size, _ in figures]
    return max(figure for _, figure in figures), f" ({min(sizes)} to {max(sizes)})"


def request_ratio(requests, operation, column):
    """Columns are 0 for elapsed and 1 for CPU time; the baseline's are two on."""
    return worst((row["keys"], median_ratio(row["samples"], column, column + 2))
                 for row in requests.get("requests", ())
                 if row["operation"] == operation and row["keys"] >= FROM_KEYS)


def start_ratio(startup):
    return worst((row["parameters"],
                  statistics.median(daemon / bare for (_, daemon), (_, bare)
                                    in zip(row["daemon"], row["bare"])))
                 for row in startup.get("growth", ()) if row["parameters"] >= FROM_PARAMETERS)


def growth(requests, operation):
    return next(((row["ratio"], "") for row in requests.get("growth", ())
                 if row["process"] == "daemon" and row["operation"] == operation
                 and row["keys"] == LARGEST), NOT_MEASURED)


def memory_at(memory, keys, figure):
    return next(((figure(row), "") for row in memory.get("sizes", ()) if row["keys"] == keys),
                NOT_MEASURED)


def peak(figures):
    return max(figures["store"], figures["load"])


def kibibytes(size):
    return NOT_MEASURED if size is None else (size / 1024, "")


def request_targets(requests):
    for operation, elapsed, cpu in (("store", 1.12, 1.35), ("load", 1.12, 1.40),
                                    ("load_with_default", 1.15, None),
                                    ("is_preset", 1.05, None), ("in_preset", 1.05, None)):
        yield (f"{operation}, elapsed against the baseline", elapsed, "",
               request_ratio(requests, operation, 0))
        if cpu is not None:
            yield (f"{operation}, CPU time against the baseline", cpu, "",
                   request_ratio(requests, operation, 1))
    for operation in ("store", "load", "load_with_default"):
        yield (f"{operation}, CPU time for a key, {LARGEST} keys against {GROWTH_KEYS}", 1.15, "",
               growth(requests, operation))


def start_targets(startup):
    yield ("start, CPU time against the bare program", 0.8, "", start_ratio(startup))


def size_targets(memory, sizes):
    yield (f"memory at rest, {LARGEST} keys", 120, " bytes/key",
           memory_at(memory, LARGEST, lambda row: row["per_key"]["idle"]))
    yield (f"memory at the peak, {LARGEST} keys", 240, " bytes/key",
           memory_at(memory, LARGEST, lambda row: peak(row["per_key"])))
    yield ("memory at the peak, 100 keys", 7.3, " MiB",
           memory_at(memory, 100, lambda row: peak(row["resident"]) / 2**20))
    yield ("armhf daemon, stripped", 350, " KiB", kibibytes(sizes.get("armhf")))
    # An emulator's memory would be measured with it.
    yield ("armhf daemon, memory at rest", 8, " MiB", NOT_MEASURED)


def main():
    targets = [*request_targets(read_data("requests")), *start_targets(read_data("startup")),
               *size_targets(read_data("memory"), read_data("binary_size"))]
    with Report("targets") as report:
        report.data["targets"] = targets
        report.head("what", "at most", "measured", "met")
        for what, most, unit, (figure, remark) in targets:
            if figure is None:
                report.row(what, f"{most}{unit}", "", "not measured")
            else:
                report.row(what, f"{most}{unit}", f"{figure:.3f}{unit}{remark}",
                           "yes" if figure <= most else "no")


main()
