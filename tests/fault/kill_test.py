#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Kills each mode right before each of its calls that may change a file: the phone is as before the run or as after it
once the next run has started, with "/tmp" kept or emptied by a new start, and one more run corrects everything.
"""

import pathlib
import sys

import devicePaths
import phones
import proof
from model import comparison, kills, oneStep


class Kills:
    """The kills of one mode. Each worker has a separate phone."""

    def __init__(self, program, run, scratch):
        self.program = program
        self.run = run
        self.scratch = scratch
        self.judged = {}

    def faults(self, kill):
        """The losses if the run is killed there."""
        worker = comparison.worker_folder(self.scratch)
        root = phones.make_from(self.run.before, worker / "phone")
        faults = kills.kill(self.program, root, self.run.mode, *kill)
        if faults:
            return faults
        found = phones.snapshot(root)
        if kill[0] == kills.COPYING:
            return self.faults_without_copies(found, root)
        faults = self.faults_of(found, worker / "again", is_power_cut=False)
        restarted = oneStep.without_tmp(found)
        if restarted != found:
            faults = faults + [f"with /tmp emptied: {fault}"
                               for fault in self.faults_of(restarted, worker / "again", is_power_cut=True)]
        return faults

    def faults_of(self, found, root, is_power_cut):
        """Many kills leave the same phone, which is judged only once."""
        key = is_power_cut, frozenset(found.items())
        if key not in self.judged:
            self.judged[key] = oneStep.faults_of(self.program, self.run, found, root, is_power_cut)
        return self.judged[key]

    def faults_without_copies(self, found, root):
        """The run has ended without the certificates; the next run with that pass copies them."""
        copies = {path for path in self.run.after
                  if path.startswith(devicePaths.USER_CERTIFICATES) and path not in self.run.before}
        expected = {path: entry for path, entry in self.run.after.items() if path not in copies}
        faults = comparison.differences(expected, found)
        phones.run(self.program, root, self.run.mode)
        again = phones.snapshot(root)
        return faults + [f"{path} is not there after another run" for path in copies
                         if again.get(path) != self.run.after[path]]


def prove(program, phone, mode, scratch):
    """The losses, and the number of kills."""
    run = oneStep.record(program, phone, mode, scratch, kills.OPTIONS)
    jobs = proof.thinned(mode, kills.all_of(run))
    faults = []
    wrong = 0
    for (call, number), found in zip(jobs, proof.in_parallel(Kills(program, run, scratch).faults, jobs)):
        faults += [f"mode {mode}, killed before {call} {number}: {fault}" for fault in found]
        wrong += bool(found)
    print(f"{mode:<14}{len(jobs):>6} kills{len(jobs) - wrong:>6} end as undisturbed", flush=True)
    return faults, len(jobs)


def main():
    arguments = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    faults = []
    count = 0
    for mode in arguments.mode:
        try:
            with proof.scratch_folder() as scratch:
                found, added = prove(arguments.program, arguments.phone, mode, pathlib.Path(scratch))
        except oneStep.BadRecord as reason:
            found, added = [f"mode {mode}: {reason}"], 0
        faults += found
        count += added
    return proof.end("kill", faults, f"{count} kills in {len(arguments.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
