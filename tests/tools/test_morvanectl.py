"""morvanectl: every subcommand with its output and exit status."""

import json
import os
import select
import socket
import threading

import pytest
from harness import DEADLINE_SECONDS, run_ctl
from jeepney import HeaderFields, Parser, new_method_return

YES, NO, ERROR = 0, 1, 2
TRANSLATION = """\
translate {
    removed { gone }
    mode { from { mood { quiet = off } } }
    gain { index 0 { input = 2 } from { level } }
}
"""


@pytest.fixture
def ctl(world):
    """run_ctl with the definitions of the world."""
    world.write("presets.def", TRANSLATION + world.presets.read_text())

    def run(*arguments, definitions=("-p", "parameters.def", "-d", "presets.def"), bus=True,
            environment=None, awaited=()):
        variables = world.bus.environment() if bus else {
            k: v for k, v in os.environ.items() if k != "DBUS_SESSION_BUS_ADDRESS"}
        return run_ctl(*arguments, *definitions, awaited=awaited, cwd=world.folder,
                       env={**variables, **(environment or {})})

    return run


def test_calls_the_service(world, ctl):
    world.simulator()
    world.daemon()
    assert ctl("store", "scene", "p") == (YES, "", ""), "a relative path is the caller's"
    text = "gain[1]=0\ngain[2]=0\ngain[3]=0\nmode=auto\ntemperature=40\n"
    assert (world.folder / "p").read_text() == text
    assert ctl("store-subpreset", "scene", "q", "mode", "gain[2]") == (YES, "", "")
    assert (world.folder / "q").read_text() == "gain[2]=0\nmode=auto\n"
    assert ctl("load", "scene", "p") == (YES, "", "")
    assert ctl("load-with-default", "scene", "q") == (YES, "", "")
    assert ctl("load-default", "scene") == (YES, "", "")
    assert ctl("is-preset", "scene") == (YES, "yes\n", "")
    assert ctl("is-preset", "scenes") == (NO, "no\n", "")
    assert ctl("in-preset", "scene", "nothing", "mode") == (YES, "yes\n", "")
    assert ctl("in-preset", "scene", "trigger") == (NO, "no\n", "")
    assert ctl("die") == (YES, "", "")


def test_says_plainly_that_the_bus_is_missing(ctl):
    status, output, problem = ctl("is-preset", "scene", "--address", "unix:path=/nowhere/bus")
    assert (status, output) == (ERROR, "")
    assert problem.startswith("morvanectl: cannot reach the bus (")
    assert problem.endswith("); set DBUS_SESSION_BUS_ADDRESS, or name the bus with --address\n")


def test_uses_the_bus_that_is_named(world, ctl):
    world.daemon()
    assert ctl("is-preset", "scene", "--address", world.bus.address, bus=False)[0] == YES


def test_says_what_it_waits_for(world, ctl):
    world.simulator(faults="get_bulk 1 delay 1500\n")
    world.daemon()
    awaited = "org.norvix.preset to answer store"
    assert ctl("store", "scene", "p", awaited=[awaited]) == (
        YES, "", f"morvanectl: waiting for {awaited}\n")


class SlowBus(threading.Thread):
    """A bus for one client, which answers the last of `calls` calls later than the others, if the
    client is still there."""

    def __init__(self, path, calls, seconds):
        super().__init__()
        self.server = socket.socket(socket.AF_UNIX)
        self.server.bind(str(path))
        self.server.listen()
        self.server.settimeout(DEADLINE_SECONDS)
        self.calls, self.seconds = calls, seconds
        self.was_left = False

    def run(self):
        client, _ = self.server.accept()
        with client:
            client.settimeout(DEADLINE_SECONDS)
            self._authenticate(client)
            parser = Parser()
            for number in range(1, self.calls + 1):
                while (call := parser.get_next_message()) is None:
                    data = client.recv(4096)
                    assert data, "the client left"
                    parser.add_data(data)
                if number == self.calls and select.select([client], [], [], self.seconds)[0]:
                    self.was_left = client.recv(4096) == b""
                    return
                hello = call.header.fields[HeaderFields.member] == "Hello"
                reply = new_method_return(call, *(("s", (":1.1",)) if hello else ("b", (True,))))
                client.sendall(reply.serialise(number))

    @staticmethod
    def _authenticate(client):
        with client.makefile("rb", buffering=0) as lines:  # what follows is not read
            for line in iter(lines.readline, b"BEGIN\r\n"):
                client.sendall(b"OK 0123456789abcdef0123456789abcdef\r\n" if b"EXTERNAL " in line
                               else b"REJECTED EXTERNAL\r\n" if b"AUTH" in line
                               else b"ERROR\r\n")

    def close(self):
        self.join()
        self.server.close()


