#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Cuts the power after each writing call of a recorded run, in a model of the worst file system: a run is one step.

Then the same for a run that follows a killed one, which has left changes that are not on the device. The modes run
without the marker, and in the boot's sequence with it. Many of the phones get the next run, and the same run a second
time.
"""

import dataclasses
import os
import pathlib
import random
import sys

import devicePaths
import phones
import proof
import traces
from model import comparison, crashStates, diskModel, oneStep

SEED = 4
MOST_RUNS = {"small": 120, "example": 400}  # phones that run on, of each mode
KILLS = {"small": 8, "example": 12}  # of each mode, with one more run after each
MOST_SECOND_RUNS = {"small": 10, "example": 20}  # phones that run on, after each kill
SEQUENCE = "sequence"


def make_disk(phone):
    return diskModel.Disk(phone, (os.geteuid(), os.getegid()), oneStep.UMASK)


def check_record(run, disk):
    """The model agrees with the run."""
    model = diskModel.files_of(disk.latest())
    real = {path: entry for path, entry in run.after.items() if entry.kind == "file"}
    wrong = comparison.differences(real, model)
    if wrong:
        raise oneStep.BadRecord("the record and the phone disagree: " + "; ".join(wrong))


def kill_points(run, count):
    """Numbers of calls before a kill: for a selection of all phones that a kill may leave, and with an unflushed
    record."""
    disk = make_disk(run.before)
    points = {}
    recorded = []
    for number, call in enumerate(run.calls):
        points.setdefault(frozenset(diskModel.files_of(disk.latest()).items()), number)
        is_record = disk.play(call) and call.file == devicePaths.RECORD and call.name == "write"
        recorded += [number + 1] * is_record
    others = list(points.values())
    return sorted(set(recorded + random.Random(SEED).sample(others, min(count, len(others)))))


def run_again(program, run, disk, scratch):
    """The mode again after a kill. Its changes are those of the killed run, unless that one had ended."""
    folders = {path: entry for path, entry in run.before.items() if entry.kind == "folder"}
    root = phones.make_from({**folders, **diskModel.files_of(disk.latest())}, scratch / "phone")
    before = phones.snapshot(root)
    _, calls = traces.record(program, root, run.mode, scratch / "trace", diskModel.OPTIONS)
    again = dataclasses.replace(run, before=before, after=phones.snapshot(root), calls=calls)
    has_ended = not oneStep.needs_next_run(again.before) and is_same(again.before, run.after)
    if has_ended and not is_same(run.before, run.after):
        return again
    return dataclasses.replace(run, calls=calls)


def is_same(phone, other):
    return oneStep.kept(phone, is_power_cut=True) == oneStep.kept(other, is_power_cut=True)


def cuts_of(program, phone, run, scratch):
    """All phones that a power cut may leave, in the run and in one that follows a killed one."""
    disk = make_disk(run.before)
    cuts = crashStates.Cuts(run, MOST_RUNS[phone])
    cuts.play(disk, run.calls, "power cut")
    if not cuts.faults:
        check_record(run, disk)
        cuts.check_end(disk, "power cut after the end")
    yield run, cuts
    for point in kill_points(run, KILLS[phone]):
        disk = make_disk(run.before)
        for call in run.calls[:point]:
            disk.play(call)
        # Without a record, or after a finished one, changes are found done and not flushed again.
        is_finished = devicePaths.RECORD in diskModel.files_of(disk.latest())
        again = run_again(program, run, disk, scratch)
        cuts = crashStates.Cuts(again, MOST_SECOND_RUNS[phone])
        cuts.play(disk, again.calls, f"killed after call {point}, run again, power cut")
        if is_finished and not cuts.faults:
            cuts.check_end(disk, f"killed after call {point}, run again, power cut after the end")
        yield again, cuts


class NextRun:
    """The next run of a phone after a power cut. Each worker has a separate folder."""

    def __init__(self, program, run, scratch, runs_again):
        self.program = program
        self.run = run
        self.scratch = scratch
        self.runs_again = runs_again

    def faults(self, cut):
        where, found = cut
        root = self.scratch / str(os.getpid())
        faults = oneStep.faults_of(self.program, self.run, found, root, is_power_cut=True, runs_again=self.runs_again)
        return [f"{where}: {fault}" for fault in faults]


def runs_of(program, phone, mode, scratch):
    options = diskModel.OPTIONS
    if mode == SEQUENCE:
        return oneStep.record_sequence(program, phone, scratch, options)
    return [oneStep.record(program, phone, mode, scratch, options)]


def prove(program, phone, mode, scratch):
    """The losses, the number of states, and the number of those that ran on."""
    faults = []
    states = runs = 0
    for run in runs_of(program, phone, mode, scratch):
        name = run.mode + " with the marker" * bool(run.sequence)
        states_before, runs_before = states, runs
        for judged, cuts in cuts_of(program, phone, run, scratch):
            found = list(cuts.faults)
            phones = [] if found else cuts.sampled
            # A run after one that had ended may find that one's record again; then it does nothing of its own.
            next_run = NextRun(program, judged, scratch, runs_again=judged.before is run.before)
            for more in proof.in_parallel(next_run.faults, phones, at_once=4):
                found += more
            faults += [f"mode {name}, {fault}" for fault in found]
            states += len(cuts.known)
            runs += len(phones)
            if found:
                break
        print(f"{name:<24}{states - states_before:>7} states{runs - runs_before:>5} run on", flush=True)
    return faults, states, runs


def main():
    arguments = proof.parse_arguments(__doc__, more_modes=(SEQUENCE,))
    proof.skip_without_sandbox()
    faults = []
    states = runs = 0
    for mode in arguments.mode:
        try:
            with proof.scratch_folder() as scratch:
                found, more_states, more_runs = prove(arguments.program, arguments.phone, mode, pathlib.Path(scratch))
        except (oneStep.BadRecord, diskModel.UnknownCall) as reason:
            found, more_states, more_runs = [f"mode {mode}: {reason}"], 0, 0
        faults += found
        states += more_states
        runs += more_runs
    return proof.end("powerCut", faults,
                     f"{states} states of phones in {len(arguments.mode)} modes, {runs} of them run on")


if __name__ == "__main__":
    sys.exit(main())
