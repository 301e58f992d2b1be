"""store and store_subpreset: files, the Parameter Handler's calls, the log."""

import os
import socket
from pathlib import Path

import pytest
from harness import ERROR, INFO, RemoteError
from test_methods import ERROR_NAME

FAILED = RemoteError(ERROR_NAME, "dbus_norvix_preset: Store preset failed")
SUB_FAILED = RemoteError(ERROR_NAME, "dbus_norvix_preset: Store sub-preset failed")
SCENE = "gain[1]=0\ngain[2]=0\ngain[3]=0\nmode=auto\ntemperature=40\n"
LARGE_PARAMETERS = """\
i index { rangeValid { 1..100 } }
j index { rangeValid { 1..1000 } }
p rw { index { i } index { j } default { 5 } }
gain rw { default { 0 } }
serial ro { }
temperature ro { default { 40 } }
"""
SCENE_KEYS = ["gain[1]", "gain[2]", "gain[3]", "mode", "temperature"]


def stored(path, preset="scene"):
    return (INFO, f"storePreset(): {preset} preset stored in {path}")


def test_writes_the_live_values_in_key_order(served):
    served.user.handler("single_set", "(ss)", "gain[2]", "-7")
    assert served.user.preset("store", "scene", str(served.file)) is True
    assert served.file.read_text() == SCENE.replace("gain[2]=0", "gain[2]=-7")
    assert os.listdir(served.folder).count("p_bak") == 0
    assert served.handler.calls()[1:] == [
        ("start",), ("get_bulk", 1, 0, SCENE_KEYS), ("end", 1)]
    assert served.morvane.records_after_start() == [stored(served.file)]


def test_reads_a_single_key_with_the_single_method(served):
    assert served.user.preset("store", "single", str(served.file)) is True
    assert served.file.read_text() == "mode=auto\n"
    assert served.handler.calls() == [("start",), ("get", 1, "mode"), ("end", 1)]


def test_replaces_an_existing_file_and_its_stale_backup(served):
    served.file.write_text("old=1\n")
    backup = served.folder / "p_bak"
    backup.write_text("stale=1\n")
    assert served.user.preset("store", "scene", str(served.file)) is True
    assert served.file.read_text() == SCENE
    assert not backup.exists()


@pytest.mark.parametrize("preset", ["unknown", "nothing"])
def test_refuses_a_preset_without_keys_before_any_call(served, preset):
    assert served.user.preset("store", preset, str(served.file)) == FAILED
    assert served.handler.calls() == []
    assert served.morvane.records_after_start() == [
        (ERROR, f"storePreset(): Could not locate '{preset}' preset definition\n")]
    assert not served.file.exists()


def test_fails_in_a_folder_that_does_not_exist(served):
    path = str(served.folder / "missing/p")
    assert served.user.preset("store", "scene", path) == FAILED
    assert served.handler.methods() == ["start", "get_bulk"], "the transaction stays open"
    assert served.morvane.records_after_start() == [
        (ERROR, f"storePreset(): Error opening file {path}\n")]


def test_fails_at_the_rename_when_the_name_is_too_long_for_a_backup(served):
    path = str(served.write("n" * 255, "mode=1\n"))
    assert served.user.preset("store", "scene", path) == FAILED
    assert served.morvane.records_after_start() == [
        (ERROR, f"Error renaming file {path} to {path}_bak"),
        (ERROR, f"storePreset(): Error opening file {path}\n")]


def make_socket(path):
    with socket.socket(socket.AF_UNIX) as server:
        server.bind(str(path))


@pytest.mark.parametrize("name", ["p", "p_bak"])
@pytest.mark.parametrize("make", [Path.mkdir, os.mkfifo, make_socket])
def test_moves_nothing_away_that_is_no_file(served, make, name):
    make(served.folder / name)
    before = (served.folder / name).stat()
    assert served.user.preset("store", "scene", str(served.file)) == FAILED
    assert served.morvane.records_after_start() == [
        (ERROR, f"Error renaming file {served.file} to {served.file}_bak"),
        (ERROR, f"storePreset(): Error opening file {served.file}\n")]
    assert (served.folder / name).stat().st_ino == before.st_ino
    assert not (served.folder / {"p": "p_bak", "p_bak": "p"}[name]).exists()


