#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Kills runs on ext4 and XFS, cuts the power of the file system and mounts it again: nothing is lost."""

import os
import pathlib
import random
import subprocess
import sys

import kills
import loopDevice
import proof
import sandbox
import undisturbed

SEED = 4
CUTS = ("at once", "after an fsync of an unrelated file", "after a flush of the log")
CUTS_PER_MODE = {"small": 40, "example": 120}  # on each file system
NOT_KILLED = ("exit", 0)
OWN_MOUNTS = "KESTRUNE_TEST_HAS_OWN_MOUNTS"
# The others leave nothing to lose, or leave the same as these.
KILLED_BEFORE = ("write", "fchmod", "fchown", "fsync", "rename", "unlink", "wait4", "exit_group")


def jobs_of(program, run, phone, scratch):
    """Some of all kills with each cut in turn; the undisturbed run with every cut."""
    candidates = [kill for kill in kills.all_of(program, run, scratch) if kill[0] in KILLED_BEFORE]
    count = min(len(candidates), CUTS_PER_MODE[phone])
    chosen = random.Random(SEED).sample(candidates, count)
    return ([(run, kill, CUTS[place % len(CUTS)]) for place, kill in enumerate(chosen)]
            + [(run, NOT_KILLED, cut) for cut in CUTS])


def told(kill):
    return "run to its end" if kill == NOT_KILLED else f"killed before {kill[0]} {kill[1]}"


def fsync_unrelated(folder):
    """A busy phone does so all the time, and takes along what the file system has in the same transaction."""
    with open(folder / "unrelated", "wb") as file:
        file.write(b"unrelated")
        file.flush()
        os.fsync(file.fileno())


def cut_power(device, cut):
    if cut == CUTS[1]:
        fsync_unrelated(device.folder)
    device.cut_power(is_log_flushed=cut == CUTS[2])


def faults_of(program, device, run, kill, cut):
    """What is lost when the run is killed there, the power is cut then, and the phone starts again."""
    root = sandbox.make_from(run.old, device.folder / "phone")
    device.flush()
    if kill == NOT_KILLED:
        sandbox.run(program, root, run.mode)
    else:
        faults = kills.kill(program, root, run.mode, *kill)
        if faults:
            return faults
    cut_power(device, cut)

    found = sandbox.snapshot(root)
    faults = undisturbed.faults_of(run, found, is_power_cut=True)
    if kill == NOT_KILLED:
        faults += [f"{path} is {undisturbed.told(found.get(path))} after the end"
                   for path in sorted(found.keys() | run.once.keys()) if found.get(path) != run.once.get(path)]
    if faults:
        return faults
    sandbox.run(program, root, run.mode)
    return undisturbed.faults_of_again(run, found, sandbox.snapshot(root))


class Proof:
    """All jobs on one kind of file system; each kind has a worker."""

    def __init__(self, program, jobs, scratch):
        self.program = program
        self.jobs = jobs
        self.scratch = scratch

    def faults(self, kind):
        faults = []
        with loopDevice.LoopDevice(kind, self.scratch) as device:
            for run, kill, cut in self.jobs:
                where = f"{kind}, mode {run.mode}, {told(kill)}, power cut {cut}"
                faults += [f"{where}: {fault}" for fault in faults_of(self.program, device, run, kill, cut)]
        return faults


def start_with_own_mounts():
    """What is mounted here is nobody else's, and is gone with the process."""
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
    arguments = proof.parse_arguments(__doc__)
    start_with_own_mounts()
    proof.skip_without_sandbox()
    with proof.scratch_folder() as folder:
        scratch = pathlib.Path(folder)
        kinds = kinds_here(scratch)
        faults = []
        jobs = []
        for mode in arguments.mode:
            try:
                run = undisturbed.record(arguments.program, arguments.phone, mode, scratch)
                jobs += jobs_of(arguments.program, run, arguments.phone, scratch)
            except undisturbed.BadRecord as reason:
                faults.append(f"mode {mode}: {reason}")
        for found in proof.in_parallel(Proof(arguments.program, jobs, scratch).faults, kinds, at_once=1):
            faults += found
    return proof.end("realFileSystem", faults, f"{len(jobs)} power cuts on each of {' and '.join(kinds)}")


if __name__ == "__main__":
    sys.exit(main())
