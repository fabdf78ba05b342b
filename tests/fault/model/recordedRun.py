# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""An undisturbed run, recorded call by call, as the list of calls that can fail."""

import dataclasses
import os

import devicePaths
import phones
import traces
from model import oneStep

NAMING = ("openat", "newfstatat", "faccessat2", "rename", "unlink", "readlink", "utimensat")


@dataclasses.dataclass(frozen=True)
class Step:
    """A call, and its number among those of its name since the process started."""

    call: traces.Call
    number: int


@dataclasses.dataclass(frozen=True)
class Run(oneStep.Run):
    """`calls` are steps, from the beginning of main() on."""

    printed: bytes = b""
    reports: bytes = b""


def path_of(call):
    """The file that the call is about, by name or by descriptor."""
    named = call.texts[0].decode(errors="surrogateescape") if call.texts and call.name in NAMING else ""
    return named or call.file


def steps_of(calls):
    counts = {}
    steps = []
    for call in calls:
        counts[call.name] = counts.get(call.name, 0) + 1
        steps.append(Step(call, counts[call.name]))
    return steps[traces.beginning_of_main(calls):]


def take_down(program, phone, mode, scratch, options=()):
    """Runs the mode on a fresh phone of that name, with these options of the sandbox."""
    os.umask(oneStep.UMASK)
    root = oneStep.make_phone(program, phone, mode, scratch / "phone")
    before = phones.snapshot(root)
    result, calls = traces.record_own(program, root, mode, scratch / "trace", options)
    after = phones.snapshot(root)
    left = [path for path in after if devicePaths.is_of_commit(path)]
    if result.returncode != 0 or left:
        raise oneStep.BadRecord(f"undisturbed, mode {mode} ends with status {result.returncode} and leaves {left}")
    return Run(mode, before, after, steps_of(calls), printed=result.stdout, reports=result.stderr)
