"""morvanectl handler-check: what it says of the simulator, which is right, and of Parameter
Handlers with one fault each, which fail the line about it."""

import json
import re
import signal
import subprocess
import sys

import pytest
from harness import CTL, SOURCE, Bus, Simulator, wait_until, without_notices

YES, NO, ERROR = 0, 1, 2
EXAMPLES = SOURCE / "examples"
FAULTY = SOURCE / "tests/support/faulty_handler.py"

# Neither of these is among the keys that are written to.
PARAMETERS = """\
input index { rangeValid { 1..3 } }
gain rw { index { input } rangeValid { -60..12 } default { 0 } }
mode rw { rangeValid { "auto", "off", 1..3 } default { "auto" } }
volume rw { rangeValid { 0..9 } default { 3 } }
serial rostrict { default { "A-17" } }
temperature ro { rangeValid { 0..90 } default { 40 } }
humidity ro { rangeValid { 0..90 } default { 50 } }
trigger wo { rangeValid { 0..1 } default { 0 } }
"""


KEYS = ["gain[1]", "gain[2]", "gain[3]", "humidity", "mode", "serial", "temperature", "volume"]
VALUES = ["0", "0", "0", "50", "auto", "A-17", "40", "3"]

PASSED = """\
pass: keys to write to can be read: gain[1], mode, humidity, temperature
pass: method start: takes nothing, returns u
pass: method end: takes u, returns nothing
pass: method commit: takes u, returns nothing
pass: method get: takes us, returns s
pass: method single_get: takes s, returns s
pass: method get_bulk: takes uuas, returns as
pass: method single_get_bulk: takes uas, returns as
pass: method set: takes uss, returns nothing
pass: method single_set: takes ss, returns nothing
pass: method set_bulk: takes uasas, returns nothing
pass: method single_set_bulk: takes asas, returns nothing
pass: method set_status: takes uss, returns nothing
pass: method single_set_status: takes ss, returns nothing
pass: method set_status_bulk: takes uasas, returns nothing
pass: method single_set_status_bulk: takes asas, returns nothing
pass: method check_set: takes uss, returns b
pass: method single_check_set: takes ss, returns b
pass: method reset: takes us, returns nothing
pass: method single_reset: takes s, returns nothing
pass: method reset_bulk: takes uas, returns nothing
pass: method single_reset_bulk: takes as, returns nothing
pass: method reset_status: takes us, returns nothing
pass: method single_reset_status: takes s, returns nothing
pass: method reset_status_bulk: takes uas, returns nothing
pass: method single_reset_status_bulk: takes as, returns nothing
pass: get_bulk answers a value for each key, in their order: gain[1]=0, mode=auto, gain[1]=0
pass: single_get_bulk answers a value for each key, in their order: gain[1]=0, mode=auto, gain[1]=0
pass: transactions have numbers of their own: 20 and 21
pass: a committed transaction can be ended: started, committed, ended
pass: set is seen by others after the commit: set gain[1]=-1, committed; others read gain[1]=-1
pass: set_bulk is seen by others after the commit: set gain[1]=0, mode=off, committed; others read \
gain[1]=0, mode=off
pass: set is not seen by others before the commit: set gain[1]=-1; others read gain[1]=0
pass: set_bulk is not seen by others before the commit: set gain[1]=-1, mode=auto; others read \
gain[1]=0, mode=off
pass: set is discarded by an end without a commit: set gain[1]=-1, ended; others read gain[1]=0
pass: set_bulk of one key twice sets the later value: set gain[1]=0, gain[1]=-1, committed; others \
read gain[1]=-1
pass: reset gives the default of this variant: others read gain[1]=0; the default is gain[1]=0
pass: reset_bulk gives the defaults of this variant: others read gain[1]=0, mode=auto; the default \
is gain[1]=0, mode=auto
pass: single_set is seen by others at once: set gain[1]=-1; others read gain[1]=-1
pass: single_set_bulk is seen by others at once: set gain[1]=0, mode=off; others read gain[1]=0, \
mode=off
pass: single_reset gives the default of this variant: others read gain[1]=0; the default is \
gain[1]=0
pass: single_reset_bulk gives the defaults of this variant: others read gain[1]=0, mode=auto; the \
default is gain[1]=0, mode=auto
pass: set_status is seen by others after the commit: set humidity=49, committed; others read \
humidity=49
pass: set_status_bulk is seen by others after the commit: set humidity=50, temperature=39, \
committed; others read humidity=50, temperature=39
pass: set_status is not seen by others before the commit: set humidity=49; others read humidity=50
pass: set_status_bulk is not seen by others before the commit: set humidity=49, temperature=40; \
others read humidity=50, temperature=39
pass: set_status is discarded by an end without a commit: set humidity=49, ended; others read \
humidity=50
pass: set_status_bulk of one key twice sets the later value: set humidity=50, humidity=49, \
committed; others read humidity=49
pass: reset_status gives the default of this variant: others read humidity=50; the default is \
humidity=50
pass: reset_status_bulk gives the defaults of this variant: others read humidity=50, \
temperature=40; the default is humidity=50, temperature=40
pass: single_set_status is seen by others at once: set humidity=49; others read humidity=49
pass: single_set_status_bulk is seen by others at once: set humidity=50, temperature=39; others \
read humidity=50, temperature=39
pass: single_reset_status gives the default of this variant: others read humidity=50; the default \
is humidity=50
pass: single_reset_status_bulk gives the defaults of this variant: others read humidity=50, \
temperature=40; the default is humidity=50, temperature=40
pass: an open transaction does not hold up another: set gain[1]=-1, committed; others read \
gain[1]=-1
pass: the signal tells which key a commit has changed: set gain[1]=0, committed; the signal has \
gain[1]
pass: check_set tells what can be set: gain[1]=-1: yes, gain[1]=13: no
pass: single_check_set tells what can be set: gain[1]=-1: yes, gain[1]=13: no
pass: all keys can be read in one call: 8 keys in N ms; 104 bytes of keys and 71 of values, where \
a list on the bus holds 67108864
pass: a preset file keeps all values: 8 values
pass: all values can be set in one call: 5 keys in N ms
pass: all statuses can be set in one call: 3 keys in N ms
pass: the defaults of values are those of the definitions: 5 keys
pass: the defaults of statuses are those of the definitions: 3 keys
pass: values within the ranges are accepted: 3 parameters
pass: statuses within the ranges are accepted: 2 parameters
pass: values outside the ranges are refused: 3 parameters
pass: statuses outside the ranges are refused: 2 parameters
pass: a key that is not there is refused: refused by all 20 methods
pass: a transaction that has ended is refused: refused by all 12 methods
pass: every refusal begins with dbus_norvix_transaction: all 37, such as "dbus_norvix_transaction: \
gain[1] cannot be set to "13""
pass: the values are put back: 0 values had changed
pass: no transaction is left open: all are ended
73 passed, 0 failed, 0 not checked
"""


