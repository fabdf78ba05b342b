# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The cost of each mode on the example phone, in calls, which do not depend on time: exactly as in callCosts.json.

A change that adds a flush or reads a file a second time fails here; if it is intended, `--update` stores the new
figures. A run that finds nothing to change writes no file and flushes nothing.
"""

import argparse
import json
import pathlib
import sys

import devicePaths
import phones
import proof
import traces

STORED = pathlib.Path(__file__).with_name("callCosts.json")
MODES = ("all", "dev", "pwd", "1", "2")
OF_THE_ALLOCATOR = {"brk", "mmap", "munmap", "mremap", "madvise", "mprotect"}

# Modes that are idempotent: a later run does not change the phone. The others encipher values again in each run or
# multiply the backlight's minutes.
SETTLING_MODES = ("1", "fix-ups-only")
MOST_RUNS_TO_SETTLE = 3


def calls_of_run(program, root, mode, scratch):
    """The calls of the program itself, from the beginning of main() on."""
    result, calls = traces.record_own(program, root, mode, scratch / "trace")
    assert result.returncode == 0, result.stderr
    return calls[traces.beginning_of_main(calls):]


def costs_of(calls):
    written = [call for call in calls if call.name == "write" and devicePaths.is_of_commit(call.file)]
    return {
        "calls": sum(call.name not in OF_THE_ALLOCATOR for call in calls),
        "opened files": sum(call.name == "openat" for call in calls),
        "flushes": sum(call.name in ("fsync", "fdatasync", "sync", "syncfs") for call in calls),
        "renames": sum(call.name.startswith("rename") for call in calls),
        "bytes written": sum(call.result for call in written),
    }


def measure(program, scratch):
    """Each mode on a fresh phone, and a second time on the resulting phone."""
    costs = {}
    for mode in MODES:
        root = phones.make_phone("example", scratch / "phone")
        for run in ("first run", "second run"):
            costs[f'mode "{mode}", {run}'] = costs_of(calls_of_run(program, root, mode, scratch))
    return costs


def faults_of_settled_runs(program, scratch):
    faults = []
    for mode in SETTLING_MODES:
        root = phones.make_phone("example", scratch / "phone")
        for _ in range(MOST_RUNS_TO_SETTLE):
            before = phones.snapshot(root)
            costs = costs_of(calls_of_run(program, root, mode, scratch))
            if phones.snapshot(root) == before:
                break
        else:
            faults.append(f"mode {mode} still changes the phone in run {MOST_RUNS_TO_SETTLE}")
        faults += [f"mode {mode} changes nothing, but: {costs[what]} {what}"
                   for what in ("flushes", "renames", "bytes written") if costs[what] != 0]
    return faults


def differences(measured, stored):
    return [f"{run}: {what}: {figure}, stored {stored.get(run, {}).get(what)}"
            for run, costs in measured.items() for what, figure in costs.items()
            if stored.get(run, {}).get(what) != figure]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--update", action="store_true")
    arguments = parser.parse_args()
    proof.skip_without_sandbox()
    with proof.scratch_folder() as folder:
        scratch = pathlib.Path(folder)
        measured = measure(arguments.program.resolve(), scratch)
        faults = faults_of_settled_runs(arguments.program.resolve(), scratch)
    if arguments.update:
        STORED.write_text(json.dumps(measured, indent=2) + "\n")
    faults += differences(measured, json.loads(STORED.read_text()))
    print("\n".join(faults))
    print(f"callCosts: {len(measured)} runs counted, {len(faults)} differences")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
