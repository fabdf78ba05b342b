# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The required phone after a run with a strange file at one of its paths.

Each is derived from three runs on ordinary phones: with the file, without it, and of only the fix-ups.
"""

import dataclasses

import devicePaths
from model import comparison


@dataclasses.dataclass(frozen=True)
class Outcome:
    phone: dict
    canary: dict


def is_below(name, path):
    return name == path or name.startswith(path + "/")


def without(phone, path):
    return {name: entry for name, entry in phone.items() if not is_below(name, path)}


def part(phone, path):
    return {name: entry for name, entry in phone.items() if is_below(name, path)}


def independent(job, with_file, missing):
    """The files that do not depend on the file: the same with it and without."""
    taken = [name for path, names in devicePaths.TAKES_WITH_IT.items() if is_below(path, job.path)
             for name in names]
    return {name: entry for name, entry in with_file.items() if missing.get(name) == entry and name not in taken}


def expect_original(kind, path, with_file, fixed_up, before):
    """The link stays, and its target is as the file would be; if the link is removed, its target is as after the
    fix-ups. The other name of a hard link keeps the old bytes."""
    phone, canary = dict(with_file), dict(before.canary)
    if kind.name == "hard link":
        return Outcome(phone, canary)
    if path in with_file:
        phone[path] = before.phone[path]
    canary["/own"] = with_file.get(path, fixed_up[path])
    return Outcome(phone, canary)


def expect_missing(kind, path, missing, before):
    """A dangling link of our own leads to the new file. The new file replaces that of another user."""
    phone, canary = dict(missing), dict(before.canary)
    made = missing.get(path)
    if kind.name == "dangling link":
        phone[path] = before.phone[path]
        if made is not None:
            canary["/absent"] = made
    elif kind.name == "own link to a foreign one in a sticky folder":
        phone[path] = before.phone[path]
        if made is not None:
            canary["/sticky/planted"] = made
    elif made is None:
        phone[path] = before.phone[path]
    return Outcome(phone, canary)


def compare_others(job, with_file, missing, after):
    """Files that do not depend on the file are as usual."""
    expected = without(independent(job, with_file, missing), job.path)
    return comparison.differences(expected, {name: after.phone[name] for name in expected if name in after.phone})


def compare_part(path, before, after):
    return comparison.differences(part(before.phone, path), part(after.phone, path))


def compare_untouched(job, path, with_file, missing, before, after):
    """The file at that path is unchanged, and so is everything outside the phone."""
    return (compare_others(job, with_file, missing, after) + compare_part(path, before, after)
            + comparison.differences(before.canary, after.canary))


def compare_unreadable(job, with_file, missing, before, after):
    """An unreadable file stays, or is removed if the file would be. No new file appears for it."""
    is_removed = job.path not in with_file and not part(after.phone, job.path)
    faults = compare_others(job, with_file, missing, after) + comparison.differences(before.canary, after.canary)
    faults += [] if is_removed else compare_part(job.path, before, after)
    known = set(with_file) | set(missing)
    return faults + [f"{name} appeared" for name, entry in without(after.phone, job.path).items()
                     if name not in known and entry != before.phone.get(name)]


def compare_without_permission(job, with_file, missing, before, after):
    """The locked file is unchanged, or has the content of a save that reads nothing, with the same permissions."""
    faults = compare_unreadable(job, with_file, missing, before, after)
    saved = [with_file[path].content for path in (job.path, *copied_whole(job)) if path in with_file]
    possible = [dataclasses.replace(before.phone[job.path], content=content) for content in saved]
    if after.phone.get(job.path) in possible:
        faults = [fault for fault in faults if not fault.startswith(job.path + ":")]
    return faults


def copied_whole(job):
    """A copy that cannot be read keeps the marks that are normally removed from it afterwards."""
    return [devicePaths.FACTORY_ACCOUNT] if (job.mode, job.path) == ("2", devicePaths.ACCOUNT_16) else []


def compare(job, kind, references, before, after):
    with_file, missing, fixed_up = references
    if kind.taken_as == "original":
        expected = expect_original(kind, job.path, with_file, fixed_up, before)
    elif kind.taken_as == "missing":
        expected = expect_missing(kind, job.path, missing, before)
    elif kind.taken_as == "no permission":
        return compare_without_permission(job, with_file, missing, before, after)
    else:
        return compare_unreadable(job, with_file, missing, before, after)
    if (job.mode, job.path) == ("2", devicePaths.HAND_OVER_COPY):
        expected.phone.pop(job.path, None)  # it is removed in any case
    return (comparison.differences(expected.phone, after.phone)
            + comparison.differences(expected.canary, after.canary))
