#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Starts two and three runs at the same time, with random delays before their calls: the phone ends as after runs one
after the other, and user.ini exists all the time. A run that waits too long does nothing and reports this in the
system log.
"""

import concurrent.futures
import fcntl
import itertools
import os
import pathlib
import random
import sys
import time

import devicePaths
import phones
import proof
from model import comparison, oneStep, systemLog

CALLS = ("flock", "openat", "rename", "fsync", "unlink", "fchmod")
DELAYS_MICROSECONDS = (0, 300, 2000)
ROUNDS = {"small": 6, "example": 20}  # of each kind
POLL_SECONDS = 0.001
GIVES_UP = b"another run has not ended"

# The upgrade's marker, the modes that start at the same time, and the orders after which the phone may end like that; None
# for every order of all of them. A mode that waited while another one removed its word from the marker does nothing.
KINDS = (
    ("1\n2\nall\n", ("1", "2", "all"), None),
    ("1\n2\n", ("1", "2", "1"), (("1", "2"), ("2", "1"))),
    ("all\n", ("all", "all"), (("all",),)),
    (None, ("pwd", "fix-ups-only"), None),
    (None, ("all", "1"), None),
    (None, ("1", "2"), None),
    (None, ("dev", "pwd", "1"), None),
)


def name_of(kind):
    marker, modes, _ = kind
    return f"{', '.join(modes)}, {'without' if marker is None else 'with'} the marker"


class Together:
    """One kind of runs: the phone before them, and every phone and user.ini after runs one after the other."""

    def __init__(self, program, phone, kind, scratch):
        self.program = program
        self.scratch = scratch
        marker, self.modes, orders = kind
        root = oneStep.make_marked_phone(phone, scratch / "phone")
        if marker is not None:
            (root / devicePaths.MARKER[1:]).write_text(marker)
        self.before = phones.snapshot(root)
        self.ends = []
        self.user_inis = {self.before[devicePaths.USER_INI].content}
        for order in orders or set(itertools.permutations(self.modes)):
            self.run_in_order(order, phones.make_from(self.before, root))

    def run_in_order(self, order, root):
        for mode in order:
            phones.run(self.program, root, mode)
            found = phones.snapshot(root)
            self.user_inis.add(found[devicePaths.USER_INI].content)
        self.ends.append(found)

    def faults(self, seed):
        """They are kept waiting until all have begun, so that each has seen the marker."""
        chance = random.Random(seed)
        folder = comparison.worker_folder(self.scratch)
        root = phones.make_from(self.before, folder / "phone")
        with concurrent.futures.ThreadPoolExecutor(len(self.modes)) as threads:
            lock = os.open(root / "config", os.O_RDONLY)
            fcntl.flock(lock, fcntl.LOCK_EX)
            records = [folder / f"trace{number}" for number in range(len(self.modes))]
            runs = [threads.submit(self.run, root, mode, record, chance.choices(DELAYS_MICROSECONDS, k=len(CALLS)))
                    for mode, record in zip(self.modes, records)]
            while not all(run.done() or begins_to_wait(record) for run, record in zip(runs, records)):
                time.sleep(POLL_SECONDS)
            os.close(lock)
            faults = self.watch_user_ini(root, runs)
        found = phones.snapshot(root)
        if found not in self.ends:
            closest = min((comparison.differences(end, found) for end in self.ends), key=len)
            faults.append("not as after runs one after the other: " + "; ".join(closest))
        return faults + [f"a run ends with status {run.result().returncode}" for run in runs if run.result().returncode]

    def run(self, root, mode, record, delays):
        record.mkdir(exist_ok=True)
        (record / "record").write_bytes(b"")
        wrapper = ["strace", "-D", "-o", "/trace/record", "-e", "trace=" + ",".join(CALLS)]
        for call, delay in zip(CALLS, delays):
            wrapper += ["-e", f"inject={call}:delay_enter={delay}"] * (delay > 0)
        return phones.run(self.program, root, mode, wrapper, ["--bind", str(record), "/trace"])

    def watch_user_ini(self, root, runs):
        path = pathlib.Path(f"{root}{devicePaths.USER_INI}")
        while not all(run.done() for run in runs):
            try:
                if path.read_bytes() not in self.user_inis:
                    return ["user.ini has bytes that no run leaves"]
            except FileNotFoundError:
                return ["user.ini is gone for a time"]
            time.sleep(POLL_SECONDS)
        return []


def begins_to_wait(record):
    path = record / "record"
    return path.exists() and b"flock(" in path.read_bytes()


def prove(program, phone, kind, scratch):
    together = Together(program, phone, kind, scratch)
    rounds = range(ROUNDS[phone])
    faults = []
    wrong = 0
    for seed, found in zip(rounds, proof.in_parallel(together.faults, rounds, at_once=1)):
        faults += [f"{name_of(kind)}, round {seed}: {fault}" for fault in found]
        wrong += bool(found)
    print(f"{name_of(kind):<38}{len(rounds):>4} rounds{len(rounds) - wrong:>4} end as one after the other", flush=True)
    return faults, len(rounds)


def faults_of_giving_up(program, phone, scratch):
    """It takes 20 seconds."""
    log = systemLog.SystemLog(scratch)
    root = oneStep.make_marked_phone(phone, scratch / "phone")
    before = phones.snapshot(root)
    lock = os.open(root / "config", os.O_RDONLY)
    fcntl.flock(lock, fcntl.LOCK_EX)
    begin = time.monotonic()
    phones.run(program, root, "all", options=log.options)
    seconds = time.monotonic() - begin
    os.close(lock)
    faults = comparison.differences(before, phones.snapshot(root))
    if not any(GIVES_UP in message for message in log.messages()):
        faults.append("says nothing in the system log")
    if not 19 < seconds < 40:
        faults.append(f"waits for {seconds:.0f} seconds")
    log.close()
    return [f"a run that waits for too long: {fault}" for fault in faults]


def main():
    arguments = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    os.umask(oneStep.UMASK)
    faults = []
    count = 0
    for kind in KINDS:
        with proof.scratch_folder() as scratch:
            found, added = prove(arguments.program, arguments.phone, kind, pathlib.Path(scratch))
        faults += found
        count += added
    if arguments.phone == "example":
        with proof.scratch_folder() as scratch:
            faults += faults_of_giving_up(arguments.program, arguments.phone, pathlib.Path(scratch))
    return proof.end("together", faults, f"{count} rounds of {len(KINDS)} kinds")


if __name__ == "__main__":
    sys.exit(main())