def test_says_once_what_it_waits_for(world, ctl):
    """The calls of the command are timed each by itself."""
    path = world.folder / "bus"
    bus = SlowBus(path, calls=3, seconds=1.5)
    bus.start()
    awaited = "org.freedesktop.DBus to answer GetConnectionUnixProcessID"
    outcome = ctl("status", "--address", f"unix:path={path}", bus=False, awaited=[awaited])
    bus.close()
    assert outcome == (
        ERROR, "",
        f"morvanectl: waiting for {awaited}\nmorvanectl: the bus does not answer\n")


def test_waits_longer_than_a_bus_library_does(world, ctl):
    """Those give up after 25 seconds. The answer takes 30 by the tool's clock."""
    world.simulator(faults="get_bulk 1 delay 3000\n")
    daemon = world.daemon()
    fast_clock = {**daemon.environment(), "MORVANE_TEST_CLOCK_RATE": "10"}
    awaited = "org.norvix.preset to answer store"
    assert ctl("store", "scene", "p", environment=fast_clock, awaited=[awaited]) == (
        YES, "", f"morvanectl: waiting for {awaited}\n")


@pytest.mark.parametrize("arguments", [
    ("is-preset", b"sc\xffne"), ("store", "scene", b"\xff"), ("store", b"\xff", "p"),
    ("in-preset", "scene", "mode", b"ga\xffin"), ("in-preset", "scene", b"\xff", "mode"),
    ("store-subpreset", "scene", "p", "mode", b"ga\xffin"), ("load-default", b"\xff")])
def test_refuses_what_the_bus_does_not_carry(world, ctl, arguments):
    world.simulator()
    world.daemon()
    assert ctl(*arguments) == (ERROR, "", "morvanectl: names, keys and paths must be UTF-8\n")


def test_lists_presets_and_keys(ctl):
    assert ctl("presets") == (YES, "scene\nsingle\nstates\n", "")
    assert ctl("presets", "--json") == (YES, '[\n  "scene",\n  "single",\n  "states"\n]\n', "")
    assert ctl("keys", "scene") == (
        YES, "gain[1]\ngain[2]\ngain[3]\nmode\ntemperature\n", "")
    assert ctl("keys", "single", "--json") == (YES, '[\n  "mode"\n]\n', "")
    assert ctl("keys", "nothing") == (
        ERROR, "", "morvanectl: no preset nothing covers a key on this variant; see: morvanectl "
        "presets, morvanectl check\n")


@pytest.mark.parametrize("command", [
    ["presets"], ["keys", "scene", "--json"], ["explain", "scene", "mode"], ["check", "--json"],
    ["load-default", "scene", "--dry-run"], ["--help"]])
def test_says_that_its_output_cannot_be_written(world, ctl, command):
    ctl("presets")  # writes the definitions
    with open("/dev/full", "w") as full:
        status, _, errors = run_ctl("-p", "parameters.def", "-d", "presets.def", *command,
                                    cwd=world.folder, stdout=full)
    problem = "cannot write: No space left on device"
    assert status == ERROR
    assert errors == (
        json_message("error", problem) if "--json" in command else f"morvanectl: {problem}\n")


def json_message(severity, text):
    return json.dumps({"file": None, "line": None, "column": None, "severity": severity,
                       "code": None, "text": text, "variants": []},
                      separators=(",", ":")) + "\n"


@pytest.mark.parametrize("arguments, text", [
    (["is-preset", "scene"], "the service org.norvix.preset is not running"),
    (["load", "scene", "x"], "the service org.norvix.preset is not running"),
    (["keys", "nothing"], "no preset nothing covers a key on this variant; see: morvanectl "
     "presets, morvanectl check"),
    (["translate", "nowhere"], "cannot read nowhere: No such file or directory"),
    (["validate", "."], "cannot read .: not a regular file"),
    (["diff", "nowhere", "nowhere"], "cannot read nowhere: No such file or directory"),
    (["diff", "a"], "diff needs another FILE, or --live PRESET"),
    (["presets", "--variant", "x"], "no variant x in variants"),
    (["presets", "--variants", "nowhere"], "cannot read nowhere: No such file or directory"),
    (["presets", "-s", "a=1", "-s", "a=2"], "a=1 and a=2 give one system argument two values"),
    (["check", "--all-variants"], "there are no named variants; see --variants, or give "
     "--all-variants system arguments with all their values"),
    (["keys"], "preset is required"),
    (["nothing"], "there is no command nothing"),
])
def test_writes_errors_as_json(world, ctl, arguments, text):
    status, output, problem = ctl(*arguments, "--json")
    assert (status, output) == (ERROR, "")
    assert problem.splitlines(keepends=True)[0] == json_message("error", text)


