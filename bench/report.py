"""Results of a measurement: tables for readers and the samples behind them for other scripts."""

import json
import statistics

from session import RESULTS


def quartiles(values):
    """The lower quartile, the median and the upper quartile."""
    return statistics.quantiles(values, n=4)


def spread(values, digits=3):
    """The median with the quartiles, as text."""
    low, middle, high = quartiles(values)
    return f"{middle:.{digits}f} ({low:.{digits}f} to {high:.{digits}f})"


def ratios(pairs):
    """The ratios of neighbouring samples. A virtual machine that had to wait for its processor may
    have given a call of microseconds no CPU time at all."""
    return [a / b for a, b in pairs if b > 0]


class Report:
    """Prints tables and leaves them in RESULTS/NAME.txt; leaves `data` in RESULTS/NAME.json."""

    def __init__(self, name):
        RESULTS.mkdir(parents=True, exist_ok=True)
        self.text = (RESULTS / f"{name}.txt").open("w")
        self.data_path = RESULTS / f"{name}.json"
        self.data_path.unlink(missing_ok=True)
        self.data = {}

    def __enter__(self):
        return self

    def __exit__(self, failure, *_):
        self.text.close()
        if failure is None:  # half of a measurement is none
            self.data_path.write_text(json.dumps(self.data) + "\n")

    def line(self, line=""):
        print(line, flush=True)
        print(line, file=self.text, flush=True)

    def head(self, *columns):
        """Begins a table."""
        self.line()
        self.row(*columns)
        self.row(*["---"] * len(columns))

    def row(self, *cells):
        self.line(f"| {' | '.join(map(str, cells))} |")


def read_data(name):
    """What a report of this name left; nothing if there is none."""
    path = RESULTS / f"{name}.json"
    return json.loads(path.read_text()) if path.exists() else {}
