"""What the tests on the board report, a line each on the serial console, and what they share."""

import json
import subprocess
import time


def record(**values):
    print("board: " + json.dumps(values), flush=True)


def check(name, right, otherwise=""):
    """Reports whether something is as it must be, and what was seen otherwise."""
    record(check=name, wrong=None if right else str(otherwise) or "it is not so")


def equal(name, seen, expected):
    check(name, seen == expected, f"expected {expected!r}, got {seen!r}")


def figure(name, value):
    record(figure=name, value=value)


def sh(command, **options):
    """Runs a shell command and returns its status and all that it printed."""
    done = subprocess.run(command, shell=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, errors="replace", check=False, **options)
    return done.returncode, done.stdout.strip()


def output(command, **options):
    """The output of a shell command that must succeed."""
    status, printed = sh(command, **options)
    if status != 0:
        raise RuntimeError(f"{command}: status {status}: {printed}")
    return printed


def until(condition, seconds=60):
    """The first true answer, or the last one when the time is over."""
    end = time.monotonic() + seconds
    while not (answer := condition()) and time.monotonic() < end:
        time.sleep(0.2)
    return answer