class Handler:
    """A simulator, or what stands between it and the bus of the world."""

    def __init__(self, world):
        self.world = world
        self.parameters = world.write("parameters.def", PARAMETERS)
        self.simulator = None

    def simulate(self, *arguments, parameters=None, **options):
        self.simulator = self.world.simulator(*arguments,
                                              parameters=parameters or self.parameters, **options)

    def falsify(self, fault):
        """Starts the simulator on a bus of its own, and the program with the fault."""
        bus = Bus()
        self.world.started.append(bus.stop)
        self.simulator = Simulator(bus, self.world.folder, self.parameters)
        self.world.started.append(self.simulator.stop)
        process = subprocess.Popen(
            [sys.executable, "-B", FAULTY, self.world.bus.address, bus.address, fault],
            stdout=subprocess.PIPE, text=True)

        def stop():
            process.kill()
            process.wait()
            process.stdout.close()

        self.world.started.append(stop)
        assert process.stdout.readline() == "ready\n"

    def start_check(self, *arguments, parameters=None):
        definitions = ("-p", parameters or self.parameters, "-d", self.world.presets)
        return subprocess.Popen(
            [*CTL, "handler-check", *definitions, *arguments], cwd=self.world.folder, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.world.bus.environment())

    def check(self, *arguments, awaited=(), **options):
        """Returns (status, stdout, stderr), with "N ms" for every time; see without_notices."""
        process = self.start_check(*arguments, **options)
        output, problems = process.communicate()
        return (process.returncode, re.sub(r"\d+\.\d ms", "N ms", output),
                without_notices(problems, awaited))

    def open_transactions(self):
        """Those that were started and not ended, as the simulator has logged it."""
        log = self.simulator.log.read_text()
        started = re.findall(r"^answer start \(uint32 (\d+),\)$", log, re.MULTILINE)
        ended = re.findall(r"^call end \(uint32 (\d+),\)\nanswer end", log, re.MULTILINE)
        return set(started) - set(ended)


