"""The daemon on the date that the kernel's command line names, or with files of that date. Dates
are in seconds since 1970."""

import ctypes
import re
import time
from pathlib import Path

from own_bus import PRESETS, Client, state, wait_ready
from report import check, equal, figure, output, until

UTIMENSAT_TIME64 = 412  # on 32-bit ARM, where the C library's dates end in 2038
AT_FDCWD = -100


def set_date(seconds, paths):
    """Dates files. Returns whether the kernel did."""
    times = (ctypes.c_int64 * 4)(*2 * (seconds, 0))
    syscall = ctypes.CDLL(None).syscall
    return all(syscall(UTIMENSAT_TIME64, AT_FDCWD, str(path).encode(), times, 0) == 0
               for path in paths)


def run():
    arguments = Path("/proc/cmdline").read_text()
    date = re.search(r"board\.date=(\d+)", arguments)
    file_date = re.search(r"board\.files=(\d+)", arguments)
    figure("the board's clock", time.strftime("%Y-%m-%d"))
    if date:
        check("it is the date that was set", 0 <= time.time() - int(date[1]) < 3600, time.time())
    until(lambda: state("morvane.service")["ActiveState"] == "active")
    client = Client()
    wait_ready(client)
    file = PRESETS / "scene"
    equal("it stores", client.call("store", "scene", str(file)), True)
    stored = file.read_bytes()
    if file_date:
        equal("the files are dated then",
              set_date(int(file_date[1]), [file, *Path("/etc/morvane").iterdir()]), True)
        output("systemctl restart morvane.service")  # which reads the definitions again
        wait_ready(client)
        # Only now: the systemd of a 32-bit Debian 12 starts no unit whose StateDirectory has a date
        # after 2038.
        equal("their folder is dated then", set_date(int(file_date[1]), [PRESETS]), True)
    equal("it loads", client.call("load", "scene", str(file)), True)
    equal("it stores over the file", client.call("store", "scene", str(file)), True)
    equal("the file is the same", file.read_bytes(), stored)
    # An interrupted store: what is loaded is the backup.
    file.rename(PRESETS / "scene_bak")
    file.write_text("half-writ")
    if file_date:
        set_date(int(file_date[1]), (file, PRESETS / "scene_bak"))
    equal("it loads after an interrupted store", client.call("load", "scene", str(file)), True)
    equal("the backup is back", (file.read_bytes(), (PRESETS / "scene_bak").exists()),
          (stored, False))
