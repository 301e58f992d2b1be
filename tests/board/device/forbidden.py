"""Tries what the daemon's unit must refuse, and a little that it must allow, in the daemon's place.

Leaves in the state folder what came of each: "done", or the name of the error.
"""

import ctypes
import errno
import json
import mmap
import os
import socket
import time
from pathlib import Path

STATE = Path("/var/lib/morvane")
libc = ctypes.CDLL(None, use_errno=True)


def call(function, *arguments):
    if getattr(libc, function)(*arguments) == -1:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def other_temporary_files():
    """Those that others have put into /tmp."""
    if not list(Path("/tmp").glob("of-another")):
        raise FileNotFoundError(errno.ENOENT, "an empty /tmp of its own")


ALLOWED = {
    "write in its state folder": lambda: (STATE / "written").write_text("x"),
    "read the definition files": lambda: Path("/etc/morvane/presets.def").read_text(),
    "open a local socket": lambda: socket.socket(socket.AF_UNIX).close(),
}
REFUSED = {
    "write in /etc": lambda: Path("/etc/morvane/written").write_text("x"),
    "write in /var/lib": lambda: Path("/var/lib/written").write_text("x"),
    "write in /home": lambda: Path("/home/written").write_text("x"),
    "write in /srv": lambda: Path("/srv/written").write_text("x"),
    "see the temporary files of others": other_temporary_files,
    "see the processes of others": lambda: Path("/proc/1/status").read_text(),
    "open an internet socket": lambda: socket.socket(socket.AF_INET, socket.SOCK_DGRAM),
    "open an IPv6 socket": lambda: socket.socket(socket.AF_INET6),
    "open a netlink socket": lambda: socket.socket(socket.AF_NETLINK, socket.SOCK_RAW),
    "read a disk": lambda: os.open("/dev/vda", os.O_RDONLY),
    "set the clock": lambda: time.clock_settime(time.CLOCK_REALTIME, time.time()),
    "become another user": lambda: os.setuid(0),
    "mount": lambda: call("mount", b"none", b"/var/lib/morvane", b"tmpfs", 0, None),
    "make a namespace": lambda: call("unshare", 0x10000000),
    "trace itself": lambda: call("ptrace", 16, 1, None, None),
    "change its root": lambda: os.chroot("/var/lib/morvane"),
    "make memory executable": lambda: mmap.mmap(-1, 4096, prot=mmap.PROT_WRITE | mmap.PROT_EXEC),
    "make a set-user-id file": lambda: os.chmod(STATE / "written", 0o4755),
    "run in real time": lambda: os.sched_setscheduler(0, os.SCHED_FIFO, os.sched_param(1)),
    "raise its priority": lambda: os.nice(-1),
    "write kernel settings": lambda: Path("/proc/sys/kernel/hostname").write_text("x"),
    "read the kernel's log": lambda: os.open("/dev/kmsg", os.O_RDONLY),
}


def outcome_of(deed):
    try:
        deed()
    except OSError as error:
        return errno.errorcode[error.errno]
    return "done"


(STATE / "forbidden.json").write_text(json.dumps(
    {kind: {name: outcome_of(deed) for name, deed in deeds.items()}
     for kind, deeds in (("allowed", ALLOWED), ("refused", REFUSED))}))
