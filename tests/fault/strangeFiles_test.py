# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Links, pipes, sockets, folders and locked files wherever the program expects its own, and at its temporary names:
nothing outside the phone is written, nothing hangs, and all other files end as in an ordinary run. Files under two
names, and folders that vanish or that may not be written to."""

import dataclasses
import functools
import os
import pathlib
import shutil
import subprocess
import sys

import devicePaths
import phones
import proof
import traces
from model import (comparison, fileByFile, oneStep, strangeAliases, strangeExpectations, strangeFolders,
                   strangeKinds)

HANGS_AFTER = 20

ACCOUNTS_THAT_SHARE = 7

KINDS_OF_FOLDER = ("pipe", "socket", "link to itself", "dangling link")

# The device's own copy command opens any file: see the exceptions.
COPY_WAITS_AT = ("pipe", "link to a pipe", "link to a device")


@dataclasses.dataclass(frozen=True)
class Job:
    """All kinds at one path in one mode; `what` is one of CHECKS."""

    program: pathlib.Path
    scratch: str
    phone: str
    mode: str
    path: str
    what: str
    has_marker: bool = False


def make_phone(job, folder):
    """With the upgrade's marker, the hand-over has survived a power cut: its copy exists, and /tmp is empty."""
    root = phones.make_phone(job.phone, folder / "phone")
    if job.has_marker:
        (root / devicePaths.MARKER[1:]).write_text(f"{job.mode}\nlater\n")
        if job.mode == "2":
            (root / devicePaths.HAND_OVER_COPY[1:]).write_bytes(original_content(job, devicePaths.HAND_OVER))
            (root / devicePaths.HAND_OVER[1:]).unlink(missing_ok=True)
    return root


def run(job, root, canary, user=()):
    options = ["--bind", str(canary), strangeKinds.CANARY, *user]
    return phones.run(job.program, root, job.mode, options=options, timeout=HANGS_AFTER)


def make_canary(folder):
    canary = folder / "canary"
    shutil.rmtree(canary, ignore_errors=True)
    canary.mkdir()
    canary.chmod(0o777)
    (canary / "bystander").write_bytes(b"nobody's business\n")
    return canary


def original_content(job, path=None):
    path = path or job.path
    if path == devicePaths.HAND_OVER_COPY:
        path = devicePaths.HAND_OVER
    file = phones.PHONES[job.phone] / path[1:]
    return file.read_bytes() if file.is_file() else b""


def reference(job, folder, change, user=()):
    """The phone after the run if `change` was made to it before."""
    root = make_phone(job, folder)
    change(root / job.path[1:])
    run(job, root, make_canary(folder), user)
    return phones.files_of(root)


def put_file(job, path):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(original_content(job))


def outcome_of(root, canary):
    return strangeExpectations.Outcome(comparison.files_of(root), phones.files_of(canary))


def try_kind(job, kind, path, folder):
    """Puts the kind at that path and runs the mode; returns the phones before and after, and the faults."""
    root = make_phone(job, folder)
    canary = make_canary(folder)
    file = root / path[1:]
    file.parent.mkdir(parents=True, exist_ok=True)
    strangeKinds.remove(file)
    kind.put(strangeKinds.Place(str(file), str(canary), original_content(job)))
    before = outcome_of(root, canary)
    user = strangeFolders.ORDINARY_USER if kind.taken_as == "no permission" else ()
    try:
        result = run(job, root, canary, user)
    except subprocess.TimeoutExpired:
        return before, before, [f"hangs for {HANGS_AFTER} seconds"]
    faults = []
    if result.returncode != 0:
        faults.append(f"exit status {result.returncode}: {result.stderr.decode(errors='replace')}")
    return before, outcome_of(root, canary), faults


def is_left_to_the_copy(job, kind):
    """Only the device's own copy command handles it."""
    if job.path.startswith(devicePaths.USER_CERTIFICATES):
        return kind.taken_as == "missing"
    if job.path.startswith(devicePaths.FACTORY_CERTIFICATES):
        return kind.taken_as == "missing" or kind.name in COPY_WAITS_AT
    return False


