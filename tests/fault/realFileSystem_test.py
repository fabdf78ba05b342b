#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Kills runs on ext4 (with and without its journal), XFS and ext2, cuts the power and mounts the file system again: a
run is one step.
"""

import os
import pathlib
import random
import subprocess
import sys

import loopDevice
import phones
import proof
from model import comparison, kills, oneStep

SEED = 4
CUTS = ("at once", "after an fsync of an unrelated file", "after a flush of the log")
CUTS_PER_RUN = {"small": 8, "example": 30}  # on each file system
NOT_KILLED = ("exit", 0)
OWN_MOUNTS = "KESTRUNE_TEST_HAS_OWN_MOUNTS"
# The other modes leave nothing to lose, or leave the same as these.
KILLED_BEFORE = ("write", "fchmod", "fchown", "fsync", "rename", "unlink", "wait4", "exit_group")


SEQUENCE = "sequence"


def runs_of(program, phone, mode, scratch):
    if mode == SEQUENCE:
        return oneStep.record_sequence(program, phone, scratch, kills.OPTIONS)
    return [oneStep.record(program, phone, mode, scratch, kills.OPTIONS)]


def jobs_of(run, phone):
    """Some of all kills with each cut in turn; the undisturbed run with every cut."""
    candidates = [kill for kill in kills.all_of(run) if kill[0] in KILLED_BEFORE]
    count = min(len(candidates), CUTS_PER_RUN[phone])
    chosen = random.Random(SEED).sample(candidates, count)
    return ([(run, kill, CUTS[place % len(CUTS)]) for place, kill in enumerate(chosen)]
            + [(run, NOT_KILLED, cut) for cut in CUTS])


def told(kill):
    return "run to its end" if kill == NOT_KILLED else f"killed before {kill[0]} {kill[1]}"


def fsync_unrelated(folder):
    """A busy phone does so all the time, and thereby writes other changes of the same file-system transaction."""
    with open(folder / "unrelated", "wb") as file:
        file.write(b"unrelated")
        file.flush()
        os.fsync(file.fileno())


def cut_power(device, cut):
    if cut == CUTS[1]:
        fsync_unrelated(device.folder)
    device.cut_power(is_log_flushed=cut == CUTS[2])


class Proof:
    """All jobs on one kind of file system; each kind has a worker."""

    def __init__(self, program, jobs, scratch):
        self.program = program
        self.jobs = jobs
        self.scratch = scratch
        self.judged = {}

    def faults(self, kind):
        faults = []
        with loopDevice.LoopDevice(kind, self.scratch) as device:
            for run, kill, cut in self.jobs:
                where = f"{kind}, mode {run.mode}, {told(kill)}, power cut {cut}"
                faults += [f"{where}: {fault}" for fault in self.faults_of(device, run, kill, cut)]
        return faults

    def faults_of(self, device, run, kill, cut):
        """The losses if the run is killed there, the power is then cut, and the phone starts again."""
        root = phones.make_from(run.before, device.folder / "phone")
        device.flush()
        if kill == NOT_KILLED:
            phones.run(self.program, root, run.mode)
        else:
            faults = kills.kill(self.program, root, run.mode, *kill)
            if faults:
                return faults
        cut_power(device, cut)

        found = oneStep.without_tmp(phones.snapshot(root))
        if kill == NOT_KILLED:
            return comparison.differences(oneStep.without_tmp(run.after), found)
        return self.judge(run, found, device.folder.with_suffix(".judged"))

    def judge(self, run, found, root):
        """Many cuts leave the same phone, which is judged only once."""
        key = id(run), frozenset(found.items())
        if key not in self.judged:
            self.judged[key] = oneStep.faults_of(self.program, run, found, root, is_power_cut=True)
        return self.judged[key]


def start_with_own_mounts():
    """Mounts are visible only to this process, and disappear with it."""
    own = ["unshare", "--mount", "--propagation", "private"]
    if os.geteuid() != 0:
        proof.skip("only root mounts file systems")
    if OWN_MOUNTS in os.environ:
        return
    if subprocess.run(own + ["true"], capture_output=True, check=False).returncode != 0:
        proof.skip("no namespace of our own for the mounts")
    os.environ[OWN_MOUNTS] = "1"
    os.execvp(own[0], own + [sys.executable] + sys.argv)


def kinds_here(scratch):
    kinds = []
    reasons = []
    for kind in loopDevice.KINDS:
        reason = loopDevice.why_not(kind, scratch)
        if reason:
            reasons.append(f"no {kind}: {reason}")
        else:
            kinds.append(kind)
    if not kinds:
        proof.skip("; ".join(reasons))
    for reason in reasons:
        print(f"not proven, {reason}")
    return kinds


def main():
    arguments = proof.parse_arguments(__doc__, more_modes=(SEQUENCE,))
    start_with_own_mounts()
    proof.skip_without_sandbox()
    with proof.scratch_folder() as folder:
        scratch = pathlib.Path(folder)
        kinds = kinds_here(scratch)
        faults = []
        jobs = []
        for mode in arguments.mode:
            try:
                for run in runs_of(arguments.program, arguments.phone, mode, scratch):
                    jobs += jobs_of(run, arguments.phone)
            except oneStep.BadRecord as reason:
                faults.append(f"mode {mode}: {reason}")
        for found in proof.in_parallel(Proof(arguments.program, jobs, scratch).faults, kinds, at_once=1):
            faults += found
    return proof.end("realFileSystem", faults, f"{len(jobs)} power cuts on each of {' and '.join(kinds)}")


if __name__ == "__main__":
    sys.exit(main())
