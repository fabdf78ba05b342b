# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What a file may hold after a run in which saves failed: a sequence of whole saves, nothing cut, mixed or lost."""

import functools

import exceptions
import iniText
import passes
import recordedRun

CERTIFICATES = "/config/certs/phoneca/"
FACTORY_ACCOUNT = "/phone/factory/user/voip/sipAccount16.cfg"

# Saved one after the other: when the first one fails, the second one is not tried.
SECOND_OF = {"/config/data/contact_list.xml": "/config/data/contact_group_list.xml"}


def is_ini(path):
    return path.endswith((".ini", ".cfg"))


def copied_to(mode, before):
    """{destination: the files that this mode may copy there}"""
    if mode == "1":
        return {passes.DIRECT_IP: exceptions.accounts_of(before)}
    if mode == "2":
        return {passes.LAST_ACCOUNT: [passes.DIRECT_IP, FACTORY_ACCOUNT]}
    return {}


class WholeSaves:
    """The contents that each file may have, from what was there and from what undisturbed runs saved.

    `lenders` are other runs on the same phone that lend values: a secret that an earlier pass failed to replace is
    enciphered as mode "pwd" alone would have done it. Values that stand in for what could not be read count only
    `after_failed_reads`.
    """

    def __init__(self, run, lenders=(), after_failed_reads=False):
        self.run = run
        self.runs = [run, *lenders]
        self.copies = copied_to(run.mode, run.before)
        self.assumed = exceptions.values_after_failed_reads(run.mode, run.before) if after_failed_reads else {}

    def contents(self, path):
        """Whole contents: the old one and those that were saved."""
        old = self.run.before.get(path)
        return ([old.content] if old else []) + [save.content for save in self.run.saves if save.path == path]

    def origins(self, path):
        """The contents that the program may begin its changes with: nothing, the old file, or what it copies there."""
        places = [path, *self.copies.get(path, ())]
        old = [self.run.before[place].content for place in places if place in self.run.before]
        return old if path in self.run.before else [b"", *old]

    @functools.cache
    def values(self, path):
        """{(section, key): the values that the file may hold there}"""
        values = {name: set(some) for name, some in self.assumed.get(path, {}).items()}
        contents = self.origins(path) + [save.content for run in self.runs for save in run.saves if save.path == path]
        for source in self.copies.get(path, ()):
            contents += self.contents(source)
        for content in contents:
            for name, some in iniText.values_of(content).items():
                values.setdefault(name, set()).update(some)
        if FACTORY_ACCOUNT in self.copies.get(path, ()):
            for some in values.values():
                some.update([value.removeprefix(b"?") for value in some])
        return values

    def why_not(self, path, entry):
        """Why no sequence of whole saves leaves this; empty when one does. `entry` is None for a missing file."""
        old, new = self.run.before.get(path), self.run.after.get(path)
        if entry is None:
            return "is gone" if old and new else ""
        like = old or new
        if like is None:
            return "is new"
        if (entry.kind, entry.mode, entry.owner) != (like.kind, like.mode, like.owner):
            return f"is a {entry.kind} {entry.mode:04o} {entry.owner}"
        return self.why_not_content(path, entry.content)

    @functools.cache
    def why_not_content(self, path, content):
        if content in self.contents(path):
            return ""
        if not content:
            return "is empty"
        if path.startswith(CERTIFICATES):
            return "" if content == self.factory_certificate(path) else "is not the factory's certificate"
        if not is_ini(path):
            return f"is neither the old file nor a whole new one: {content!r}"
        reasons = [iniText.why_not_edited(origin, content, self.values(path)) for origin in self.origins(path)]
        return "" if "" in reasons else f"{reasons[0]}: {content!r}"

    def factory_certificate(self, path):
        """The device's own copy command puts it there, so the program saves nothing."""
        entry = self.run.before.get("/phone/factory/certs/phoneca/" + path.removeprefix(CERTIFICATES))
        return entry.content if entry else None


def without_saves(run, is_dropped):
    """The files after the run when the saves fail for which `is_dropped(number)` holds, and all saves after them."""
    expected = {}
    for path, entry in run.after.items():
        saves = [number for number, save in enumerate(run.saves) if save.path == path]
        kept = [number for number in saves if not is_dropped(number)]
        if kept:
            expected[path] = exceptions.with_content(entry, run.saves[kept[-1]].content)
        elif not saves:
            expected[path] = entry
        elif path in run.before:
            expected[path] = run.before[path]
    return expected


def of_modes(program, phone, modes, scratch, after_failed_reads=False):
    """{mode: its `WholeSaves`}, from undisturbed runs."""
    runs = {mode: recordedRun.take_down(program, phone, mode, scratch) for mode in {*modes, "pwd"}}
    lenders = {"all": [runs["pwd"]]}
    return {mode: WholeSaves(runs[mode], lenders.get(mode, ()), after_failed_reads) for mode in modes}
