"""What the daemon costs on the board: time from its start to its name, and memory."""

import os
import re
import time
from pathlib import Path

from own_bus import ADDRESS, EXAMPLES, PRESETS, VARIANT, Client, daemon_process, set_up, \
    state, wait_ready
from report import equal, figure, output, until

STARTS = 5


def memory(process):
    """Resident kilobytes now and at the most so far. The kernel counts for status and lags by up to
    64 pages; for smaps_rollup it looks at each page."""
    now, peak = (int(re.search(rf"{name}:\s+(\d+) kB",
                               Path(f"/proc/{process}/{file}").read_text())[1])
                 for file, name in (("smaps_rollup", "Rss"), ("status", "VmHWM")))
    return now, max(now, peak)


def used_seconds(process):
    """CPU seconds of a process since its start."""
    fields = Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def start_up(client, definitions, variant):
    """The smallest CPU and real seconds of several starts, from exec to the name owned.

    In the foreground, so that one process does all of it."""
    cpu, real = [], []
    for _ in range(STARTS):
        output("systemctl stop morvane.service")
        begin = time.monotonic()
        process = os.posix_spawn("/usr/bin/setpriv", [
            "setpriv", "--reuid", "morvane", "--clear-groups", "/usr/sbin/morvane", "--debug",
            f"{definitions}/parameters.def", f"{definitions}/presets.def", *variant.split()],
            {"DBUS_SESSION_BUS_ADDRESS": ADDRESS})
        while client.owner("org.norvix.preset") is None:
            time.sleep(0.01)
        real.append(time.monotonic() - begin)
        cpu.append(used_seconds(process))
        client.call("die")
        os.waitpid(process, 0)
    return min(cpu), min(real)


def ten_thousand_keys(folder):
    """Definitions of a device with 10,000 keys in one preset."""
    folder.mkdir()
    (folder / "parameters.def").write_text("".join(
        f"channel{n} index {{ rangeValid {{ 1..100 }} }}\nlevel{n} rw {{ index {{ channel{n} }} "
        "rangeValid { -60..12 } default { 0 } }\n" for n in range(100)))
    (folder / "presets.def").write_text("scene preset {\n}\n")
    return folder


def costs(name, definitions, variant):
    set_up(definitions, variant)
    client = Client()
    wait_ready(client)
    file = str(PRESETS / "cost")
    figure(f"{name}: kB resident at rest, and the peak", memory(daemon_process()))
    for method in ("store", "load"):
        equal(f"{name}: {method}", client.call(method, "scene", file), True)
        figure(f"{name}: kB resident after a {method}, and the peak", memory(daemon_process()))
    cpu, real = start_up(client, definitions, variant)
    figure(f"{name}: CPU seconds from exec to the name", round(cpu, 2))
    figure(f"{name}: seconds from exec to the name", round(real, 2))
    client.close()


def run():
    until(lambda: state("morvane.service")["ActiveState"] == "active")
    ready = output("systemctl show --property=ActiveEnterTimestampMonotonic --value "
                   "morvane.service")
    figure("seconds from the kernel's start until it is ready", round(int(ready) / 1e6, 1))
    costs("the example", EXAMPLES, VARIANT)
    costs("10,000 keys", ten_thousand_keys(Path("/srv/many")), "")
