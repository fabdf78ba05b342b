# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A run that nothing disturbs, taken down call by call: what each call was for, and what was saved."""

import dataclasses
import re

import passes
import sandbox
import trace

RECORDING = ["strace", "-D", "-y", "-xx", "-s", "1000000", "-o", "/trace/record"]
BEGIN_OF_LINE = re.compile(rb"^", re.MULTILINE)
NAMING = ("openat", "newfstatat", "rename", "unlink", "readlink", "utimensat")
STANDARD_ERROR = 2


@dataclasses.dataclass(frozen=True)
class Step:
    """One call of the program: the `number`-th of its name, counted from the start of the process.

    `place` is the number of its pass. `save` is the number of the save that fails when this call does, if any.
    """

    call: trace.Call
    number: int
    place: int
    save: int = None


@dataclasses.dataclass(frozen=True)
class Save:
    path: str
    content: bytes
    place: int


@dataclasses.dataclass(frozen=True)
class Run:
    mode: str
    before: dict   # the files, as `sandbox.files_of` gives them
    after: dict
    steps: list    # from the beginning of main() on
    saves: list
    reports: list  # (number of the pass, line on standard error)
    printed: bytes

    @property
    def passes(self):
        return passes.PASSES[self.mode]


def calls_of(record):
    """Not made with "-f", so that no line tells its process: children are not of interest."""
    return trace.parse(BEGIN_OF_LINE.sub(b"1 ", record))


def is_temporary(path):
    return path.endswith(sandbox.TEMPORARY_SUFFIX)


def path_of(call):
    """The file that the call is about, by name or by descriptor."""
    named = call.texts[0].decode(errors="surrogateescape") if call.texts and call.name in NAMING else ""
    return named or call.file


def save_of_each_call(calls):
    """For each call the number of the save that needs it; the saves are numbered in their order."""
    numbers = [None] * len(calls)
    count = 0
    for place, call in enumerate(calls):
        path = path_of(call)
        if not is_temporary(path) or call.name in ("close", "unlink"):
            continue
        if call.name == "openat":
            before = calls[place - 1]
            if before.name == "newfstatat" and path_of(before) == path.removesuffix(sandbox.TEMPORARY_SUFFIX):
                numbers[place - 1] = count  # where it is asked what stands at the destination
        numbers[place] = count
        count += call.name == "rename"
    return numbers


def saves_of(calls, numbers, places):
    contents = {}
    saves = []
    for call, number, place in zip(calls, numbers, places):
        if number is None:
            continue
        if call.name == "write":
            contents[number] = contents.get(number, b"") + call.texts[0]
        elif call.name == "rename":
            saves.append(Save(call.texts[1].decode(), contents.get(number, b""), place))
    return saves


def beginning_of_main(calls):
    """The first thing that the program does is to look whether its standard input is open."""
    return next(place for place, call in enumerate(calls) if call.name == "fcntl")


def steps_of(calls, places, numbers):
    counts = {}
    steps = []
    for call, place, number in zip(calls, places, numbers):
        counts[call.name] = counts.get(call.name, 0) + 1
        steps.append(Step(call, counts[call.name], place, number))
    return steps[beginning_of_main(calls):]


def take_down(program, phone, mode, scratch):
    """Runs the mode on a fresh phone of that name."""
    root = sandbox.make_phone(phone, scratch / "phone")
    (scratch / "trace").mkdir(exist_ok=True)
    before = sandbox.files_of(root)
    result = sandbox.run(program, root, mode, RECORDING, ["--bind", str(scratch / "trace"), "/trace"])
    if result.returncode != 0:
        raise RuntimeError(f"the undisturbed run of {mode} ends with {result.returncode}: {result.stderr}")
    calls = calls_of((scratch / "trace" / "record").read_bytes())
    places = passes.pass_of_each_call(mode, calls)
    numbers = save_of_each_call(calls)
    reports = [(place, call.texts[0]) for call, place in zip(calls, places)
               if call.name == "write" and call.descriptor == STANDARD_ERROR]
    return Run(mode, before, sandbox.files_of(root), steps_of(calls, places, numbers),
               saves_of(calls, numbers, places), reports, result.stdout)