def test_writes_what_is_wrong_in_the_definitions_as_json(world, ctl):
    world.write("p", "gain rw { rangeValid (model == 1) { 1 } }\nx ry { }\n")
    world.write("d", "all preset { }\n")
    definitions = ("-p", "p", "-d", "d")
    status, output, problem = ctl("keys", "all", "--json", definitions=definitions)
    place = {"file": "p", "line": 2, "column": 3}
    code = {"code": "invalid-access"}
    assert (status, output) == (ERROR, "")
    assert [json.loads(line) for line in problem.splitlines()] == [
        {**place, "severity": severity, **code, "text": text, "variants": []}
        for severity, text in (("error", "Invalid parameter access type"),
                               ("note", "the access type is index, ro, rostrict, rw or wo"),
                               ("note", "did you mean ro?"))]
    world.write("p", "gain rw { rangeValid (model == 1) { 1 } }\n")
    assert ctl("keys", "all", "--json", definitions=definitions) == (
        YES, '[\n  "gain"\n]\n', json_message(
            "warning", "nothing gives a value to model, which p uses; describe the device with "
            "--system or --variant"))


def test_names_the_options_when_definitions_cannot_be_read(ctl):
    assert ctl("keys", "scene", definitions=("-p", "nowhere", "-d", "presets.def")) == (
        ERROR, "", "morvanectl: cannot read nowhere: No such file or directory; name the "
        "definition files with --parameters and --presets\n")


@pytest.mark.parametrize("preset, key, status, reasons", [
    ("scene", "gain[1]", YES, [
        "parameters.def:2: gain is rw",
        "parameters.def:1: index input has the value 1",
        "presets.def:6: read-write parameters are in a preset unless an exclude list takes them "
        "away",
        "no exclude list takes it away"]),
    ("scene", "gain[9]", NO, [
        "parameters.def:2: gain is rw",
        "parameters.def:1: index input has 1, 2, 3, which is not 9"]),
    ("scene", "gain", NO, [
        "parameters.def:2: gain is rw", "gain has 1 indices, gain has 0"]),
    ("single", "gain[1]", NO, [
        "parameters.def:2: gain is rw",
        "parameters.def:1: index input has the value 1",
        "presets.def:7: read-write parameters are in a preset unless an exclude list takes them "
        "away",
        "presets.def:7: taken away by the exclude list: item gain"]),
    ("nothing", "mode", NO, [
        "parameters.def:3: mode is rw",
        "presets.def:9: read-write parameters are in a preset unless an exclude list takes them "
        "away",
        "presets.def:9: taken away by the exclude list: all",
        "presets.def:9: this preset covers no key on this variant, so it is not used"]),
    ("scene", "temperature", YES, [
        "parameters.def:4: temperature is ro",
        "presets.def:6: read-only parameters are in a preset if an include list adds them",
        "presets.def:6: added by the include list: item temperature"]),
    ("scene", "serial", NO, [
        "parameters.def:5: serial is rostrict",
        "presets.def:6: read-only parameters are in a preset if an include list adds them",
        "no include list adds it"]),
    ("scene", "trigger", NO, [
        "parameters.def:6: trigger is wo",
        "a preset covers ro, rostrict and rw parameters only"]),
    ("scene", "nowhere", NO, ["no parameter nowhere in parameters.def"]),
    ("scenes", "mode", NO, ["parameters.def:3: mode is rw", "no preset scenes in presets.def"]),
])
def test_explains_a_key(ctl, preset, key, status, reasons):
    is_in = "is in" if status == YES else "is not in"
    assert ctl("explain", preset, key) == (
        status, f"{key} {is_in} {preset}\n" + "".join(f"    {r}\n" for r in reasons), "")
    assert json.loads(ctl("explain", preset, key, "--json")[1]) == {
        "key": key, "preset": preset, "covered": status == YES, "reasons": reasons}