@pytest.fixture
def handler(world):
    return Handler(world)


def test_the_simulator_passes(handler):
    handler.simulate()
    status, output, problems = handler.check()
    assert (status, problems) == (YES, "")
    assert output == PASSED
    assert handler.world.client().handler("single_get_bulk", "(uas)", 0, KEYS) == VALUES
    assert handler.open_transactions() == set()


def test_writes_json(handler):
    handler.simulate()
    status, output, problems = handler.check("--json")
    lines = [f"{check['outcome']}: {check['check']}: {check['seen']}" for check in
             json.loads(output)]
    assert (status, problems) == (YES, "")
    assert lines == PASSED.splitlines()[:-1]


@pytest.mark.parametrize("variant", ["field-eu", "field-us", "studio-eu", "studio-us"])
def test_the_simulator_passes_with_the_examples(handler, variant):
    line = re.search(rf"^{variant}: +(.*)$", (EXAMPLES / "variants").read_text(), re.MULTILINE)
    handler.world.presets = EXAMPLES / "presets.def"
    parameters = EXAMPLES / "parameters.def"
    handler.simulate(*line[1].split(), parameters=parameters)
    status, output, problems = handler.check("--variant", variant, parameters=parameters)
    assert (status, problems) == (YES, "")
    assert [line for line in output.splitlines() if not line.startswith("pass: ")] == [
        "73 passed, 0 failed, 0 not checked"]
    assert handler.open_transactions() == set()


def test_a_device_without_status(handler):
    parameters = handler.world.write("parameters.def", """\
mode rw { rangeValid { "a", "b" } default { "a" } }
level rw { rangeValid { 0..9 } default { 3 } }
""")
    handler.world.presets = handler.world.write("presets.def", "all preset { }\n")
    handler.simulate(parameters=parameters)
    status, output, problems = handler.check(parameters=parameters)
    assert (status, problems) == (YES, (
        "morvanectl: there is no read-only parameter on this variant, so the methods for statuses "
        "are not checked\n"))
    assert output.splitlines()[0] == "pass: keys to write to can be read: level, mode"
    assert output.splitlines()[-1] == "49 passed, 0 failed, 0 not checked"
    assert "status" not in output


# What each fault fails: lines without "FAIL: ".
FAULTS = {
    "LacksMethod": ["method set_bulk: set_bulk: No such method “set_bulk”"],
    "TakesOtherTypes": ["method get_bulk: get_bulk: Type of message, “(uuas)”, does not match "
                        "expected type “(uas)”"],
    "RepeatsNumbers": ["transactions have numbers of their own: 7 and 7"],
    "EndsAtCommit": ["a committed transaction can be ended: end: dbus_norvix_transaction: unknown "
                     "transaction 22"],
    "DropsSets": ["set is seen by others after the commit: set gain[1]=-1, committed; others read "
                  "gain[1]=0"],
    "SetsFirstOnly": ["set_bulk is seen by others after the commit: set gain[1]=0, mode=off, "
                      "committed; others read gain[1]=0, mode=auto"],
    # The commit then has nothing to change.
    "ShowsBeforeCommit": ["set is not seen by others before the commit: set gain[1]=-1; others "
                          "read gain[1]=-1",
                          "the signal tells which key a commit has changed: set gain[1]=0, "
                          "committed; the signal has "],
    "CommitsAtEnd": ["set is discarded by an end without a commit: set gain[1]=-1, ended; others "
                     "read gain[1]=-1",
                     "set_status is discarded by an end without a commit: set humidity=49, ended; "
                     "others read humidity=49"],
    "KeepsFirstOfTwo": ["set_bulk of one key twice sets the later value: set gain[1]=0, "
                        "gain[1]=-1, committed; others read gain[1]=0"],
    "ResetsToAnotherValue": ["reset gives the default of this variant: others read gain[1]=5; the "
                             "default is gain[1]=0"],
    "HoldsOthersUp": ["an open transaction does not hold up another: commit: "
                      "dbus_norvix_transaction: busy"],
    "SaysNothing": ["the signal tells which key a commit has changed: set gain[1]=0, committed; no "
                    "signal came within a second"],
    "SaysYes": ["check_set tells what can be set: gain[1]=-1: yes, gain[1]=13: yes"],
    "SortsBulkGet": ["get_bulk answers a value for each key, in their order: gain[1]=0, mode=0, "
                     "gain[1]=auto"],
    "LacksKey": ["all keys can be read in one call: get_bulk: dbus_norvix_transaction: unknown "
                 "parameter gain[3]; cannot be read: gain[3]"],
    "ReadsEmptyValue": ['a preset file keeps all values: serial=""',
                        "the defaults of statuses are those of the definitions: serial=, not A-17"],
    "TakesUnknownKeys": ["a key that is not there is refused: accepted by get"],
    "TakesEndedTransactions": ["a transaction that has ended is refused: accepted by commit"],
    "DoesNotMark": ["every refusal begins with dbus_norvix_transaction: set answered \"gain[1] "
                    "cannot be set to \"13\"\", which the daemon takes for a lost call and "
                    "repeats"],
}


