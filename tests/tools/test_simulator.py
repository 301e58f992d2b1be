"""The simulated Parameter Handler on the bus: every method, the signal, the options, the faults."""

import subprocess

import pytest
from conftest import PARAMETERS
from gi.repository import Gio, GLib
from harness import SIMULATOR, Bus, Client, RemoteError, wait_until

ERROR_NAME = "org.norvix.transaction.Error"


def refusal(text):
    return RemoteError(ERROR_NAME, "dbus_norvix_transaction: " + text)


class Handler:
    """Calls methods by name with plain arguments; the first number is the transaction."""

    def __init__(self, client):
        self.client = client

    def __call__(self, method, *arguments):
        signature = "".join("u" if isinstance(a, int) else "s" if isinstance(a, str) else "as"
                            for a in arguments)
        return self.client.handler(method, f"({signature})", *arguments)


@pytest.fixture
def handler(world):
    world.simulator()
    return Handler(world.client())


def test_reads_values_alone_and_in_bulk(handler):
    assert handler("single_get", "mode") == "auto"
    assert handler("single_get_bulk", 0, ["mode", "gain[2]"]) == ["auto", "0"]
    transaction = handler("start")
    assert transaction == 1
    assert handler("get", transaction, "temperature") == "40"
    assert handler("get_bulk", transaction, 7, ["serial"]) == ["A-17"]
    assert handler("get_bulk", transaction, 0, []) == []


@pytest.mark.parametrize("single, bulk, key, values", [
    ("set", "set_bulk", "mode", ["off", "2"]),
    ("set_status", "set_status_bulk", "temperature", ["41", "42"]),
])
def test_sets_and_resets_outside_a_transaction(handler, single, bulk, key, values):
    reset = single.replace("set", "reset", 1)
    before = handler("single_get", key)
    assert handler(f"single_{single}", key, values[0]) == ()
    assert handler("single_get", key) == values[0]
    assert handler(f"single_{bulk}", [key], [values[1]]) == ()
    assert handler("single_get", key) == values[1]
    assert handler(f"single_{reset}", key) == ()
    assert handler("single_get", key) == before
    handler(f"single_{single}", key, values[0])
    assert handler(f"single_{reset}_bulk", [key]) == ()
    assert handler("single_get", key) == before


@pytest.mark.parametrize("single, bulk, key, values", [
    ("set", "set_bulk", "mode", ["off", "2"]),
    ("set_status", "set_status_bulk", "temperature", ["41", "42"]),
])
def test_a_transaction_is_seen_by_others_after_the_commit(handler, single, bulk, key, values):
    reset = single.replace("set", "reset", 1)
    before = handler("single_get", key)
    transaction = handler("start")
    handler(single, transaction, key, values[0])
    assert handler("get", transaction, key) == values[0]
    assert handler("single_get", key) == before
    handler(bulk, transaction, [key], [values[1]])
    assert handler("commit", transaction) == ()
    assert handler("single_get", key) == values[1]
    handler(reset, transaction, key)
    assert (handler("get", transaction, key), handler("single_get", key)) == (before, values[1])
    handler(f"{reset}_bulk", transaction, [key])
    assert handler("commit", transaction) == ()
    assert handler("single_get", key) == before
    assert handler("end", transaction) == ()


def test_the_end_without_a_commit_discards(handler):
    transaction = handler("start")
    handler("set", transaction, "mode", "off")
    assert handler("end", transaction) == ()
    assert handler("single_get", "mode") == "auto"
    assert handler("commit", transaction) == refusal("unknown transaction 1")


def test_says_whether_a_value_could_be_set(handler):
    transaction = handler("start")
    for method, scope in (("check_set", [transaction]), ("single_check_set", [])):
        assert handler(method, *scope, "mode", "off") is True
        assert handler(method, *scope, "mode", "on") is False
        assert handler(method, *scope, "serial", "B") is False
        assert handler(method, *scope, "nowhere", "1") == refusal("unknown parameter nowhere")
    assert handler("single_get", "mode") == "auto"


