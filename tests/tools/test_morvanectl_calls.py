"""morvanectl's calls of the services: what is waited for, why a call failed, and status."""

import errno
import json
import os
import re
import signal
import socket
import threading
from pathlib import Path
from xml.sax.saxutils import escape

import pytest
from harness import BUS_CONFIG, CTL, SIMULATOR, Bus, run_ctl, wait_until
from jeepney import new_method_return
from raw_client import RawClient
from test_morvanectl import ERROR, NO, YES, SlowBus, ctl, json_message  # noqa: F401 - a fixture

BUS = "the bus to answer"
NO_BUS = ("morvanectl: cannot reach the bus (it did not answer within {} s); set "
          "DBUS_SESSION_BUS_ADDRESS, or name the bus with --address\n")

REFUSED = "dbus_norvix_transaction: unknown parameter gain[1]"
LOAD_FAILED = "morvanectl: dbus_norvix_preset: Load preset failed\n"
STORE_FAILED = "morvanectl: dbus_norvix_preset: Store preset failed\n"


def notes(*texts):
    return "".join(f"morvanectl: {text}\n" for text in texts)


def log_place(daemon=None):
    """What is said of the log. The unit is that of the tests, if a service runs them."""
    if daemon is not None:
        folder = Path(f"/proc/{daemon.process.pid}")
        if (folder / "cmdline").read_bytes().split(b"\0")[0].endswith(b"/morvane"):
            path = re.search(r"^(?:0::|1:name=systemd:)(.+)$", (folder / "cgroup").read_text(),
                             re.MULTILINE)
            parts = path[1].split("/") if path else []
            units = [p for p in parts if p.endswith(".service") and not p.startswith("user@")]
            if units:
                user = any(re.fullmatch(r"user@.*\.service", p) for p in parts)
                return (f"morvanectl: the log of the service: journalctl "
                        f"--{'user-' if user else ''}unit={units[-1]}\n")
    if Path("/run/systemd/system").is_dir():
        return ("morvanectl: the log of the service is probably shown by: journalctl "
                "--identifier=morvane\n")
    return "morvanectl: the service writes to the system log, probably as morvane\n"


@pytest.fixture
def stopped():
    """Stops processes; they go on when the test ends."""
    processes = []

    def stop(process):
        os.kill(process.pid, signal.SIGSTOP)
        processes.append(process)
        wait_until(lambda: "\nState:\tT" in open(f"/proc/{process.pid}/status").read(),
                   "the process to stop")

    yield stop
    for process in processes:
        os.kill(process.pid, signal.SIGCONT)


@pytest.fixture
def silent_bus(world):
    """The address of a socket whose connections are taken by nobody."""
    path = world.folder / "silent"
    with socket.socket(socket.AF_UNIX) as server:
        server.bind(str(path))
        server.listen()
        yield f"unix:path={path}"


COMMANDS = [("is-preset", "scene"), ("status",), ("diff", "p", "--live", "scene")]


@pytest.mark.parametrize("command", COMMANDS)
def test_gives_up_a_bus_that_takes_no_connection(world, ctl, silent_bus, command):  # noqa: F811
    world.write("p", "mode=off\n")
    assert ctl(*command, "--address", silent_bus, "--timeout", "0.25") == (
        ERROR, "", NO_BUS.format(0.25))


def test_says_that_it_waits_for_the_bus(ctl, silent_bus):  # noqa: F811
    assert ctl("status", "--address", silent_bus, "--timeout", "1.5", awaited=[BUS]) == (
        ERROR, "", notes(f"waiting for {BUS}") + NO_BUS.format(1.5))
    assert ctl("status", "--timeout", "1.5", awaited=[BUS],
               environment={"DBUS_SESSION_BUS_ADDRESS": silent_bus}) == (
        ERROR, "", notes(f"waiting for {BUS}") + NO_BUS.format(1.5))
    status, output, problem = ctl(
        "status", "--json", "--address", silent_bus, "--timeout", "1.5", awaited=[BUS])
    assert (status, output) == (ERROR, "")
    assert problem == (json_message("note", f"waiting for {BUS}")
                       + json_message("error", NO_BUS.format(1.5)[len("morvanectl: "):-1]))


