#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Kills a run, runs the mode once more, and cuts the power during that run and after it: nothing is lost.

The killed run leaves changes behind that are not on the device. What the second run saves is there when it has ended, and
an original goes only after its copy is there, whichever run made the copy. A save that finds its bytes in the file already
flushes nothing, so such a file may still be the old one, whole: the next run does that work again.
"""

import itertools
import os
import pathlib
import random
import sys

import diskModel
import proof
import sandbox
import trace
import undisturbed

SEED = 4
MOST_SECOND_RUNS = {"small": 100, "example": 100}  # in each mode


def kill_points(run):
    """How many calls the killed run made: for each phone that a kill may leave the fewest, when least is flushed."""
    disk = undisturbed.make_disk(run.old)
    points = {}
    for number, call in enumerate(run.calls):
        points.setdefault(frozenset(diskModel.files_of(disk.latest()).items()), number)
        disk.play(call)
    points.setdefault(frozenset(diskModel.files_of(disk.latest()).items()), len(run.calls))
    return list(points.values())


class SecondRun:
    """The disk while the mode runs once more, with what the killed run has not flushed."""

    def __init__(self, program, run, scratch):
        self.program = program
        self.run = run
        self.scratch = scratch
        self.folders = {path: entry for path, entry in run.old.items() if entry.kind == "folder"}

    def faults(self, point):
        disk = undisturbed.make_disk(self.run.old)
        for call in self.run.calls[:point]:
            disk.play(call)
        try:
            calls = self.record(disk)
            return self.play(disk, calls) or self.faults_of_end(disk, calls)
        except diskModel.UnknownCall as call:
            return [str(call)]

    def record(self, disk):
        worker = self.scratch / str(os.getpid())
        worker.mkdir(exist_ok=True)
        root = sandbox.make_from({**self.folders, **diskModel.files_of(disk.latest())}, worker / "phone")
        _, calls = trace.record(self.program, root, self.run.mode, worker / "trace", diskModel.OPTIONS)
        return calls

    def play(self, disk, calls):
        # What the killed run had moved to its end is an ordinary file now, and may change again.
        moves = [move for move in self.run.moves if disk.inode_at(move[0]) is not None]
        for number, call in enumerate(calls, 1):
            if not disk.play(call):
                continue
            faults = self.faults_of_moves(disk, moves)
            if faults:
                return [f"after {call.name}, call {number} of {len(calls)}: {fault}" for fault in faults]
        return []

    def faults_of_moves(self, disk, moves):
        """A moved file is in one of its two places, in each combination of what the two may be."""
        faults = []
        for path, copy, _ in moves:
            if not disk.changed & {path, copy}:
                continue
            for pair, copied in itertools.product(disk.possible(path), disk.possible(copy)):
                found = diskModel.files_of({path: pair, copy: copied})
                faults += undisturbed.faults_of_moves(self.run, found)
        return faults

    def faults_of_end(self, disk, calls):
        """The second run has ended: what it saved is on the device."""
        return [f"after the end: {path} may be {told(disk.possible(path))}" for path in sorted(saved_by(calls))
                if len(disk.possible(path)) != 1]


def saved_by(calls):
    names = [call.texts[-1].decode(errors="surrogateescape") for call in calls
             if call.name == "rename" and call.result == 0]
    return {name for name in names if diskModel.is_of_phone(name)}


def told(pairs):
    return " or ".join(undisturbed.told(file) + (" and a temporary file" if temporary else "")
                       for file, temporary in pairs)


def prove(program, phone, mode, scratch):
    run = undisturbed.record(program, phone, mode, scratch)
    points = kill_points(run)
    points = random.Random(SEED).sample(points, min(len(points), MOST_SECOND_RUNS[phone]))
    faults = []
    for point, found in zip(points, proof.in_parallel(SecondRun(program, run, scratch).faults, points, at_once=4)):
        where = f"mode {mode}, killed after {point} of {len(run.calls)} calls, run once more, power cut"
        faults += [f"{where} {fault}" for fault in found]
    return faults, len(points)


def main():
    arguments = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    faults = []
    count = 0
    for mode in arguments.mode:
        try:
            with proof.scratch_folder() as scratch:
                found, added = prove(arguments.program, arguments.phone, mode, pathlib.Path(scratch))
        except undisturbed.BadRecord as reason:
            found, added = [f"mode {mode}: {reason}"], 0
        faults += found
        count += added
    return proof.end("secondRun", faults, f"{count} runs after a killed one in {len(arguments.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
