"""Mounts the states of a recorded disk one after the other and reports what is in them, for a file
system that only the kernel can repair.

The disk "stream" is a sequence of steps: a letter, two numbers, data. W writes to what is on the
disk for good, S begins a state with a copy of it, w writes to that, M mounts it, E ends. The disk
"base" is the file system before the first write.
"""

import hashlib
import struct
import zlib
from base64 import b64encode
from pathlib import Path

from report import output, record, sh, until

STEP = struct.Struct("<cQQ")  # letter, offset or number of the state, length of the data
DURABLE, STATE, MOUNTED = Path("/run/durable"), Path("/run/state"), Path("/mnt")
DISKS = Path("/dev/disk/by-id")


def contents(reported):
    """The files of the state, by their digests, which are reported with the data once; a message if
    it cannot be mounted."""
    status, printed = sh(f"mount -o loop,noatime {STATE} {MOUNTED}")
    if status != 0:
        return printed
    files = {}
    for path in MOUNTED.iterdir():
        if path.is_file():
            data = path.read_bytes()
            digest = hashlib.sha256(data).hexdigest()[:16]
            if digest not in reported:
                reported.add(digest)
                record(content=digest, data=b64encode(zlib.compress(data)).decode())
            files[path.name] = digest
    output(f"umount {MOUNTED}")
    return files


def write(stream, offset, data):
    stream.seek(offset)
    stream.write(data)
    stream.flush()


def run():
    until(lambda: (DISKS / "virtio-stream").exists() and (DISKS / "virtio-base").exists())
    output(f"mount -o remount,size=400M /run; cp --sparse=always {DISKS}/virtio-base {DURABLE}")
    reported, state = set(), None
    with (DISKS / "virtio-stream").open("rb") as steps, DURABLE.open("r+b") as durable:
        while (step := STEP.unpack(steps.read(STEP.size)))[0] != b"E":
            letter, number, length = step
            data = steps.read(length)
            if letter == b"W":
                write(durable, number, data)
            elif letter == b"S":
                output(f"cp --sparse=always {DURABLE} {STATE}")
                state = STATE.open("r+b")
            elif letter == b"w":
                write(state, number, data)
            else:
                state.close()
                record(state=number, files=contents(reported))
