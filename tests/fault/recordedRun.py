# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""An undisturbed run, recorded call by call, which says which calls there are to fail."""

import dataclasses
import os
import re

import oneStep
import sandbox
import trace

# Not "-f": the children are the device's own shell and copy command.
RECORDING = ["strace", "-D", "-y", "-xx", "-s", "4096", "-o", "/trace/record"]
BEGIN_OF_LINE = re.compile(rb"^", re.MULTILINE)
NAMING = ("openat", "newfstatat", "faccessat2", "rename", "unlink", "readlink", "utimensat")


@dataclasses.dataclass(frozen=True)
class Step:
    """A call, and its number among those of its name since the process started."""

    call: trace.Call
    number: int


@dataclasses.dataclass(frozen=True)
class Run(oneStep.Run):
    """`calls` are steps, from the beginning of main() on."""

    printed: bytes = b""
    reports: bytes = b""


def calls_of(record):
    return trace.parse(BEGIN_OF_LINE.sub(b"1 ", record))  # without "-f" no line has a process number


def path_of(call):
    """The file that the call is about, by name or by descriptor."""
    named = call.texts[0].decode(errors="surrogateescape") if call.texts and call.name in NAMING else ""
    return named or call.file


def beginning_of_main(calls):
    """The first thing that the program does is to look whether its standard input is open."""
    return next(place for place, call in enumerate(calls) if call.name == "fcntl")


def steps_of(calls):
    counts = {}
    steps = []
    for call in calls:
        counts[call.name] = counts.get(call.name, 0) + 1
        steps.append(Step(call, counts[call.name]))
    return steps[beginning_of_main(calls):]


def take_down(program, phone, mode, scratch, options=()):
    """Runs the mode on a fresh phone of that name, with these options of the sandbox."""
    os.umask(oneStep.UMASK)
    root = oneStep.make_phone(program, phone, mode, scratch / "phone")
    (scratch / "trace").mkdir(exist_ok=True)
    before = sandbox.snapshot(root)
    result = sandbox.run(program, root, mode, RECORDING, ["--bind", str(scratch / "trace"), "/trace", *options])
    after = sandbox.snapshot(root)
    left = [path for path in after if oneStep.is_of_commit(path)]
    if result.returncode != 0 or left:
        raise oneStep.BadRecord(f"undisturbed, mode {mode} ends with status {result.returncode} and leaves {left}")
    calls = calls_of((scratch / "trace" / "record").read_bytes())
    return Run(mode, before, after, steps_of(calls), printed=result.stdout, reports=result.stderr)
