#!/usr/bin/python3
"""Measures the size of the daemon's program file without symbols, here and, if built, for armhf."""

import subprocess
import tempfile
from pathlib import Path

from report import Report
from session import ROOT, parse_options


def stripped_size(strip, program):
    """In bytes."""
    with tempfile.TemporaryDirectory() as folder:
        stripped = Path(folder) / "stripped"
        subprocess.run([strip, "-o", stripped, program], check=True)
        return stripped.stat().st_size


def main():
    options = parse_options(__doc__)
    with Report("binary_size") as report:
        report.head("program", "stripped, KiB")
        for name, strip, program in (
                ("this machine's", "strip", options.build / "morvane"),
                ("armhf", "arm-linux-gnueabihf-strip", ROOT / "build-armhf/morvane")):
            if program.exists():
                report.data[name] = stripped_size(strip, program)
                report.row(name, f"{report.data[name] / 1024:.1f}")
            else:
                report.row(name, "not built")


main()
