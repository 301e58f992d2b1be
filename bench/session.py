"""What the measuring scripts share: their options, and a private bus with programs on it."""

import argparse
import os
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
RESULTS = ROOT / "build/bench"


def numbers(text):
    return [int(number) for number in text.split(",")]


def parse_options(description):
    """Reads the command line, which is the same for every script: each takes what it needs."""
    parser = argparse.ArgumentParser(description=description.partition("\n")[0],
                                     formatter_class=argparse.ArgumentDefaultsHelpFormatter)
    parser.add_argument("--sizes", type=numbers, default="1000,10000,100000",
                        help="numbers of keys, for requests")
    parser.add_argument("--memory-sizes", type=numbers, default="100,10000,100000,1000000",
                        help="numbers of keys, for memory")
    parser.add_argument("--parameters", type=numbers, default="100,1000,10000,100000",
                        help="numbers of parameters, for start-up")
    parser.add_argument("--rounds", type=int, default=15, help="samples of each program")
    parser.add_argument("--large-rounds", type=int, default=5,
                        help="samples above 100,000 keys and from 100,000 parameters on")
    parser.add_argument("--trips", type=int, default=2000, help="samples of each round trip")
    parser.add_argument("--build", type=Path, default=ROOT / "build-bench", help="build folder")
    return parser.parse_args()


class Session:
    """A private bus and the programs on it, which end with it."""

    def __init__(self, build):
        self.build, self.started = build, []
        self.bus = subprocess.Popen(
            ["dbus-daemon", f"--config-file={ROOT}/tests/service/bus.conf", "--nofork",
             "--print-address"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.environment = {**os.environ,
                            "DBUS_SESSION_BUS_ADDRESS": self.bus.stdout.readline().strip()}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in reversed(self.started):
            process.kill()
            process.wait()
            process.stdout.close()
        self.bus.terminate()  # which lets it remove its socket
        self.bus.wait()
        self.bus.stdout.close()

    def start(self, program, *arguments):
        process = subprocess.Popen([self.build / program, *arguments], env=self.environment,
                                   stdout=subprocess.PIPE, text=True)
        self.started.append(process)
        return process

    def start_service(self, program, *arguments):
        """Starts a program that says "ready" when it can be called."""
        if self.start(program, *arguments).stdout.readline() != "ready\n":
            raise RuntimeError(f"{program} did not start")

    def start_daemon(self, *arguments):
        """Starts the daemon, and returns its process when it can be called."""
        process = self.start("morvane", "--debug", *arguments)
        self.run("gdbus", "wait", "--session", "--timeout=60", "org.norvix.preset")
        return process

    def run(self, *command):
        """Runs a program to its end. Returns what it printed."""
        return subprocess.run(command, env=self.environment, check=True, stdout=subprocess.PIPE,
                              text=True).stdout