def test_gives_up_a_bus_that_leaves_the_first_call_unanswered(world, ctl):  # noqa: F811
    path = world.folder / "bus"
    bus = SlowBus(path, calls=1, seconds=15)  # before GDBus gives up by itself
    bus.start()
    assert ctl("status", "--address", f"unix:path={path}", "--timeout", "1.5", awaited=[BUS]) == (
        ERROR, "", notes(f"waiting for {BUS}") + NO_BUS.format(1.5))
    bus.close()
    assert bus.was_left, "it waited for the answer"


def test_waits_for_a_bus_without_a_time_limit(world, ctl):  # noqa: F811
    path = world.folder / "bus"
    bus = SlowBus(path, calls=1, seconds=1.5)
    bus.start()
    status, _, problem = ctl("die", "--address", f"unix:path={path}", awaited=[BUS])
    bus.close()
    assert (status, problem.splitlines()[0]) == (ERROR, f"morvanectl: waiting for {BUS}")


def test_gives_up_a_service_that_does_not_answer(world, ctl, stopped):  # noqa: F811
    stopped(world.simulator().process)
    daemon = world.daemon()
    world.write("p", "mode=off\n")

    def gives_up(method, asked, *arguments):
        service, handler = (f"org.norvix.{name} to answer {called}" for name, called in (
            ("preset", method), ("transaction", asked)))
        assert ctl(*arguments, "--timeout", "3", awaited=[service, handler]) == (
            ERROR, "", notes(
                f"waiting for {service}", f"org.norvix.preset did not answer {method} within 3 s",
                f"waiting for {handler}", "the Parameter Handler: org.norvix.transaction did not "
                f"answer {asked} within 2 s") + log_place(daemon))

    gives_up("store", "single_get_bulk", "store", "scene", "p")
    gives_up("is_preset", "single_get", "is-preset", "scene")
    awaited = "org.norvix.transaction to answer single_get_bulk"
    assert ctl("diff", "p", "--live", "scene", "--timeout=3", awaited=[awaited]) == (
        ERROR, "", notes(f"waiting for {awaited}",
                         "org.norvix.transaction did not answer single_get_bulk within 3 s"))


def test_an_answer_within_the_time_limit_counts(world, ctl):  # noqa: F811
    world.simulator()
    world.daemon()
    assert ctl("is-preset", "scene", "--timeout", "1000000") == (YES, "yes\n", "")


@pytest.mark.parametrize("text", ["0", "-1", "1000001", "nan", "inf", "1s", "", " 1"])
def test_refuses_what_is_no_time_limit(ctl, text):  # noqa: F811
    status, output, problem = ctl("status", f"--timeout={text}", "--json")
    assert (status, output, problem) == (ERROR, "", json_message(
        "error", "--timeout: a time limit is a number of seconds, above 0, at most 1000000"))


def test_says_that_the_file_is_missing(world, ctl):  # noqa: F811
    world.simulator()
    daemon = world.daemon()
    assert ctl("load", "scene", "nowhere") == (
        ERROR, "", LOAD_FAILED + notes(
            f"cannot read {world.folder}/nowhere: No such file or directory") + log_place(daemon))
    assert ctl("load-with-default", "scene", ".") == (
        ERROR, "", "morvanectl: dbus_norvix_preset: Load preset with defaults failed\n" + notes(
            f"cannot read {world.folder}/.: not a regular file") + log_place(daemon))


