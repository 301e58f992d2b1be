"""The states in which a power cut can leave a disk whose writes QEMU recorded (blklogwrites).

A disk may keep what it was sent since the last flush in any order, and lose any part of it: a state
is all that was written before the last flush, and some of the blocks since.
"""

import random
import struct
from dataclasses import dataclass

MAGIC = 0x6A736677736872
SUPER = struct.Struct("<QQQI")  # magic, version, number of entries, bytes of a sector
ENTRY = struct.Struct("<QQQQ")  # sector, number of sectors, flags, length of data
FLUSH, FUA, DISCARD, MARK = 1, 2, 4, 8
BLOCK = 4096  # what a disk writes whole
SECTOR = 512  # on whose multiples writes begin and end
TRIES = 20  # until a span is taken to have no further state


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


class Span:
    """The writes between two flushes, and the states that they can leave, each of which is known by
    what it changes on the disk: two lists of writes that leave the same bytes are one state.

    `sectors` has what was written before, by the sectors' offsets; the span adds its own."""

    def __init__(self, writes, sectors):
        self.writes = writes
        self.sectors = [[(write.offset + at, write.data[at:at + SECTOR])
                         for at in range(0, len(write.data), SECTOR)] for write in writes]
        self.before = {offset: sectors.get(offset)
                       for group in self.sectors for offset, _ in group}
        sectors.update(sector for group in self.sectors for sector in group)
        self.random, self.ordered = {}, {}  # indices of the writes that reached the disk
        for end in range(len(writes) + 1):
            indices = list(range(end))
            if change := self.change(indices):
                self.ordered.pop(change, None)  # so that the last one is the whole span
                self.ordered[change] = indices

    def change(self, indices):
        changed = dict(sector for i in indices for sector in self.sectors[i])
        return frozenset((offset, data) for offset, data in changed.items()
                         if data != self.before[offset])

    def add_random(self, choose):
        """Adds a state that ends at a random write and has the kept ones and half of the others
        before it. Returns whether a new one was found."""
        for _ in range(TRIES):
            end = choose.randint(0, len(self.writes))
            indices = [i for i in range(end) if self.writes[i].kept or choose.random() < 0.5]
            change = self.change(indices)
            if change and change not in self.ordered and change not in self.random:
                self.random[change] = indices
                return True
        return False


def states(spans, wanted, seed=1):
    """For each span its writes and the states in it: `wanted` different ones in all, less if there
    are no more, more if there are more write boundaries. Each is a list of the indices of the
    writes that reached the disk. First random ones, about as many for each span; then all that
    leave none out before their last write, so that the very last state is the disk as it was
    left."""
    choose, sectors = random.Random(seed), {}
    found = [Span(writes, sectors) for writes in spans]
    missing, growing = wanted - sum(len(span.ordered) for span in found), found
    while missing > 0 and growing:
        growing = [span for span in growing if span.add_random(choose)]
        missing -= len(growing)
    for span in found:
        yield span.writes, [*span.random.values(), *span.ordered.values()]