@pytest.mark.parametrize("call, text", [
    (("get", 9, "mode"), "unknown transaction 9"),
    (("end", 9), "unknown transaction 9"),
    (("set_bulk", 9, ["mode"], ["off"]), "unknown transaction 9"),
    (("single_get", "gain[4]"), "unknown parameter gain[4]"),
    (("single_get", "input"), "unknown parameter input"),
    (("single_get", "trigger"), "trigger is write-only"),
    (("single_set", "gain[1]", "13"), 'gain[1] cannot be set to "13"'),
    (("single_set", "gain[1]", ""), 'gain[1] cannot be set to ""'),
    (("single_set", "serial", "B"), "serial is read-only, only its status can be set"),
    (("single_reset", "temperature"), "temperature is read-only, only its status can be set"),
    (("single_set_status", "mode", "off"), "mode is not read-only and has no status"),
    (("single_reset_status_bulk", ["trigger"]), "trigger is not read-only and has no status"),
    (("single_set_bulk", ["mode"], []), "1 names with 0 values"),
])
def test_refuses_with_a_clear_error(handler, call, text):
    assert handler(*call) == refusal(text)


def test_a_refused_bulk_call_changes_nothing(handler):
    assert handler("single_set_bulk", ["mode", "gain[1]"], ["off", "99"]) == refusal(
        'gain[1] cannot be set to "99"')
    assert handler("single_get", "mode") == "auto"


def test_a_commit_tells_which_values_changed(world):
    world.simulator()
    client = world.client()
    handler = Handler(client)
    told = []
    client.connection.signal_subscribe(
        "org.norvix.transaction", "org.norvix.transaction", "transaction", "/transaction", None,
        Gio.DBusSignalFlags.NONE, lambda *arguments: told.append(arguments[5].unpack()[0]))
    transaction = handler("start")
    handler("set_bulk", transaction, ["mode", "gain[2]", "gain[1]"], ["off", "0", "-1"])
    handler("commit", transaction)
    context = GLib.MainContext.default()
    wait_until(lambda: (context.iteration(False), told)[1], "the signal")
    assert told == [["gain[1]", "mode"]], "gain[2] had that value"


def test_knows_the_variant(world):
    world.write("parameters.def", """\
input index { rangeValid { 1..(inputs) } }
gain rw { index { input } default (loud) { 12 } default { 0 } }
video rw { ctrlValid (model == "studio") }
""")
    world.simulator("inputs=2", "loud=1", "model=compact")
    handler = Handler(world.client())
    assert handler("single_get", "gain[2]") == "12"
    assert handler("single_get", "gain[3]") == refusal("unknown parameter gain[3]")
    assert handler("single_get", "video") == refusal("unknown parameter video")


def test_starts_with_the_values_of_a_file(world):
    world.simulator(values="# comment\ngain[2]=-7\ntemperature=55\n")
    handler = Handler(world.client())
    assert handler("single_get_bulk", 0, ["gain[1]", "gain[2]", "temperature"]) == [
        "0", "-7", "55"]


def run_simulator(world, *arguments):
    return subprocess.run([SIMULATOR, *arguments], capture_output=True, text=True, check=False,
                          env=world.bus.environment(), timeout=60)


@pytest.mark.parametrize("option, text, problem", [
    ("--values", "gain[9]=1\n", "unknown parameter gain[9]"),
    ("--values", "mode=off\ngain[1]=99\n", 'gain[1] cannot be set to "99"'),
    ("--values", "trigger=2\n", 'trigger cannot be set to "2"'),
    ("--values", "level=11\n", 'level cannot be set to "11"'),
    ("--values", b"serial=\xff\n", "the value of serial is not UTF-8"),
    ("--faults", "# fine\nget_bulk never error x\n", "line 2 is no fault: get_bulk never error x"),
    ("--faults", "get 1 exit\nget_blk 1 exit\n", "line 2: there is no method get_blk"),
])
def test_refuses_a_wrong_file(world, option, text, problem):
    world.write("parameters.def", PARAMETERS + "level ro { rangeValid { 0..10 } }\n")
    path = world.write("file", text)
    outcome = run_simulator(world, world.parameters, option, path)
    assert (outcome.returncode, outcome.stdout, outcome.stderr) == (
        1, "", f"parameter-handler-sim: {path}: {problem}\n")


@pytest.mark.parametrize("option", ["--values", "--faults"])
@pytest.mark.parametrize("path, problem", [
    (".", "Is a directory"), ("nowhere", "No such file or directory")])
def test_refuses_what_is_no_file(world, option, path, problem):
    outcome = run_simulator(world, world.parameters, option, path)
    assert (outcome.returncode, outcome.stdout, outcome.stderr) == (
        1, "", f"parameter-handler-sim: cannot read {path}: {problem}\n")


