#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Cuts the power after each writing call of a recorded run, in a model of the worst file system: nothing is lost.

Every state of every file is checked, each combination of a moved account and its copy, and a sample of all
combinations. Many of the phones get the same mode once more.
"""

import itertools
import os
import pathlib
import random
import sys

import diskModel
import proof
import sandbox
import undisturbed

SEED = 4
MIXED_PHONES_PER_CALL = 8  # of all combinations of what the files may be
MOST_RUNS = {"small": 1000, "example": 2000}  # once more, in each mode
MOST_FAULTS = 20  # in one mode: a program that does not flush has thousands


class Sample:
    """The phones that get the mode once more: those that must, and a fair choice of the others, each phone once."""

    def __init__(self, size):
        self.size = size
        self.random = random.Random(SEED)
        self.numbers = {}
        self.known = set()
        self.main = []
        self.others = []
        self.offered = 0

    def number(self, path, pair):
        """A number for one state of one file: the sum of them tells a phone from all others."""
        key = (path, pair)
        if key not in self.numbers:
            self.numbers[key] = self.random.getrandbits(64)
        return self.numbers[key]

    def sum(self, state):
        return sum(self.number(path, pair) for path, pair in state.items())

    def offer(self, state, state_sum, changes, is_main=False):
        """The state with some files changed. Whether nobody has offered this phone before."""
        for path, pair in changes.items():
            state_sum += self.number(path, pair) - self.number(path, state[path])
        if state_sum in self.known:
            return False
        self.known.add(state_sum)
        if is_main:
            self.main.append({**state, **changes})
        else:
            self.choose(state, changes)
        return True

    def choose(self, state, changes):
        self.offered += 1
        if len(self.others) < self.size:
            self.others.append((state, changes))
            return
        place = self.random.randrange(self.offered)
        if place < self.size:
            self.others[place] = (state, changes)

    def chosen(self):
        room = max(0, self.size - len(self.main))
        return self.main + [{**state, **changes} for state, changes in self.others[:room]]


class PowerCuts:
    """The disk states of one mode, call by call."""

    def __init__(self, run, sample):
        self.run = run
        self.sample = sample
        self.random = random.Random(SEED)
        self.disk = undisturbed.make_disk(run.old)
        paths = set(self.disk.groups).union(*(move[:2] for move in run.moves))
        self.possible = {path: self.disk.possible(path) for path in sorted(paths)}
        self.states_of_files = set()
        self.faults = []
        self.where = ""

    def play(self):
        for number, call in enumerate(self.run.calls, 1):
            if not self.disk.play(call):
                continue
            self.where = f"power cut after {call.name}, call {number} of {len(self.run.calls)}"
            self.check_call()
            if len(self.faults) >= MOST_FAULTS:
                return
        self.check_end()

    def check_call(self):
        for path in sorted(self.disk.changed):
            self.possible[path] = self.disk.possible(path)
            for pair in self.possible[path]:
                self.check_file(path, pair)
        if not self.faults:
            self.check_phones()

    def check_file(self, path, pair):
        """One state of a file and its temporary file, whatever the others are."""
        if (path, pair) in self.states_of_files:
            return
        self.states_of_files.add((path, pair))
        for name, entry in zip((path, path + sandbox.TEMPORARY_SUFFIX), pair):
            if not undisturbed.is_allowed(self.run, name, entry, is_power_cut=True):
                self.faults.append(f"{self.where}: {name} is {undisturbed.told(entry)}")

    def check_phones(self):
        """One file in each of its states, the others as new as can be and as old as can be; then all of them mixed."""
        for state in (self.disk.latest(), self.disk.oldest()):
            state_sum = self.sample.sum(state)
            self.check_phone(state, state_sum, {}, is_main=True)
            for path in sorted(self.disk.changed):
                for pair in self.possible[path]:
                    self.check_phone(state, state_sum, {path: pair})
            for path, copy, _ in self.run.moves:
                for pair, copied in itertools.product(self.possible[path], self.possible[copy]):
                    self.check_phone(state, state_sum, {path: pair, copy: copied}, is_main=True)
        for _ in range(MIXED_PHONES_PER_CALL):
            state = {path: self.random.choice(pairs) for path, pairs in self.possible.items()}
            self.check_phone(state, self.sample.sum(state), {})

    def check_phone(self, state, state_sum, changes, is_main=False):
        is_new = self.sample.offer(state, state_sum, changes, is_main)
        if is_new and self.run.moves:
            found = diskModel.files_of({**state, **changes})
            self.faults += [f"{self.where}: {fault}" for fault in undisturbed.faults_of_moves(self.run, found)]

    def check_end(self):
        """A run that has ended is on the device for good."""
        for path in self.disk.groups:
            files = self.disk.possible(path)
            if len(files) != 1:
                self.faults.append(f"power cut after the end: {path} may be "
                                   + " or ".join(undisturbed.told(file) for file, _ in files))


class Again:
    """One more run of the mode on a phone that lost its power."""

    def __init__(self, program, run, scratch):
        self.program = program
        self.run = run
        self.scratch = pathlib.Path(scratch)
        self.folders = {path: entry for path, entry in run.old.items() if entry.kind == "folder"}

    def faults(self, state):
        found = {**self.folders, **diskModel.files_of(state)}
        root = sandbox.make_from(found, self.scratch / str(os.getpid()))
        status = sandbox.run(self.program, root, self.run.mode).returncode
        if status != 0:
            return [f"one more run ends with status {status}"]
        return undisturbed.faults_of_again(self.run, found, sandbox.snapshot(root))


def prove(program, phone, mode, scratch):
    """What is lost; how many states of files, phones and runs there were."""
    run = undisturbed.record(program, phone, mode, scratch)
    sample = Sample(MOST_RUNS[phone])
    cuts = PowerCuts(run, sample)
    cuts.play()
    faults = [f"mode {mode}, {fault}" for fault in cuts.faults]

    phones = [] if faults else sample.chosen()
    for found in proof.in_parallel(Again(program, run, scratch).faults, phones):
        faults += [f"mode {mode}, power cut: {fault}" for fault in found]
    return faults, (len(cuts.states_of_files), len(sample.known), len(phones))


def main():
    arguments = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    faults = []
    counts = [0, 0, 0]
    for mode in arguments.mode:
        try:
            with proof.scratch_folder() as scratch:
                found, added = prove(arguments.program, arguments.phone, mode, scratch)
        except undisturbed.BadRecord as reason:
            found, added = [f"mode {mode}: {reason}"], (0, 0, 0)
        faults += found
        counts = [count + more for count, more in zip(counts, added)]
    files, phones, runs = counts
    return proof.end("powerCut", faults, f"{files} states of files and {phones} of phones in {len(arguments.mode)} "
                     f"modes, {runs} of these run once more")


if __name__ == "__main__":
    sys.exit(main())
