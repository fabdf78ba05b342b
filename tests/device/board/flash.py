# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The content of the chip of `/config`, from the log of what the machine has programmed, after any byte of it."""

import re

BLOCK = 64 << 10
PAGE = 256
LINE = re.compile(rb"^m25p80_(?:page_program \[\w+\] page program cur_addr=0x([0-9a-f]+) data=0x([0-9a-f]+)"
                  rb"|flash_erase \[\w+\] offset = 0x([0-9a-f]+), len = (\d+))$", re.MULTILINE)
ERASED = -1


def changes_of(log):
    """The changes of the chip in order: (address, byte), or (address, ERASED) for a block."""
    found = []
    for address, value, erased, length in LINE.findall(log):
        if address:
            found.append((int(address, 16), int(value, 16)))
        elif int(length) == BLOCK:
            found.append((int(erased, 16), ERASED))
        else:
            raise ValueError(f"an erasure of {length.decode()} bytes")
    return found


def after(image, changes):
    """The image after these changes. NOR flash can only clear bits."""
    content = bytearray(image)
    for address, value in changes:
        if value == ERASED:
            content[address:address + BLOCK] = b"\xff" * BLOCK
        else:
            content[address] &= value
    return bytes(content)


def count_pages(changes):
    """How many pages were programmed: runs of neighbouring bytes within one page."""
    count = 0
    last = None
    for address, value in changes:
        if value == ERASED:
            last = None
            continue
        if last is None or address != last + 1 or address % PAGE == 0:
            count += 1
        last = address
    return count


def count_erasures(changes):
    return sum(value == ERASED for _, value in changes)
