"""A Parameter Handler that refuses, fails or is not there."""

import struct

import pytest
from harness import ERROR, INFO, Pause, RemoteError, wait_until
from jeepney import new_method_return
from raw_client import RawClient
from test_methods import ERROR_NAME

LIST_LIMIT = 64 * 2**20  # bytes
FAILED = RemoteError(ERROR_NAME, "dbus_norvix_preset: Store preset failed")
LOST = (ERROR, "CRITICAL ERROR: Parameter Handler communication lost\n")
REFUSAL = "dbus_norvix_transaction: busy"

# Method as the Parameter Handler sees it for the preset "scene", operation of the retry messages,
# text of the error message.
OPERATIONS = [
    ("start", "parm_start_trans", "Start transaction failed"),
    ("get_bulk", "parm_get", "parm_get_() - bulk get failed"),
    ("end", "parm_end_trans", "End transaction failed"),
]

# The same for a load with defaults of the entries below. The commit is not among them: its answer
# comes later.
LOAD_OPERATIONS = [
    ("start", "parm_start_trans", "Start transaction failed"),
    ("set_bulk", "parm_set", "parm_set_() - set failed"),
    ("set_status", "parm_set_status", "parm_set_() - set failed"),
    ("reset_bulk", "parm_reset", "parm_reset_() - reset failed"),
    ("reset_status", "parm_reset_status", "parm_reset_() - reset failed"),
]
ENTRIES = {"reset_status": "gain[1]=1\nmode=off\n"}  # which leaves the status to be reset
OTHER_ENTRIES = "gain[1]=1\nmode=off\ntemperature=1\n"
LOAD_FAILED = RemoteError(ERROR_NAME, "dbus_norvix_preset: Load preset with defaults failed")


def refused(operation, text, count, detail=REFUSAL):
    """The log of `count` refusals, each with its pause; callers put LOST in place of the tenth."""
    records = []
    for attempt in range(1, count + 1):
        records += [(ERROR, f"ERROR: {text} ({detail})\n"),
                    (ERROR, f"{operation}() attempt {attempt} failed\n"),
                    Pause(1)]
    return records


def stored(path):
    return (INFO, f"storePreset(): scene preset stored in {path}")


@pytest.mark.parametrize("method, operation, text", OPERATIONS)
@pytest.mark.parametrize("count", [1, 9])
def test_a_refused_operation_is_tried_again(world, method, operation, text, count):
    handler = world.simulator(faults=f"{method} 1-{count} error {REFUSAL}\n")
    daemon = world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    expected = refused(operation, text, count)
    expected.insert(0 if method == "end" else len(expected), stored(path))
    assert daemon.records_after_start() == expected
    assert handler.methods().count(method) == count + 1


@pytest.mark.parametrize("method, operation, text", OPERATIONS)
def test_the_tenth_refusal_fails_the_request(world, method, operation, text):
    handler = world.simulator(faults=f"{method} 1-10 error {REFUSAL}\n")
    daemon = world.daemon()
    client = world.client()
    path = world.write("p", "old=1\n")
    assert client.preset("store", "scene", str(path)) == FAILED
    expected = refused(operation, text, 10)
    expected[-1] = LOST  # and no pause
    if method == "end":
        expected.insert(0, stored(path))
    assert daemon.records_after_start() == expected
    assert handler.methods().count(method) == 10
    assert ("end" in handler.methods()) == (method == "end"), "the transaction stays open"
    assert path.read_text().startswith("gain[1]=" if method == "end" else "old=1")
    assert not (world.folder / "p_bak").exists()
    assert client.preset("store", "scene", str(path)) is True, "the next request works"


def test_the_single_get_has_a_text_of_its_own(world):
    world.simulator(faults=f"get 1 error {REFUSAL}\n")
    daemon = world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "single", str(path)) is True
    assert daemon.records_after_start()[0] == (
        ERROR, f"ERROR: parm_get_() - get failed ({REFUSAL})\n")


def loaded(path):
    return (INFO, f"loadPreset(): scene preset loaded (with defaults) from {path}.\n")


