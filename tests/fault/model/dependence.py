# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The files that differ after a run if a file that it reads is missing or empty: only these depend on it."""

import dataclasses

import devicePaths
import phones
from model import fileByFile

CERTIFICATES = (devicePaths.USER_CERTIFICATES, devicePaths.FACTORY_CERTIFICATES)

# While the note of the copies exists, the next run removes the copies.
FOR_THE_NOTE = (devicePaths.NOTE, "/config")

known = {}  # (mode, path): the files that depend on it; each worker determines them itself


def with_content(phone, path, content):
    """`content` is None for a phone that lacks the file."""
    changed = dict(phone)
    if content is None:
        del changed[path]
    else:
        changed[path] = dataclasses.replace(changed[path], content=content)
    return changed


def dependent_on(program, run, path, root):
    """`path` is a file or a folder. `root` is a folder to try it in."""
    certificates = {name for name in run.after if name.startswith(devicePaths.USER_CERTIFICATES)}
    if (path + "/").startswith(CERTIFICATES):
        return certificates
    files = [name for name, entry in run.before.items()
             if name.rpartition("/")[0] == path and fileByFile.is_file(entry)]
    names = [path, *devicePaths.TAKES_WITH_IT.get(path, ()), *fileByFile.held_back(run, [path])]
    if path in FOR_THE_NOTE:
        names += certificates
    if path in run.before and fileByFile.is_file(run.before[path]):
        return {*names, *changed_without(program, run, path, root)}
    return set(names).union(*(dependent_on(program, run, file, root) for file in files))


def changed_without(program, run, path, root):
    if (run.mode, path) not in known:
        found = set()
        for content in (None, b""):
            phones.make_from(with_content(run.before, path, content), root)
            phones.run(program, root, run.mode)
            phone = phones.snapshot(root)
            found |= {name for name in phone.keys() | run.after.keys() if phone.get(name) != run.after.get(name)}
        known[run.mode, path] = found
    return known[run.mode, path]
