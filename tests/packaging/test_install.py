"""`cmake --install` puts everything where Debian expects it, all or one component."""

import os
import re
import subprocess

import pytest
from harness import BUILD, EMULATOR, SOURCE

DOCUMENTS = "usr/share/doc/morvane"
# Of the documents that are installed as whole folders: what else is in them is installed, too.
FOLDERS = [name for folder in ("docs", "examples")
           for name in subprocess.run(["find", folder, "-type", "f"], cwd=SOURCE, check=True,
                                      capture_output=True, text=True).stdout.splitlines()]
COMPONENTS = {
    "daemon": [
        "usr/lib/systemd/user/morvane.service",
        "usr/sbin/morvane",
        "usr/share/dbus-1/services/org.norvix.preset.service",
        "usr/share/man/man5/morvane-parameter-definition.5",
        "usr/share/man/man5/morvane-preset-data.5",
        "usr/share/man/man5/morvane-preset-definition.5",
        "usr/share/man/man8/morvane.8",
    ],
    "tools": [
        "usr/bin/morvanectl",
        "usr/share/bash-completion/completions/morvanectl",
        "usr/share/fish/vendor_completions.d/morvanectl.fish",
        "usr/share/man/man1/morvanectl.1",
        "usr/share/nano/morvane.nanorc",
        *(f"usr/share/vim/vimfiles/pack/dist-bundle/start/morvane/{name}" for name in (
            "ftdetect/morvane.vim", "syntax/morvanedata.vim", "syntax/morvaneparameters.vim",
            "syntax/morvanepresets.vim")),
        "usr/share/zsh/vendor-completions/_morvanectl",
    ],
    "simulator": [
        "usr/bin/parameter-handler-sim",
        "usr/share/man/man1/parameter-handler-sim.1",
    ],
    "dev": [
        "usr/share/dbus-1/interfaces/org.norvix.preset.xml",
        "usr/share/dbus-1/interfaces/org.norvix.transaction.xml",
    ],
    "doc": [
        f"{DOCUMENTS}/ARCHITECTURE.md",
        f"{DOCUMENTS}/README.md",
        f"{DOCUMENTS}/SECURITY.md",
        f"{DOCUMENTS}/examples/own-bus/README.md",
        f"{DOCUMENTS}/examples/own-bus/bus.conf",
        f"{DOCUMENTS}/examples/own-bus/morvane-bus.service",
        f"{DOCUMENTS}/examples/own-bus/morvane.service",
        f"{DOCUMENTS}/examples/own-bus/morvane.sysusers",
        f"{DOCUMENTS}/examples/own-bus/policy.conf",
        f"{DOCUMENTS}/html/index.html",
        f"{DOCUMENTS}/html/style.css",
        # Made by the tool, which a cross build cannot run.
        *([] if EMULATOR else [f"{DOCUMENTS}/html/example-{page}.html"
                               for page in ("coverage", "release")]),
        *(f"{DOCUMENTS}/html/{page.name}.html" for page in (SOURCE / "man").glob("*.[158]")),
        *(f"{DOCUMENTS}/html/{page.stem}.html" for page in (SOURCE / "docs").glob("*.md")),
        *(f"{DOCUMENTS}/{name}" for name in FOLDERS),
    ],
}


def install(folder, *options):
    """Installs below a folder; the names of the files there."""
    subprocess.run(["cmake", "--install", BUILD, *options], check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "DESTDIR": str(folder)})
    return sorted(str(path.relative_to(folder)) for path in folder.rglob("*") if path.is_file())


@pytest.mark.parametrize("component", COMPONENTS)
def test_installs_a_component_alone(component, tmp_path):
    assert install(tmp_path, "--component", component) == sorted(COMPONENTS[component])


def test_installs_every_file_where_debian_expects_it(tmp_path):
    assert install(tmp_path) == sorted(file for files in COMPONENTS.values() for file in files)
    program = subprocess.run([*EMULATOR, tmp_path / "usr/sbin/morvane", "--version"], check=True,
                             capture_output=True, text=True)
    assert program.stdout.startswith("morvane ")
    for name in ("lib/systemd/user/morvane.service",
                 "share/dbus-1/services/org.norvix.preset.service",
                 "share/doc/morvane/examples/own-bus/morvane.service"):
        text = (tmp_path / "usr" / name).read_text()
        assert "/usr/sbin/morvane " in text
        assert "/etc/morvane/parameters.def /etc/morvane/presets.def" in text
        assert not re.search(r"@\w+@", text)


def test_the_documents_point_to_files_that_are_installed_with_them(tmp_path):
    documents = tmp_path / DOCUMENTS
    install(tmp_path, "--component", "doc")
    text = (documents / "README.md").read_text()
    for name in ("docs/tutorial.md", "docs/integration.md", "docs/performance.md",
                 "docs/reliability.md", "examples/", "ARCHITECTURE.md", "SECURITY.md"):
        assert f"`{name}`" in text
        assert (documents / name).exists(), name
