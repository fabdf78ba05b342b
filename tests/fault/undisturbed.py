# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""One undisturbed run of a mode: what each file went through, and what a disturbed run is held to.

After a kill or a power cut each file must be one of its own versions, whole, and only temporary names may stand beside
them. After the same mode has run once more the phone must be the undisturbed one, but for the list of exceptions.
"""

import dataclasses
import os
import pathlib

import diskModel
import exceptions
import sandbox
import trace

UMASK = 0o022
NEW_FILE_MODE = 0o644
PRIVATE_MODE = 0o600
HAND_OVER_FILE = "/tmp/VersionInfo.cfg"

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


@dataclasses.dataclass
class Undisturbed:
    """`versions`: path -> every entry that the file was, or that the temporary file was. `calls`: what strace recorded
    of the run. `moves`: files that were taken away after a copy of theirs was made (see find_moves)."""

    mode: str
    old: dict
    once: dict
    twice: dict
    versions: dict
    calls: list
    moves: list


def mark(root):
    for path, (mode, owner) in ATTRIBUTES.items():
        file = root / path[1:]
        if file.exists():
            sandbox.give_owner_and_mode(file, sandbox.Entry("file", mode, owner, b""))


def make_phone(program, phone, mode, root):
    """Mode "2" starts where mode "1" has left the hand-over file."""
    root = sandbox.make_phone(phone, root)
    mark(root)
    if mode == "2" and not (root / HAND_OVER_FILE[1:]).exists():
        sandbox.run(program, root, "1")
    return root


class BadRecord(Exception):
    """The undisturbed run itself is not as it should be: nothing can be held to it."""


def record(program, phone, mode, scratch):
    """Runs the mode twice, the first time under strace."""
    os.umask(UMASK)
    scratch = pathlib.Path(scratch)
    root = make_phone(program, phone, mode, scratch / "phone")
    old = sandbox.snapshot(root)
    first, calls = trace.record(program, root, mode, scratch / "trace", diskModel.OPTIONS)
    once = sandbox.snapshot(root)
    second = sandbox.run(program, root, mode)
    twice = sandbox.snapshot(root)
    if first.returncode != 0 or second.returncode != 0:
        raise BadRecord(f"undisturbed runs end with status {first.returncode} and {second.returncode}")
    if diskModel.is_split(scratch / "trace" / "record"):
        raise BadRecord("a call stands on two lines of the record")

    try:
        disk = make_disk(old)
        run = Undisturbed(mode, old, once, twice, follow(disk, calls), calls, find_moves(old, calls))
    except diskModel.UnknownCall as call:
        raise BadRecord(str(call)) from call
    check_record(run, disk)
    return run


def make_disk(old):
    return diskModel.Disk(old, (os.geteuid(), os.getegid()), UMASK)


def follow(disk, calls):
    """What each name of the phone led to in the course of the run."""
    versions = {path: {entry} for path, entry in diskModel.files_of(disk.latest()).items()}
    for call in calls:
        if disk.play(call):
            note_versions(disk, call, versions)
    return versions


def note_versions(disk, call, versions):
    latest = disk.latest()
    for path in disk.changed:
        file, temporary = latest[path]
        if temporary is not None:
            versions.setdefault(path + sandbox.TEMPORARY_SUFFIX, set()).add(temporary)
        # A file is what was renamed to it, and nothing else; what a save does in between must not count as saved.
        if file is not None and (call.name == "rename" or path.startswith(exceptions.CERTIFICATES)):
            versions.setdefault(path, set()).add(file)


def find_moves(old, calls):
    """(file, its copy, the copied bytes) of each file that was removed after its bytes had become another file."""
    disk = make_disk(old)
    copies = {}
    moves = []
    for call in calls:
        before = disk.latest()
        if not disk.play(call):
            continue
        if call.name == "rename":
            target = call.texts[1].decode()
            copies[disk.latest()[target][0].content] = target
        if call.name == "unlink" and not diskModel.is_temporary(call.texts[0].decode()):
            path = call.texts[0].decode()
            content = before[path][0].content
            if copies.get(content, path) != path:
                moves.append((path, copies[content], content))
    return moves


def check_record(run, disk):
    """The record is what the run did, and it kept owners and permission bits."""
    model = diskModel.files_of(disk.latest())
    real = {path: entry for path, entry in run.once.items() if entry.kind == "file"}
    faults = [f"the record and the phone disagree about {path}" for path in sorted(model.keys() | real.keys())
              if model.get(path) != real.get(path)]
    for path, versions in run.versions.items():
        if diskModel.is_temporary(path):
            faults += [f"{path}: {told(entry)} before its content is complete" for entry in versions
                       if not is_private_or_complete(run, path, entry)]
        else:
            faults += [f"{path}: saved as {told(entry)}" for entry in versions
                       if not has_right_attributes(run, path, entry)]
    if faults:
        raise BadRecord("undisturbed: " + "; ".join(faults))


def is_private_or_complete(run, temporary, entry):
    """A temporary file is its owner's alone until it holds what the file will hold, under its later owner."""
    owner = (os.geteuid(), os.getegid())
    return (entry.mode == PRIVATE_MODE and entry.owner == owner) or any(
        version.content == entry.content and version.owner == entry.owner
        and entry.mode in (PRIVATE_MODE, version.mode) for version in run.versions[diskModel.group_path(temporary)])


