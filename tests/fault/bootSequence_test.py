#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Cuts the power right before each writing call of a whole boot, and starts the phone again with an empty "/tmp", as
often as necessary: every phone ends like one that was never interrupted.
"""

import fcntl
import os
import pathlib
import random
import shutil
import sys

import devicePaths
import phones
import proof
from model import boot, comparison, oneStep

SEED = 7
MOST_BOOTS = 5
THEN_KILLED = "the same, 1 killed then"  # before it can finish the interrupted run: the firmware step must wait
KILL_OF_NEXT_START = ("1", "flock", 1)
REPEATED_CUTS = {"small": 12, "example": 60}  # for each sequence

# The name, the upgrade's marker, and the commands of the boot; None means those of the documentation.
SEQUENCES = (
    ("1, step, 2, all", "1\n2\nall\n", None),
    (THEN_KILLED, "1\n2\nall\n", None),
    ("1, 2", "1\n2\n", "kestrune.init start\n"),
    ("2, 1, all: out of order", "2\n1\nall\n", None),
    ("pwd, no marker", None, "kestrune pwd\n"),
    ("all, no marker", None, "kestrune all\n"),
    ("dev, no marker", None, "kestrune dev\n"),
)
LAST_WITH_TWO_SHELLS = 2  # the others call the same script, or none
EVERY = {("small", "busybox"): 3}  # only each third cut


class Sequence:
    """One sequence under one shell: the phone at its start, and at its end without interruption."""

    def __init__(self, program, phone, sequence, shell, scratch):
        self.name, self.marker, start = sequence
        self.scratch = scratch
        root = oneStep.make_marked_phone(phone, scratch / "phone")
        (root / devicePaths.HAND_OVER[1:]).unlink(missing_ok=True)
        if self.marker is not None:
            (root / devicePaths.MARKER[1:]).write_text(self.marker)
        self.begin = phones.snapshot(root)
        self.boot = boot.Boot(program, shell, scratch / "boot", start)
        self.ends = {}
        self.cuts = [("step", "", 0)] if "lay-new-settings" in (self.boot.folder / "start").read_text() else []
        self.end = self.finish(root, self.record_boot)

    def is_out_of_order(self):
        return self.marker is not None and self.marker.startswith("2")

    def record_boot(self, root):
        self.cuts += [cut for cut in self.boot.cuts(root, self.scratch / "trace") if cut not in self.cuts]

    def jobs(self, repeated_cuts):
        """Each single cut, and so many of which two more follow in the next starts, in the same mode."""
        chance = random.Random(SEED)
        repeated = []
        for _ in range(repeated_cuts):
            first = chance.choice(self.cuts)
            repeated.append((first, *chance.choices([cut for cut in self.cuts if cut[0] == first[0]], k=2)))
        return [(cut,) for cut in self.cuts] + repeated

    def finish(self, root, run_boot):
        """Starts the phone with an empty "/tmp" until the sequence has ended; returns the phone."""
        for _ in range(MOST_BOOTS):
            found = oneStep.without_tmp(phones.snapshot(root))
            if self.has_ended(found):
                return found
            phones.make_from(found, root)
            run_boot(root)
        return oneStep.without_tmp(phones.snapshot(root))

    def has_ended(self, found):
        """Without a marker, only this proof knows that a run has ended and must not be repeated."""
        if any(devicePaths.is_of_commit(path) for path in found):
            return False
        if self.marker is None:
            return found != oneStep.without_tmp(self.begin)
        return devicePaths.MARKER not in found

    def faults(self, cuts):
        """The faults at the end, and the number of power cuts: a repeated cut may come too late."""
        root = phones.make_from(self.begin, comparison.worker_folder(self.scratch) / "phone")
        count = sum(self.boots_into(self.boot.run_with_cut, cut, root) for cut in cuts)
        if self.name == THEN_KILLED:
            self.boots_into(self.boot.run_with_kill, KILL_OF_NEXT_START, root)
        if count == 0:
            return ["the power did not go"], 0
        found = self.end_from(oneStep.without_tmp(phones.snapshot(root)), root)
        return comparison.differences(self.end, found), count

    def boots_into(self, run_boot, cut, root):
        """Starts the phone until the power cut; returns false if the sequence has ended without one."""
        for _ in range(MOST_BOOTS):
            found = oneStep.without_tmp(phones.snapshot(root))
            if self.has_ended(found):
                return False
            phones.make_from(found, root)
            if run_boot(root, cut):
                return True
        return False

    def end_from(self, found, root):
        """Many cuts leave the same phone, which is started again only once."""
        key = frozenset(found.items())
        if key not in self.ends:
            self.ends[key] = self.finish(phones.make_from(found, root), self.boot.run)
        return self.ends[key]


def faults_of_end(sequence):
    """Faults of the undisturbed boots themselves."""
    names = [devicePaths.MARKER]
    if not sequence.is_out_of_order():
        names.append(devicePaths.HAND_OVER_COPY)  # mode "2" removes the copy
    left = [path for path in sequence.end if devicePaths.is_of_commit(path) or path in names]
    return [f"the undisturbed boot leaves {left}"] * bool(left)


def prove(program, phone, number, shell, scratch):
    sequence = Sequence(program, phone, SEQUENCES[number], shell, scratch)
    jobs = sequence.jobs(REPEATED_CUTS[phone])[::EVERY.get((phone, shell), 1)]
    faults = faults_of_end(sequence)
    wrong = count = 0
    for cuts, (found, went) in zip(jobs, proof.in_parallel(sequence.faults, jobs)):
        where = " and ".join(f"{mode} before {call} {nth}" for mode, call, nth in cuts)
        faults += [f"{sequence.name}, {shell}, cut in {where}: {fault}" for fault in found]
        wrong += bool(found)
        count += went
    print(f"{sequence.name:<26}{shell:<9}{len(jobs):>6} phones{count:>6} cuts{len(jobs) - wrong:>6} end as undisturbed",
          flush=True)
    return faults, count


def faults_of_time_limit(program, phone, shell, scratch):
    """Another process has the lock for longer than the script waits: no mode does anything, and the next boot does
    everything."""
    sequence = Sequence(program, phone, SEQUENCES[0], shell, scratch)
    hurried = boot.Boot(program, shell, scratch / "hurried", limit_seconds=1)
    root = phones.make_from(sequence.begin, scratch / "phone")
    lock = os.open(root / "config", os.O_RDONLY)
    fcntl.flock(lock, fcntl.LOCK_EX)
    hurried.run(root)
    found = phones.snapshot(root)
    os.close(lock)
    faults = comparison.differences(sequence.begin, found)
    faults += comparison.differences(sequence.end, sequence.finish(root, sequence.boot.run))
    return [f"{shell}, killed by the time limit: {fault}" for fault in faults]


def main():
    arguments = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    if shutil.which("busybox") is None:
        proof.skip("busybox is not installed")
    os.umask(oneStep.UMASK)
    faults = []
    count = 0
    for shell in boot.SHELLS:
        for number in range(len(SEQUENCES)):
            if shell != "dash" and number > LAST_WITH_TWO_SHELLS:
                continue
            with proof.scratch_folder() as scratch:
                found, added = prove(arguments.program, arguments.phone, number, shell, pathlib.Path(scratch))
            faults += found
            count += added
        with proof.scratch_folder() as scratch:
            faults += faults_of_time_limit(arguments.program, arguments.phone, shell, pathlib.Path(scratch))
    return proof.end("bootSequence", faults, f"{count} cuts in {len(SEQUENCES)} sequences")


if __name__ == "__main__":
    sys.exit(main())
