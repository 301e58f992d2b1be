"""Disks that the board writes to, what it wrote, and in which states a power cut can leave them."""

import json
from dataclasses import dataclass

from image import run
from write_log import read_spans, states

MIB = 1 << 20
FIRST_PARTITION = MIB


@dataclass(frozen=True)
class FileSystem:
    """How one is made in a file, and how a state of it is repaired and its files are copied to a
    folder, by shell commands with {disk} and {folder}."""

    make: str
    repair: str
    read: str
    size: int  # in MiB


# Without what the kernel would otherwise write in the background.
MAKE_EXT4 = "mke2fs -q -t ext4 -b 4096 -E lazy_itable_init=0,lazy_journal_init=0 {disk}"
# A status of 1 says that something was repaired.
REPAIR_EXT4 = "e2fsck -fy {disk} || [ $? -eq 1 ]"
READ_EXT4 = 'debugfs -R "rdump / {folder}" {disk}'
FILE_SYSTEMS = {
    "ext4": FileSystem(MAKE_EXT4, REPAIR_EXT4, READ_EXT4, 16),
    "ext4-no-journal": FileSystem(MAKE_EXT4 + " -O ^has_journal", REPAIR_EXT4, READ_EXT4, 16),
    "vfat": FileSystem("mkfs.vfat -F 16 {disk}", "fsck.vfat -aw {disk} || [ $? -eq 1 ]",
                       "mcopy -s -n -i {disk} ::/ {folder}", 16),
    # Only its kernel module finds what was synced last.
    "f2fs": FileSystem("mkfs.f2fs -q {disk}", "", "", 64),
}


def make_disk(kind, path):
    """Makes a disk with a file system in its first partition and 1 MiB in its second; the first
    alone is in a file beside it, whose name ends in .part."""
    system = FILE_SYSTEMS[kind]
    part = path.with_suffix(".part")
    with part.open("wb") as stream:
        stream.truncate(system.size * MIB)
    run("sh", "-c", system.make.format(disk=part))
    with path.open("wb") as stream:
        stream.truncate((system.size + 2) * MIB)
    run("sfdisk", "--quiet", path,
        input=f"start=1MiB, size={system.size}MiB\nstart={system.size + 1}MiB, size=1MiB\n")
    run("dd", f"if={part}", f"of={path}", "bs=1M", "seek=1", "conv=notrunc,sparse")


def record(board, kinds, folder, fault=""):
    """Has the board store versions to disks with file systems of these kinds, recording what it
    writes: NAME.log for each, and NAME.part as the file system was before."""
    drives = []
    for kind in kinds:
        make_disk(kind, folder / f"{kind}.disk")
        log = folder / f"{kind}.log"
        log.write_bytes(b"")
        drives += ["-drive", f"if=none,id={kind},driver=blklogwrites,"
                             f"file.driver=file,file.filename={folder}/{kind}.disk,"
                             f"log.driver=file,log.filename={log},log-sector-size=512",
                   "-device", f"virtio-blk-device,drive={kind},serial={kind}"]
    arguments = f"board.disks={','.join(kinds)}" + (f" board.fault={fault}" if fault else "")
    return board.run("stores", drives=drives, arguments=arguments)


@dataclass(frozen=True)
class State:
    """What a power cut can leave: the writes that are on the disk for good since the state before,
    some of those that came after them, both of the file system alone, and the versions that were
    answered until then."""

    number: int
    durable: list
    writes: list
    answered: dict


def walk(log, size, wanted):
    """At least `wanted` states of a recorded disk, in order; `size` is that of its file system."""
    second = FIRST_PARTITION + size * MIB

    def in_file_system(writes):
        return [(w.offset - FIRST_PARTITION, w.data) for w in writes
                if FIRST_PARTITION <= w.offset < second]

    def last_answers(writes, before):
        records = [w.data for w in writes if w.offset == second]
        return json.loads(records[-1]) if records else before

    number, durable, answered = 0, [], {}
    for span, found in states(read_spans(log, second), wanted):
        for indices in found:
            writes = [span[i] for i in indices]
            yield State(number, in_file_system(durable), in_file_system(writes),
                        last_answers(writes, answered))
            number, durable = number + 1, []
        durable += span
        answered = last_answers(span, answered)
