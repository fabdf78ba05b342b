# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The states of a file system that a power cut may leave after a run's writing calls.

Files are inodes: a name leads to one, and a rename moves it with its current state on the device. Until a file is
flushed, each write to it may be missing, incomplete or whole, and each change of its owner and permission bits may be
missing. Until a folder is flushed, each name that was created, renamed or removed in it may be missing, independently
of the changes before and after it, and a renamed file may have both names: some flash file systems rename in two
writes. A file system without a journal gives the number of a removed inode to the next new
file; until the folder is flushed, the removed name may lead to the new file's bytes. No real file system is as bad as
that; the states of each known one are a subset of these.
"""

import dataclasses
import functools
import itertools
import os
import re

import phones
import traces

# All calls that may change a file. One of these that the model does not know ends the proof.
CALLS = ("open,openat,openat2,creat,write,writev,pwrite64,pwritev,pwritev2,copy_file_range,sendfile,splice,vmsplice,"
         "fallocate,truncate,ftruncate,rename,renameat,renameat2,link,linkat,symlink,symlinkat,unlink,unlinkat,mkdir,"
         "mkdirat,rmdir,mknod,mknodat,chmod,fchmod,fchmodat,chown,lchown,fchown,fchownat,setxattr,lsetxattr,fsetxattr,"
         "utime,utimes,futimesat,utimensat,fsync,fdatasync,sync,syncfs,sync_file_range,ioctl")
OPTIONS = ("-y", "-xx", "-s", "1000000", "-e", "trace=" + ",".join("?" + call for call in CALLS.split(",")))

PATHS = re.compile(rb"\d+<((?:\\x[0-9a-f]{2})*)>")
OCTAL = re.compile(rb", 0([0-7]+)\)?$")


class UnknownCall(Exception):
    pass


@dataclasses.dataclass
class Inode:
    """A file without its name: its state on the device, and the changes since it was flushed."""

    number: int
    device: phones.Entry
    pending: list = dataclasses.field(default_factory=list)
    heirs: list = dataclasses.field(default_factory=list)  # the new files that may have got its number

    def latest(self):
        entry = self.device
        for change in self.pending:
            entry = change(entry)
        return entry

    def flush(self):
        self.device = self.latest()
        self.pending = []

    def variants(self):
        """Every state in which the power cut may leave it, each once."""
        found = {}
        for choice in itertools.product(*(change.outcomes() for change in self.pending)):
            entry = self.device
            for outcome in choice:
                entry = outcome(entry)
            found[entry] = True
        return list(found)


@dataclasses.dataclass(frozen=True)
class Write:
    offset: int
    data: bytes

    def __call__(self, entry):
        kept = entry.content.ljust(self.offset, b"\0")
        return dataclasses.replace(entry, content=kept[:self.offset] + self.data + kept[self.offset + len(self.data):])

    def outcomes(self):
        """Dropped, truncated at a few lengths, only its length (zeros on the device), whole."""
        size = len(self.data)
        cuts = sorted({1, size // 2, size - 1} - {0, size} if size > 1 else set())
        return ([nothing] + [Write(self.offset, self.data[:cut]) for cut in cuts]
                + [Write(self.offset, bytes(size)), self])


@dataclasses.dataclass(frozen=True)
class Cut:
    """A file that is truncated when it is opened."""

    def __call__(self, entry):
        return dataclasses.replace(entry, content=b"")

    def outcomes(self):
        return [nothing, self]


@dataclasses.dataclass(frozen=True)
class Attribute:
    """A change of permission bits or of the owner."""

    name: str
    value: object

    def __call__(self, entry):
        return dataclasses.replace(entry, **{self.name: self.value})

    def outcomes(self):
        return [nothing, self]


def nothing(entry):
    return entry


@dataclasses.dataclass
class Group:
    """Names that depend on each other, since a rename that may be missing concerns both; and their possible targets."""

    names: tuple
    device: tuple  # the number of the inode that each name leads to on the device, or None
    latest: tuple = ()
    reached: set = frozenset()  # each such tuple that a power cut may leave

    def __post_init__(self):
        self.latest = self.latest or self.device
        self.reached = self.reached or {self.device}

    def change(self, changes):
        self.latest = self.changed(self.latest, changes)
        added = {name: number for name, number in changes.items() if number is not None}
        self.reached |= {self.changed(numbers, part) for numbers in self.reached for part in (added, changes)}

    def changed(self, numbers, changes):
        return tuple(changes.get(name, number) for name, number in zip(self.names, numbers))

    def flush(self, folder):
        newest = {name: number for name, number in zip(self.names, self.latest) if os.path.dirname(name) == folder}
        self.device = self.changed(self.device, newest)
        self.reached = {self.changed(numbers, newest) for numbers in self.reached}

    def is_flushed(self):
        return self.reached == {self.latest}


def joined(one, other):
    return Group(one.names + other.names, one.device + other.device, one.latest + other.latest,
                 {first + second for first, second in itertools.product(one.reached, other.reached)})


class Disk:
    """Plays the calls one after the other. `changed` holds the names that the last call may have changed."""

    def __init__(self, phone, owner, umask):
        self.folders = {path for path, entry in phone.items() if entry.kind == "folder"}
        self.owner = owner
        self.umask = umask
        self.groups = {}
        self.inodes = []
        self.open_files = {}
        self.changed = set()
        for path, entry in phone.items():
            if entry.kind == "file":
                self.set_group(Group((path,), (self.new_inode(entry),)))

    def set_group(self, group):
        for name in group.names:
            self.groups[name] = group

    def new_inode(self, entry):
        self.inodes.append(Inode(len(self.inodes), entry))
        return self.inodes[-1].number

    def group(self, path):
        if path not in self.groups:
            self.set_group(Group((path,), (None,)))
        return self.groups[path]

    def all_groups(self):
        return {id(group): group for group in self.groups.values()}.values()

    def inode_at(self, path):
        group = self.group(path)
        number = group.latest[group.names.index(path)]
        return None if number is None else self.inodes[number]

    def make_inode(self, entry):
        """A new file, which may get the number of any file that is removed in memory but not on the device."""
        used = {number for group in self.groups.values() for number in group.latest}
        on_device = {number for group in self.groups.values() for numbers in group.reached for number in numbers}
        made = self.new_inode(entry)
        for number in on_device - used - {None}:
            self.inodes[number].heirs.append(made)
        return made

    def play(self, call):
        """Whether the call concerned the phone."""
        self.changed = set()
        if call.result < 0:
            return False
        player = getattr(self, "play_" + call.name, None)
        if player is not None:
            return player(call)
        if concerns_phone(call):
            raise UnknownCall(f"the model does not know {call.name} {paths_of(call)}")
        return False

    def change_inode(self, inode, change):
        inode.pending.append(change)
        return self.note_change(inode)

    def note_change(self, inode):
        numbers = {inode.number} | {other.number for other in self.inodes if inode.number in other.heirs}
        for group in self.all_groups():
            if any(number in numbers for reached in group.reached for number in reached):
                self.changed.update(group.names)
        return True

    def change_names(self, changes):
        """One change of a folder: a name and its inode (None: it is removed), or the two names of a rename."""
        groups = {id(self.group(name)): self.group(name) for name in changes}.values()
        group = functools.reduce(joined, groups)
        group.change(changes)
        self.set_group(group)
        self.changed.update(group.names)
        return True

    def play_openat(self, call):
        path = call.file
        if not is_of_phone(path) or path in self.folders:
            self.open_files.pop((call.process, call.result), None)
            return False
        is_made = b"O_CREAT" in call.arguments and self.inode_at(path) is None
        if is_made:
            mode = int(OCTAL.search(call.arguments).group(1), 8) & ~self.umask
            self.change_names({path: self.make_inode(phones.Entry("file", mode, self.owner, b""))})
        inode = self.inode_at(path)
        self.open_files[call.process, call.result] = [inode, 0]
        if b"O_TRUNC" in call.arguments:
            self.change_inode(inode, Cut())
        return bool(self.changed)

    play_open = play_openat

    def append(self, call, descriptor, data):
        open_file = self.open_files.get((call.process, descriptor))
        if open_file is None:
            raise UnknownCall(f"{call.name} to a file that was not opened: {paths_of(call)}")
        inode, offset = open_file
        open_file[1] = offset + len(data)
        return self.change_inode(inode, Write(offset, data))

    def play_write(self, call):
        if not is_of_phone(call.file) or call.result == 0:
            return False
        return self.append(call, call.descriptor, call.texts[0][:call.result])

    def play_copy_file_range(self, call):
        source, target = descriptors_of(call)
        copied = self.open_files[call.process, source]
        data = copied[0].latest().content[copied[1]:copied[1] + call.result]
        copied[1] += len(data)
        return bool(data) and self.append(call, target, data)

    def play_fchmod(self, call):
        if not is_of_phone(call.file):
            return False
        mode = int(OCTAL.search(call.arguments).group(1), 8)
        return self.change_inode(self.inode_at(call.file), Attribute("mode", mode))

    def play_fchown(self, call):
        if not is_of_phone(call.file):
            return False
        owner = tuple(int(number) for number in call.arguments.split(b",")[1:3])
        return self.change_inode(self.inode_at(call.file), Attribute("owner", owner))

    def play_fsync(self, call):
        if not is_of_phone(call.file):
            return False
        if call.file in self.folders:
            return self.flush_folder(call.file)
        inode = self.inode_at(call.file)
        inode.flush()
        return self.note_change(inode)

    def flush_folder(self, folder):
        for group in list(self.all_groups()):
            if group.is_flushed() or not any(os.path.dirname(name) == folder for name in group.names):
                continue
            group.flush(folder)
            self.changed.update(group.names)
            if group.is_flushed():
                for name, number in zip(group.names, group.latest):
                    self.set_group(Group((name,), (number,)))
        return True

    def play_rename(self, call):
        source, target = (text.decode(errors="surrogateescape") for text in call.texts)
        if not is_of_phone(source) and not is_of_phone(target):
            return False
        return self.change_names({source: None, target: self.inode_at(source).number})

    def play_unlink(self, call):
        path = call.texts[0].decode(errors="surrogateescape")
        return is_of_phone(path) and self.change_names({path: None})

    def play_utimensat(self, call):
        return False  # a lost time is harmless

    def latest(self):
        """The files as every process sees them: name -> entry, or None."""
        return self.state(lambda group: group.latest, Inode.latest)

    def oldest(self):
        """The files on the device without any change that was not flushed."""
        return self.state(lambda group: group.device, lambda inode: inode.device)

    def state(self, numbers_of, entry_of):
        return {name: None if number is None else entry_of(self.inodes[number]) for group in self.all_groups()
                for name, number in zip(group.names, numbers_of(group))}

    def changed_groups(self):
        return {id(group): group for group in (self.groups[name] for name in sorted(self.changed))}.values()

    def possible(self, group):
        """Every state of the group's names that the power cut may leave, each once, always in the same order."""
        found = {}
        for numbers in sorted(group.reached, key=str):
            for entries in itertools.product(*(self.variants(group, numbers, place) for place in range(len(numbers)))):
                found[entries] = True
        return [dict(zip(group.names, entries)) for entries in found]

    def variants(self, group, numbers, place):
        """A file with two names has its states under the second one, to which a rename has moved it."""
        number = numbers[place]
        if number is None:
            return [None]
        if number in numbers[place + 1:]:
            return [phones.hard_link(group.names[numbers.index(number, place + 1)])]
        numbers = [number] + self.inodes[number].heirs
        return list({entry: True for each in numbers for entry in self.inodes[each].variants()})


def is_of_phone(path):
    return path.split("/")[1:2] in [[tree] for tree in phones.TREES]


def paths_of(call):
    texts = [traces.decode(path) for path in PATHS.findall(call.arguments)] + list(call.texts[:2])
    return [text[:200].decode(errors="surrogateescape") for text in texts]


def concerns_phone(call):
    return call.name in ("sync",) or any(is_of_phone(path) for path in paths_of(call))


def descriptors_of(call):
    return [int(number) for number in re.findall(rb"(\d+)<", call.arguments)][:2]


def is_split(record):
    """Whether strace wrote one of the calls on two lines, which the reader of records would pass over."""
    return b"<unfinished" in record.read_bytes()


def files_of(state):
    """The files that are there, by their names."""
    return {name: entry for name, entry in state.items() if entry is not None}
