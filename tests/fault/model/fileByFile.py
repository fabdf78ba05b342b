# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The phone if changes of a commit fail: each file is as before the run or as after it.

A failed change does not affect the others. If there is no space for all changes at once, they are made one after the
other, and then a moved account is its renamed original.
"""

import devicePaths
from model import comparison


def is_file(entry):
    return entry is not None and entry.kind != "folder"


def paths_of(run, found):
    """The files. Temporary ones are ignored: a save removes those of an earlier one."""
    return sorted(path for path in run.before.keys() | run.after.keys() | found.keys() if not devicePaths.is_temporary(path)
                  and is_file(found.get(path, run.before.get(path, run.after.get(path)))))


def changed(run):
    return [path for path in paths_of(run, run.after) if run.before.get(path) != run.after.get(path)]


def moves(run):
    """(file, the copy of it that the run makes before it removes it), at most one."""
    removed = [path for path in reversed(devicePaths.ACCOUNTS + (devicePaths.DIRECT_IP_FILE,))
               if path in run.before and path not in run.after]
    return [(path, devicePaths.COPIES_TO[run.mode]) for path in removed[:1]]


def after_moves(run):
    """As after the run, with each moved file as its original was."""
    return {**run.after, **{copy: run.before[path] for path, copy in moves(run)}}


def held_back(run, paths):
    """The files that stay if these could not be saved: they are removed only after their copies."""
    return [path for path, copy in moves(run) if copy in paths]


def without_changes(run, expected, paths):
    """As expected, except that these files are as before, and so are the files that wait for them."""
    result = dict(expected)
    for path in [*paths, *held_back(run, paths)]:
        result.pop(path, None)
        if path in run.before:
            result[path] = run.before[path]
    return result


def faults_of(run, found):
    """Files that are neither as before nor as after, and lost files."""
    possible = (run.before, run.after, after_moves(run))
    faults = [f"{path} {comparison.shown_difference(run.after.get(path), found.get(path))}"
              for path in paths_of(run, found) if found.get(path) not in [phone.get(path) for phone in possible]]
    return faults + [f"{path} is gone, and {copy} is {comparison.shown(found.get(copy))}" for path, copy in moves(run)
                     if path not in found and found.get(copy) not in (run.after[copy], run.before[path])]
