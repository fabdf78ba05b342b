#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Plants commit records and notes that are truncated, changed, of other users, or without their temporary files: a
record that is not whole and our own is ignored and removed, and no file that it names is changed.
"""

import dataclasses
import os
import pathlib
import shutil
import sys

import devicePaths
import phones
import proof
from model import comparison, kills, oneStep, plantedRecord

EVERY_BYTE = {"small": 1, "example": 37}
NOBODY = (1203, 1303)
OURS = (os.geteuid(), os.getegid())
OTHER_NAME = "/config/other-name"
CANARY = "/config/canary"
MARKED = {devicePaths.MARKER: phones.Entry("file", 0o644, OURS, b"somebody else's\n")}
MOST_BYTES = 4 << 20

# Runs an unknown mode after each text was put under the name; prints the texts that stay there.
TRY_EACH = """cd /texts || exit
for text in *; do
    cp "$text" "$0"
    /kestrune nobody >/dev/null 2>&1
    [ ! -e "$0" ] || echo "$text"
done"""


def file_of(content, mode=0o600, owner=OURS):
    return phones.Entry("file", mode, owner, content)


def without(phone, *paths):
    return {path: entry for path, entry in phone.items() if path not in paths}


def with_old(run, *paths):
    """The phone after the run, except these paths, which are as before it."""
    return {**without(run.after, *paths), **{path: run.before[path] for path in paths if path in run.before}}


def foreign_records(text):
    """Name, and the file in place of the record."""
    long_change = [b"remove", b"/config/" + b"x" * MOST_BYTES, b"0", b"", b""]
    large = plantedRecord.text_of(plantedRecord.fields_of(text) + long_change)
    owned = {"another owner's": file_of(text, owner=NOBODY)} if OURS[0] == 0 else {}
    return {**owned, "writable by the group": file_of(text, mode=0o620), "writable by all": file_of(text, mode=0o666),
            "with two names": file_of(text), "a link to one": phones.Entry("link", 0o777, OURS, OTHER_NAME.encode()),
            "a pipe": None, "a folder": phones.Entry("folder", 0o755, OURS, b""),
            "of another format": file_of(plantedRecord.of_format(text, b"2")), "too large": file_of(large)}


class Records:
    """The phones that a mode leaves if it is killed right after its record or its note was written."""

    def __init__(self, program, phone, mode, scratch):
        self.program = program
        self.scratch = pathlib.Path(scratch)
        self.phone = phone
        self.run = oneStep.record(program, phone, mode, scratch, kills.OPTIONS)

    def root(self):
        return comparison.worker_folder(self.scratch) / "phone"

    def killed(self, call, number, note=devicePaths.RECORD):
        root = phones.make_from(self.run.before, self.root())
        kills.kill(self.program, root, self.run.mode, call, number)
        found = phones.snapshot(root)
        if note not in found:
            raise oneStep.BadRecord(f"mode {self.run.mode} leaves no {note} when it is killed before {call} {number}")
        return found

    def settled(self, phone):
        root = phones.make_from(phone, self.root())
        oneStep.settle(self.program, root)
        return phones.snapshot(root)

    def after_mode(self, phone):
        root = phones.make_from(phone, self.root())
        phones.run(self.program, root, self.run.mode)
        return phones.snapshot(root)

    def faults_of_texts(self, phone, path, texts):
        """Each of them is ignored and removed, and nothing else happens."""
        root = phones.make_from({**without(phone, path), **MARKED}, self.root())
        folder = comparison.worker_folder(self.scratch) / "texts"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        for number, text in enumerate(texts):
            (folder / str(number)).write_bytes(text)
        result = phones.run(self.program, root, "", ["/bin/sh", "-c", TRY_EACH, path],
                            ["--ro-bind", str(folder), "/texts"], timeout=300)
        faults = [f"text {number} stays" for number in result.stdout.decode().split()]
        return faults + comparison.differences({**without(phone, path), **MARKED}, phones.snapshot(root))

    def faults_of_damaged(self, phone, step):
        text = phone[devicePaths.RECORD].content
        texts = plantedRecord.damaged(text, step)
        faults = self.faults_of_texts(phone, devicePaths.RECORD, texts)
        for chosen in (texts[0], texts[len(texts) // 3], texts[-1]):
            found = self.after_mode({**phone, devicePaths.RECORD: file_of(chosen)})
            faults += [f"the mode's run {fault}" for fault in comparison.differences(self.run.after, found)]
        return faults, len(texts)

    def plant(self, name, entry, phone):
        """Also files that stay, in addition to a folder."""
        text = phone[devicePaths.RECORD].content
        entries = {**without(phone, devicePaths.RECORD), **({devicePaths.RECORD: entry} if entry else {})}
        if name == "a link to one":
            entries[OTHER_NAME] = file_of(text)
        root = phones.make_from(entries, self.root())
        if name == "a pipe":
            os.mkfifo(f"{root}{devicePaths.RECORD}")
        if name == "with two names":
            os.link(f"{root}{devicePaths.RECORD}", f"{root}{OTHER_NAME}")
        kept = (OTHER_NAME, devicePaths.RECORD) if name == "a folder" else (OTHER_NAME,)
        return root, kept

    def faults_of_foreign(self, name, entry, phone):
        is_folder = name == "a folder"
        root, kept = self.plant(name, entry, phone)
        oneStep.settle(self.program, root)
        faults = comparison.differences(without(phone, devicePaths.RECORD), without(phones.snapshot(root), *kept))
        root, kept = self.plant(name, entry, phone)
        phones.run(self.program, root, self.run.mode)
        found = phones.snapshot(root)
        after = self.after_one_by_one(phone) if is_folder else self.run.after
        faults += comparison.differences(after, without(found, *kept))
        if is_folder and devicePaths.RECORD not in found:
            faults.append("the folder is gone")
        return [f"a record, {name}: {fault}" for fault in faults]

    def after_one_by_one(self, phone):
        """Without a record each file is replaced separately, and an original is renamed to its copy."""
        originals = plantedRecord.originals_of(phone[devicePaths.RECORD].content)
        return {**self.run.after, **{copy: self.run.before[path] for copy, path in originals.items()}}

    def faults_of_canary(self):
        """A record of our own that renames over the canary does so: the same record of another user does not."""
        faults = []
        text = plantedRecord.record_of(b"all", b"rename", CANARY.encode(), b"new")
        for record, is_trusted in ((file_of(text), True), (file_of(text, owner=NOBODY), False),
                                   (file_of(text, mode=0o620), False)):
            if record.owner == NOBODY and OURS[0] != 0:
                continue
            found = self.settled({**self.run.before, CANARY: file_of(b"old"), devicePaths.RECORD: record,
                                  CANARY + devicePaths.TEMPORARY_SUFFIX: file_of(b"new")})
            if found[CANARY].content != (b"new" if is_trusted else b"old"):
                faults.append(f"a planted record, {record.mode:04o} of {record.owner}: the canary is wrong")
        return faults

    def faults_of_vanished(self, phone):
        """If a temporary file is missing or incomplete, its file and the original of a copy are unchanged."""
        temporaries = [path for path in phone if devicePaths.is_temporary(path)]
        # The certificates were copied before the record was made.
        copied = {path: entry for path, entry in self.run.after.items()
                  if path.startswith(devicePaths.USER_CERTIFICATES) and path not in self.run.before}
        found = self.settled(without(phone, *temporaries))
        faults = comparison.differences({**self.run.before, **copied}, found)
        faults += comparison.differences(self.run.after, self.after_mode(found))
        originals = plantedRecord.originals_of(phone[devicePaths.RECORD].content)
        for temporary in temporaries:
            path = temporary.removesuffix(devicePaths.TEMPORARY_SUFFIX)
            expected = with_old(self.run, path, originals.get(path))
            torn = dataclasses.replace(phone[temporary], content=phone[temporary].content[:-1])
            for state, left in (("gone", without(phone, temporary)), ("torn", {**phone, temporary: torn})):
                found = oneStep.kept(self.settled(left), is_power_cut=False)
                faults += [f"{temporary} {state}: {fault}" for fault in comparison.differences(expected, found)]
        return faults, 2 * len(temporaries) + 1

    def faults_of_notes(self, step):
        """Three flushes: the note, its folder, and a copy."""
        phone = self.killed("fsync", 3, devicePaths.NOTE)
        texts = plantedRecord.damaged(phone[devicePaths.NOTE].content, step)
        faults = self.faults_of_texts(phone, devicePaths.NOTE, texts)
        foreign = dataclasses.replace(phone[devicePaths.NOTE], mode=0o620)
        found = self.settled({**phone, devicePaths.NOTE: foreign})
        faults += comparison.differences(without(phone, devicePaths.NOTE), found)
        faults += comparison.differences(self.run.before, self.settled(phone))
        return [f"the note: {fault}" for fault in faults], len(texts) + 2

    def faults_of_hand_over_copy(self):
        """An old copy is removed if mode "1" makes none, and replaced by a new one if it makes one."""
        faults = []
        for has_hand_over in (False, True):
            root = oneStep.make_marked_phone(self.phone, self.root())
            factory = root / "phone/factory/user/user.ini"
            if not has_hand_over:
                factory.write_bytes(factory.read_bytes().replace(b"SyncCfgByVersion=1", b"SyncCfgByVersion=0"))
            (root / devicePaths.HAND_OVER[1:]).unlink(missing_ok=True)
            (root / devicePaths.MARKER[1:]).write_bytes(b"1\n")
            (root / devicePaths.HAND_OVER_COPY[1:]).write_bytes(b"old")
            phones.run(self.program, root, "1")
            found = phones.snapshot(root)
            made = [found[path].content for path in (devicePaths.HAND_OVER_COPY, devicePaths.HAND_OVER) if path in found]
            if len(made) != 2 * has_hand_over or len(set(made)) > 1 or devicePaths.MARKER in found:
                faults.append(f"mode 1 {'with' if has_hand_over else 'without'} a hand-over leaves {made}")
        return faults


def prove(program, phone, scratch):
    step = EVERY_BYTE[phone]
    records = Records(program, phone, "1", scratch)
    found = records.killed("rename", 1)
    faults, texts = records.faults_of_damaged(found, step)
    foreign = foreign_records(found[devicePaths.RECORD].content)
    for name, entry in foreign.items():
        faults += records.faults_of_foreign(name, entry, found)
    faults += records.faults_of_canary() + records.faults_of_hand_over_copy()
    vanished = 0
    for mode in ("1", "2", "all"):
        others = Records(program, phone, mode, scratch)
        added, count = others.faults_of_vanished(others.killed("rename", 1))
        faults += [f"mode {mode}, {fault}" for fault in added]
        vanished += count
    added, notes = others.faults_of_notes(step)
    return faults + added, (f"{texts} damaged and {len(foreign)} foreign records, {vanished} without whole temporary "
                            f"files, {notes} notes")


def main():
    arguments = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    os.umask(oneStep.UMASK)
    try:
        with proof.scratch_folder() as scratch:
            faults, figures = prove(arguments.program, arguments.phone, pathlib.Path(scratch))
    except oneStep.BadRecord as reason:
        faults, figures = [str(reason)], "no undisturbed run"
    return proof.end("record", faults, figures)


if __name__ == "__main__":
    sys.exit(main())