def test_says_why_a_file_cannot_be_stored(world, ctl):  # noqa: F811
    world.simulator()
    daemon = world.daemon()
    folder = world.folder
    assert ctl("store", "scene", "nowhere/p") == (
        ERROR, "", STORE_FAILED + notes(
            f"cannot reach the folder {folder}/nowhere: No such file or directory")
        + log_place(daemon))
    (folder / "p_bak").mkdir()
    assert ctl("store", "scene", "p") == (
        ERROR, "", STORE_FAILED + notes(
            f"{folder}/p_bak is not a regular file, which a store does not replace")
        + log_place(daemon))
    assert ctl("store", "scene", "parameters.def/p") == (
        ERROR, "", STORE_FAILED + notes(f"{folder}/parameters.def is no folder")
        + log_place(daemon))


def test_says_that_the_preset_is_unknown(world, ctl):  # noqa: F811
    world.simulator()
    daemon = world.daemon()
    assert ctl("load-default", "scnee") == (
        ERROR, "", "morvanectl: dbus_norvix_preset: Load defaults failed\n" + notes(
            "the service has no preset scnee", "did you mean scene?") + log_place(daemon))
    assert ctl("store", "scnee", "p", definitions=("-p", "nowhere")) == (
        ERROR, "", STORE_FAILED + notes("the service has no preset scnee") + log_place(daemon))
    world.write("presets.def", "scnee preset { }\n" + world.presets.read_text())
    assert ctl("store", "scnee", "p") == (
        ERROR, "", STORE_FAILED + notes(
            "the service has no preset scnee",
            "probably: the service has other definition files, or other system arguments, than "
            "were read here: presets.def gives this variant the preset") + log_place(daemon))


def test_says_that_the_service_serves_no_presets(world, ctl):  # noqa: F811
    world.simulator()
    daemon = world.daemon(presets=world.write("broken.def", "scene preset {\n"))
    assert ctl("store", "scene", "p", "--json") == (ERROR, "", "".join([
        json_message("error", "dbus_norvix_preset: Store preset failed"),
        json_message("note", "the service has no preset scene"),
        json_message("note", "probably: the service could not use its definition files when it "
                     "started, and serves no preset; it has none of presets.def"),
        json_message("note", log_place(daemon)[len("morvanectl: "):-1])]))


def test_says_that_no_key_is_in_the_preset(world, ctl):  # noqa: F811
    world.simulator()
    daemon = world.daemon()
    assert ctl("store-subpreset", "single", "p", "gain[1]", "gain[2]") == (
        ERROR, "", "morvanectl: dbus_norvix_preset: Store sub-preset failed\n" + notes(
            "the service has none of these keys in single") + log_place(daemon))


def test_says_which_values_are_probably_refused(world, ctl):  # noqa: F811
    world.simulator()
    daemon = world.daemon()
    world.write("p", "gain[1]=13\nserial=1\ngain[2]=14\ngain[3]=15\nmode=on\nmode=off\n")
    assert ctl("load", "scene", "p") == (ERROR, "", LOAD_FAILED + notes(
        'probably: line 1: gain[1]: "13" is none of its values: -60..12',
        'probably: line 3: gain[2]: "14" is none of its values: -60..12',
        'probably: line 4: gain[3]: "15" is none of its values: -60..12',
        "there are 1 more like this; see: morvanectl validate p --for scene") + log_place(daemon))


def test_reads_the_backup_that_a_load_puts_back(world, ctl):  # noqa: F811
    """A load that fails has put it back already, so the file itself is examined."""
    world.simulator()
    daemon = world.daemon()
    world.write("p", "mode=off\n")
    world.write("p_bak", b"mode=\xff\n")
    assert ctl("load", "scene", "p") == (ERROR, "", LOAD_FAILED + notes(
        "probably: line 1: its value is not UTF-8, so the whole load fails") + log_place(daemon))


def test_says_that_a_backup_was_not_put_back(world, ctl):  # noqa: F811
    world.simulator()
    daemon = world.daemon(fault=(f"rename 1 {errno.EACCES}", str(world.folder / "p")))
    world.write("p_bak", "mode=off\n")
    assert ctl("load", "scene", "p") == (ERROR, "", LOAD_FAILED + notes(
        f"the service did not put {world.folder}/p_bak back, which an interrupted store has left")
        + log_place(daemon))