def is_left_out(job, kind):
    """On the small phone, the missing accounts share the kinds. Mode "dev" is "all" less its last pass."""
    if job.mode == "dev" and strangeKinds.KINDS.index(kind) % 2 == 0:
        return True
    is_shared = job.phone == "small" and job.path in devicePaths.ACCOUNTS and original_content(job) == b""
    if not is_shared:
        return False
    turn = devicePaths.ACCOUNTS.index(job.path) + strangeKinds.KINDS.index(kind)
    return turn % ACCOUNTS_THAT_SHARE != 0


def kinds_for(job):
    kinds = [kind for kind in strangeKinds.KINDS if os.geteuid() == 0 or not kind.needs_root]
    kinds = [kind for kind in kinds if not is_left_out(job, kind)]
    if job.what == "folder":
        return [kind for kind in kinds if kind.name in KINDS_OF_FOLDER]
    return [kind for kind in kinds if not is_left_to_the_copy(job, kind)]


def check_folder(job, folder):
    """Files below a path that is not a folder are missing, or cannot be read: files that depend on them may differ."""
    ordinary = reference(job, folder, lambda path: None)
    missing = reference(job, folder, strangeKinds.remove)
    results = []
    for kind in kinds_for(job):
        before, after, faults = try_kind(job, kind, job.path, folder)
        faults += strangeExpectations.compare_untouched(job, job.path, ordinary, missing, before, after)
        results.append((kind.name, faults))
    return results


def check_file(job, folder):
    results, rest_of_unreadable = [], {}
    for user in ((), strangeFolders.ORDINARY_USER):
        kinds = [kind for kind in kinds_for(job) if (kind.taken_as == "no permission") == bool(user)]
        if not kinds:
            continue
        put = functools.partial(put_file, job)
        references = (reference(job, folder, put, user), reference(job, folder, strangeKinds.remove, user),
                      reference(dataclasses.replace(job, mode="fix-ups-only"), folder, put, user))
        for kind in kinds:
            before, after, faults = try_kind(job, kind, job.path, folder)
            faults += strangeExpectations.compare(job, kind, references, before, after)
            if kind.taken_as == "unreadable" and "loop" not in kind.name and "itself" not in kind.name:
                rest_of_unreadable[kind.name] = strangeExpectations.without(after.phone, job.path)
            results.append((kind.name, faults))
    return results + disagreements(rest_of_unreadable)


def disagreements(phones):
    """All existing kinds other than files are handled in the same way. A link loop has no target, and so does not
    exist."""
    names = list(phones)
    return [(f"{names[0]} and {name}", comparison.differences(phones[names[0]], phones[name]))
            for name in names[1:] if phones[names[0]] != phones[name]]


def check_temporary(job, folder):
    """Another user's file under the temporary name is removed, never written to; with a folder there, this file cannot
    be saved, and without the marker's change no file is."""
    temporary = devicePaths.temporary_name(job.path)
    old = comparison.files_of(make_phone(job, folder))
    ordinary = reference(job, folder, lambda path: None)
    unsaved = fileByFile.without_changes(oneStep.Run(job.mode, old, ordinary, []), ordinary, [job.path])
    results = []
    for kind in kinds_for(job):
        before, after, faults = try_kind(job, kind, temporary, folder)
        expected = ordinary
        if kind.name in ("folder", "full folder"):
            expected = before.phone if job.path == devicePaths.MARKER else unsaved
            expected = {**expected, **strangeExpectations.part(before.phone, temporary)}
        faults += comparison.differences(expected, once_taken_back(before.phone, after.phone))
        faults += comparison.differences(before.canary, after.canary)
        results.append((f"{kind.name} at the temporary name", faults))
    return results


def once_taken_back(before, found):
    """The next run removes the certificates that are still noted."""
    if devicePaths.NOTE not in found:
        return found
    taken = {name for name in found if name.startswith(devicePaths.USER_CERTIFICATES)} - before.keys()
    return {name: entry for name, entry in found.items() if name not in taken and name != devicePaths.NOTE}