LEVEL = """\
    parameters.def:2: level is ro
    parameters.def:1: index input has 1, 2, which is not {}
    presets.def:1: read-only parameters are in a preset if an include list adds them
    {}
"""


@pytest.mark.parametrize("value, status, reason", [
    (7, YES, "presets.def:2: added by the include list: item level, index clause on line 2"),
    (8, NO, "an include list has all, which adds the values that the indices have, and no others"),
    (9, NO, "an include list has all, which adds the values that the indices have, and no others"),
])
def test_explains_lists_around_one_that_includes_all(world, ctl, value, status, reason):
    world.write("parameters.def", "input index { rangeValid { 1..2 } }\n"
                                  "level ro { index { input } }\n")
    world.write("presets.def", "scene preset {\n"
                               "include ro { level { index { input { 7 } } } }\n"
                               "include ro { level { index { input { 8 } } }, all }\n"
                               "include ro { level { index { input { 9 } } } }\n}\n")
    status_seen, output, _ = ctl("explain", "scene", f"level[{value}]")
    assert (status_seen, output.partition("\n")[2]) == (status, LEVEL.format(value, reason))


def test_explains_with_eight_values_at_most(world, ctl):
    world.write("parameters.def", "eight index { rangeValid { 1..8 } }\n"
                                  "nine index { rangeValid { 1..9 } }\n"
                                  "a rw { index { eight } }\nb rw { index { nine } }\n")
    world.write("presets.def", "all preset { }\n")
    assert ctl("explain", "all", "a[x]")[1].endswith(
        "    parameters.def:1: index eight has 1, 2, 3, 4, 5, 6, 7, 8, which is not x\n")
    assert ctl("explain", "all", "b[x]")[1].endswith(
        "    parameters.def:2: index nine has 1, 2, 3, 4, 5, 6, 7, 8 and 1 more, which is not x\n")


def test_explains_which_condition_decides(world, ctl):
    world.write("parameters.def", """\
port index { rangeValid { 1..(ports) } ctrlValid (ports > 0) }
fan rw { ctrlValid (model == "rack" && ports >= 2) }
led rw { index { port }
    ctrlValid (fan == 1 ||
               model == "desk") }
""")
    world.write("presets.def", "all preset { exclude rw { led { index { port { 2 } } } } }\n")
    options = ["-s", "model=rack", "-s", "ports=2"]
    assert ctl("explain", "all", "fan", *options)[1] == """\
fan is in all
    parameters.def:2: fan is rw
    parameters.def:2: ctrlValid (model == "rack" && ports >= 2) holds (model is rack, ports is 2)
    presets.def:1: read-write parameters are in a preset unless an exclude list takes them away
    no exclude list takes it away
"""
    assert ctl("explain", "all", "fan", "-s", "model=desk")[1] == """\
fan is not in all
    parameters.def:2: fan is rw
    parameters.def:2: ctrlValid (model == "rack" && ports >= 2) cannot be evaluated, so it does \
not hold (model is desk, ports has no value)
"""
    assert ctl("explain", "all", "fan", "-s", "model=desk", "-s", "ports=9")[1].endswith(
        'does not hold (model is desk, ports is 9)\n')
    assert ctl("explain", "all", "led[2]", *options)[1] == """\
led[2] is not in all
    parameters.def:3: led is rw
    parameters.def:4: ctrlValid (fan == 1 || model == "desk") counts as met (fan is a parameter, \
whose value is not known yet, model is rack)
    parameters.def:1: ctrlValid (ports > 0) holds (ports is 2)
    parameters.def:1: index port has the value 2
    presets.def:1: read-write parameters are in a preset unless an exclude list takes them away
    presets.def:1: taken away by the exclude list: item led, index clause on line 1
"""
    assert ctl("explain", "all", "led[1]", "-s", "ports=0")[1].endswith(
        "    parameters.def:1: ctrlValid (ports > 0) does not hold (ports is 0)\n"
        "    parameters.def:1: index port does not exist on this variant\n")


@pytest.mark.parametrize("text, reason", [
    ("gain[1]x", "a load reads it as gain[1]"),
    ("gain[1", "a load reads it as gain"),
    ("gain[1]\t", "a load reads it as gain[1]"),
    ("gain[1]=5", "a load reads a line with the key gain[1]"),
    ("[1]", "it has no name"),
    ("=5", "it has no name"),
    ("", "it has no name"),
])
def test_explains_that_a_text_is_no_key(ctl, text, reason):
    reasons = [f"{text} is no key: {reason}"]
    assert ctl("explain", "scene", text) == (
        NO, f"{text} is not in scene\n    {reasons[0]}\n", "")
    assert json.loads(ctl("explain", "scene", text, "--json")[1]) == {
        "key": text, "preset": "scene", "covered": False, "reasons": reasons}


