#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""On a booted 32-bit ARM machine with real flash: each mode leaves the same bytes as on the host, and power cuts in a
boot with the upgrade's marker lose nothing.

The power is cut after an exact byte of what the flash was programmed with. The next start is that of the installed init
script, which may be cut again at random.
"""

import collections
import os
import pathlib
import sys

import devicePaths
import phones
import proof
from board import cuts, expected, flash, phone
from model import comparison, oneStep

SINGLE_MODES = ("all", "1", "2", "dev", "pwd")
FEW = {"chosen": 16, "random": 4}  # phones of each file system
MANY = {"chosen": sys.maxsize, "random": 215}


def faults_of_modes(board, kind, image, source, program):
    """Every mode without the marker, compared with the host: bytes, owners, permission bits."""
    faults = []
    for mode in SINGLE_MODES:
        host = phones.make_from(phones.snapshot(source), board.folder / "host")
        (host / devicePaths.MARKER[1:]).unlink()
        phones.run(program, host, mode)
        with board.resume(image) as device:
            phone.mount(device, kind)
            device.must(f"rm /firmware{devicePaths.MARKER} && cp -a /firmware/tmp.default/. /firmware/tmp && sync")
            before = len(flash.changes_of(device.programmed()))
            phone.run_mode(device, mode)
            found = phone.dump(device)
            changes = flash.changes_of(device.programmed())[before:]
        wanted = {path: entry for path, entry in phones.snapshot(host).items() if not path.startswith("/phone")}
        for tree in ("/tmp", "/config"):
            wanted.pop(tree), found.pop(tree)
        faults += [f"{kind}, mode {mode}: {fault}" for fault in comparison.differences(wanted, found)]
        print(f"{kind:<9}mode {mode:<4}{flash.count_pages(changes):>5} pages programmed, {len(changes)} bytes", flush=True)
    return faults


def print_counts(kind, counts):
    for (mode, what), count in sorted(counts.items()):
        print(f"{kind:<9}mode {mode:<4}{what:<20}{count:>6} cuts")


def prove(board, kind, image, boots, counts):
    all_cuts = cuts.Cuts(board, kind, image, boots)
    faults = list(all_cuts.faults)
    jobs = all_cuts.places(counts)
    tally = collections.Counter()
    for place, (found, count) in zip(jobs, proof.in_parallel(all_cuts.prove, jobs, at_once=1)):
        faults += found
        tally[place.mode, place.kind] += 1
        tally["any", "again, at random"] += count - 1
    print_counts(kind, tally)
    total = sum(tally.values())
    print(f"{kind:<9}{total} cuts, {len(jobs)} phones", flush=True)
    return faults, total


def main():
    arguments = cuts.parse_arguments(__doc__)
    os.umask(oneStep.UMASK)
    counts = MANY if "KESTRUNE_WHOLE_PROOFS" in os.environ else FEW
    faults = []
    total = 0
    with proof.scratch_folder() as scratch:
        folder = pathlib.Path(scratch)
        source = expected.make_phone(folder / "source")
        boots = expected.Boots(arguments.host_program, folder)
        board = cuts.Board(folder, arguments.program, source)
        for kind in arguments.kind or phone.KINDS:
            image = cuts.make_flash(board, kind, source)
            faults += faults_of_modes(board, kind, image, source, arguments.host_program)
            found, added = prove(board, kind, image, boots, counts)
            faults += found
            total += added
    return proof.end("flashCut", faults, f"{total} cuts on a booted phone, each phone ends as undisturbed")


if __name__ == "__main__":
    sys.exit(main())
