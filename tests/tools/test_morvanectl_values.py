"""morvanectl get and set: exact output and status, and what the Parameter Handler is told."""

import json
import signal
import subprocess

import pytest
from conftest import PARAMETERS
from harness import CTL, DEADLINE_SECONDS, run_ctl, wait_until, without_notices

YES, ERROR = 0, 2
MARK = "dbus_norvix_transaction: "


@pytest.fixture
def ctl(world):
    """run_ctl in the folder and on the bus of the world."""
    world.write("parameters.def", PARAMETERS + "label rw { index { input } default { \"-\" } }\n")

    def run(*arguments, awaited=()):
        return run_ctl(*arguments, awaited=awaited, cwd=world.folder, env=world.bus.environment())

    return run


def as_json(value):
    return json.dumps(value, indent=2) + "\n"


def message_json(severity, text):
    return json.dumps({"file": None, "line": None, "column": None, "severity": severity,
                       "code": None, "text": text, "variants": []}, separators=(",", ":")) + "\n"


def test_gets_values_in_one_call(world, ctl):
    simulator = world.simulator()
    keys = ["mode", "gain[2]", "temperature", "serial", "mode"]
    assert ctl("get", *keys) == (
        YES, "mode=auto\ngain[2]=0\ntemperature=40\nserial=A-17\nmode=auto\n", "")
    assert ctl("get", "mode", "temperature", "--json") == (YES, as_json(
        [{"key": "mode", "value": "auto"}, {"key": "temperature", "value": "40"}]), "")
    assert simulator.calls() == [("single_get_bulk", 0, keys),
                                 ("single_get_bulk", 0, ["mode", "temperature"])]


def test_gets_a_value_with_odd_bytes_on_one_line(world, ctl):
    world.simulator()
    value = "a\nb=c\\\x1b[1m ä"
    assert ctl("set", "label[1]", value) == (YES, "", "")
    text = ("the value of label[1] has control characters, shown as \\xNN; --json has it as it is")
    assert ctl("get", "label[1]") == (
        YES, "label[1]=a\\x0ab=c\\\\x1b[1m ä\n", f"morvanectl: warning: {text}\n")
    status, output, problem = ctl("get", "label[1]", "--json")
    assert (status, json.loads(output), problem) == (
        YES, [{"key": "label[1]", "value": value}], "")


def test_says_which_key_cannot_be_read(world, ctl):
    simulator = world.simulator()
    unknown = f"gain[9]: {MARK}unknown parameter gain[9]"
    assert ctl("get", "gain[9]") == (ERROR, "", f"morvanectl: {unknown}\n")
    assert simulator.methods() == ["single_get_bulk"]
    assert ctl("get", "gain[9]", "mode", "trigger") == (
        ERROR, "",
        f"morvanectl: {unknown}\nmorvanectl: trigger: {MARK}trigger is write-only\n")
    assert ctl("get", "gain[9]", "mode", "--json") == (ERROR, "", message_json("error", unknown))


@pytest.mark.parametrize("fault, problem, calls", [
    ("single_get_bulk 1 error dbus_norvix_transaction: too many", MARK + "too many", 3),
    ("single_get_bulk 1 error busy", "busy", 1),
    ("single_get_bulk 1 fewer-values",
     "the Parameter Handler answered another number of values", 1),
    ("single_get_bulk 1 more-values",
     "the Parameter Handler answered another number of values", 1),
    ("single_get_bulk 1 wrong-type",
     "the Parameter Handler answered something else than texts", 1),
    ("single_get_bulk 1 exit",
     "Message recipient disconnected from message bus without replying", 1),
])
def test_shows_an_error_that_is_about_no_key(world, ctl, fault, problem, calls):
    simulator = world.simulator(faults=fault + "\n")
    assert ctl("get", "mode", "serial") == (ERROR, "", f"morvanectl: {problem}\n")
    assert simulator.methods() == ["single_get_bulk"] * calls


def test_stops_when_the_search_for_the_key_fails(world, ctl):
    """A message for each key would not help."""
    simulator = world.simulator(faults="single_get_bulk 3 exit\n")
    assert ctl("get", "nowhere", "mode", "serial") == (
        ERROR, "", f"morvanectl: nowhere: {MARK}unknown parameter nowhere\n"
        "morvanectl: Message recipient disconnected from message bus without replying\n")
    assert simulator.methods() == ["single_get_bulk"] * 3