def test_refuses_a_wrong_definition_file(world):
    path = world.write("wrong.def", "p wr {}\n")
    outcome = run_simulator(world, path)
    assert outcome.returncode == 1
    assert outcome.stdout == "Error on line 1\nInvalid parameter access type\np wr {}\n  ^\n"
    assert outcome.stderr == f"parameter-handler-sim: cannot use {path}\n"


def test_refuses_to_be_the_second(world):
    world.simulator()
    outcome = run_simulator(world, world.parameters)
    assert outcome.returncode == 1
    assert outcome.stderr == (
        "parameter-handler-sim: another process owns org.norvix.transaction\n")


@pytest.mark.parametrize("faults", [None, "single_get 1 drop-name\n"])
@pytest.mark.parametrize("is_session", [True, False])
def test_says_that_the_bus_ended(world, is_session, faults):
    """Also while it does not have its name."""
    bus = Bus()
    options = [] if is_session else ["--address", bus.address]
    if faults:
        options += ["--faults", world.write("faults", faults)]
    process = subprocess.Popen(
        [SIMULATOR, world.parameters, "--print-ready", *options], stdout=subprocess.PIPE,
        stderr=subprocess.PIPE, text=True, env=(bus if is_session else world.bus).environment())
    try:
        assert process.stdout.readline().startswith("ready :")
        if faults:
            client = Client(bus)
            client.handler("single_get", "(s)", "mode")
            client.close()
        bus.stop()
        output, problem = process.communicate(timeout=60)
    finally:
        process.kill()
    assert (process.returncode, output, problem) == (
        1, "", "parameter-handler-sim: the bus ended\n")


def test_explains_its_command_line(world):
    assert run_simulator(world, "--help").returncode == 0
    assert "--faults" in run_simulator(world, "--help").stdout
    outcome = run_simulator(world, world.parameters, "novalue")
    assert outcome.returncode != 0
    assert "NAME=VALUE" in outcome.stderr
    assert run_simulator(world).returncode != 0


def test_serves_on_the_bus_that_it_is_told(world):
    process = subprocess.Popen(
        [SIMULATOR, world.parameters, "--address", world.bus.address, "--print-ready"],
        stdout=subprocess.PIPE, text=True)
    try:
        unique_name = process.stdout.readline().removeprefix("ready ").strip()
        client = world.client()
        assert client.driver("GetNameOwner", "(s)", "org.norvix.transaction") == unique_name
    finally:
        process.terminate()
        assert process.wait(60) == 0
        process.stdout.close()


def test_ends_cleanly_when_terminated(world):
    simulator = world.simulator()
    assert simulator.stop() == 0


def test_gives_its_name_up_as_often_as_the_script_says_so(world):
    simulator = world.simulator(faults="single_get 1-2 drop-name 20\nsingle_get 3 delay 200\n")
    client = world.client()
    for _ in range(2):
        wait_until(lambda: client.owns("org.norvix.transaction"), "the name")
        assert client.handler("single_get", "(s)", "mode") == "auto"
        assert simulator.process.stdout.readline().startswith("ready :"), "with its name again"
    assert client.handler("single_get", "(s)", "mode") == "auto"
    assert simulator.stop() == 0
    assert "CRITICAL" not in simulator.log.read_text()


def test_takes_its_name_back_once(world):
    """Also when it is to give it up while it does not have it."""
    simulator = world.simulator(faults="single_get 1-2 drop-name 20\nsingle_get 3 delay 200\n")
    client = world.client()
    unique_name = client.driver("GetNameOwner", "(s)", "org.norvix.transaction")
    answers = [client.start_call(unique_name, "/transaction", "org.norvix.transaction",
                                 "single_get", "(s)", "mode") for _ in range(3)]
    assert [answer() for answer in answers] == ["auto"] * 3
    simulator.process.terminate()
    assert simulator.process.stdout.read().count("ready :") == 1


def test_ends_in_the_middle_of_a_call_when_the_script_says_so(world):
    simulator = world.simulator(faults="start 2 exit\n")
    handler = Handler(world.client())
    assert handler("start") == 1
    assert handler("start") == RemoteError(
        "org.freedesktop.DBus.Error.NoReply",
        "Message recipient disconnected from message bus without replying")
    assert simulator.process.wait(60) == 0
