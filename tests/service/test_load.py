"""load, load_with_default and load_default: the Parameter Handler's calls, the log, the values."""

import errno
import os
from pathlib import Path

import pytest
from harness import ERROR, INFO, RemoteError, wait_until
from test_methods import ERROR_NAME

FAILED = RemoteError(ERROR_NAME, "dbus_norvix_preset: Load preset failed")
WITH_DEFAULT_FAILED = RemoteError(
    ERROR_NAME, "dbus_norvix_preset: Load preset with defaults failed")
DEFAULTS_FAILED = RemoteError(ERROR_NAME, "dbus_norvix_preset: Load defaults failed")


def loaded(path, preset="scene", how="without"):
    return (INFO, f"loadPreset(): {preset} preset loaded ({how} defaults) from {path}.\n")


def wait_for_end(handler):
    """The transaction is ended after the client had its answer."""
    wait_until(lambda: "end" in handler.methods(), "the end of the transaction")


# Preset, content of the file, method, calls between start and commit.
LOADS = [
    ("scene", "gain[2]=-3\n", "load", [("set", 1, "gain[2]", "-3")]),
    ("scene", "mode=off\ngain[2]=-3\n", "load",
     [("set_bulk", 1, ["mode", "gain[2]"], ["off", "-3"])]),
    ("scene", "temperature=50\n", "load", [("set_status", 1, "temperature", "50")]),
    ("scene", "temperature=50\nmode=off\n", "load",
     [("set", 1, "mode", "off"), ("set_status", 1, "temperature", "50")]),
    ("scene", "gain[1]=5\ngain[1]=6\n", "load",
     [("set_bulk", 1, ["gain[1]", "gain[1]"], ["5", "6"])]),
    ("scene", "serial=B\ngain[9]=1\nnowhere=1\n", "load", []),
    ("single", "gain[1]=5\nmode=off\n", "load", [("set", 1, "mode", "off")]),
    ("scene", "gain[1]=5\n", "load_with_default",
     [("set", 1, "gain[1]", "5"), ("reset_bulk", 1, ["gain[2]", "gain[3]", "mode"]),
      ("reset_status", 1, "temperature")]),
    ("scene", "temperature=50\nmode=off\ngain[1]=1\ngain[3]=3\n", "load_with_default",
     [("set_bulk", 1, ["mode", "gain[1]", "gain[3]"], ["off", "1", "3"]),
      ("set_status", 1, "temperature", "50"), ("reset", 1, "gain[2]")]),
    ("single", "mode=off\n", "load_with_default", [("set", 1, "mode", "off")]),
    ("scene", "", "load_with_default",
     [("reset_bulk", 1, ["gain[1]", "gain[2]", "gain[3]", "mode"]),
      ("reset_status", 1, "temperature")]),
    ("states", "", "load_with_default", [("reset_status_bulk", 1, ["serial", "temperature"])]),
    ("states", "serial=B\ntemperature=1\n", "load",
     [("set_status_bulk", 1, ["serial", "temperature"], ["B", "1"])]),
]


@pytest.mark.parametrize("preset, content, method, calls", LOADS)
def test_makes_the_calls_of_a_load_in_order(served, preset, content, method, calls):
    served.file.write_text(content)
    assert served.user.preset(method, preset, str(served.file)) is True
    wait_for_end(served.handler)
    assert served.handler.calls() == [("start",), *calls, ("commit", 1), ("end", 1)]
    how = "with" if method == "load_with_default" else "without"
    assert served.morvane.records_after_start() == [loaded(served.file, preset, how)]
    assert served.file.read_text() == content


@pytest.mark.parametrize("preset, calls", [
    ("scene", [("reset_bulk", 1, ["gain[1]", "gain[2]", "gain[3]", "mode"]),
               ("reset_status", 1, "temperature")]),
    ("single", [("reset", 1, "mode")]),
    ("states", [("reset_status_bulk", 1, ["serial", "temperature"])]),
])
def test_makes_the_calls_of_a_load_of_defaults_in_order(served, preset, calls):
    assert served.user.preset("load_default", preset) is True
    wait_for_end(served.handler)
    assert served.handler.calls() == [("start",), *calls, ("commit", 1), ("end", 1)]
    assert served.morvane.records_after_start() == [
        (INFO, f"loadDefaults(): {preset} defaults loaded.\n")]