def check_private(job, folder):
    """A file that is not a record or note is ignored, and removed unless it is a folder. A file that is not a marker
    lists no modes; an empty one is removed."""
    results = []
    for kind in kinds_for(job):
        before, after, faults = try_kind(job, kind, job.path, folder)
        is_locked = kind.taken_as == "no permission"
        if job.path == devicePaths.MARKER:
            expected = dict(before.phone)
        else:
            user = strangeFolders.ORDINARY_USER if is_locked else ()
            expected = reference(job, folder, lambda path: None, user)
            if stays(kind) and job.path == devicePaths.RECORD:
                expected = fileByFile.after_moves(oneStep.Run(job.mode, before.phone, expected, []))
            expected.update(strangeExpectations.part(before.phone, job.path) if stays(kind) else {})
        if job.path == devicePaths.MARKER and kind.name == "hard link":
            del expected[job.path]
        faults += comparison.differences(expected, after.phone) + comparison.differences(before.canary, after.canary)
        results.append((kind.name, faults))
    return results


def stays(kind):
    return kind.name in ("folder", "full folder")


def check_alias(job, folder):
    return strangeAliases.check(job.program, job.phone, job.mode, folder)


def check_link_to_source(job, folder):
    return strangeAliases.check_link_to_source(job.program, job.phone, job.mode, folder)


def check_vanishing_folder(job, folder):
    return strangeFolders.check_vanishing(job.program, job.phone, job.mode, folder)


def check_locked_top(job, folder):
    return strangeFolders.check_locked_top(job.program, job.phone, job.mode, folder)


CHECKS = {"file": check_file, "folder": check_folder, "temporary": check_temporary, "private": check_private,
          "alias": check_alias, "link to its source": check_link_to_source, "vanishing": check_vanishing_folder,
          "locked": check_locked_top}


def check(job):
    os.umask(0o022)
    folder = comparison.worker_folder(job.scratch)
    results = CHECKS[job.what](job, folder)
    told = [f"mode {job.mode}, {job.path or job.what}, {name}: {fault}" for name, faults in results for fault in faults]
    return len(results), told


def recorded(chosen, mode, scratch):
    """The phone's paths that a run of the mode looks up, and the files that it saves."""
    root = phones.make_phone(chosen.phone, scratch / "phone")
    _, calls = traces.record(chosen.program, root, mode, scratch / "trace",
                             ("-y", "-xx", "-s", "4096", "-e", "trace=%file"))
    names = {text.decode(errors="surrogateescape").rstrip("/") for call in calls for text in call.texts}
    inside = tuple(f"/{tree}/" for tree in phones.TREES)
    asked = {name for name in names if name.startswith(inside) and not name.endswith(devicePaths.TEMPORARY_SUFFIX)}
    saved = {call.texts[1].decode() for call in calls if call.name in ("rename", "renameat")}
    return asked, saved


def jobs_of(chosen, mode, scratch):
    def job(what, path="", has_marker=False):
        return Job(chosen.program, str(scratch), chosen.phone, mode, path, what, has_marker)

    asked, saved = recorded(chosen, mode, scratch)
    image = phones.PHONES[chosen.phone]
    folders = {path for path in asked if (image / path[1:]).is_dir()}
    private = {devicePaths.MARKER, devicePaths.RECORD, devicePaths.NOTE}
    files = (asked | set(devicePaths.READS[mode])) - folders - private - {devicePaths.HAND_OVER_COPY}
    chosen_for = [("file", files), ("folder", folders), ("temporary", saved), ("private", private)]
    jobs = [job(what, path) for what, paths in chosen_for for path in sorted(paths)]
    jobs += [job("temporary", devicePaths.MARKER, has_marker=True), job("locked")]
    if mode in devicePaths.COPIES_TO:
        jobs += [job("file", devicePaths.HAND_OVER_COPY, has_marker=True), job("link to its source")]
    if mode == "1":
        jobs.append(job("temporary", devicePaths.HAND_OVER_COPY, has_marker=True))
    if mode in devicePaths.CERTIFICATE_MODES:
        jobs += [job("alias"), job("vanishing")]
    return jobs


def main():
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    if os.geteuid() != 0:
        print("not proven: another user's links, which only root can make")
    with proof.scratch_folder() as scratch:
        jobs = [job for mode in chosen.mode for job in jobs_of(chosen, mode, pathlib.Path(scratch))]
        results = list(proof.in_parallel(check, jobs, at_once=1))
    faults = [fault for _, found in results for fault in found]
    return proof.end("strangeFiles", faults, f"{sum(count for count, _ in results)} strange files at {len(jobs)} paths "
                     f"in {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
