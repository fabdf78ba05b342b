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
FEW = {"of_each": 1, "at_random": 4}  # of each mode and kind of place
MANY = {"of_each": sys.maxsize, "at_random": 300}


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
    """The faults, and the figures."""
    all_cuts = cuts.Cuts(board, kind, image, boots)
    chosen = all_cuts.places(**counts)
    outcomes = [all_cuts.prove(place) for place in chosen]
    tally = collections.Counter((place.mode, place.kind) for place in chosen)
    tally["any", "again, at random"] = sum(outcome.cuts - 1 for outcome in outcomes)
    print_counts(kind, tally)
    lost = sum(bool(outcome.lost) for outcome in outcomes)
    unlike = sum(bool(outcome.unlike) for outcome in outcomes)
    faults = all_cuts.faults + [fault for outcome in outcomes for fault in outcome.lost + outcome.unlike]
    return faults, (f"{tally.total()} cuts of {len(chosen)} phones with {kind}, {lost} of them lost a change, "
                    f"{unlike} did not end as undisturbed")


def main():
    arguments = cuts.parse_arguments(__doc__, "--kind", phone.KINDS)
    os.umask(oneStep.UMASK)
    counts = MANY if "KESTRUNE_WHOLE_PROOFS" in os.environ else FEW
    kind = arguments.kind
    with proof.scratch_folder() as scratch:
        folder = pathlib.Path(scratch)
        source = expected.make_phone(folder / "source")
        boots = expected.Boots(arguments.host_program, folder)
        board = cuts.Board(folder, arguments.program, source)
        image = cuts.make_flash(board, kind, source)
        faults = faults_of_modes(board, kind, image, source, arguments.host_program)
        found, figures = prove(board, kind, image, boots, counts)
    return proof.end("flashCut", faults + found, figures)


if __name__ == "__main__":
    sys.exit(main())
