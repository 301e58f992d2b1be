"""Whole requests under valgrind: no invalid access, no leak."""

from pathlib import Path

from harness import wait_until

OPTIONS = [
    "valgrind", "--leak-check=full", "--show-leak-kinds=definite",
    "--errors-for-leak-kinds=definite", "--error-exitcode=99", "--num-callers=40",
]


def test_requests_make_no_memory_error(world):
    handler = world.simulator(faults="get_bulk 1 error dbus_norvix_transaction: busy\n"
                                     "commit 1 error dbus_norvix_transaction: full\n")
    report = world.folder / "valgrind"
    daemon = world.launch(wrapper=[*OPTIONS, f"--log-file={report}"])
    client = world.client()
    wait_until(lambda: client.owns("org.norvix.preset"), "the service")
    path = world.folder / "p"
    for _ in range(2):  # without and with an older file
        assert client.preset("store", "scene", str(path)) is True
    keys = ["gain[1]", "unknown"]
    assert client.preset("store_subpreset", keys, "scene", str(path)) is True
    assert path.read_text() == "gain[1]=0\n"
    assert client.preset("in_preset", "scene", keys) is True
    assert client.preset("is_preset", "nothing") is False
    client.preset("store", "unknown", str(path))
    for number, method in enumerate(("load", "load_with_default"), start=4):
        assert client.preset(method, "scene", str(path)) is True
        wait_until(lambda: ("end", number) in handler.calls(), "the end of the transaction")
    assert client.preset("load_default", "scene") is True
    wait_until(lambda: ("end", 6) in handler.calls(), "the end of the transaction")
    client.preset("load", "unknown", str(path))
    client.preset("load", "scene", str(world.folder))
    client.preset("store", "scene", str(world.folder))
    client.preset("load", "scene", str(world.write("bytes", b"mode=\xff\n")))
    client.preset("load", "scene", str(world.write("refused", "mode=nonsense\n")))
    client.preset("die")
    assert daemon.wait() == 1, Path(report).read_text()
    assert "ERROR SUMMARY: 0 errors" in Path(report).read_text()
