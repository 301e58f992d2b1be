"""The packaged units under a running systemd: the bus of its own, and a user's session."""

import json
import re
from pathlib import Path

from own_bus import (ADDRESS, KILL, PRESETS, VARIANT, Client, daemon_process, set_up, state,
                     wait_ready)
from report import check, equal, figure, output, sh, until

USER = "setpriv --reuid dev --regid dev --init-groups env XDG_RUNTIME_DIR=/run/user/1000 " \
       "DBUS_SESSION_BUS_ADDRESS=unix:path=/run/user/1000/bus "
INSTALL = "dpkg --force-depends --install /srv/packages/morvane_*.deb"
CALL = "gdbus call --session --timeout 60 --dest org.norvix.preset --object-path /preset " \
       "--method org.norvix.preset."
WRONG_PRESETS = "scene preset {\n    exclude rw { nothing }\n}\n"
LIMITS = Path("/srv/board/exposure-limits")
# The errors of what the unit's settings refuse, where it is not EPERM. What is hidden is not there.
REFUSALS = {
    **dict.fromkeys(("write in /etc", "write in /var/lib", "write in /srv"), "EROFS"),
    **dict.fromkeys(("open an internet socket", "open an IPv6 socket", "open a netlink socket"),
                    "EAFNOSUPPORT"),
    **dict.fromkeys(("see the temporary files of others", "see the processes of others",
                     "read a disk", "write kernel settings", "read the kernel's log"), "ENOENT"),
    "write in /home": "EACCES",
}


def new_owner(client, former=None):
    """Waits until another connection owns the daemon's name, and returns it."""
    return until(lambda: (owner := client.owner("org.norvix.preset")) != former and owner)


def check_serving(client, when):
    owner = new_owner(client)
    unit = state("morvane.service")
    equal(f"{when}, the unit is active and the daemon its main process",
          (unit["ActiveState"], sh(f"readlink /proc/{unit['MainPID']}/exe")),
          ("active", (0, "/usr/sbin/morvane")))
    equal(f"{when}, it stores", client.call("store", "scene", str(PRESETS / "scene")), True)
    equal(f"{when}, it loads", client.call("load", "scene", str(PRESETS / "scene")), True)
    return owner


def check_restarts():
    client = Client()
    wait_ready(client)
    owner = check_serving(client, "after the start")
    _, status = sh("systemctl status --no-pager --lines=0 morvane.service")
    check("systemctl status shows it running", "Active: active (running)" in status, status)
    client.call("die")
    owner = new_owner(client, owner)
    owner = check_serving(client, 'after "die"')
    output(f"kill -KILL {daemon_process()}")
    owner = new_owner(client, owner)
    check_serving(client, "after a kill")
    for how, command in (("was killed", f"{KILL}=KILL morvane-bus.service"),
                         ("ended", f"{KILL}=TERM morvane-bus.service"),
                         ("was restarted", "systemctl restart morvane-bus.service")):
        main = state("morvane-bus.service")["MainPID"]
        output(command)
        until(lambda: state("morvane-bus.service")["MainPID"] not in ("0", main), 30)
        came = until(lambda: state("morvane.service")["ActiveState"] == "active", 30)
        check(f"after the bus {how}, systemd starts the daemon again", came,
              [state(unit) for unit in ("morvane-bus.service", "morvane.service")])
        if not came:
            output("systemctl start morvane-bus.service parameter-handler.service morvane.service")
        client = Client()
        until(lambda: client.owner("org.norvix.transaction"))
        check_serving(client, f"after the bus {how}")


def check_log():
    missing = PRESETS / "missing"
    status, printed = sh(f"morvanectl --address {ADDRESS} load scene {missing}")
    equal("a load of a missing file fails", status, 2)
    command = re.search("journalctl .*", printed)
    check("morvanectl says which command shows the log", command, printed)
    if command:
        _, log = sh(f"{command[0]} --no-pager --lines=20")
        check("this shows why the load failed", str(missing) in log, log)


def check_upgrade():
    """With definition files that the new daemon cannot use, the old one goes on."""
    presets = Path("/etc/morvane/presets.def")
    good = presets.read_text()
    client = Client()
    owner = new_owner(client)
    output(INSTALL)
    check("an upgrade restarts the service", new_owner(client, owner), state("morvane.service"))
    owner = check_serving(client, "after an upgrade")
    presets.write_text(WRONG_PRESETS)
    printed = output(INSTALL)
    check("an upgrade says that the definition files are wrong",
          "nothing" in printed and "cannot use" in printed, printed)
    equal("then the old daemon goes on", client.owner("org.norvix.preset"), owner)
    equal("and stores", client.call("store", "scene", str(PRESETS / "scene")), True)
    presets.write_text(good)
    # As dpkg does for a package with other definition files; here it would wait for the packages
    # that this one depends on, which it does not know.
    output("/var/lib/dpkg/info/morvane.postinst triggered /etc/morvane")
    check("new definition files restart the service", new_owner(client, owner),
          state("morvane.service"))
    check_serving(client, "with new definition files")