def test_says_that_the_parameter_handler_is_missing(world, ctl):  # noqa: F811
    daemon = world.daemon()
    awaited = "org.norvix.preset to answer store"
    assert ctl("store", "scene", "p", "--timeout", "3", awaited=[awaited]) == (
        ERROR, "", notes(
            f"waiting for {awaited}",
            "org.norvix.preset did not answer store within 3 s",
            "the Parameter Handler, org.norvix.transaction, is not running; loads and stores wait "
            "for it") + log_place(daemon))


def test_says_that_the_parameter_handler_refuses_a_read(world, ctl):  # noqa: F811
    world.simulator(parameters=world.write("old.def", "mode rw { }\ntemperature ro { }\n"))
    daemon = world.daemon()
    status, output, problem = ctl("store", "scene", "p")
    assert (status, output) == (ERROR, "")
    assert problem == STORE_FAILED + notes(
        "the Parameter Handler refuses to read gain[1], gain[2], gain[3], mode, temperature: "
        + REFUSED) + log_place(daemon)


def test_says_why_a_service_said_no(world, ctl):  # noqa: F811
    """As a later service may, which the daemon does not."""
    stand_in = RawClient(world.bus.address)
    stand_in.own("org.norvix.preset")
    no = {method: lambda call, serial: new_method_return(call, "b", (False,)).serialise(serial)
          for method in ("load", "is_preset")}
    thread = threading.Thread(target=stand_in.answer_calls, args=(no,))
    thread.start()
    world.simulator()
    world.write("p", "mode=off\n")
    status, output, problem = ctl("load", "scene", "p")
    assert (status, output, problem.splitlines(keepends=True)[:-1]) == (NO, "", [
        "morvanectl: the service has no preset scene\n",
        "morvanectl: probably: the service could not use its definition files when it started, and "
        "serves no preset; it has none of presets.def\n"])
    stand_in.connection.sock.shutdown(socket.SHUT_RDWR)
    thread.join()
    stand_in.close()


def test_says_where_the_log_of_a_service_is_that_ended(world, ctl):  # noqa: F811
    world.simulator()
    world.write("p", "mode=off\n")
    world.daemon(fault=("rename 1 kill", str(world.folder / "p")))
    assert ctl("store", "scene", "p") == (ERROR, "", notes(
        "Message recipient disconnected from message bus without replying") + log_place())


def test_says_where_the_log_of_a_service_is_that_does_not_start(tmp_path, world, ctl):  # noqa: F811
    services = tmp_path / "services"
    services.mkdir()
    (services / "org.norvix.preset.service").write_text(
        "[D-BUS Service]\nName=org.norvix.preset\nExec=/bin/false\n")
    config = world.write("bus.conf", BUS_CONFIG.read_text().replace(
        "</listen>", f"</listen><servicedir>{escape(str(services))}</servicedir>"))
    bus = Bus(config)
    outcome = ctl("store", "scene", "p", "--address", bus.address)
    bus.stop()
    assert outcome == (
        ERROR, "", notes("Process org.norvix.preset exited with status 1") + log_place())


def test_says_where_the_log_of_a_missing_service_is(ctl):  # noqa: F811
    assert ctl("is-preset", "scene") == (
        ERROR, "", "morvanectl: the service org.norvix.preset is not running\n" + log_place())


def test_refuses_a_folder_that_the_bus_does_not_carry(world, ctl):  # noqa: F811
    world.simulator()
    world.daemon()
    folder = Path(os.fsdecode(bytes(world.folder) + b"/sc\xffne"))
    folder.mkdir()
    for arguments in (["store", "scene", "p"], ["load", "scene", "p"],
                      ["store-subpreset", "scene", "p", "mode"]):
        assert run_ctl(*arguments, cwd=folder, env=world.bus.environment()) == (
            ERROR, "", "morvanectl: names, keys and paths must be UTF-8; the name of the working "
            "folder is not\n")
    assert list(folder.iterdir()) == []
    assert run_ctl("is-preset", "scene", cwd=folder, env=world.bus.environment()) == (
        YES, "yes\n", "")