def test_values_are_there_after_the_commit(served):
    served.user.handler("single_set", "(ss)", "gain[1]", "9")
    served.file.write_text("gain[2]=-3\ntemperature=50\n")
    assert served.user.preset("load_with_default", "scene", str(served.file)) is True
    wait_for_end(served.handler)
    assert served.user.handler(
        "single_get_bulk", "(uas)", 0, ["gain[1]", "gain[2]", "temperature"]) == ["0", "-3", "50"]


def test_brings_back_what_was_stored(served):
    values = {"gain[1]": "-60", "gain[2]": "12", "gain[3]": "3", "mode": "off"}

    def set_all(new):
        for key, value in new.items():
            assert served.user.handler("single_set", "(ss)", key, value) == ()

    set_all(values)
    assert served.user.preset("store", "scene", str(served.file)) is True
    content = served.file.read_text()
    set_all({"gain[1]": "1", "gain[2]": "2", "gain[3]": "4", "mode": "2"})
    assert served.user.preset("load", "scene", str(served.file)) is True
    again = served.folder / "again"
    wait_until(lambda: served.handler.methods().count("end") == 2, "the end of the load")
    assert served.user.preset("store", "scene", str(again)) is True
    assert again.read_text() == content


def test_answers_without_waiting_for_the_commit(world):
    handler = world.simulator(faults="commit 1 no-reply\n")
    daemon = world.daemon()
    client = world.client()
    path = world.write("p", "mode=off\n")
    assert client.preset("load", "scene", str(path)) is True
    assert client.preset("is_preset", "scene") is True
    assert client.preset("load", "scene", str(path)) is True, "in a transaction of its own"
    wait_for_end(handler)
    assert handler.calls()[-1] == ("end", 2), "the first one is not ended"
    assert daemon.records_after_start() == [loaded(path), loaded(path)]


def test_a_commit_that_fails_later_is_logged_and_ended(world):
    handler = world.simulator(faults="commit 1 error dbus_norvix_transaction: full\n"
                                     "commit 2 error lost\n"
                                     "end 2 error dbus_norvix_transaction: gone\n")
    daemon = world.daemon()
    client = world.client()
    path = world.write("p", "mode=off\n")
    failed = "ERROR: commitCallback() - commit transaction failed"
    for number, records in [
        (1, [loaded(path), (ERROR, f"{failed} (dbus_norvix_transaction: full)\n")]),
        (2, [loaded(path), (ERROR, f"{failed} (lost)\n"),
             (ERROR, "ERROR: End transaction failed (dbus_norvix_transaction: gone)\n")]),
        (3, [loaded(path)]),
    ]:
        before = len(daemon.records_after_start())
        assert client.preset("load", "scene", str(path)) is True
        wait_until(lambda: ("end", number) in handler.calls(), "the end of the transaction")
        wait_until(lambda: len(daemon.records_after_start()) - before >= len(records), "the log")
        assert daemon.records_after_start()[before:] == records
    assert client.handler("single_get", "(s)", "mode") == "off"


def test_a_file_without_entries_changes_nothing(served):
    served.file.write_text("# nothing\n\nmode\ngain[1]=\n")
    for preset in ("scene", "unknown"):
        assert served.user.preset("load", preset, str(served.file)) is True
    assert served.morvane.records_after_start() == [
        (ERROR, f"Empty preset file: {served.file}\n")] * 2
    assert served.handler.calls() == []


def test_a_file_of_unknown_parameters_changes_nothing(served):
    served.file.write_text("nowhere=1\ntrigger=1\ninput=1\n")
    assert served.user.preset("load", "scene", str(served.file)) is True
    assert served.morvane.records_after_start() == [(INFO, f"Empty preset file: {served.file}\n")]
    assert served.handler.calls() == []


@pytest.mark.parametrize("preset", ["unknown", "nothing", ""])
def test_an_unknown_preset_is_refused_before_any_call(served, preset):
    served.file.write_text("mode=off\n")
    path = str(served.file)
    assert served.user.preset("load", preset, path) == FAILED
    assert served.user.preset("load_with_default", preset, path) == WITH_DEFAULT_FAILED
    assert served.user.preset("load_default", preset) == DEFAULTS_FAILED
    assert served.morvane.records_after_start() == [
        (ERROR, f"Unknown preset definition: {preset}\n")] * 3
    assert served.handler.calls() == []


def make_nothing(path):
    """Leaves the path as it is: not there."""


def make_unreadable_link(path):
    os.symlink(path, path)


