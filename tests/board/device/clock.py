"""The daemon on the date that the board's clock shows, or with files of the date that the kernel's
command line names."""

import ctypes
import re
import time
from pathlib import Path

from own_bus import PRESETS, Client, state, wait_ready
from report import equal, figure, output, until

SECONDS_PER_YEAR = 31556952
UTIMENSAT_TIME64 = 412  # on 32-bit ARM, where the C library's dates end in 2038
AT_FDCWD = -100


def set_date(year, paths):
    """Dates files to the beginning of a year. Returns whether the kernel did."""
    times = (ctypes.c_int64 * 4)(*2 * ((year - 1970) * SECONDS_PER_YEAR, 0))
    syscall = ctypes.CDLL(None).syscall
    return all(syscall(UTIMENSAT_TIME64, AT_FDCWD, str(path).encode(), times, 0) == 0
               for path in paths)


def run():
    arguments = Path("/proc/cmdline").read_text()
    file_year = re.search(r"board\.files=(\d+)", arguments)
    figure("the board's clock", time.strftime("%Y-%m-%d"))
    until(lambda: state("morvane.service")["ActiveState"] == "active")
    client = Client()
    wait_ready(client)
    file = PRESETS / "scene"
    equal("it stores", client.call("store", "scene", str(file)), True)
    stored = file.read_bytes()
    if file_year:
        equal("the files are dated then",
              set_date(int(file_year[1]), [file, PRESETS, *Path("/etc/morvane").iterdir()]), True)
        output("systemctl restart morvane.service")  # which reads the definitions again
        wait_ready(client)
    equal("it loads", client.call("load", "scene", str(file)), True)
    equal("it stores over the file", client.call("store", "scene", str(file)), True)
    equal("the file is the same", file.read_bytes(), stored)
    # An interrupted store: what is loaded is the backup.
    file.rename(PRESETS / "scene_bak")
    file.write_text("half-writ")
    if file_year:
        set_date(int(file_year[1]), (file, PRESETS / "scene_bak"))
    equal("it loads after an interrupted store", client.call("load", "scene", str(file)), True)
    equal("the backup is back", (file.read_bytes(), (PRESETS / "scene_bak").exists()),
          (stored, False))