def test_does_not_send_a_path_whose_folder_is_gone(world, ctl):  # noqa: F811
    """The daemon would look for the file in its own folder."""
    world.simulator()
    world.daemon()
    folder = world.folder / "gone"
    folder.mkdir()
    assert run_ctl("store", "scene", "p", wrapper=["sh", "-c", 'rmdir "$PWD" && exec "$@"', "sh"],
                   cwd=folder, env=world.bus.environment()) == (
        ERROR, "", "morvanectl: cannot tell the folder of p: No such file or directory\n")


def test_a_comparison_sends_no_key_that_the_bus_does_not_carry(world, ctl):  # noqa: F811
    handler = world.simulator()
    world.write("bytes.def", b'input index { rangeValid { "a\xff" } }\n'
                             b"gain rw { index { input } }\nmode rw { }\n")
    world.write("all.def", "all preset { }\n")
    world.write("p", b"gain[a\xff]=1\n")
    definitions = ("-p", "bytes.def", "-d", "all.def")
    assert ctl("diff", "p", "--live", "all", definitions=definitions) == (
        ERROR, "", "morvanectl: ERROR: parm_set_() - set failed (p: key of gain[a\\xff] is not "
        "valid UTF-8)\n")
    world.write("p", "mode=1\n")
    assert ctl("diff", "p", "--live", "all", "--with-defaults", definitions=definitions) == (
        ERROR, "", "morvanectl: ERROR: parm_reset_() - reset failed (p: key of gain[a\\xff] is "
        "not valid UTF-8)\n")
    assert handler.methods() == []


def seen(program, process):
    """What status says of a process; an emulator is seen instead of the program."""
    name = Path(os.fsdecode(Path(f"/proc/{process.pid}/cmdline").read_bytes().split(b"\0")[0]))
    assert name.name == program.name or program != SIMULATOR
    return f"running; process {process.pid}, {name.name}"


def test_shows_that_all_is_well(world, ctl):  # noqa: F811
    handler, daemon = world.simulator(), world.daemon()
    processes = (seen(CTL[-1], daemon.process), seen(SIMULATOR, handler.process))
    assert ctl("status") == (YES, f"""\
bus: {world.bus.address}
org.norvix.preset: {processes[0]}
org.norvix.transaction: {processes[1]}
presets: the service has all 3 of presets.def
values: the Parameter Handler reads gain[1]
""", "")
    status, output, problem = ctl("status", "--json")
    assert (status, problem) == (YES, "")
    assert json.loads(output) == {
        "bus": world.bus.address,
        "org.norvix.preset": {
            "running": True, "process": daemon.process.pid, "program": processes[0].split(", ")[1]},
        "org.norvix.transaction": {
            "running": True, "process": handler.process.pid, "program": SIMULATOR.name},
        "presets": {"well": True, "text": "the service has all 3 of presets.def"},
        "values": {"well": True, "text": "the Parameter Handler reads gain[1]"}}


def test_shows_that_nothing_is_there(world, ctl):  # noqa: F811
    assert ctl("status") == (NO, f"""\
bus: {world.bus.address}
org.norvix.preset: not running
org.norvix.transaction: not running
""", "")
    absent = {"running": False, "process": None, "program": None}
    unknown = {"well": None, "text": None}
    assert ctl("status", "--json") == (NO, json.dumps(
        {"bus": world.bus.address, "org.norvix.preset": absent, "org.norvix.transaction": absent,
         "presets": unknown, "values": unknown}, indent=2) + "\n", "")


def state_lines(outcome):
    """The status, and what is said below the services."""
    status, output, problem = outcome
    assert problem == ""
    return status, output.splitlines()[3:]