@pytest.mark.parametrize("value, lines", [
    ("1", ["index port has the value 1"]),
    ("4", ['rangeValid (model == "rack") does not hold (model is desk)',
           "index port has 1, 2, 8, aux, which is not 4"]),
    ("04", ["index port has 1, 2, 8, aux, which is not 04"]),
    ("x", ['rangeValid (model == "rack") does not hold (model is desk)',
           "rangeValid (rooms == 2) cannot be evaluated, so it does not hold (rooms has no value)",
           "index port has 1, 2, 8, aux, which is not x"]),
    ("8", ['rangeValid (model == "desk") holds (model is desk)', "index port has the value 8"]),
    ("aux", ["rangeValid (fan == 1) counts as met (fan is a parameter, whose value is not known "
             "yet)", "index port has the value aux"]),
    ("9", ["index port has 1, 2, 8, aux, which is not 9"]),
])
def test_explains_which_range_gives_or_withholds_a_value(world, ctl, value, lines):
    world.write("parameters.def", """\
port index { rangeValid { 1..2 } rangeValid (model == "rack") { 3..5, "x" } \
rangeValid (rooms == 2) { "x" } rangeValid (model == "desk") { 8 } rangeValid (fan == 1) { "aux" } }
fan rw { }
led rw { index { port } }
""")
    world.write("presets.def", "all preset { }\n")
    output = ctl("explain", "all", f"led[{value}]", "-s", "model=desk")[1].splitlines()
    assert [line for line in output if ":1: rangeValid" in line or "index port" in line] == [
        f"    parameters.def:1: {line}" for line in lines]


def test_explains_that_every_condition_must_hold(world, ctl):
    world.write("parameters.def", "fan rw { ctrlValid (0) ctrlValid (1) }\n")
    world.write("presets.def", "all preset { }\n")
    assert ctl("explain", "all", "fan") == (NO, """\
fan is not in all
    parameters.def:1: fan is rw
    parameters.def:1: ctrlValid (0) does not hold
    parameters.def:1: ctrlValid (1) holds
""", "")


def test_explains_that_all_adds_no_value_that_the_index_lacks(world, ctl):
    """Beside "all", an item that names such a value counts for nothing."""
    world.write("parameters.def", "port index { rangeValid { 5 } }\nled ro { index { port } }\n")
    world.write("presets.def",
                "some preset { include ro { led { index { port { 1 } } }, all } }\n")
    assert ctl("explain", "some", "led[1]")[1].splitlines()[-1] == (
        "    an include list has all, which adds the values that the indices have, and no others")
    assert ctl("explain", "some", "led[5]")[1].splitlines()[-1] == (
        "    presets.def:1: added by the include list: all")


def test_explains_which_of_two_presets_counts(world, ctl):
    world.write("presets.def", """\
twice preset { exclude rw { all } }
twice preset { include ro { temperature } exclude rw { all } }
twice preset { }
""")
    assert ctl("explain", "twice", "temperature") == (YES, """\
temperature is in twice
    parameters.def:4: temperature is ro
    presets.def:1: read-only parameters are in a preset if an include list adds them
    no include list adds it
    presets.def:1: this preset covers no key on this variant, so it is not used
    presets.def:2: read-only parameters are in a preset if an include list adds them
    presets.def:2: added by the include list: item temperature
    presets.def:3: a preset of this name stands before this one, which is not used
""", "")


def test_prints_help_and_version(ctl):
    status, output, problem = ctl("--help")
    assert (status, problem) == (YES, "")
    assert "\nExit status: 0 yes or same, 1 no or different, 2 error.\n" in output
    assert ctl("--version")[:2] == (YES, "1.07\n")


@pytest.mark.parametrize("arguments", [
    [], ["no-such-command"], ["keys"], ["load", "scene"], ["keys", "scene", "-s", "novalue"]])
def test_a_wrong_command_line_is_an_error(ctl, arguments):
    status, output, problem = ctl(*arguments)
    assert (status, output) == (ERROR, "")
    assert problem.endswith("Run with --help for more information.\n")
