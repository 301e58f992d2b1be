"""The toolchain file that docs/integration.md shows builds the daemon for a device, as it says."""

import os
import re
import shlex
import subprocess

from harness import BUILD, EMULATOR, SOURCE

GUIDE = (SOURCE / "docs/integration.md").read_text()
SECTION = re.search(r"^## With an SDK\n(.*?)^## ", GUIDE, re.MULTILINE | re.DOTALL)[1]
TRIPLET = "arm-linux-gnueabihf"  # of the guide's device


def test_the_ten_lines_build_the_daemon_for_a_device(tmp_path):
    """The commands are run as they are written, but for where they write."""
    lines = re.search(r"^```cmake\n(.*?)^```", SECTION, re.MULTILINE | re.DOTALL)[1]
    assert lines.count("\n") == 10
    triplet = re.search(r"^CMAKE_AR:\w+=.*/(.*)-ar$", (BUILD / "CMakeCache.txt").read_text(),
                        re.MULTILINE)[1]
    (tmp_path / "sdk.cmake").write_text(lines.replace(TRIPLET, triplet))
    commands = re.findall(r"^ {4}((?:.*\\\n)*.*)$", SECTION, re.MULTILINE)
    assert len(commands) == 3
    script = "\n".join(["set -eu", *commands]).replace("-S .", f"-S {shlex.quote(str(SOURCE))}")
    done = subprocess.run(["sh", "-c", script], cwd=tmp_path, text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False,
                          env={**os.environ, "SYSROOT": os.environ["QEMU_LD_PREFIX"]})
    assert done.returncode == 0, done.stdout
    daemon = tmp_path / "image/usr/sbin/morvane"
    assert subprocess.run([*EMULATOR, daemon, "--version"], check=True, capture_output=True,
                          text=True).stdout.startswith("morvane ")