def test_sets_values_in_one_transaction(world, ctl):
    simulator = world.simulator()
    assert ctl("set", "mode", "off", "gain[1]", "-20") == (YES, "", "")
    assert simulator.calls() == [
        ("start",), ("set_bulk", 1, ["mode", "gain[1]"], ["off", "-20"]), ("commit", 1),
        ("end", 1)]
    assert ctl("set", "gain[1]", "6") == (YES, "", "")
    assert simulator.calls()[4:] == [
        ("start",), ("set", 2, "gain[1]", "6"), ("commit", 2), ("end", 2)]
    assert ctl("get", "mode", "gain[1]") == (YES, "mode=off\ngain[1]=6\n", "")


def test_sets_what_read_only_parameters_show(world, ctl):
    simulator = world.simulator()
    assert ctl("set", "--status", "temperature", "41") == (YES, "", "")
    assert ctl("set", "temperature", "42", "serial", "B", "--status", "--json") == (YES, "", "")
    assert [call for call in simulator.calls() if "set" in call[0]] == [
        ("set_status", 1, "temperature", "41"),
        ("set_status_bulk", 2, ["temperature", "serial"], ["42", "B"])]
    assert ctl("get", "temperature", "serial") == (YES, "temperature=42\nserial=B\n", "")
    assert ctl("set", "temperature", "43") == (
        ERROR, "",
        f"morvanectl: temperature: {MARK}temperature is read-only, only its status can be set\n")
    assert ctl("set", "--status", "mode", "off") == (
        ERROR, "", f"morvanectl: mode: {MARK}mode is not read-only and has no status\n")


@pytest.mark.parametrize("value", ["", "[a,b]", "[]", "a b", "load", "-1", "%%", "{}", "ä",
                                   "\"a\"", "gain[1]", "="])
def test_sets_a_value_as_it_is(world, ctl, value):
    world.simulator()
    assert ctl("set", "mode", "off", "label[1]", value) == (YES, "", "")
    assert world.client().handler("single_get_bulk", "(uas)", 0, ["mode", "label[1]"]) == [
        "off", value]


def test_sets_a_value_that_looks_like_an_option_behind_two_dashes(world, ctl):
    world.simulator()
    assert ctl("set", "label[1]", "-x")[0] == ERROR
    assert ctl("set", "--", "label[1]", "--json") == (YES, "", "")
    assert ctl("get", "label[1]") == (YES, "label[1]=--json\n", "")


def test_says_which_value_is_refused_and_sets_none(world, ctl):
    simulator = world.simulator()
    problems = [f'gain[2]: {MARK}gain[2] cannot be set to "99"',
                f"nowhere: {MARK}unknown parameter nowhere"]
    words = ["mode", "off", "gain[2]", "99", "nowhere", "1", "gain[1]", "1"]
    assert ctl("set", *words) == (
        ERROR, "", "".join(f"morvanectl: {problem}\n" for problem in problems))
    assert simulator.methods() == ["start", "set_bulk", "set", "set", "set", "set", "end"]
    assert ctl("set", *words, "--json") == (
        ERROR, "", "".join(message_json("error", problem) for problem in problems))
    assert ctl("set", "gain[2]", "99") == (ERROR, "", f"morvanectl: {problems[0]}\n")
    assert simulator.methods()[-3:] == ["start", "set", "end"]
    assert ctl("get", "mode", "gain[1]", "gain[2]") == (
        YES, "mode=auto\ngain[1]=0\ngain[2]=0\n", "")


GONE = "Message recipient disconnected from message bus without replying"
NOT_RUNNING = "the service org.norvix.transaction is not running"


