# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The places of a boot at which the power is cut: before, in and after what the file system has written for each name
and for the commit record, the pages around them, and random bytes.

The nodes of JFFS2 and UBIFS are found in the chip's content after the boot, and the log tells when each byte was programmed.
"""

import dataclasses
import random
import struct

from board import flash

RECORD = "kestrune-commit"
JFFS2_MAGIC, JFFS2_NAME, JFFS2_DATA = b"\x85\x19", 0xC001, 0xC002  # without the bit that marks a valid node
JFFS2_VALID = 0x2000
UBIFS_MAGIC, UBIFS_INODE, UBIFS_DATA, UBIFS_NAME = b"\x31\x18\x10\x06", 0, 1, 2


@dataclasses.dataclass(frozen=True)
class Node:
    """What the file system has written for a name (`inode` 0: the name is removed) or for a file (`name` None)."""

    start: int  # number of its first change
    end: int    # number of the change after its last one
    name: str
    inode: int


@dataclasses.dataclass(frozen=True)
class Place:
    """`changes`: as many changes are on the chip."""

    changes: int
    mode: str
    kind: str


def jffs2_node(content, at):
    """The length, name and inode at this address; None if there is no such node."""
    if content[at:at + 2] != JFFS2_MAGIC:
        return None
    kind, length = struct.unpack_from("<HI", content, at + 2)
    kind &= ~JFFS2_VALID
    if kind == JFFS2_NAME:
        inode, size = struct.unpack_from("<I4xB", content, at + 20)
        return length, content[at + 40:at + 40 + size].decode(errors="replace"), inode
    if kind == JFFS2_DATA:
        return length, None, struct.unpack_from("<I", content, at + 12)[0]
    return None


def ubifs_node(content, at):
    if content[at:at + 4] != UBIFS_MAGIC:
        return None
    length, kind = struct.unpack_from("<IB", content, at + 16)
    if kind == UBIFS_NAME:
        inode, size = struct.unpack_from("<Q2xH", content, at + 40)
        return length, content[at + 56:at + 56 + size].decode(errors="replace"), inode
    if kind in (UBIFS_INODE, UBIFS_DATA):
        return length, None, struct.unpack_from("<I", content, at + 24)[0]
    return None


def nodes_of(image, changes):
    """The nodes that these changes have written, in order."""
    numbers = {}
    for number, (address, value) in enumerate(changes):
        if value == flash.ERASED:
            for erased in range(address, address + flash.BLOCK):
                numbers.pop(erased, None)
        else:
            numbers.setdefault(address, number)  # JFFS2 marks an old node as invalid later
    content = flash.after(image, changes)
    found = []
    for address in numbers:
        read = address % 4 == 0 and (jffs2_node(content, address) or ubifs_node(content, address))
        if not read:
            continue
        length, name, inode = read
        written = [numbers[byte] for byte in range(address, address + length) if byte in numbers]
        if len(written) == length:
            found.append(Node(min(written), max(written) + 1, name, inode))
    return sorted(found, key=lambda node: (node.start, node.end))


def kinds_of(nodes):
    """Each node with what it is: a rename is a new name and the removal of the old one right after it."""
    names = [node for node in nodes if node.name is not None]
    records = {node.inode for node in names if node.name == RECORD and node.inode != 0}
    kinds = {node: "commit record" for node in nodes if node.name is None and node.inode in records}
    for node, following in zip(names, names[1:] + [None]):
        if node in kinds:
            continue
        if node.inode == 0:
            kinds[node] = "removal"
        elif following is not None and following.inode == 0 and following.name != node.name:
            kinds[node] = "rename"
            kinds[following] = "half of a rename"
        else:
            kinds[node] = "folder entry"
    return [(node, kinds[node]) for node in nodes if node in kinds]


def mode_at(nodes, modes, change):
    """Each mode removes its record last."""
    ended = sum(node.name == RECORD and node.inode == 0 and node.end <= change for node in nodes)
    return modes[min(ended, len(modes) - 1)]


def page_starts(changes):
    """The numbers of the changes that begin a page."""
    starts = []
    last = None
    for number, (address, _) in enumerate(changes):
        if last is None or address != last + 1 or address % flash.PAGE == 0:
            starts.append(number)
        last = address
    return starts


def chosen(image, changes, modes):
    """Every place that is not random: in order, each number of changes once."""
    nodes = nodes_of(image, changes)
    starts = page_starts(changes)
    kinds = {}
    for node, kind in kinds_of(nodes):
        for number in (node.start, (node.start + node.end) // 2, node.end):
            kinds.setdefault(number, kind)
    for node, _ in kinds_of(nodes):
        before = [start for start in starts if start < node.start][-1:]
        after = [start for start in starts if start > node.end][:1]
        for number in before + after:
            kinds.setdefault(number, "page around these")
    return [Place(number, mode_at(nodes, modes, number), kind) for number, kind in sorted(kinds.items())]


def at_random(image, changes, modes, count, seed):
    nodes = nodes_of(image, changes)
    numbers = random.Random(seed).choices(range(1, len(changes) + 1), k=count)
    return [Place(number, mode_at(nodes, modes, number), "random byte") for number in numbers]
