"""What a machine must have for CMake to configure the project, and what CMake says without it."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest
from harness import SOURCE

# What the daemon links with, and what the tools need beside it.
LIBRARIES = ["dbus-1", "dbus-glib-1", "glib-2.0", "gobject-2.0", "gthread-2.0"]
GIO = "gio-2.0"
TOOL_PACKAGES = ["CLI11", "nlohmann_json"]
# What README.md calls what has another name in CMake's files.
STATED = {"glib": "GLib", "gobject": "GLib", "gthread": "GLib", "gio": "GLib", "dbus": "libdbus",
          "VERSION": "CMake", "GNU": "g++", "Clang": "clang", "GTest": "GoogleTest",
          "nlohmann_json": "nlohmann-json"}
BINDING_TOOL = "dbus-binding-tool"


def configure(folder, *options, environment=()):
    """Configures a build below a folder."""
    return subprocess.run(
        ["cmake", "-G", "Ninja", "-S", SOURCE, "-B", folder / "build", *options],
        env={**os.environ, **dict(environment)}, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        text=True, check=False)


def pkg_config(*arguments):
    return subprocess.run(["pkg-config", *arguments], check=True, capture_output=True,
                          text=True).stdout.split("\n")


def with_their_own(names):
    """The libraries and all that their descriptions refer to."""
    found, left = set(), list(names)
    while left:
        name = left.pop()
        if name not in found:
            found.add(name)
            left += [line.split()[0] for line in pkg_config(
                "--print-requires", "--print-requires-private", name) if line]
    return found


def libraries(folder, names, old=None):
    """An environment in which pkg-config knows these libraries and no others, one of them being
    older than it is."""
    known = folder / "pkgconfig"
    known.mkdir()
    for name in with_their_own(names):
        file = f"{name}.pc"
        text = (Path(pkg_config("--variable=pcfiledir", name)[0]) / file).read_text()
        if name == old:
            text = re.sub(r"^Version:.*", "Version: 0.100", text, flags=re.MULTILINE)
        (known / file).write_text(text)
    return {"PKG_CONFIG_LIBDIR": str(known)}


def cached(folder, name):
    return re.search(rf"^{name}:\w+=(.*)$", (folder / "build/CMakeCache.txt").read_text(),
                     re.MULTILINE)[1]


def names_of_tests(folder):
    files = (folder / "build/tests").rglob("CTestTestfile.cmake")
    text = "".join(file.read_text() for file in files)
    return set(re.findall(r"add_test\(\[*=*\[*([\w/]+)", text))


def targets(folder):
    listed = subprocess.run(["ninja", "-C", folder / "build", "-t", "targets", "all"], check=True,
                            capture_output=True, text=True).stdout
    return set(re.findall(r"^([\w-]+): ", listed, re.MULTILINE))


def test_the_daemon_alone_needs_nothing_of_the_tools(tmp_path):
    assert GIO not in with_their_own(LIBRARIES)
    absent = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in TOOL_PACKAGES]
    done = configure(tmp_path, "-DMORVANE_TOOLS=OFF", *absent,
                     environment=libraries(tmp_path, LIBRARIES))
    assert done.returncode == 0, done.stdout
    assert {"morvane", "unit_engine"} <= targets(tmp_path)
    assert not {"morvanectl", "parameter-handler-sim"} & targets(tmp_path)
    names = names_of_tests(tmp_path)
    assert {"docs/man_html", "packaging/configure"} <= names
    assert not {"docs/tutorial", "docs/man_examples"} & names
    assert not [name for name in names if name.startswith(("service/", "tools/"))]


def test_the_tools_need_gio(tmp_path):
    done = configure(tmp_path, environment=libraries(tmp_path, LIBRARIES))
    assert done.returncode != 0
    assert GIO in done.stdout


@pytest.mark.parametrize("name", TOOL_PACKAGES)
def test_the_tools_need_their_packages(name, tmp_path):
    done = configure(tmp_path, f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON")
    assert done.returncode != 0
    assert f"find_package for module {name}" in done.stdout


@pytest.mark.parametrize("name", LIBRARIES)
def test_a_library_that_is_too_old_is_refused(name, tmp_path):
    done = configure(tmp_path, environment=libraries(tmp_path, [*LIBRARIES, GIO], old=name))
    assert done.returncode != 0
    assert re.search(f"{name} ?>=", done.stdout), done.stdout


def test_the_readme_says_which_versions_are_needed():
    text = "".join((SOURCE / file).read_text() for file in (
        "CMakeLists.txt", "cmake/CompilerOptions.cmake", "tests/CMakeLists.txt"))
    checked = dict(
        re.findall(r"([a-z]+(?:-[a-z]+)*)-[12](?:\.0)?>=([0-9.]+)", text)
        + re.findall(r"(?:find_package|cmake_minimum_required)\((\w+) ([0-9.]+)", text)
        + re.findall(r"set\(oldest_(\w+) ([0-9]+)\)", text))
    readme = " ".join((SOURCE / "README.md").read_text().split())
    for name, version in checked.items():
        stated = STATED.get(name, name)
        assert f"{stated} {version}" in readme


def test_a_cross_build_takes_the_generator_of_this_machine(tmp_path):
    device = tmp_path / "device/usr/bin"
    device.mkdir(parents=True)
    shutil.copy("/bin/true", device / BINDING_TOOL)
    done = configure(tmp_path, "-DCMAKE_SYSTEM_NAME=Linux", "-DBUILD_TESTING=OFF",
                     f"-DCMAKE_FIND_ROOT_PATH={tmp_path / 'device'}")
    assert done.returncode == 0, done.stdout
    assert cached(tmp_path, "DBUS_BINDING_TOOL") == shutil.which(BINDING_TOOL)


def test_says_which_package_the_generator_is_in(tmp_path):
    programs = tmp_path / "bin"
    programs.mkdir()
    for program in Path("/usr/bin").iterdir():
        if program.name != BINDING_TOOL:
            (programs / program.name).symlink_to(program)
    done = configure(tmp_path, "-DCMAKE_IGNORE_PATH=/usr/bin;/bin",
                     environment={"PATH": str(programs)})
    assert done.returncode != 0
    assert " ".join(done.stdout.split()).count(
        "This machine has no dbus-binding-tool, with which dbus-glib generates code. Install it "
        "(Debian: libdbus-glib-1-dev-bin), also for a cross build, or give its file with "
        "-DDBUS_BINDING_TOOL=FILE.") == 1
