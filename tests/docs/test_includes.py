"""The check of what each folder may include, by the table of ARCHITECTURE.md."""

import re
import shutil
import subprocess

import pytest
from harness import SOURCE

TOPS = ("src", "tools", "bench", "tests")
FOLDERS = re.findall(r"^\| `([^`]+)`", (SOURCE / "ARCHITECTURE.md").read_text(), re.MULTILINE)


@pytest.fixture(scope="module")
def tree(tmp_path_factory):
    """A copy of what the check reads."""
    root = tmp_path_factory.mktemp("tree")
    shutil.copy(SOURCE / "ARCHITECTURE.md", root)
    for top in TOPS:
        for file in (SOURCE / top).rglob("*.[ch]*"):
            if file.suffix in (".c", ".h", ".cpp"):
                copy = root / file.relative_to(SOURCE)
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(file, copy)
    return root


def check(root):
    result = subprocess.run([SOURCE / "scripts/check-includes", root], text=True,
                            stdout=subprocess.PIPE)
    return result.returncode, result.stdout


@pytest.fixture
def source(tree, request):
    """A new source in the folder that a test is about."""
    file = tree / request.getfixturevalue("folder") / "planted.cpp"
    yield file
    file.unlink()


def test_allows_what_is_there(tree):
    assert check(tree) == (0, "")


@pytest.mark.parametrize("folder", FOLDERS)
def test_refuses_what_no_row_allows(tree, folder, source):
    """No folder may include the benchmarks, and they may not include the exported object."""
    header, owner = (("dbus/server.h", "src/dbus") if folder == "bench" else
                     ("../" * (folder.count("/") + 1) + "bench/bus.h", "bench"))
    source.write_text(f'#include "{header}"\n')
    assert check(tree) == (1, f"{folder}/planted.cpp may not include {header} ({owner})\n")


@pytest.mark.parametrize("folder", ["src/text", "src/paramdef", "src/presetdef", "src/tables",
                                    "src/core", "src/engine"])
@pytest.mark.parametrize("include, owner", [
    ("<glib.h>", "GLib"), ("<gio/gio.h>", "GLib"), ("<dbus/dbus.h>", "D-Bus"),
    ('"glib/glib_owned.h"', "src/glib"), ('"dbus/server.h"', "src/dbus")])
def test_keeps_glib_out_of_what_is_tested_without_it(tree, folder, source, include, owner):
    source.write_text(f"#  include {include}\n")
    header = include.strip('<">')
    assert check(tree) == (1, f"{folder}/planted.cpp may not include {header} ({owner})\n")


@pytest.mark.parametrize("folder", ["src/text"])
def test_refuses_what_is_above_a_folder_and_what_is_nowhere(tree, folder, source):
    source.write_text('#include <string>\n#include "core/definitions.h"\n#include "gone.h"\n')
    assert check(tree) == (
        1, "src/text/planted.cpp may not include core/definitions.h (src/core)\n"
           "src/text/planted.cpp may not include gone.h (not found)\n")


def test_refuses_a_folder_that_is_in_no_row(tree):
    (tree / "src/new").mkdir()
    (tree / "src/new/empty.h").touch()
    assert check(tree) == (1, "src/new is not in the table of ARCHITECTURE.md\n")
    shutil.rmtree(tree / "src/new")
