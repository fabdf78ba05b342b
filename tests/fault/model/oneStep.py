# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The property of every disturbed run: the phone is byte for byte as before the run or as after it, once the next run
has started; and after the sequence has been run again, it is the same as a phone that was never disturbed.
"""

import dataclasses
import os
import pathlib

import devicePaths
import phones
import traces
from model import comparison, phoneValues

UMASK = 0o022
NOBODYS_MODE = "nobody's"
SEQUENCE = ("1", "2", "all")

# Permission bits and owners unlike those of new files, so that their loss shows. Owners only if we can set them.
ATTRIBUTES = {
    devicePaths.USER_INI: (0o640, (1201, 1301)),
    devicePaths.SYSTEM_INI: (0o664, (0, 1302)),
    devicePaths.ACCOUNTS[0]: (0o600, (1203, 1303)),
    devicePaths.ACCOUNTS[4]: (0o660, (0, 0)),
    devicePaths.ACCOUNT_16: (0o604, (1204, 0)),
    "/config/data/doorphonedata.xml": (0o400, (1205, 1305)),
    "/config/data/linekey.xml": (0o666, (0, 0)),
}


class BadRecord(Exception):
    """The undisturbed run itself has faults: nothing can be compared with it."""


@dataclasses.dataclass(frozen=True)
class Run:
    """An undisturbed run of a mode: the phone before and after it, as returned by `phones.snapshot`, and its calls. In
    the boot's sequence also its modes, and the phone after the last one."""

    mode: str
    before: dict
    after: dict
    calls: list
    sequence: tuple = ()
    end: dict = None


def mark(root):
    for path, (mode, owner) in ATTRIBUTES.items():
        file = root / path[1:]
        if file.exists():
            phones.give_owner_and_mode(file, phones.Entry("file", mode, owner, b""))


def make_marked_phone(phone, root):
    """The phone with values unlike every default, and with owners and permission bits unlike those of new files."""
    root = phones.make_phone(phone, root)
    phoneValues.put(phone, root)
    mark(root)
    return root


def make_phone(program, phone, mode, root):
    """Mode "2" starts where mode "1" has left the hand-over file."""
    root = make_marked_phone(phone, root)
    if mode == "2" and not (root / devicePaths.HAND_OVER[1:]).exists():
        phones.run(program, root, "1")
    return root


def record(program, phone, mode, scratch, options):
    """Runs the mode undisturbed, under strace with these options."""
    os.umask(UMASK)
    scratch = pathlib.Path(scratch)
    return record_on(program, make_phone(program, phone, mode, scratch / "phone"), mode, scratch, options)


def record_on(program, root, mode, scratch, options):
    before = phones.snapshot(root)
    result, calls = traces.record(program, root, mode, scratch / "trace", options)
    after = phones.snapshot(root)
    left = [path for path in after if devicePaths.is_of_commit(path)]
    if result.returncode != 0 or left:
        raise BadRecord(f"the undisturbed run ends with status {result.returncode} and leaves {left}")
    return Run(mode, before, after, calls)


def record_sequence(program, phone, scratch, options):
    """The runs of the boot's modes with the upgrade's marker, one after the other."""
    os.umask(UMASK)
    scratch = pathlib.Path(scratch)
    root = make_marked_phone(phone, scratch / "phone")
    (root / devicePaths.MARKER[1:]).write_text("".join(f"{mode}\n" for mode in SEQUENCE))
    runs = [record_on(program, root, mode, scratch, options) for mode in SEQUENCE]
    return [dataclasses.replace(run, sequence=SEQUENCE, end=runs[-1].after) for run in runs]


def settle(program, root):
    """Starts the next run, which finishes the previous one and does nothing else, since it is not its turn."""
    marker = pathlib.Path(f"{root}{devicePaths.MARKER}")
    is_ours = not os.path.lexists(marker)
    if is_ours:
        marker.write_bytes(b"somebody else's\n")
    status = phones.run(program, root, NOBODYS_MODE).returncode
    if is_ours:
        marker.unlink(missing_ok=True)
    return status


def kept(phone, is_power_cut):
    """The relevant files of a phone: temporary files without a record are leftovers, and a power cut empties /tmp."""
    return {path: entry for path, entry in phone.items()
            if not devicePaths.is_temporary(path) and not (is_power_cut and path.startswith("/tmp"))}


def without_tmp(phone):
    return {path: entry for path, entry in phone.items() if not path.startswith("/tmp/")}


def needs_next_run(found):
    """Whether an earlier run still has to be finished or undone."""
    has_empty_marker = devicePaths.MARKER in found and not found[devicePaths.MARKER].content
    return devicePaths.RECORD in found or devicePaths.NOTE in found or has_empty_marker


def told_as_neither(run, found, is_power_cut):
    seen, before, after = (kept(phone, is_power_cut) for phone in (found, run.before, run.after))
    return "neither as before the run nor as after it: " + "; ".join(
        min((comparison.differences(before, seen), comparison.differences(after, seen)), key=len))


def faults_of(program, run, found, root, is_power_cut=False, runs_again=True):
    """The faults of the phone `found` that a disturbed run has left. `root` is a folder for trial runs."""
    has_record = devicePaths.RECORD in found
    settled = found
    if needs_next_run(found):
        phones.make_from(found, root)
        status = settle(program, root)
        settled = phones.snapshot(root)
        if status != 0:
            return [f"the next run ends with status {status}"]
        if needs_next_run(settled):
            return ["the next run leaves the record, the note or an empty marker"]
    seen, before, after = (kept(phone, is_power_cut) for phone in (settled, run.before, run.after))
    if seen not in (before, after):
        return [told_as_neither(run, settled, is_power_cut)]
    if not runs_again:
        return []
    if run.sequence:
        return faults_of_sequence(program, run, found, root)
    if seen == after and before != after and not has_record:
        return []  # the run has ended
    return faults_of_again(program, run, found, root, is_power_cut)


def faults_of_again(program, run, found, root, is_power_cut):
    """The mode runs again: no temporary file stays, and the phone is the same as one that was never disturbed."""
    phones.make_from(found, root)
    if is_power_cut and run.mode == "2" and devicePaths.HAND_OVER in run.before:
        put_hand_over_back(run, root)
    status = phones.run(program, root, run.mode).returncode
    if status != 0:
        return [f"one more run ends with status {status}"]
    final, after = phones.snapshot(root), run.after
    if is_power_cut:
        final, after = without_tmp(final), without_tmp(after)
    return [f"after another run {fault}" for fault in comparison.differences(after, final)]


def faults_of_sequence(program, run, found, root):
    """The phone starts again: /tmp is empty, and the boot calls each mode while the marker exists."""
    phones.make_from(without_tmp(found), root)
    for mode in run.sequence:
        if not os.path.lexists(f"{root}{devicePaths.MARKER}"):
            break
        status = phones.run(program, root, mode).returncode
        if status != 0:
            return [f"mode {mode} ends with status {status} when the boot starts again"]
    return [f"after the boot's sequence {fault}"
            for fault in comparison.differences(without_tmp(run.end), without_tmp(phones.snapshot(root)))]


def put_hand_over_back(run, root):
    """Without the marker, a power cut loses it: mode "1" would have to make it again."""
    entry = run.before[devicePaths.HAND_OVER]
    path = pathlib.Path(f"{root}{devicePaths.HAND_OVER}")
    path.write_bytes(entry.content)
    phones.give_owner_and_mode(path, entry)
