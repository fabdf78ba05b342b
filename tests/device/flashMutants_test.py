#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Proves the power cuts on real flash: a program that does not flush fails after each of its cuts; with
KESTRUNE_WHOLE_PROOFS also programs without one step of the commit.
"""

import os
import pathlib
import sys
import tempfile

import mutants_test
import proof
from board import cuts, expected, variants
from model import mutants, oneStep

# JFFS2 writes at once what a program writes, so only UBIFS needs the flushes.
CONTROL_KIND = "UBIFS"
CONTROL_CUTS = 4
# Mutants of fault/mutants, the file system on which they are tried, and whether cuts there find them. The others are
# found by the host's model: it drops unflushed changes of its own choice, damages records, and kills the recovery.
TRIED = (
    ("writing in place", "JFFS2", True),
    ("no flush of a temporary file", "UBIFS", True),
    ("no flush of the temporary files' folders", "UBIFS", False),
    ("record made before the temporary files", "JFFS2", True),
    ("no flush of the record", "UBIFS", True),
    ("no flush of the record's folder", "UBIFS", False),
    ("checksum of the record not tested", "JFFS2", False),
    ("no recovery", "JFFS2", False),
    ("second name of a renamed file not removed", "JFFS2", True),
    ("no flush of the marker", "UBIFS", False),
)
CUTS_OF_A_MUTANT = {"of_each": 1, "at_random": 0}  # of each mode and kind of place


def faults_of(all_cuts, place):
    outcome = all_cuts.prove(place)
    return outcome.lost + outcome.unlike


def prove_control(board, image, boots):
    """Every cut after the first rename: the files have their names, but not their bytes."""
    all_cuts = cuts.Cuts(board, CONTROL_KIND, image, boots)
    chosen = [place for place in all_cuts.places(sys.maxsize, 0) if place.kind == "half of a rename"]
    chosen = chosen[:: max(1, len(chosen) // CONTROL_CUTS)][-CONTROL_CUTS:]
    found = [bool(faults_of(all_cuts, place)) for place in chosen]
    faults = [f"control, undisturbed: {fault}" for fault in all_cuts.faults]
    print(f"control: {sum(found)} of {len(found)} cuts of a program without flushes found", flush=True)
    if not found or not all(found):
        faults.append("control: not every cut was found")
    return faults


def prove_mutant(board, kind, image, boots):
    """The number of cuts that were found, of how many, and the first fault."""
    all_cuts = cuts.Cuts(board, kind, image, boots)
    chosen = all_cuts.places(**CUTS_OF_A_MUTANT)
    wrong = [faults for faults in (faults_of(all_cuts, place) for place in chosen) if faults]
    return len(wrong), len(chosen), (all_cuts.faults + [fault for faults in wrong for fault in faults] + ["nothing"])[0]


def main():
    arguments = cuts.parse_arguments(__doc__)
    os.umask(oneStep.UMASK)
    faults = []
    with proof.scratch_folder() as scratch:
        folder = pathlib.Path(scratch)
        source = expected.make_phone(folder / "source")
        boots = expected.Boots(arguments.host_program, folder)
        board = cuts.Board(folder, arguments.program, source)
        flashes = {kind: cuts.make_flash(board, kind, source) for kind in ("UBIFS", "JFFS2")}
        begin = {kind: image.read_bytes() for kind, image in flashes.items()}

        def changed(kind, name, text):
            with tempfile.TemporaryDirectory() as built:
                board.install(variants.build(arguments.program, name, text, pathlib.Path(built)))
            flashes[kind].write_bytes(begin[kind])
            return board, kind, flashes[kind], boots

        changed_board, _, image, _ = changed(CONTROL_KIND, "noFlushes.cpp", variants.NO_FLUSHES)
        faults += prove_control(changed_board, image, boots)
        for name, kind, is_found_here in TRIED if "KESTRUNE_WHOLE_PROOFS" in os.environ else ():
            (mutant,) = [mutant for mutant in mutants.MUTANTS if mutant.name == name]
            found, count, shown = prove_mutant(*changed(kind, mutant.source, mutants_test.mutated(mutant)))
            print(f"{name}, {kind}: {found} of {count} cuts, first: {shown[:200]}", flush=True)
            if is_found_here and shown == "nothing":
                faults.append(f"{name}: not found on {kind}")
    return proof.end("flashMutants", faults, "a program without flushes fails")


if __name__ == "__main__":
    sys.exit(main())