@pytest.mark.parametrize("make", [make_nothing, os.mkdir, os.mkfifo, make_unreadable_link])
def test_what_cannot_be_read_is_refused_at_once(served, make):
    make(served.file)
    path = str(served.file)
    assert served.user.preset("load", "scene", path) == FAILED
    assert served.user.preset("load_with_default", "scene", path) == WITH_DEFAULT_FAILED
    assert served.morvane.records_after_start() == [(ERROR, f"Error opening file: {path}\n")] * 2
    assert served.handler.calls() == []


def test_a_device_is_no_preset_file(served):
    assert served.user.preset("load", "scene", "/dev/zero") == FAILED
    assert served.morvane.records_after_start() == [(ERROR, "Error opening file: /dev/zero\n")]


def test_a_terminal_is_not_read_and_not_taken_over(world):
    """A process that has detached could get it as its controlling terminal, and be ended when the
    line hangs up."""
    world.simulator()
    daemon = world.launch(options=[]).wait_ready()
    client = world.client()
    wait_until(lambda: client.owns("org.norvix.preset"), "the service")
    wait_until(lambda: len(daemon.process_ids()) == 1, "the end of the process that was started")
    master, terminal = os.openpty()
    assert client.preset("load", "scene", os.ttyname(terminal)) == FAILED
    stat = Path(f"/proc/{daemon.process_ids()[0]}/stat").read_text().rpartition(") ")[2].split()
    controlling_terminal = stat[4]
    assert controlling_terminal == "0"
    os.close(terminal)
    os.close(master)


def test_loads_what_a_link_leads_to(served):
    served.file.symlink_to(served.write("target", "mode=off\n"))
    assert served.user.preset("load", "scene", str(served.file)) is True
    assert ("set", 1, "mode", "off") in served.handler.calls()
    assert served.file.is_symlink()


@pytest.mark.parametrize("method, failed", [
    ("load", FAILED), ("load_with_default", WITH_DEFAULT_FAILED)])
def test_a_value_that_is_not_utf8_is_refused_before_any_call(served, method, failed):
    served.file.write_bytes(b"gain[1]=5\nmode=\xff\n")
    assert served.user.preset(method, "scene", str(served.file)) == failed
    assert served.morvane.records_after_start() == [
        (ERROR, f"ERROR: parm_set_() - set failed ({served.file}: value of mode is not valid "
                "UTF-8)\n")]
    assert served.handler.calls() == []


def test_bytes_that_are_not_sent_may_be_any(served):
    served.file.write_bytes(b"serial=\xff\nnowhere=\xff\n\xff=1\ngain[\xff]=1\nmode=off\n")
    assert served.user.preset("load", "scene", str(served.file)) is True
    wait_for_end(served.handler)
    assert served.handler.calls() == [
        ("start",), ("set", 1, "mode", "off"), ("commit", 1), ("end", 1)]


@pytest.mark.parametrize("half_written", ["mode=of", None])
def test_the_backup_of_an_interrupted_store_is_restored(served, half_written):
    if half_written:
        served.file.write_text(half_written)
    backup = served.folder / "p_bak"
    backup.write_text("mode=off\n")
    assert served.user.preset("load", "scene", str(served.file)) is True
    assert served.morvane.records_after_start() == [
        (INFO, "Backup preset file found.\n"), loaded(served.file)]
    assert served.file.read_text() == "mode=off\n"
    assert not backup.exists()
    assert ("set", 1, "mode", "off") in served.handler.calls()


def test_takes_files_and_backups_of_after_2038(served):
    year_2040 = 2208988800
    served.file.write_text("mode=1\n")
    os.utime(served.file, (year_2040, year_2040))
    assert served.user.preset("load", "scene", str(served.file)) is True
    wait_for_end(served.handler)
    assert served.user.handler("single_get", "(s)", "mode") == "1"
    backup = served.write("p_bak", "mode=off\n")
    os.utime(backup, (year_2040, year_2040))
    assert served.user.preset("load", "scene", str(served.file)) is True
    assert served.file.read_text() == "mode=off\n"
    assert not backup.exists()


def test_fails_when_it_cannot_tell_whether_there_is_a_backup(world):
    world.simulator()
    path, backup = world.write("p", "mode=1\n"), world.write("p_bak", "mode=off\n")
    daemon = world.daemon(fault=(f"stat 1 {errno.EIO}", str(path)))
    assert world.client().preset("load", "scene", str(path)) == FAILED
    assert daemon.records_after_start() == [(ERROR, f"Error opening file: {path}\n")]
    assert (path.read_text(), backup.read_text()) == ("mode=1\n", "mode=off\n")


