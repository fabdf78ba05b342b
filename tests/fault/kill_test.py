#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Kills each mode right before each of its writing calls: nothing is lost, and one more run sets all right."""

import os
import pathlib
import sys

import kills
import proof
import sandbox
import undisturbed


class Kills:
    """The kills of one mode. Each worker has a phone of its own."""

    def __init__(self, program, run, scratch):
        self.program = program
        self.run = run
        self.scratch = scratch
        self.finals = {}

    def faults(self, kill):
        """What is lost when the run dies there."""
        worker = self.scratch / str(os.getpid())
        worker.mkdir(exist_ok=True)
        root = sandbox.make_from(self.run.old, worker / "phone")
        faults = kills.kill(self.program, root, self.run.mode, *kill)
        if faults:
            return faults
        found = sandbox.snapshot(root)
        faults = undisturbed.faults_of(self.run, found, is_power_cut=False)
        return faults or self.faults_of_again(found, worker / "again")

    def faults_of_again(self, found, root):
        """Many kills leave the same phone, which needs one more run only once: the program knows nothing else."""
        key = frozenset(found.items())
        if key not in self.finals:
            sandbox.make_from(found, root)
            self.finals[key] = sandbox.run(self.program, root, self.run.mode).returncode, sandbox.snapshot(root)
        status, final = self.finals[key]
        if status != 0:
            return [f"one more run ends with status {status}"]
        return undisturbed.faults_of_again(self.run, found, final)


def prove(program, phone, mode, scratch):
    """What is lost, and how many kills there were."""
    run = undisturbed.record(program, phone, mode, scratch)
    jobs = kills.all_of(program, run, scratch)
    faults = []
    for (call, number), found in zip(jobs, proof.in_parallel(Kills(program, run, scratch).faults, jobs)):
        faults += [f"mode {mode}, killed before {call} {number}: {fault}" for fault in found]
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
        except undisturbed.BadRecord as reason:
            found, added = [f"mode {mode}: {reason}"], 0
        faults += found
        count += added
    return proof.end("kill", faults, f"{count} kills in {len(arguments.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
