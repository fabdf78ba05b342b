# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What every disturbed run is held to, in one sentence: the phone is byte for byte as before the run or as after it, once
the next run has started; and after the sequence has been run again it is as one never disturbed.
"""

import dataclasses
import os
import pathlib

import comparison
import phoneValues
import sandbox
import trace

UMASK = 0o022
HAND_OVER_FILE = "/tmp/VersionInfo.cfg"
MARKER = "/config/kestrune-pending"
RECORD = "/config/kestrune-commit"
NOTE = "/config/kestrune-certificates"
NOBODYS_MODE = "nobody's"
SEQUENCE = ("1", "2", "all")

# Permission bits and owners unlike those of new files, so that losing them shows. Owners only where we may give them.
ATTRIBUTES = {
    "/config/user/user.ini": (0o640, (1201, 1301)),
    "/config/system/system.ini": (0o664, (0, 1302)),
    "/config/user/voip/sipAccount0.cfg": (0o600, (1203, 1303)),
    "/config/user/voip/sipAccount4.cfg": (0o660, (0, 0)),
    "/config/user/voip/sipAccount16.cfg": (0o604, (1204, 0)),
    "/config/data/doorphonedata.xml": (0o400, (1205, 1305)),
    "/config/data/linekey.xml": (0o666, (0, 0)),
}


class BadRecord(Exception):
    """The undisturbed run itself is not as it should be: nothing can be held to it."""


@dataclasses.dataclass(frozen=True)
class Run:
    """An undisturbed run of a mode: the phone before and after it, as `sandbox.snapshot` gives it, and its calls. In the
    boot's sequence also its modes, and the phone after the last one."""

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
            sandbox.give_owner_and_mode(file, sandbox.Entry("file", mode, owner, b""))


def make_marked_phone(phone, root):
    """The phone with values unlike every default, and with owners and permission bits unlike those of new files."""
    root = sandbox.make_phone(phone, root)
    phoneValues.put(phone, root)
    mark(root)
    return root


def make_phone(program, phone, mode, root):
    """Mode "2" starts where mode "1" has left the hand-over file."""
    root = make_marked_phone(phone, root)
    if mode == "2" and not (root / HAND_OVER_FILE[1:]).exists():
        sandbox.run(program, root, "1")
    return root


def record(program, phone, mode, scratch, options):
    """Runs the mode undisturbed, under strace with these options."""
    os.umask(UMASK)
    scratch = pathlib.Path(scratch)
    return record_on(program, make_phone(program, phone, mode, scratch / "phone"), mode, scratch, options)


def record_on(program, root, mode, scratch, options):
    before = sandbox.snapshot(root)
    result, calls = trace.record(program, root, mode, scratch / "trace", options)
    after = sandbox.snapshot(root)
    left = [path for path in after if is_of_commit(path)]
    if result.returncode != 0 or left:
        raise BadRecord(f"the undisturbed run ends with status {result.returncode} and leaves {left}")
    return Run(mode, before, after, calls)


def record_sequence(program, phone, scratch, options):
    """The runs of the boot's modes with the upgrade's marker, one after the other."""
    os.umask(UMASK)
    scratch = pathlib.Path(scratch)
    root = make_marked_phone(phone, scratch / "phone")
    (root / MARKER[1:]).write_text("".join(f"{mode}\n" for mode in SEQUENCE))
    runs = [record_on(program, root, mode, scratch, options) for mode in SEQUENCE]
    return [dataclasses.replace(run, sequence=SEQUENCE, end=runs[-1].after) for run in runs]


def is_temporary(path):
    return path.endswith(sandbox.TEMPORARY_SUFFIX)


def is_of_commit(path):
    return path in (RECORD, NOTE) or is_temporary(path)


def settle(program, root):
    """Starts the next run, which finishes the one before it, and lets it do nothing of its own: it is not its turn."""
    marker = pathlib.Path(f"{root}{MARKER}")
    is_ours = not os.path.lexists(marker)
    if is_ours:
        marker.write_bytes(b"somebody else's\n")
    status = sandbox.run(program, root, NOBODYS_MODE).returncode
    if is_ours:
        marker.unlink(missing_ok=True)
    return status


def kept(phone, is_power_cut):
    """What counts of a phone: temporary files without a record are leftovers, and /tmp is lost with the power."""
    return {path: entry for path, entry in phone.items()
            if not is_temporary(path) and not (is_power_cut and path.startswith("/tmp"))}


def without_tmp(phone):
    return {path: entry for path, entry in phone.items() if not path.startswith("/tmp/")}


def told(entry):
    return comparison.shown(entry)


def told_difference(found, expected):
    start = comparison.first_difference(expected, found)
    return f"is {comparison.shown(found, start)} instead of {comparison.shown(expected, start)}"


def differences(found, expected):
    return comparison.differences(expected, found)


def needs_next_run(found):
    """Whether an earlier run is still to be finished or taken back."""
    return RECORD in found or NOTE in found or (MARKER in found and not found[MARKER].content)


def told_as_neither(run, found, is_power_cut):
    seen, before, after = (kept(phone, is_power_cut) for phone in (found, run.before, run.after))
    return "neither as before the run nor as after it: " + "; ".join(
        min((differences(seen, before), differences(seen, after)), key=len))


def faults_of(program, run, found, root, is_power_cut=False, runs_again=True):
    """What is wrong with the phone that a disturbed run has left as `found`. `root` is a folder to try it in."""
    has_record = RECORD in found
    settled = found
    if needs_next_run(found):
        sandbox.make_from(found, root)
        status = settle(program, root)
        settled = sandbox.snapshot(root)
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
    """The mode runs again: no temporary file stays, and the phone is as one never disturbed."""
    sandbox.make_from(found, root)
    if is_power_cut and run.mode == "2" and HAND_OVER_FILE in run.before:
        put_hand_over_back(run, root)
    status = sandbox.run(program, root, run.mode).returncode
    if status != 0:
        return [f"one more run ends with status {status}"]
    final, after = sandbox.snapshot(root), run.after
    if is_power_cut:
        final, after = without_tmp(final), without_tmp(after)
    return [f"after another run {fault}" for fault in differences(final, after)]


def faults_of_sequence(program, run, found, root):
    """The phone starts again: /tmp is empty, and the boot calls each mode, as long as the marker is there."""
    sandbox.make_from(without_tmp(found), root)
    for mode in run.sequence:
        if not os.path.lexists(f"{root}{MARKER}"):
            break
        status = sandbox.run(program, root, mode).returncode
        if status != 0:
            return [f"mode {mode} ends with status {status} when the boot starts again"]
    return [f"after the boot's sequence {fault}"
            for fault in differences(without_tmp(sandbox.snapshot(root)), without_tmp(run.end))]


def put_hand_over_back(run, root):
    """Without the marker it is lost with the power: mode "1" would have to make it again."""
    entry = run.before[HAND_OVER_FILE]
    path = pathlib.Path(f"{root}{HAND_OVER_FILE}")
    path.write_bytes(entry.content)
    sandbox.give_owner_and_mode(path, entry)