def test_status_compares_the_presets(world, ctl):  # noqa: F811
    world.simulator()
    world.daemon()
    values = "values: the Parameter Handler reads gain[1]"
    ctl("presets")  # writes the definitions
    world.write("more.def", "more preset { }\nscene preset { exclude rw { all } }\n"
                            "single preset { exclude rw { gain } }\n")
    definitions = ("-p", "parameters.def", "-d", "more.def")
    assert state_lines(ctl("status", definitions=definitions)) == (NO, [
        "presets: bad: the service lacks more; the service has scene, which this variant lacks",
        values])
    world.write("none.def", "more preset { }\n")
    assert state_lines(ctl("status", definitions=("-p", "parameters.def", "-d", "none.def"))) == (
        NO, ["presets: bad: the service has none of none.def", values])


def test_status_says_what_it_does_not_know(world, ctl):  # noqa: F811
    world.simulator()
    world.daemon()
    answers = "values: the Parameter Handler answers"
    assert state_lines(ctl("status", definitions=("-p", "nowhere"))) == (YES, [
        "presets: not known: cannot read nowhere: No such file or directory; name the definition "
        "files with --parameters and --presets", answers])
    world.write("model.def", "mode rw { rangeValid (model == 1) { 1 } }\n")
    world.write("all.def", "all preset { }\n")
    assert state_lines(ctl("status", definitions=("-p", "model.def", "-d", "all.def"))) == (YES, [
        "presets: not known: nothing gives a value to model, which model.def uses; describe the "
        "device with --system or --variant", answers])
    world.write("wrong.def", "mode ry { }\n")
    assert state_lines(ctl("status", definitions=("-p", "wrong.def", "-d", "all.def"))) == (YES, [
        "presets: not known: wrong.def:1:6: Invalid parameter access type", answers])


def test_status_says_that_a_service_does_not_answer(world, ctl, stopped):  # noqa: F811
    handler, daemon = world.simulator(), world.daemon()
    values = "values: bad: org.norvix.transaction did not answer single_get within 3 s"
    awaited = [f"org.norvix.{service} to answer {method}" for service, method in (
        ("preset", "is_preset"), ("transaction", "single_get"))]
    waiting = [f"waiting for {what}" for what in awaited]
    stopped(handler.process)
    status, output, problem = ctl("status", "--timeout", "3", awaited=awaited[1:])
    assert (status, output.splitlines()[3:], problem) == (
        NO, ["presets: the service has all 3 of presets.def", values], notes(waiting[1]))
    stopped(daemon.process)
    status, output, problem = ctl("status", "--timeout", "3", awaited=awaited)
    assert (status, output.splitlines()[3:], problem) == (
        NO, ["presets: bad: org.norvix.preset did not answer is_preset within 3 s", values],
        notes(*waiting))


def test_status_waits_for_a_service_two_seconds(world, ctl, stopped):  # noqa: F811
    stopped(world.simulator().process)
    awaited = "org.norvix.transaction to answer single_get"
    status, output, problem = ctl("status", awaited=[awaited])
    assert (status, problem) == (NO, notes(f"waiting for {awaited}"))
    assert output.splitlines()[-1] == (
        "values: bad: org.norvix.transaction did not answer single_get within 2 s")


def test_status_says_that_a_key_is_not_known(world, ctl):  # noqa: F811
    world.simulator(parameters=world.write("old.def", "mode rw { }\ntemperature ro { }\n"))
    status, output, _ = ctl("status")
    assert (status, output.splitlines()[-1]) == (
        NO, "values: bad: the Parameter Handler refuses to read gain[1]: " + REFUSED)


def test_status_of_a_daemon_that_detached(world, ctl):  # noqa: F811
    world.simulator()
    daemon = world.daemon(options=())
    daemon.wait()
    status, output, _ = ctl("status")
    assert status == YES and output.splitlines()[1] in (
        f"org.norvix.preset: running; process {daemon.process.pid}, which cannot be seen; it may "
        "have detached",
        # A bus of 1.16 knows that the process that connected has ended.
        "org.norvix.preset: running; the bus does not say in which process")
    assert ctl("store", "unknown", "p") == (ERROR, "", STORE_FAILED + notes(
        "the service has no preset unknown") + log_place())
