# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The differences between a phone and the expected one, down to the byte."""

import dataclasses
import os
import pathlib
import stat

import phones


def differences(expected, found):
    """One line for every name that is not as expected; both are results of `phones.files_of`."""
    lines = []
    for path in sorted(set(expected) | set(found)):
        wanted, present = expected.get(path), found.get(path)
        if wanted != present:
            start = first_difference(wanted, present)
            lines.append(f"{path}: expected {shown(wanted, start)}, found {shown(present, start)}")
    return lines


def first_difference(one, other):
    if one is None or other is None:
        return 0
    return len(os.path.commonprefix([one.content, other.content]))


def shown(entry, start=0):
    """An entry with its content around the given byte."""
    if entry is None:
        return "nothing"
    begin, stop = max(0, start - 30), start + 60
    more_before, more_behind = "..." if begin > 0 else "", "..." if stop < len(entry.content) else ""
    return f"{entry.kind} {entry.mode:04o} {entry.owner} {more_before}{entry.content[begin:stop]!r}{more_behind}"


def shown_difference(wanted, present):
    start = first_difference(wanted, present)
    return f"is {shown(present, start)} instead of {shown(wanted, start)}"


def worker_folder(scratch):
    """The scratch folder of this worker process, which earlier jobs may have used."""
    folder = pathlib.Path(scratch) / str(os.getpid())
    folder.mkdir(exist_ok=True)
    return folder


def files_of(root):
    """As `phones.files_of`, including files that their own owner cannot read."""
    locked = {}
    for folder, _, files in os.walk(root):
        for path in (os.path.join(folder, name) for name in files):
            status = os.lstat(path)
            if stat.S_ISREG(status.st_mode) and not status.st_mode & stat.S_IRUSR:
                locked[path] = stat.S_IMODE(status.st_mode)
                os.chmod(path, locked[path] | stat.S_IRUSR)
    found = phones.files_of(root)
    for path, mode in locked.items():
        os.chmod(path, mode)
        name = path.removeprefix(str(root))
        found[name] = dataclasses.replace(found[name], mode=mode)
    return found
