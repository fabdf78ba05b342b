# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Each call that looks up, opens or reads a file fails once or twice: the phone ends as if nothing had failed. If it
always fails, the file is unchanged: defaults do not replace it, and nothing removes it."""

import dataclasses
import os
import pathlib
import sys

import devicePaths
import phones
import proof
from model import comparison, oneStep

CALLS = ("newfstatat", "openat", "read")
BRIEF = ("1..1", "1..2")
FOR_GOOD = "1+"


@dataclasses.dataclass(frozen=True)
class Job:
    program: pathlib.Path
    scratch: str
    phone: str
    mode: str
    path: str


def replaced_unread(mode):
    """Files that a run makes from another file without reading the existing ones."""
    old = set(devicePaths.XML_DATA)
    return {path for path in devicePaths.NEW_XML_DATA if path not in old} | {devicePaths.COPIES_TO.get(mode)}


def prepare(job, folder):
    return oneStep.make_phone(job.program, job.phone, job.mode, folder / "phone")


def run(job, folder, call, when):
    """Only this file's calls count and fail."""
    root = prepare(job, folder)
    wrapper = ["strace", "-D", "-o", "/dev/null", "-P", job.path, "-e", f"trace={call}", "-e",
               f"inject={call}:error=EIO:when={when}"]
    before = os.stat(f"{root}{job.path}").st_ino
    result = phones.run(job.program, root, job.mode, wrapper)
    after = os.stat(f"{root}{job.path}").st_ino if os.path.exists(f"{root}{job.path}") else None
    return result, phones.files_of(root), before == after


def check(job):
    os.umask(oneStep.UMASK)
    folder = comparison.worker_folder(job.scratch)
    root = prepare(job, folder)
    original = phones.files_of(root)
    ordinary_result = phones.run(job.program, root, job.mode)
    ordinary = phones.files_of(root)
    faults, runs = [], 0
    for call in CALLS:
        for when in BRIEF + (FOR_GOOD,):
            result, found, is_same_file = run(job, folder, call, when)
            runs += 1
            own = [] if result.returncode == 0 else [f"exit status {result.returncode}"]
            if when != FOR_GOOD:
                own += comparison.differences(ordinary, found)
                if result.stderr != ordinary_result.stderr:
                    own.append("other reports than of an undisturbed run")
            elif job.path not in replaced_unread(job.mode) and (
                    not is_same_file or found.get(job.path) != original[job.path]):
                own += ["changed: " + fault for fault in comparison.differences(
                    {job.path: original[job.path]}, {job.path: found.get(job.path)})] or ["replaced by the same"]
            faults += [f"mode {job.mode}, {job.path}, {call} fails {when}: {fault}" for fault in own]
    return runs, faults


def jobs_of(chosen, scratch, mode):
    root = oneStep.make_phone(chosen.program, chosen.phone, mode, pathlib.Path(scratch) / "phone")
    files = phones.files_of(root)
    return [Job(chosen.program, str(scratch), chosen.phone, mode, path)
            for path in sorted(set(devicePaths.READS[mode])) if path in files]


def main():
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    with proof.scratch_folder() as scratch:
        jobs = [job for mode in chosen.mode for job in jobs_of(chosen, scratch, mode)]
        results = list(proof.in_parallel(check, jobs, at_once=1))
    faults = [fault for _, found in results for fault in found]
    runs = sum(count for count, _ in results)
    return proof.end("readFailures", faults, f"{runs} runs with failing reads of {len(jobs)} files in "
                     f"{len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
