"""The states in which a power cut can leave a disk whose writes QEMU recorded (blklogwrites).

A disk may keep what it was sent since the last flush in any order, and lose any part of it: a state
is all that was written before the last flush, and some of the blocks since.
"""

import math
import random
import struct
from dataclasses import dataclass

MAGIC = 0x6A736677736872
SUPER = struct.Struct("<QQQI")  # magic, version, number of entries, bytes of a sector
ENTRY = struct.Struct("<QQQQ")  # sector, number of sectors, flags, length of data
FLUSH, FUA, DISCARD, MARK = 1, 2, 4, 8
BLOCK = 4096  # what a disk writes whole


class WriteLogError(Exception):
    """The log is not one of QEMU's."""


@dataclass(frozen=True)
class Write:
    """Bytes of the disk; `kept` if they reach it although no flush followed."""

    offset: int
    data: bytes
    kept: bool


def read_spans(path, first_kept):
    """The writes between two flushes each, in blocks. Those from byte `first_kept` of the disk on
    are kept."""
    log = path.read_bytes()
    magic, version, entries, sector = SUPER.unpack_from(log)
    if (magic, version) != (MAGIC, 1):
        raise WriteLogError(f"{path} is no log of writes")
    spans, place = [[]], sector
    for _ in range(entries):
        first, count, flags, _ = ENTRY.unpack_from(log, place)
        place += sector
        if flags & DISCARD:
            continue
        data, place = log[place:place + count * sector], place + count * sector
        if flags & FLUSH:
            spans.append([])
        for at in range(0, len(data), BLOCK):
            offset = first * sector + at
            spans[-1].append(Write(offset, data[at:at + BLOCK],
                                   bool(flags & FUA) or offset >= first_kept))
    return spans


def states(spans, wanted, seed=1):
    """For each span its writes and the states in it, at least `wanted` in all: each a list of the
    indices of those that reached the disk. First random ones: each ends at a random write, and has
    the kept ones and half of the others before it. Then all that leave none out before their last
    write, so that the very last state is the disk as it was left."""
    choose = random.Random(seed)
    boundaries = sum(len(span) + 1 for span in spans)
    subsets = math.ceil(max(0, wanted - boundaries) / max(1, sum(len(span) > 1 for span in spans)))
    for span in spans:
        found = []
        for _ in range(subsets if len(span) > 1 else 0):
            end = choose.randint(1, len(span))
            found.append([i for i in range(end) if span[i].kept or choose.random() < 0.5])
        found += [list(range(end)) for end in range(len(span) + 1)]
        yield span, found