@pytest.mark.parametrize("method, operation, text", LOAD_OPERATIONS)
@pytest.mark.parametrize("count", [1, 9])
def test_a_refused_operation_of_a_load_is_tried_again(world, method, operation, text, count):
    handler = world.simulator(faults=f"{method} 1-{count} error {REFUSAL}\n")
    daemon = world.daemon()
    path = world.write("p", ENTRIES.get(method, OTHER_ENTRIES))
    assert world.client().preset("load_with_default", "scene", str(path)) is True
    assert daemon.records_after_start() == [*refused(operation, text, count), loaded(path)]
    assert handler.methods().count(method) == count + 1


@pytest.mark.parametrize("method, operation, text", LOAD_OPERATIONS)
def test_the_tenth_refusal_fails_a_load_without_commit_or_end(world, method, operation, text):
    handler = world.simulator(faults=f"{method} 1-10 error {REFUSAL}\n")
    daemon = world.daemon()
    client = world.client()
    path = world.write("p", ENTRIES.get(method, OTHER_ENTRIES))
    assert client.preset("load_with_default", "scene", str(path)) == LOAD_FAILED
    expected = refused(operation, text, 10)
    expected[-1] = LOST
    assert daemon.records_after_start() == expected
    assert handler.methods()[-10:] == [method] * 10
    assert not {"commit", "end"} & set(handler.methods())
    assert client.preset("load_with_default", "scene", str(path)) is True, "the next request works"


@pytest.mark.parametrize("method, operation, text", LOAD_OPERATIONS)
def test_an_error_on_the_way_of_a_load_is_repeated_without_pause_or_limit(
        world, method, operation, text):
    handler = world.simulator(faults=f"{method} 1-50 error no such luck\n")
    daemon = world.daemon()
    path = world.write("p", ENTRIES.get(method, OTHER_ENTRIES))
    assert world.client().preset("load_with_default", "scene", str(path)) is True
    assert daemon.records_after_start() == [
        *[(ERROR, f"ERROR: {text} (no such luck)\n")] * 50, loaded(path)]
    assert handler.methods().count(method) == 51


@pytest.mark.parametrize("message, final", [
    ("dbus_norvix_transaction", True),
    ("dbus_norvix_transactions: too", True),
    ("dbus_norvix_transactio", False),
    ("Dbus_norvix_transaction: busy", False),
    ("busy: dbus_norvix_transaction", False),
])
def test_only_the_mark_at_the_beginning_makes_an_error_final(world, message, final):
    world.simulator(faults=f"start 1 error {message}\n")
    daemon = world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    attempts = [(ERROR, "parm_start_trans() attempt 1 failed\n"), Pause(1)] if final else []
    assert daemon.records_after_start() == [
        (ERROR, f"ERROR: Start transaction failed ({message})\n"), *attempts, stored(path)]


@pytest.mark.parametrize("method, operation, text", OPERATIONS)
def test_an_error_on_the_way_is_repeated_without_pause_or_limit(world, method, operation, text):
    handler = world.simulator(faults=f"{method} 1-50 error no such luck\n")
    daemon = world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    expected = [(ERROR, f"ERROR: {text} (no such luck)\n")] * 50
    expected.insert(0 if method == "end" else 50, stored(path))
    assert daemon.records_after_start() == expected
    assert handler.methods().count(method) == 51


def test_waits_for_a_parameter_handler_that_is_not_there_yet(world):
    daemon = world.daemon()
    path = world.folder / "p"
    client = world.client()
    answer = client.start_preset("store", "scene", str(path))
    wait_until(lambda: len(daemon.records_after_start()) > 20, "the calls to fail")
    world.simulator()
    assert answer() is True
    records = daemon.records_after_start()
    assert records[-1] == stored(path)
    assert {text for _, text in records[:-1]} == {
        "ERROR: Start transaction failed (The name org.norvix.transaction was not provided by any "
        ".service files)\n"}


@pytest.mark.parametrize("method", ["start", "get_bulk", "end"])
def test_goes_on_when_the_name_was_dropped_for_a_while(world, method):
    world.simulator(faults=f"{method} 1 drop-name 50\n")
    daemon = world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    errors = [text for priority, text in daemon.records_after_start() if priority == ERROR]
    assert all("org.norvix.transaction was not provided" in text for text in errors)
    assert bool(errors) == (method != "end"), "after the last call nobody misses the name"


@pytest.mark.parametrize("fault, count", [("fewer-values", 4), ("more-values", 6)])
def test_a_reply_with_another_number_of_values_is_refused(world, fault, count):
    handler = world.simulator(faults=f"get_bulk 1 {fault}\n")
    daemon = world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    detail = f"the reply has {count} values for 5 names"
    assert daemon.records_after_start() == [
        *refused("parm_get", "parm_get_() - bulk get failed", 1, detail), stored(path)]
    assert handler.methods() == ["start", "get_bulk", "get_bulk", "end"]