@pytest.mark.parametrize("fault, problems, methods", [
    ("start 1 error busy", ["busy"], ["start"]),
    ("start 1 wrong-type",
     ["the Parameter Handler answered start with values of type (d)"], ["start"]),
    ("set_bulk 1 error busy", ["busy"], ["start", "set_bulk", "end"]),
    ("set_bulk 1 error dbus_norvix_transaction: too many", [MARK + "too many"],
     ["start", "set_bulk", "set", "set", "end"]),
    ("set_bulk 1 wrong-type",
     ["the Parameter Handler answered set_bulk with values of type (d)"],
     ["start", "set_bulk", "end"]),
    ("set_bulk 1 exit", [GONE, "the end of the transaction failed: " + NOT_RUNNING],
     ["start", "set_bulk"]),
    ("commit 1 error dbus_norvix_transaction: locked",
     [f"the commit failed: {MARK}locked"], ["start", "set_bulk", "commit", "end"]),
    ("commit 1 exit", ["the commit failed: " + GONE,
                       "the end of the transaction failed: " + NOT_RUNNING],
     ["start", "set_bulk", "commit"]),
    ("end 1 error dbus_norvix_transaction: locked",
     [f"the end of the transaction failed: {MARK}locked"],
     ["start", "set_bulk", "commit", "end"]),
])
def test_ends_the_transaction_on_every_way_out(world, ctl, fault, problems, methods):
    simulator = world.simulator(faults=fault + "\n")
    assert ctl("set", "mode", "off", "gain[1]", "1") == (
        ERROR, "", "".join(f"morvanectl: {problem}\n" for problem in problems))
    assert simulator.methods() == methods


@pytest.mark.parametrize("arguments", [
    ("get", "mode"), ("set", "mode", "off"), ("set", "--status", "mode", "off", "serial", "B")])
def test_says_that_there_is_no_parameter_handler(ctl, arguments):
    assert ctl(*arguments) == (ERROR, "", f"morvanectl: {NOT_RUNNING}\n")


@pytest.mark.parametrize("words", [["mode"], ["mode", "off", "gain[1]"]])
def test_set_needs_a_value_for_each_key(world, ctl, words):
    simulator = world.simulator()
    problem = "set takes pairs of a key and a value; one has no value"
    assert ctl("set", *words) == (ERROR, "", f"morvanectl: {problem}\n")
    assert ctl("set", *words, "--json") == (ERROR, "", message_json("error", problem))
    assert simulator.calls() == []


@pytest.mark.parametrize("arguments", [
    ("get", "mode", b"ga\xffin"), ("set", b"ga\xffin", "1"), ("set", "mode", b"ga\xffin")])
def test_refuses_what_the_bus_does_not_carry(world, ctl, arguments):
    simulator = world.simulator()
    assert ctl(*arguments) == (
        ERROR, "", "morvanectl: keys and values must be UTF-8: ga\\xffin\n")
    assert simulator.calls() == []


def test_says_what_it_waits_for(world, ctl):
    world.simulator(faults="commit 1 delay 1500\n")
    awaited = "org.norvix.transaction to answer commit"
    assert ctl("set", "mode", "off", awaited=[awaited]) == (
        YES, "", f"morvanectl: waiting for {awaited}\n")


@pytest.fixture
def interrupted(world, ctl):  # pylint: disable=unused-argument
    """Sends a signal to "morvanectl set" while it waits for an answer to "set"; returns (status,
    what is said of the end, the methods called)."""

    def run(number, faults):
        simulator = world.simulator(faults=faults)
        with subprocess.Popen([*CTL, "set", "mode", "off"], stderr=subprocess.PIPE, text=True,
                              env=world.bus.environment()) as process:
            wait_until(lambda: simulator.methods() == ["start", "set"], "the call")
            process.send_signal(number)
            try:
                _, problems = process.communicate(timeout=DEADLINE_SECONDS)
            finally:
                process.kill()
        return process.returncode, without_notices(problems).splitlines(), simulator.methods()

    return run


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_ends_the_transaction_when_interrupted(ctl, interrupted, number):
    assert interrupted(number, "set 1 delay 2500\n") == (
        ERROR, ["morvanectl: interrupted before the commit: nothing is set"],
        ["start", "set", "end"])
    assert ctl("get", "mode") == (YES, "mode=auto\n", "")


def test_waits_no_longer_than_five_seconds_after_an_interruption(interrupted):
    assert interrupted(signal.SIGTERM, "set 1 delay 600000\nend 1 delay 600000\n") == (
        ERROR,
        ["morvanectl: interrupted before the commit: nothing is set",
         "morvanectl: the end of the transaction failed: org.norvix.transaction did not answer "
         "end within 5 s"],
        ["start", "set", "end"])