def test_replaces_a_link_and_not_what_it_leads_to(served):
    target = served.write("target", "precious=1\n")
    served.file.symlink_to(target)
    assert served.user.preset("store", "scene", str(served.file)) is True
    assert target.read_text() == "precious=1\n"
    assert not served.file.is_symlink()
    assert served.file.read_text().startswith("gain[1]=")
    assert not (served.folder / "p_bak").is_symlink()


def test_keeps_the_permissions_of_the_file(served):
    served.file.write_text("old=1\n")
    for mode in (0o640, 0o604):
        served.file.chmod(mode)
        assert served.user.preset("store", "scene", str(served.file)) is True
        assert served.file.stat().st_mode & 0o7777 == mode


def test_keeps_the_old_file_when_the_disk_is_full(world):
    """The process may not write a file beyond 20 kB, and the preset takes more."""
    world.write("parameters.def", LARGE_PARAMETERS)
    world.simulator()
    path = world.write("p", "mode=1\n")
    daemon = world.daemon(wrapper=("env", "--ignore-signal=XFSZ", "prlimit", "--fsize=20000"))
    assert world.client().preset("store", "scene", str(path)) == FAILED
    assert daemon.records_after_start() == [
        stored(path), (ERROR, f"Error writing file {path}")]
    assert path.read_text() == "mode=1\n"
    assert not (world.folder / "p_bak").exists()


def test_ends_the_file_at_an_empty_value(world):
    """The store succeeds all the same."""
    world.write("parameters.def", "a rw { default { \"1\" } }\nb rw { default { \"\" } }\n"
                                  "c rw { default { \"3\" } }\n")
    world.write("presets.def", "scene preset { }\n")
    world.simulator()
    world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    assert path.read_text() == "a=1\n"


def test_a_sub_preset_holds_the_chosen_keys_of_the_preset_alone(served):
    served.file.write_text("mode=before\n")
    keys = ["temperature", "other[3]", "gain[3]", "gain[3]", "serial"]
    assert served.user.preset("store_subpreset", keys, "scene", str(served.file)) is True
    assert served.file.read_text() == "gain[3]=0\ntemperature=40\n"
    assert served.handler.calls() == [
        ("start",), ("get_bulk", 1, 0, ["gain[3]", "temperature"]), ("end", 1)]
    assert served.morvane.records_after_start() == [
        (INFO, f"storeSubPreset(): scene sub-preset store completed in {served.file}")]


@pytest.mark.parametrize("keys, preset, text, calls", [
    ([], "scene", "storeSubPreset(): Sub-preset list is empty.\n", []),
    ([], "unknown", "storeSubPreset(): Sub-preset list is empty.\n", []),
    (["mode"], "unknown", "storeSubPreset(): Preset definition unknown does not exist.\n", []),
    (["mode"], "nothing", "storeSubPreset(): Preset definition nothing does not exist.\n", []),
    (["serial", "gain"], "scene",
     "storeSubPreset(): Sub-preset list contains no entries belonging to the scene preset "
     "definition.\n", ["start"]),
])
def test_a_sub_preset_without_keys_is_refused(served, keys, preset, text, calls):
    served.file.write_text("mode=before\n")
    assert served.user.preset("store_subpreset", keys, preset, str(served.file)) == SUB_FAILED
    assert served.morvane.records_after_start() == [(ERROR, text)]
    assert served.handler.methods() == calls
    assert served.file.read_text() == "mode=before\n"


def test_a_sub_preset_that_cannot_be_opened_says_so(served):
    path = str(served.folder / "missing/p")
    assert served.user.preset("store_subpreset", ["mode"], "scene", path) == SUB_FAILED
    assert served.morvane.records_after_start() == [
        (ERROR, f"storeSubPreset(): Error opening file {path}\n")]


def test_stores_one_after_the_other_in_transactions_of_their_own(served):
    for number in range(1, 4):
        assert served.user.preset("store", "single", str(served.file)) is True
        assert served.handler.calls()[-1] == ("end", number)


def test_stores_a_hundred_thousand_keys(world):
    """One bulk call, one file, however many keys there are."""
    world.write("parameters.def", LARGE_PARAMETERS)
    handler = world.simulator()
    world.daemon()
    path = world.folder / "p"
    assert world.client().preset("store", "scene", str(path)) is True
    lines = path.read_text().splitlines()
    assert len(lines) == 100_002
    assert lines[1] == "p[100][1000]=5"
    assert [line.split("=")[0] for line in lines] == sorted(line.split("=")[0] for line in lines)
    assert handler.methods() == ["start", "get_bulk", "end"]
