#!/usr/bin/python3
"""Draws how costs grow with the numbers of keys and parameters, as SVG.

Reads the samples that the measuring scripts left in build/bench. The same samples make the same
bytes.
"""

import statistics

import matplotlib
from matplotlib import pyplot, ticker

from report import read_data
from session import parse_options

matplotlib.use("svg")
pyplot.rcParams.update({
    "svg.hashsalt": "morvane",  # names of parts depend on it, and otherwise on chance
    "svg.fonttype": "none",
    "font.size": 9,
    "lines.markersize": 5,
    "lines.linewidth": 1.2,
    "axes.spines.top": False,
    "axes.spines.right": False,
    "axes.grid": True,
    "grid.linewidth": 0.4,
    "legend.frameon": False,
})
MARKERS = ("o", "s", "^", "x")


def draw(axes, title, x_label, lines):
    """Draws lines of a name and (x, y) points each."""
    for marker, (name, points) in zip(MARKERS, lines):
        axes.plot(*zip(*points), marker=marker, fillstyle="none", label=name)
    axes.set_title(title)
    axes.set_xlabel(x_label)
    axes.set_xscale("log")
    axes.set_yscale("log")
    axes.yaxis.set_major_locator(ticker.LogLocator(subs=(1, 2, 5)))
    axes.yaxis.set_major_formatter(ticker.FormatStrFormatter("%g"))
    axes.yaxis.set_minor_locator(ticker.NullLocator())
    axes.legend(loc="upper left", bbox_to_anchor=(-0.1, -0.2), ncol=len(lines), columnspacing=1,
                handletextpad=0.4)


def save(figure, folder, name):
    figure.savefig(folder / f"{name}.svg", metadata={"Date": None, "Creator": None},
                   bbox_inches="tight")
    pyplot.close(figure)


def request_lines(requests, operation):
    """Microseconds of computing for a key."""
    rows = [row for row in requests if row["operation"] == operation]
    return [(process,
             [(row["keys"], statistics.median(sample[column] for sample in row["samples"])
               / 1000 / row["keys"]) for row in rows])
            for process, column in (("daemon", 1), ("floor", 3))]


def draw_requests(folder, requests):
    operations = ("store", "load", "load_with_default")
    figure, panels = pyplot.subplots(1, len(operations), figsize=(9, 2.8), sharey=True)
    for axes, operation in zip(panels, operations):
        draw(axes, operation, "keys", request_lines(requests, operation))
    panels[0].set_ylabel("computing time, µs/key")
    save(figure, folder, "requests")


def draw_startup(folder, growth):
    lines = [(name, [(row["parameters"], statistics.median(time for _, time in row[process]))
                     for row in growth])
             for name, process in (("daemon", "daemon"), ("bare program", "bare"))]
    figure, axes = pyplot.subplots(figsize=(4, 2.8))
    draw(axes, "start", "parameters", lines)
    axes.set_ylabel("computing time, ms")
    save(figure, folder, "startup")


def draw_memory(folder, sizes):
    lines = [(name, [(row["keys"], row["per_key"][state]) for row in sizes])
             for name, state in (("at rest", "idle"), ("peak of a store", "store"),
                                 ("peak of a load", "load"))]
    figure, axes = pyplot.subplots(figsize=(4, 2.8))
    draw(axes, "memory", "keys", lines)
    axes.set_ylabel("resident, bytes/key")
    save(figure, folder, "memory")


def main():
    folder = parse_options(__doc__).pictures
    folder.mkdir(parents=True, exist_ok=True)
    for draw_picture, name, part in ((draw_requests, "requests", "requests"),
                                     (draw_startup, "startup", "growth"),
                                     (draw_memory, "memory", "sizes")):
        samples = read_data(name).get(part)
        if samples:
            draw_picture(folder, samples)


main()
