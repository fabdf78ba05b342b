# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Every allocation of the program fails, once and from there on: the pass in which it happens ends, the run continues,
and is committed whole or not at all.

A small library, loaded before the C library, makes them fail. It does not affect the program's children.
"""

import dataclasses
import itertools
import os
import pathlib
import subprocess
import sys

import devicePaths
import phones
import proof
from model import keyByKey, oneStep, phoneValues

LONGEST_RUN = 30  # seconds
LONG = 1000       # allocations
LIBRARY_SOURCE = pathlib.Path(__file__).resolve().parent / "model" / "failAllocation.cpp"
SANITIZER = b"__asan_init"
LONG_CONTACT = "small, a long contact"


@dataclasses.dataclass(frozen=True)
class Fault:
    mode: str
    number: int
    goes_on: bool

    def __str__(self):
        return f"{self.mode}: allocation {self.number}{' and all after it' if self.goes_on else ''}"


JUDGES = {}  # by mode, before the workers start
PROGRAM = None
PHONE = None
SCRATCH = None


def phone_of(name):
    """The small phone gets a contact with a long name: only files of more than 8 KiB make the library's stream grow."""
    if name != "small":
        return name
    root = phones.make_phone(name, SCRATCH / "small phone")
    contacts = root / "config/data/contactData.xml"
    long_name = b'<contact sLocalRename="' + 1200 * b"Bjarte, " + b'"/>'
    contacts.write_bytes(contacts.read_bytes().replace(b"</group>", long_name + b"</group>", 1))
    phones.PHONES[LONG_CONTACT] = root
    phoneValues.VALUES[LONG_CONTACT] = phoneValues.VALUES[name]
    return LONG_CONTACT


def build_library():
    command = ["g++", "-std=c++17", "-O1", "-shared", "-fPIC", "-o", SCRATCH / "failAllocation.so", LIBRARY_SOURCE]
    try:
        subprocess.run(command + ["-ldl"], check=True)
    except FileNotFoundError:
        proof.skip("no compiler for the library that lets allocations fail")


def run_with_library(root, folder, mode, number, goes_on=False):
    """Returns the result, and the number of allocations (none if the run did not end by itself)."""
    count = folder / "count"
    count.write_bytes(b"")
    options = ["--ro-bind", str(SCRATCH / "failAllocation.so"), "/failAllocation.so", "--bind", str(count), "/count",
               "--setenv", "LD_PRELOAD", "/failAllocation.so", "--setenv", "FAIL_ALLOCATION_COUNT", "/count",
               "--setenv", "FAIL_ALLOCATION", str(number)]
    options += ["--setenv", "FAIL_ALLOCATION_ON", "1"] if goes_on else []
    result = phones.run(PROGRAM, root, mode, options=options, timeout=LONGEST_RUN)
    return result, int(count.read_bytes() or b"0")


def allocations_of(mode):
    root = phones.make_from(JUDGES[mode].run.before, SCRATCH / "phone")
    _, count = run_with_library(root, SCRATCH, mode, number=0)
    return count


def ways_of(mode, number, count):
    """Once and from there on; one of them in turn where that would be a second time: "dev" is "all" less its last pass,
    and the example phone makes it long (see also `proof.is_brief`)."""
    if mode == "dev" and (proof.is_brief or count > LONG):
        return (number % 2 == 0,)
    return (False, True)


def faults_of(mode):
    count = allocations_of(mode)
    for number in range(1, count + 1):
        for goes_on in ways_of(mode, number, count):
            yield Fault(mode, number, goes_on)


def judge(fault, found, folder):
    """The commit is whole or nothing; a pass that ended early has left each of its files as before, or key by key as
    passes leave it."""
    judge_of_mode = JUDGES[fault.mode]
    run = judge_of_mode.run
    if devicePaths.RECORD in found or devicePaths.NOTE in found:
        oneStep.settle(PROGRAM, phones.make_from(found, folder / "settled"))
        found = phones.snapshot(folder / "settled")
    if is_uncommitted(run, found) or found == run.after:
        return []
    faults = judge_of_mode.faults_of(found)
    disturbed = disturbed_parts(run, found)
    if not fault.goes_on and len(disturbed) > 1:
        faults.append(f"more than one pass was disturbed: {disturbed}")
    return faults


def is_uncommitted(run, found):
    """Everything is as before, except the certificates, which the device's own copy command makes."""
    return without_certificates(found) == without_certificates(run.before) and all(
        found[path] == run.after.get(path) for path in found if path not in run.before)


def without_certificates(phone):
    return {path: entry for path, entry in phone.items() if not path.startswith(devicePaths.USER_CERTIFICATES)}


def disturbed_parts(run, found):
    """The parts of the mode whose files are not as after the run: one for each XML translation, unless none of them ran
    since the setting that allows them could not be read, one for the certificates, and one for all other files."""
    parts = set()
    for path in (path for path in found.keys() | run.after.keys() if found.get(path) != run.after.get(path)):
        translated = [old for old, new in devicePaths.XML_DATA.items() if path in new]
        is_certificate = path.startswith(devicePaths.USER_CERTIFICATES)
        parts.add(translated[0] if translated else "certificates" if is_certificate else "settings")
    changed = {old for old, new in devicePaths.XML_DATA.items()
               if any(run.before.get(path) != run.after.get(path) for path in new)}
    return ["XML data"] if parts == changed else sorted(parts)


def run_fault(fault):
    folder = SCRATCH / str(os.getpid())
    folder.mkdir(exist_ok=True)
    root = phones.make_from(JUDGES[fault.mode].run.before, folder / "phone")
    try:
        result, count = run_with_library(root, folder, fault.mode, fault.number, fault.goes_on)
    except subprocess.TimeoutExpired:
        return [f"{fault}: hangs"]
    found = phones.snapshot(root)
    problems = judge(fault, found, folder)
    left = [path for path in found if devicePaths.is_temporary(path)]
    if left and devicePaths.RECORD not in found:
        problems.append(f"temporary files are {left}")
    if result.returncode != 0:
        problems.append(f"exit status {result.returncode}: {result.stderr[-200:]!r}")
    elif count < fault.number:
        problems.append(f"there were only {count} allocations")
    return [f"{fault}: {problem}" for problem in problems]


def main():
    global PROGRAM, PHONE, SCRATCH
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    if SANITIZER in chosen.program.read_bytes():
        proof.skip("a sanitizer has its own memory allocation")
    PROGRAM = chosen.program
    with proof.scratch_folder() as scratch:
        SCRATCH = pathlib.Path(scratch)
        PHONE = phone_of(chosen.phone)
        build_library()
        JUDGES.update(keyByKey.of_modes(PROGRAM, PHONE, chosen.mode, SCRATCH))
        faults = [fault for mode in chosen.mode for fault in faults_of(mode)]
        problems = list(itertools.chain(*proof.in_parallel(run_fault, faults)))
    return proof.end("memory", problems, f"{len(faults)} failed allocations in {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