def test_a_reply_of_the_wrong_type_is_an_error_on_the_way(world):
    handler = world.simulator(faults="*  1-6 wrong-type\n")
    daemon = world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    errors = daemon.records_after_start()[:-1]
    assert len(errors) == 6
    assert all(text.startswith("ERROR: Start transaction failed (") for _, text in errors)
    assert handler.methods() == ["start"] * 7 + ["get_bulk", "end"]


def test_waits_for_a_late_answer(world):
    world.simulator(faults="get_bulk 1 delay 300\n")
    daemon = world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    assert daemon.records_after_start() == [stored(path)]


def test_repeats_a_call_that_is_never_answered(world):
    """D-Bus gives up waiting after 25 seconds, here of a faster clock."""
    handler = world.simulator(faults="start 1 no-reply\n")
    daemon = world.daemon(clock_rate=10)
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    (error, done) = daemon.records_after_start()
    assert error[1].startswith("ERROR: Start transaction failed (Did not receive a reply.")
    assert done == stored(path)
    assert handler.methods() == ["start", "start", "get_bulk", "end"]


def test_a_request_that_the_bus_does_not_carry_is_refused_before_it_starts(world):
    parameters = world.write("text.def", "text rw { }\n")
    presets = world.write("text.presets", "scene preset { }\n")
    handler = world.simulator(parameters=parameters)
    daemon = world.daemon(parameters=parameters, presets=presets)
    client = world.client()
    # Each string has a length of 4 bytes, an end of one, and padding to the next one.
    count, rest = divmod(LIST_LIMIT, 1008)
    lines = ("text=" + "x" * 1003 + "\n") * count + "text=" + "x" * (rest - 5)
    path = world.write("p", lines + "x\n")
    assert client.preset("load", "scene", str(path)) == RemoteError(
        ERROR_NAME, "dbus_norvix_preset: Load preset failed")
    assert daemon.records_after_start() == [
        (ERROR, f"ERROR: parm_set_() - set failed ({path}: {LIST_LIMIT + 1} bytes are more than a "
                "message holds)\n")]
    assert handler.methods() == []
    path.write_text(lines + "\n")
    assert client.preset("load", "scene", str(path)) is True, "on the same connection"
    wait_until(lambda: client.handler("single_get", "(s)", "text") == "x" * (rest - 5),
               "the commit of a list that is as long as it may be")


def test_a_reply_that_the_bus_does_not_carry_fails_the_request(world):
    parameters = world.write(
        "big.def", "n index { rangeValid { 1..64 } }\nbig rw { index { n } }\n")
    world.simulator(parameters=parameters)
    presets = world.write("big.presets", "scene preset { }\n")
    daemon = world.daemon(parameters=parameters, presets=presets)
    client = world.client()
    mebibyte = "x" * (2**20 - 5)  # with its length and its end
    for number in range(1, 65):
        assert client.handler("single_set", "(ss)", f"big[{number}]", mebibyte) == ()
    path = world.folder / "p"
    assert client.preset("store", "scene", str(path)) is True, "a list as long as it may be"
    stored_size = path.stat().st_size
    assert stored_size > 63 * 2**20
    last = "big[9]"  # in the order of keys
    assert client.handler("single_set", "(ss)", last, mebibyte + "x") == ()
    before = len(daemon.records_after_start())
    assert client.preset("store", "scene", str(path)) == FAILED
    expected = refused("parm_get", "parm_get_() - bulk get failed", 10,
                       "dbus_norvix_transaction: more than the bus carries in one list")
    expected[-1] = LOST
    assert daemon.records_after_start()[before:] == expected
    assert path.stat().st_size == stored_size
    assert client.handler("single_set", "(ss)", last, "1") == ()
    assert client.preset("store", "scene", str(path)) is True, "on the same connection"
    assert path.stat().st_size == stored_size - len(mebibyte) + 1


def reply_of_one(call, serial):
    return new_method_return(call, "u", (1,)).serialise(serial)


