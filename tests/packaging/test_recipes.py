"""The Yocto recipe and the Buildroot package build the daemon, and what is wrong there is found."""

import shutil
import subprocess

import pytest
from harness import SOURCE

DAEMON = [
    "/usr/lib/systemd/user/morvane.service",
    "/usr/sbin/morvane",
    "/usr/share/dbus-1/services/org.norvix.preset.service",
]
INTERFACES = [f"/usr/share/dbus-1/interfaces/org.norvix.{name}.xml"
              for name in ("preset", "transaction")]
OWN_BUS = [
    "/etc/morvane/bus.conf",
    "/etc/morvane/policy.conf",
    "/usr/lib/systemd/system/morvane-bus.service",
    "/usr/lib/systemd/system/morvane.service",
]
MANUAL = [f"/usr/share/man/man{page[-1]}/{page}" for page in (
    "morvane-parameter-definition.5", "morvane-preset-data.5", "morvane-preset-definition.5",
    "morvane.8")]
RECIPE = "packaging/yocto/recipes-core/morvane/morvane_1.07.bb"
MAKEFILE = "packaging/buildroot/package/morvane/morvane.mk"


def check(tree):
    """The exit status and what the check says, without the files of the documentation folder."""
    done = subprocess.run([tree / "scripts/check-recipes"], stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    return done.returncode, [line for line in done.stdout.splitlines()
                             if "/usr/share/doc/" not in line]


def test_both_build_the_daemon_and_have_each_file_in_a_package():
    assert check(SOURCE) == (0, [
        *(f"yocto: morvane: {file}" for file in DAEMON),
        *(f"yocto: morvane-dev: {file}" for file in INTERFACES),
        *(f"yocto: morvane-doc: {file}" for file in MANUAL),
        *(f"yocto: morvane-own-bus: {file}" for file in OWN_BUS),
        *(f"buildroot: {file}" for file in sorted(DAEMON + INTERFACES + MANUAL + OWN_BUS)),
    ])


@pytest.fixture
def tree(tmp_path):
    """A copy of what the check reads; its project has no more than an installation needs."""
    for name in ("LICENSE", "packaging", "scripts"):
        copy = shutil.copytree if (SOURCE / name).is_dir() else shutil.copy
        copy(SOURCE / name, tmp_path / name)
    (tmp_path / "CMakeLists.txt").write_text("""\
cmake_minimum_required(VERSION 3.25)
project(morvane
    VERSION 1.07
    LANGUAGES NONE)
include(GNUInstallDirs)
set(definitions /etc/morvane)
configure_file(packaging/own-bus/morvane.service.in packaging/own-bus/morvane.service @ONLY)
install(FILES LICENSE DESTINATION share/doc)
set(used ${MORVANE_TOOLS} ${BUILD_TESTING} ${DBUS_BINDING_TOOL} ${CMAKE_BUILD_TYPE}
    ${CMAKE_CXX_FLAGS_RELEASE} ${CMAKE_INTERPROCEDURAL_OPTIMIZATION})
""")
    return tmp_path


@pytest.mark.parametrize("file, old, new, complaint", [
    (RECIPE, "md5=6", "md5=7", "licence of the recipe"),
    (RECIPE, "../../../..", "../../..", "source of the recipe"),
    (RECIPE, "; \\\n    --system --user-group --no-create-home parameter-handler", "",
     "users and groups of the recipe"),
    (RECIPE, 'morvane ${systemd_system_unitdir}"', 'morvane"',
     "/usr/lib/systemd/system/morvane-bus.service is in no package of the recipe"),
    (RECIPE, "Release", "Release -G None", "this failed"),
    (RECIPE, "-DMORVANE_TOOLS=OFF", "-DMORVANE_CLIENTS=OFF", "this failed"),
    (RECIPE, "morvane-bus.service morvane.service", "morvane.service", "units of the recipe"),
    (RECIPE, "${B}/packaging", "${B}/packages", "this failed"),
    (RECIPE, "RDEPENDS", "unset RDEPENDS", "has what is not understood: unset RDEPENDS"),
    (MAKEFILE, "1.07", "1.06", "version of the package"),
    (MAKEFILE, "/../..\n", "/..\n", "source of the package"),
    (MAKEFILE, "presets -1", "preset -1", "users and groups of the package"),
    (MAKEFILE, "_FILES = LICENSE", "_FILES = COPYING", "the licence of the package"),
    (MAKEFILE, "$(@D)/packaging/own-bus/bus.conf", "$(@D)/bus.conf", "this failed"),
    (MAKEFILE, "-DBUILD_TESTING=OFF", "-DMORVANE_TESTS=OFF", "this failed"),
])
def test_says_what_is_wrong(tree, file, old, new, complaint):
    text = (tree / file).read_text()
    assert old in text
    (tree / file).write_text(text.replace(old, new, 1))
    status, said = check(tree)
    assert status == 1
    assert complaint in "\n".join(said)


def test_the_copy_is_right_otherwise(tree):
    assert check(tree)[0] == 0
