"""Sets the example with a bus of its own up as its README says, and talks to what runs there."""

import os
import shutil
from pathlib import Path

from jeepney import DBusAddress

from raw_client import RawClient
from report import output, until

EXAMPLES = Path("/usr/share/doc/morvane/examples")
ADDRESS = "unix:path=/run/morvane/bus"
PRESETS = Path("/var/lib/morvane")
VARIANT = "variant=studio inputs=4 outputs=2 delay=500 region=us options=genlock,hdr"
HANDLER = DBusAddress("/transaction", "org.norvix.transaction", "org.norvix.transaction")
DRIVER = DBusAddress("/org/freedesktop/DBus", "org.freedesktop.DBus", "org.freedesktop.DBus")
UNITS = "morvane-bus.service morvane.service parameter-handler.service"
# Without the option, systemd goes through the unit's other processes after the main one, and fails
# with EIO if it finds one that is just ending.
KILL = "systemctl kill --kill-whom=main --signal"
ANSWER_SECONDS = 120  # which an emulated board may need


def set_up(definitions=EXAMPLES, variant=VARIANT):
    """Starts bus, simulator and daemon by their units, now and when the board boots."""
    example = EXAMPLES / "own-bus"
    for folder in ("/etc/morvane", "/etc/sysusers.d"):
        os.makedirs(folder, exist_ok=True)
    for name, folder in (("bus.conf", "/etc/morvane"), ("policy.conf", "/etc/morvane"),
                         ("morvane-bus.service", "/etc/systemd/system"),
                         ("morvane.service", "/etc/systemd/system"),
                         ("morvane.sysusers", "/etc/sysusers.d/morvane.conf")):
        shutil.copy(example / name, folder)
    shutil.copy("/srv/board/parameter-handler.service", "/etc/systemd/system")
    for name in ("parameters.def", "presets.def"):
        shutil.copy(Path(definitions) / name, "/etc/morvane")
    Path("/etc/default/morvane").write_text(f'MORVANE_SYSTEM_ARGUMENTS="{variant}"\n')
    output("systemd-sysusers")
    output("systemctl daemon-reload")
    output(f"systemctl enable {UNITS} && systemctl restart {UNITS}")


def wait_ready(client):
    """Waits until both services have their names."""
    if not until(lambda: client.owner("org.norvix.preset")
                 and client.owner("org.norvix.transaction")):
        raise RuntimeError(output(f"systemctl status --no-pager {UNITS}; true"))


def state(unit, manager="systemctl"):
    """What systemd knows of a unit."""
    shown = output(f"{manager} show "
                   f"--property=ActiveState,SubState,MainPID,ExecMainStatus,NRestarts {unit}")
    return dict(line.split("=", 1) for line in shown.splitlines())


def daemon_process():
    # The bus knows only the process that connected, from which the daemon has detached itself.
    return int(state("morvane.service")["MainPID"])


class Client(RawClient):
    """A client of the services; call() is for the preset service."""

    def __init__(self):
        super().__init__(ADDRESS, ANSWER_SECONDS)

    def handler(self, method, *arguments):
        return self.call(method, *arguments, address=HANDLER)

    def owner(self, name):
        """The connection that owns a name of the bus, or None. No two have the same."""
        value = self.call("GetNameOwner", name, address=DRIVER)
        return value if value.startswith(":") else None