def check_wrong_definitions():
    """The daemon serves without any preset, so that clients get answers. A command line that can
    never work is tried until systemd's limit."""
    presets = Path("/etc/morvane/presets.def")
    good = presets.read_text()
    presets.write_text(WRONG_PRESETS)
    output("systemctl restart morvane.service")
    client = Client()
    new_owner(client)
    equal("with a wrong definition file, it serves no preset",
          client.call("is_preset", "scene"), False)
    _, log = sh("journalctl --no-pager --unit=morvane.service --lines=30")
    check("with a wrong definition file, the journal says where it is wrong",
          "nothing" in log and "line 2" in log, log)
    presets.write_text(good)
    variant = Path("/etc/default/morvane")
    arguments = variant.read_text()
    variant.write_text('MORVANE_SYSTEM_ARGUMENTS="without-a-value"\n')
    sh("systemctl restart morvane.service")
    failed = until(lambda: state("morvane.service")["ActiveState"] == "failed", 90)
    check("after a wrong command line, systemd gives up", failed, state("morvane.service"))
    variant.write_text(arguments)
    output("systemctl reset-failed; systemctl restart morvane.service")
    check_serving(client, "with the right files again")


def check_security():
    limits = re.findall(r"^system (\d+) (\S+)$", LIMITS.read_text(), flags=re.MULTILINE)
    equal("both units have a limit of their exposure", len(limits), 2)
    for limit, unit in limits:
        _, report = sh(f"systemd-analyze --no-pager security {unit} | tail -n 1")
        exposure = re.search(r"level for \S+: ([0-9.]+)", report)
        figure(f"exposure of the running {unit}", exposure and float(exposure[1]))
        check(f"the exposure of {unit} is at most {int(limit) / 10}",
              exposure and float(exposure[1]) <= int(limit) / 10, report)


def check_hardening():
    """Runs a program in the daemon's place, with all of its unit's settings."""
    unit = Path("/etc/systemd/system/morvane.service").read_text()
    unit = re.sub("^ExecStart=.*$", "ExecStart=/usr/bin/python3 /srv/board/forbidden.py", unit,
                  flags=re.MULTILINE)
    unit = re.sub("^(Type|Restart)=.*$", r"\1=no", unit, flags=re.MULTILINE)
    unit = unit.replace("Type=no", "Type=oneshot")
    Path("/etc/systemd/system/forbidden.service").write_text(unit)
    output("systemctl daemon-reload && touch /tmp/of-another")
    report = PRESETS / "forbidden.json"
    status, printed = sh("systemctl start forbidden.service")
    check("a program runs in the daemon's place", report.exists(), printed)
    if report.exists():
        outcomes = json.loads(report.read_text())
        for deed, outcome in outcomes["allowed"].items():
            equal(f"the unit lets it {deed}", outcome, "done")
        for deed, outcome in outcomes["refused"].items():
            equal(f"the unit does not let it {deed}", outcome, REFUSALS.get(deed, "EPERM"))


def user_state():
    return state("morvane.service", USER + "systemctl --user")


def check_user_session():
    """What a developer has on a device with a session: the bus starts the user unit."""
    output("useradd --create-home --uid 1000 dev && loginctl enable-linger dev")
    check("the user has a session bus",
          until(lambda: Path("/run/user/1000/bus").exists()), sh("systemctl status user@1000"))
    status, printed = sh(f"{USER} systemd-run --user --quiet --unit=handler "
                         f"parameter-handler-sim /etc/morvane/parameters.def {VARIANT}")
    equal("a user's unit runs the simulator", status and printed, 0)
    equal("the bus starts the daemon on the first call",
          sh(f"{USER} {CALL}store scene /home/dev/scene"), (0, "(true,)"))
    first = user_state()
    equal("by the user unit", first["ActiveState"], "active")
    output(f"kill -KILL {first['MainPID']}")
    again = until(lambda: (s := user_state())["MainPID"] not in
                  ("0", first["MainPID"]) and s["SubState"] == "running" and s)
    check("after a kill, the user's systemd starts it again", again, user_state())
    equal("then it loads", sh(f"{USER} {CALL}load scene /home/dev/scene"), (0, "(true,)"))
    output(f"{USER} {CALL}die")
    ended = until(lambda: user_state()["ActiveState"] == "inactive")
    check('after "die" it has ended without a failure', ended, user_state())
    equal("and the next call starts it", sh(f"{USER} {CALL}is_preset scene"), (0, "(true,)"))
    output(f"{USER} systemctl --user stop morvane.service")
    equal("the user can stop it", user_state()["ActiveState"], "inactive")
    output(f"{USER} systemctl --user start morvane.service")
    equal("and start it", sh(f"{USER} {CALL}is_preset scene"), (0, "(true,)"))


def run():
    started = until(lambda: state("morvane.service")["ActiveState"] == "active")
    check("it starts when the board boots", started, state("morvane.service"))
    set_up()
    check_restarts()
    check_log()
    check_upgrade()
    check_wrong_definitions()
    check_security()
    check_hardening()
    check_user_session()
