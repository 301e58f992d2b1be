"""`cmake --install` puts everything where Debian expects it."""

import os
import re
import subprocess

from harness import BUILD, EMULATOR

FILES = [
    "usr/bin/morvanectl",
    "usr/bin/parameter-handler-sim",
    "usr/lib/systemd/user/morvane.service",
    "usr/sbin/morvane",
    "usr/share/bash-completion/completions/morvanectl",
    "usr/share/dbus-1/interfaces/org.norvix.preset.xml",
    "usr/share/dbus-1/interfaces/org.norvix.transaction.xml",
    "usr/share/dbus-1/services/org.norvix.preset.service",
    "usr/share/doc/morvane/examples/README.md",
    "usr/share/doc/morvane/examples/older.preset",
    "usr/share/doc/morvane/examples/own-bus/README.md",
    "usr/share/doc/morvane/examples/own-bus/bus.conf",
    "usr/share/doc/morvane/examples/own-bus/morvane-bus.service",
    "usr/share/doc/morvane/examples/own-bus/morvane.service",
    "usr/share/doc/morvane/examples/own-bus/morvane.sysusers",
    "usr/share/doc/morvane/examples/own-bus/policy.conf",
    "usr/share/doc/morvane/examples/parameters.def",
    "usr/share/doc/morvane/examples/presets.def",
    "usr/share/doc/morvane/examples/variants",
    "usr/share/fish/vendor_completions.d/morvanectl.fish",
    "usr/share/man/man1/morvanectl.1",
    "usr/share/man/man1/parameter-handler-sim.1",
    "usr/share/man/man5/morvane-parameter-definition.5",
    "usr/share/man/man5/morvane-preset-data.5",
    "usr/share/man/man5/morvane-preset-definition.5",
    "usr/share/man/man8/morvane.8",
    "usr/share/zsh/vendor-completions/_morvanectl",
]


def test_installs_every_file_where_debian_expects_it(tmp_path):
    subprocess.run(["cmake", "--install", BUILD], check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "DESTDIR": str(tmp_path)})
    installed = sorted(str(path.relative_to(tmp_path)) for path in tmp_path.rglob("*")
                       if path.is_file())
    assert installed == FILES
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