def reply_of_65_mebibytes(call, serial):
    """One that no implementation of D-Bus makes."""
    message = new_method_return(call, "as", ([],)).serialise(serial)
    header, text = message[:-4], bytes(2**20 - 5).replace(b"\0", b"x")
    values = (struct.pack("<I", len(text)) + text + b"\0") * 65
    return (header[:4] + struct.pack("<I", 4 + len(values)) + header[8:]
            + struct.pack("<I", len(values)) + values)


def test_a_parameter_handler_that_the_bus_cuts_off_is_called_again(world):
    """One that sends more than the bus carries loses its connection, and the daemon a reply."""
    daemon = world.daemon()
    client = world.client()
    path = world.folder / "p"
    hostile = RawClient(world.bus.address)
    hostile.own("org.norvix.transaction")
    answer = client.start_preset("store", "scene", str(path))
    hostile.answer_calls({"start": reply_of_one, "get_bulk": reply_of_65_mebibytes})
    wait_until(lambda: not client.owns("org.norvix.transaction"), "the bus to cut it off")
    world.simulator()
    assert answer() == FAILED, "because the new one does not know the transaction"
    assert daemon.records_after_start()[0][1].startswith("ERROR: parm_get_() - bulk get failed (")
    assert client.preset("store", "scene", str(path)) is True, "on the same connection"


@pytest.mark.parametrize("method", [*(method for method, *_ in LOAD_OPERATIONS), "commit"])
def test_a_load_goes_on_when_the_name_was_dropped_for_a_while(world, method):
    handler = world.simulator(faults=f"{method} 1 drop-name 50\n")
    daemon = world.daemon()
    path = world.write("p", ENTRIES.get(method, OTHER_ENTRIES))
    client = world.client()
    assert client.preset("load_with_default", "scene", str(path)) is True
    wait_until(lambda: "end" in handler.methods(), "the end of the transaction")
    errors = [text for priority, text in daemon.records_after_start() if priority == ERROR]
    assert all("org.norvix.transaction was not provided" in text for text in errors)
    assert errors, "the next operation missed the name"
    # A commit is sent once: its answer comes after the client's.
    commit_missed_it = any(text.startswith("ERROR: commitCallback() -") for text in errors)
    assert commit_missed_it == method.startswith("reset")
    assert client.handler("single_get", "(s)", "mode") == ("auto" if commit_missed_it else "off")


def test_a_parameter_handler_that_starts_anew_does_not_know_the_transaction(world):
    handler = world.simulator(faults="set_status 1 exit\n")
    daemon = world.daemon()
    client = world.client()
    path = world.write("p", OTHER_ENTRIES)
    answer = client.start_preset("load_with_default", "scene", str(path))
    handler.process.wait()
    handler = world.simulator()
    assert answer() == LOAD_FAILED
    finals = [record for record in daemon.records_after_start()
              if isinstance(record, Pause) or "dbus_norvix_transaction" in record[1]
              or "attempt" in record[1] or record == LOST]
    expected = refused("parm_set_status", "parm_set_() - set failed", 10,
                       "dbus_norvix_transaction: unknown transaction 1")
    expected[-1] = LOST
    assert finals == expected
    assert client.preset("load_with_default", "scene", str(path)) is True, "the next request works"


def test_a_key_that_is_not_utf8_is_refused_before_anything_is_sent(world):
    world.write("parameters.def", b"bad\xff rw { }\nstate ro { }\n")
    world.write("presets.def", b"scene preset { }\nstates preset { include ro { state } }\n")
    handler = world.simulator(parameters=world.write("handler.def", b"state ro { }\n"))
    daemon = world.daemon()
    client = world.client()
    path = world.write("p", "state=1\n")
    rows = [
        (("store", "scene", str(path)), "Store preset", "get", "get", "scene"),
        (("store", "states", str(path)), "Store preset", "get", "bulk get", "states"),
        (("load_default", "states"), "Load defaults", "reset", "reset", "states"),
        (("load_with_default", "states", str(path)), "Load preset with defaults", "reset",
         "reset", path),
    ]
    for call, what, *_ in rows:
        assert client.preset(*call) == RemoteError(
            ERROR_NAME, f"dbus_norvix_preset: {what} failed")
    assert daemon.records_after_start() == [
        (ERROR, f"ERROR: parm_{operation}_() - {text} failed ({origin}: key of bad\\xff is not "
                "valid UTF-8)\n") for _, _, operation, text, origin in rows]
    assert handler.methods() == []
    assert client.preset("load", "states", str(path)) is True, "which sends another key"