def failures(output):
    return [line.removeprefix("FAIL: ") for line in output.splitlines()
            if line.startswith("FAIL: ")]


def test_a_handler_that_passes_calls_on_has_no_fault(handler):
    """What the others are made of."""
    handler.falsify("Handler")
    assert handler.check() == (YES, PASSED, "")


@pytest.mark.parametrize("fault", FAULTS)
def test_a_fault_fails_the_line_about_it(handler, fault):
    handler.falsify(fault)
    status, output, problems = handler.check()
    assert (status, failures(output), problems) == (NO, FAULTS[fault], "")
    assert "pass: the values are put back: " in output
    assert handler.open_transactions() == set()


# The same by scripts of the simulator, or by definitions that are not those of the device.
@pytest.mark.parametrize("script, failed", [
    ("check_set always wrong-type", "method check_set: check_set: it answered (d), not (b)"),
    ("set_status always error dbus_norvix_transaction: unknown parameter humidity",
     "method set_status: set_status: dbus_norvix_transaction: unknown parameter humidity"),
    ("single_get_bulk always fewer-values",
     "method single_get_bulk: single_get_bulk: it answered 0 values for 1 keys"),
    ("get_bulk 6-99 fewer-values",
     "get_bulk answers a value for each key, in their order: get_bulk: it answered 2 values for 3 "
     "keys"),
])
def test_a_script_fails_the_line_about_it(handler, script, failed):
    handler.simulate(faults=script + "\n")
    status, output, problems = handler.check()
    assert (status, failures(output), problems) == (NO, [failed], "")
    assert handler.open_transactions() == set()


@pytest.mark.parametrize("range_and_default, failed", [
    ("rangeValid { 0..9 } default { 4 }",
     "the defaults of values are those of the definitions: volume=4, not 3"),
    ("rangeValid { 0..10 } default { 3 }",
     "values outside the ranges are refused: volume=10 was set"),
    ("rangeValid { 0..8 } default { 3 }",
     "values within the ranges are accepted: volume=9 was refused: dbus_norvix_transaction: volume "
     "cannot be set to \"9\""),
])
def test_other_definitions_fail_the_line_about_them(handler, range_and_default, failed):
    handler.simulate(parameters=handler.world.write("device.def", PARAMETERS.replace(
        "rangeValid { 0..9 } default { 3 }", range_and_default)))
    status, output, problems = handler.check()
    assert (status, failures(output), problems) == (NO, [failed], "")
    assert "pass: the values are put back: " in output


def test_a_call_without_an_answer_ends_the_checks(handler):
    handler.simulate(faults="set_status_bulk 1 no-reply\n")
    awaited = "org.norvix.transaction to answer set_status_bulk"
    status, output, problems = handler.check("--timeout", "5", awaited=[awaited])
    lines = output.splitlines()
    place = [line.split(":")[0] for line in lines].index("FAIL")
    why = "org.norvix.transaction did not answer set_status_bulk within 5 s"
    assert lines[place] == f"FAIL: method set_status_bulk: set_status_bulk: {why}"
    assert {line.split(": ")[0] for line in lines[place + 1:-3]} == {"not checked"}
    assert {line.split(": ")[-1] for line in lines[place + 1:-3]} == {why}
    assert lines[-3:-1] == ["pass: the values are put back: 0 values had changed",
                            "pass: no transaction is left open: all are ended"]
    assert (status, problems) == (NO, f"morvanectl: waiting for {awaited}\n")
    assert handler.open_transactions() == set()


def test_says_that_a_transaction_may_have_been_opened(handler):
    handler.simulate(faults="start 3 no-reply\n")
    status, output, _ = handler.check("--timeout", "5")
    assert status == NO
    assert output.splitlines()[-2] == (
        "FAIL: no transaction is left open: start may have opened one without telling its number: "
        "org.norvix.transaction did not answer start within 5 s")


