# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The phones that a power cut in a run may leave, and a random sample of those that then run on."""

import devicePaths
import random
from model import comparison, diskModel, oneStep


SEED = 4
MIXED_PHONES_PER_CALL = 8  # of all combinations of the files' states
MOST_FAULTS = 20  # of one run: a program that does not flush has thousands


def is_lost(path):
    return path.startswith("/tmp/")


class Cuts:
    """Each phone counts once. All are judged as they are; those in `sampled` still have to run on."""

    def __init__(self, run, most_chosen):
        self.run = run
        self.most_chosen = most_chosen
        self.folders = {path: entry for path, entry in run.before.items() if entry.kind == "folder"}
        self.ends = [oneStep.kept(phone, is_power_cut=True) for phone in (run.before, run.after)]
        self.random = random.Random(SEED)
        self.numbers = {}
        self.known = set()
        self.sampled = []
        self.offered = 0
        self.faults = []

    def play(self, disk, calls, told):
        """Takes the disk through the calls, with a power cut after each."""
        possible = {name: disk.possible(group) for name, group in disk.groups.items()}
        self.check(disk.latest(), {}, f"{told} before the first call")
        for number, call in enumerate(calls, 1):
            if not disk.play(call):
                continue
            for name in disk.changed:
                possible[name] = disk.possible(disk.groups[name])
            self.check_call(disk, possible, f"{told} after {call.name}, call {number} of {len(calls)}")
            if len(self.faults) >= MOST_FAULTS:
                return

    def check_call(self, disk, possible, where):
        """One file in each of its states, the others as new as can be and as old as can be; then all of them mixed."""
        for state in (disk.latest(), disk.oldest()):
            self.check(state, {}, where)
            for group in disk.changed_groups():
                for changes in possible[group.names[0]]:
                    self.check(state, changes, where)
        for _ in range(MIXED_PHONES_PER_CALL):
            state = {}
            for group in disk.all_groups():
                state.update(self.random.choice(possible[group.names[0]]))
            self.check(state, {}, where)

    def number(self, item):
        """A number for one state of one file: their sum identifies a phone."""
        if item not in self.numbers:
            self.numbers[item] = self.random.getrandbits(64)
        return self.numbers[item]

    def check(self, state, changes, where):
        files = diskModel.files_of({**state, **changes})
        found = {path: entry for path, entry in files.items() if not is_lost(path)}
        key = sum(self.number(item) for item in found.items())
        if key in self.known:
            return
        self.known.add(key)
        found.update(self.folders)
        if not oneStep.needs_next_run(found) and oneStep.kept(found, is_power_cut=True) not in self.ends:
            self.faults.append(f"{where}: {oneStep.told_as_neither(self.run, found, is_power_cut=True)}")
        else:
            self.choose(where, found)

    def choose(self, where, found):
        """All phones are equally likely."""
        self.offered += 1
        if len(self.sampled) < self.most_chosen:
            self.sampled.append((where, found))
            return
        place = self.random.randrange(self.offered)
        if place < self.most_chosen:
            self.sampled[place] = (where, found)

    def check_end(self, disk, told):
        """The changes of a run that has ended are on the device."""
        for group in disk.all_groups():
            names = [name for name in group.names if not is_lost(name) and not devicePaths.is_temporary(name)]
            states = disk.possible(group)
            for name in names:
                entries = {state[name] for state in states}
                if len(entries) != 1:
                    self.faults.append(f"{told}: {name} may be " + " or ".join(map(comparison.shown, entries)))
