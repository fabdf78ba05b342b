# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The possible content of a file if a pass could not read: unchanged whole lines, and each key with a value that a
pass that did run, or did not, leaves there.

A pass that cannot read a file uses a default. These few are known by name, and no other value may appear.
"""

import functools

import devicePaths
from model import comparison, fileByFile, iniText, recordedRun, tablesOfPhone

# In addition to its own passes, a mode does the same as these modes.
PARTS = {"all": ("dev", "pwd"), "dev": (), "pwd": (), "1": (), "2": (), "fix-ups-only": ()}
FACTORY_MARK = b"?"


def defaults(mode, before):
    """(file, (section, key), value) that a pass writes if it could not read."""
    for path in devicePaths.ACCOUNTS:
        yield path, (b"account", b"SCALineKeyNumber"), b"-1"
    account = before.get(devicePaths.ACCOUNTS[0])
    timers = iniText.values_of(account.content).get((b"account", b"CancelTimer"), []) if account else []
    for value in (*timers, b"180"):
        yield devicePaths.USER_INI, (b"Feature", b"RingbackTimeout"), value
    if mode in ("all", "dev"):
        for record in tablesOfPhone.table_records(before):
            file, section, key = tablesOfPhone.destination_of(record)
            yield file, (section.encode(), key.encode()), b""


class KeyByKey:
    """Judges the phones that a mode leaves; `parts` are undisturbed runs of the modes that it is made of."""

    def __init__(self, run, parts=()):
        self.run = run
        self.phones = [run.before, run.after] + [part.after for part in parts]
        self.sources = {}
        if run.mode in devicePaths.COPIES_TO:
            copied = {"1": devicePaths.ACCOUNTS,
                      "2": (devicePaths.DIRECT_IP_FILE, devicePaths.FACTORY_ACCOUNT)}[run.mode]
            self.sources[devicePaths.COPIES_TO[run.mode]] = copied

    def contents(self, path):
        """Those of the file, and of files that may be copied there."""
        return [phone[place].content for place in (path, *self.sources.get(path, ()))
                for phone in self.phones if place in phone]

    @functools.cache
    def values(self, path):
        values = {}
        for file, name, value in defaults(self.run.mode, self.run.before):
            if file in (path, *self.sources.get(path, ())):
                values.setdefault(name, set()).add(value)
        for content in self.contents(path):
            for name, some in iniText.values_of(content).items():
                values.setdefault(name, set()).update(some)
                if path in self.sources:
                    values[name].update(value.removeprefix(FACTORY_MARK) for value in some)
        return values

    def why_not(self, path, entry):
        """Why the file cannot end so; empty if it can."""
        run = self.run
        if entry in (run.before.get(path), run.after.get(path), fileByFile.after_moves(run).get(path)):
            return ""
        like = run.before.get(path, run.after.get(path))
        if entry is None or like is None or not devicePaths.is_ini(path):
            return comparison.shown_difference(like, entry)
        if (entry.kind, entry.mode, entry.owner) != (like.kind, like.mode, like.owner):
            return comparison.shown_difference(like, entry)
        reasons = [iniText.why_not_edited(content, entry.content, self.values(path)) for content in self.contents(path)]
        return "" if "" in reasons else f"{reasons[0]}: {entry.content!r}"

    def faults_of(self, found, dependent=None):
        """Files that do not depend on the failure are as after the run; without `dependent`, all may depend on it."""
        faults = []
        for path in fileByFile.paths_of(self.run, found):
            if dependent is None or path in dependent:
                reason = self.why_not(path, found.get(path))
            else:
                wanted, present = self.run.after.get(path), found.get(path)
                reason = "" if present == wanted else comparison.shown_difference(wanted, present)
            faults += [f"{path} {reason}"] if reason else []
        return faults


def of_modes(program, phone, modes, scratch, options=()):
    """{mode: its judge}, from undisturbed runs."""
    needed = {part for mode in modes for part in PARTS[mode]} | set(modes)
    runs = {mode: recordedRun.take_down(program, phone, mode, scratch, options) for mode in needed}
    return {mode: KeyByKey(runs[mode], [runs[part] for part in PARTS[mode]]) for mode in modes}