def test_says_which_values_a_handler_that_ended_has_not_got_back(handler):
    handler.simulate(faults="single_set_bulk 2 exit\n")
    status, output, _ = handler.check()
    assert status == NO
    assert failures(output)[0].startswith("single_set_bulk is seen by others at once: "
                                          "single_set_bulk: ")
    assert output.splitlines()[-3] == (
        "FAIL: the values are put back: whether they are is not known (the service "
        "org.norvix.transaction is not running); there were gain[1]=0, mode=auto, humidity=50, "
        "temperature=40")


def test_says_which_values_cannot_be_put_back(handler):
    handler.falsify("LocksValues")
    status, output, _ = handler.check()
    assert status == NO
    assert "FAIL: the values are put back: cannot be set again: gain[1]=0\n" in output
    assert handler.open_transactions() == set()


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_puts_the_values_back_after_an_interruption(handler, number):
    """While an answer is awaited: the call is not given up."""
    handler.simulate(faults="single_set_bulk 2 delay 2000\n")
    process = handler.start_check()
    wait_until(lambda: handler.simulator.methods().count("single_set_bulk") == 2, "the call")
    process.send_signal(number)
    output, problems = process.communicate()
    lines = output.splitlines()
    assert lines[-3:-1] == ["pass: the values are put back: 1 value had changed",
                            "pass: no transaction is left open: all are ended"]
    assert lines[-4].startswith("not checked: ") and lines[-4].endswith(": interrupted")
    assert failures(output) == []
    awaited = "org.norvix.transaction to answer single_set_bulk"
    assert (process.returncode, without_notices(problems, [awaited])) == (
        ERROR, f"morvanectl: waiting for {awaited}\nmorvanectl: interrupted\n")
    assert handler.open_transactions() == set()


def test_puts_the_values_back_when_nobody_reads(handler):
    handler.simulate()
    process = handler.start_check()
    process.stdout.close()
    process.stdout = None
    _, problems = process.communicate()
    assert (process.returncode, without_notices(problems)) == (
        ERROR, "morvanectl: cannot write: Broken pipe\n")
    assert handler.world.client().handler("single_get_bulk", "(uas)", 0, KEYS) == VALUES
    assert handler.open_transactions() == set()


def test_a_handler_that_is_not_there(handler):
    assert handler.check() == (
        ERROR, "", "morvanectl: the service org.norvix.transaction is not running\n")


def test_needs_the_definitions(handler):
    status, output, problems = handler.check(parameters="nowhere.def")
    assert (status, output) == (ERROR, "")
    assert "nowhere.def" in problems


def test_a_hundred_thousand_keys(handler):
    parameters = handler.world.write("parameters.def", """\
cell index { rangeValid { 1..50000 } }
level rw { index { cell } rangeValid { 0..9 } default { 3 } }
meter ro { index { cell } rangeValid { 0..9 } default { 0 } }
""")
    handler.world.presets = handler.world.write("presets.def", "all preset { }\n")
    handler.simulate(parameters=parameters)
    status, output, _ = handler.check(parameters=parameters)
    assert (status, failures(output)) == (YES, [])
    shown = [line for line in output.splitlines() if "in one call" in line]
    assert shown == [
        "pass: all keys can be read in one call: 100000 keys in N ms; 1920005 bytes of keys and "
        "799998 of values, where a list on the bus holds 67108864",
        "pass: all values can be set in one call: 50000 keys in N ms",
        "pass: all statuses can be set in one call: 50000 keys in N ms"]


def test_the_page_shows_what_is_printed(handler):
    """The definitions are those of the tutorial."""
    tutorial = (SOURCE / "docs/tutorial.md").read_text()
    parameters = handler.world.write(
        "parameters.def", re.search(r"^\$ cat > parameters.def <<'END'\n(.*?)^END$", tutorial,
                                    re.MULTILINE | re.DOTALL)[1])
    handler.world.presets = handler.world.write("presets.def", "all preset { }\n")
    handler.simulate("inputs=2", parameters=parameters)
    output = handler.check("-s", "inputs=2", parameters=parameters)[1].splitlines()
    page = (SOURCE / "docs/parameter-handler.md").read_text()
    shown = re.search(r"^    \$ morvanectl.* handler-check\n((    .*\n)+)", page, re.MULTILINE)[1]
    first, last = (part.split("\n    ") for part in
                   shown.removeprefix("    ").rstrip().split("\n    ...\n    "))
    assert output[:len(first)] == first
    assert output[-len(last):] == last