TRANSLATION = """\
scene preset { }
translate {
    removed { tone }
    mode { from { way { on = auto, "half on" = off } } }
    gain { from { volume } index 0 { input = 2 } index 2 { input = idx::1 }
           index 3 { input = idx::3 } }
}
"""
NO_TEMPLATE = "PresetTranslate::translate() Error:Could not located index mapping for gain with "
NO_INDEX = "PresetTranslate::translate() Error:Could not locate index value for idx::3 for " \
           "parameter gainwith 3 indices\n"

# Line of the older file, what is set, what is written to standard error.
TRANSLATIONS = [
    ("mode=2", ("mode", "2"), ""),
    ("way=on", ("mode", "auto"), ""),
    ("way=half on", ("mode", "off"), ""),
    ("way=3", ("mode", "3"), ""),
    ("gain=5", ("gain[2]", "5"), ""),
    ("gain[1][3]=5", ("gain[3]", "5"), ""),
    ("volume[1]=5", ("gain[1]", "5"), ""),
    ("volume=5", ("gain[2]", "5"), ""),
    ("tone=1", None, ""),
    ("nowhere=1", None, ""),
    ("trigger=1", None, ""),
    ("gain[1][2][3][4]=5", None, NO_TEMPLATE + "4 indices\n"),
    ("gain[1][2][3]=5", None, NO_INDEX),
]


@pytest.mark.parametrize("line, expected, errors", TRANSLATIONS)
def test_an_older_line_becomes_a_call_of_today(world, line, expected, errors):
    handler = world.simulator()
    daemon = world.daemon(presets=world.write("translating.def", TRANSLATION))
    path = world.write("p", "gain[1]=1\n" + line + "\n")
    assert world.client().preset("load", "scene", str(path)) is True
    pairs = [("gain[1]", "1")] + ([expected] if expected else [])
    keys, values = map(list, zip(*pairs))
    call = ("set_bulk", 1, keys, values) if expected else ("set", 1, keys[0], values[0])
    assert handler.calls()[1] == call
    assert daemon.stderr.read_text() == errors
    assert daemon.records_after_start() == [loaded(path)]


def test_a_mapping_of_a_parameter_that_this_variant_lacks_is_reported_at_the_start(world):
    world.write("parameters.def", "input index { rangeValid { 1..2 } }\n"
                                  "big rw { index { input } ctrlValid (model == 2) }\n"
                                  "small rw { index { input } }\n")
    presets = world.write("presets.def", "scene preset { }\n"
                                         "translate { big { index 0 { input = 1 } }\n"
                                         "            small { index 0 { input = 1 } } }\n")
    path = world.write("p", "small=5\nbig=5\n")
    for name, model, errors, key in [
        ("first", "model=2", "", "small[1]"),
        ("second", "model=1",
         "PresetGenerate::transIndexMapList() Error:Cannot locate parameter big\n", None),
    ]:
        handler = world.simulator(model)
        daemon = world.daemon(model, presets=presets, name=name)
        client = world.client()
        assert daemon.stderr.read_text() == errors
        assert client.preset("is_preset", "scene") is True
        before = len(handler.calls())
        assert client.preset("load", "scene", str(path)) is True
        keys = [call[2] for call in handler.calls()[before:] if call[0].startswith("set")]
        assert keys == ([["small[1]", "big[1]"]] if key else [])
        client.preset("die")
        daemon.wait()
        handler.stop()


def test_loads_a_hundred_thousand_keys(world):
    """One bulk call, however many keys there are."""
    world.write("parameters.def", "i index { rangeValid { 1..100 } }\n"
                                  "j index { rangeValid { 1..1000 } }\n"
                                  "p rw { index { i } index { j } default { 5 } }\n")
    world.write("presets.def", "scene preset { }\n")
    handler = world.simulator()
    world.daemon()
    client = world.client()
    path = world.write("p", "".join(
        f"p[{i}][{j}]={i * j}\n" for i in range(1, 101) for j in range(1, 1001)))
    assert client.preset("load", "scene", str(path)) is True
    wait_for_end(handler)
    assert handler.methods() == ["start", "set_bulk", "commit", "end"]
    assert client.handler("single_get", "(s)", "p[77][999]") == str(77 * 999)
