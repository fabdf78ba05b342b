# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Folders that vanish during the run, or to which it must not write."""

import devicePaths
import phones
from model import comparison, fileByFile, oneStep

ORDINARY_USER = ("--unshare-user", "--uid", "1000", "--gid", "1000")

# The device's copy command removes the folder, since it runs in the middle of the run.
REMOVING_COPY = """#!/bin/sh
mv {0} /config/gone 2>/dev/null
exec /usr/bin/install -m 644 "$1" "$2"
"""


def end_of(program, phone, mode, root, change, options=()):
    phones.make_phone(phone, root)
    change(root)
    before = phones.files_of(root)
    result = phones.run(program, root, mode, options=options)
    found = comparison.files_of(root)
    run = oneStep.Run(mode, before, found, [])
    return run, [] if result.returncode == 0 else [f"exit status {result.returncode}"]


def without(phone, *folders):
    return {path: entry for path, entry in phone.items() if not path.startswith(folders)}


def check_vanishing(program, phone, mode, folder):
    """The files saved in it are lost with it; everything else is committed."""
    results = []
    ordinary, _ = end_of(program, phone, mode, folder / "phone", lambda root: None)
    for gone in ("/config/data", "/config/user/voip"):
        copy = folder / "cp"
        copy.write_text(REMOVING_COPY.format(gone))
        copy.chmod(0o755)
        found, faults = end_of(program, phone, mode, folder / "phone", lambda root: None,
                               ("--ro-bind", str(copy), "/usr/bin/cp"))
        expected = without(ordinary.after, gone + "/")
        moved = {path.replace(gone, "/config/gone"): entry for path, entry in ordinary.before.items()
                 if path.startswith(gone + "/")}
        results.append((f"{gone} vanishes", faults + comparison.differences({**expected, **moved}, found.after)))
    return results


def lock_top(root):
    (root / "config").chmod(0o555)


def lock_top_with_marker(mode):
    def change(root):
        (root / devicePaths.MARKER[1:]).write_text(f"{mode}\nlater\n")
        lock_top(root)
    return change


def check_locked_top(program, phone, mode, folder):
    """Without a place for the record, each file is committed separately; with the marker, which stays, none is."""
    root = folder / "phone"
    ordinary, _ = end_of(program, phone, mode, root, lambda root: None, ORDINARY_USER)
    found, faults = end_of(program, phone, mode, root, lock_top, ORDINARY_USER)
    expected = fileByFile.after_moves(ordinary)
    results = [("/config is locked", faults + comparison.differences(expected, found.after))]
    found, faults = end_of(program, phone, mode, root, lock_top_with_marker(mode), ORDINARY_USER)
    certificates = {path: entry for path, entry in ordinary.after.items()
                    if path.startswith(devicePaths.USER_CERTIFICATES)}
    expected = {**found.before, **certificates}
    return results + [("/config is locked, with the marker", faults + comparison.differences(expected, found.after))]