def has_right_attributes(run, path, entry):
    """Those of the file that it replaces, or of the file that it is a copy of, or of a new file."""
    if path in run.old:
        return (entry.mode, entry.owner) == (run.old[path].mode, run.old[path].owner)
    sources = {version.mode for other, versions in run.versions.items() for version in versions
               if other != path and not diskModel.is_temporary(other) and version.content == entry.content}
    return entry.owner == (os.geteuid(), os.getegid()) and entry.mode in (sources or {NEW_FILE_MODE})


def told(entry):
    if entry is None:
        return "missing"
    return f"{entry.kind} {entry.mode:04o} of {entry.owner}, {len(entry.content)} bytes {entry.content[:60]!r}"


def faults_of(run, found, is_power_cut):
    """What the disturbed run has lost or left behind."""
    paths = run.old.keys() | found.keys() | run.versions.keys()
    faults = [f"{path} is {told(found.get(path))}" for path in sorted(paths)
              if not is_allowed(run, path, found.get(path), is_power_cut)]
    leftovers = [path for path in found if diskModel.is_temporary(path)]
    if len(leftovers) > 1 and not is_power_cut:
        faults.append(f"more than one temporary file: {', '.join(leftovers)}")
    return faults + faults_of_moves(run, found)


def faults_of_moves(run, found):
    """A file that was moved is in one of its two places, whole."""
    return [f"{path} is gone, and {copy} is {told(found.get(copy))}" for path, copy, content in run.moves
            if path not in found and (copy not in found or found[copy].content != content)]


def is_allowed(run, path, entry, is_power_cut):
    if diskModel.is_temporary(path):
        return entry is None or may_be_left(run, path, entry, is_power_cut)
    return is_version(run, path, entry)


def may_be_left(run, path, entry, is_power_cut):
    versions = run.versions.get(path, set())
    if not is_power_cut:
        return entry in versions
    # Whatever came to the device of it, nobody may read it who may not read the file itself.
    files = run.versions.get(diskModel.group_path(path), set())
    return bool(versions) and entry.mode in {PRIVATE_MODE} | {file.mode for file in files}


def is_version(run, path, entry):
    if path not in run.versions:
        return entry == run.old.get(path)
    if entry is None:
        return path not in run.old or path not in run.once
    if entry in run.versions[path]:
        return True
    # The device's own copy command may leave the beginning of a new certificate.
    return path.startswith(exceptions.CERTIFICATES) and path not in run.old and is_beginning(entry, run.once[path])


def is_beginning(entry, whole):
    return (entry.mode, entry.owner) == (whole.mode, whole.owner) and (
        whole.content.startswith(entry.content) or entry.content == bytes(len(whole.content)))


def faults_of_again(run, found, final):
    """What is wrong with the phone on which the mode ran once more after the disturbed run left it as found."""
    again = exceptions.Again(run.mode, run.old, run.once, run.twice, found)
    expected = exceptions.expected_again(again)
    return [f"after one more run {path} {told_difference(final.get(path), expected.get(path))}"
            for path in sorted(expected.keys() | final.keys()) if final.get(path) != expected.get(path)]


def told_difference(found, expected):
    if found is None or expected is None or found.content == expected.content:
        return f"is {told(found)} instead of {told(expected)}"
    begin = len(os.path.commonprefix([found.content, expected.content]))
    part = slice(max(0, begin - 30), begin + 30)
    return f"has {found.content[part]!r} at byte {begin} instead of {expected.content[part]!r}"
