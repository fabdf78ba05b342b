# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What a file system may leave of a run's writing calls when the power goes.

Files are inodes: a name leads to one, and a rename takes it along with whatever of it is on the device. Until a file is
flushed, each write to it may be missing, cut short or whole, and each change of its owner and permission bits may be
missing. Until a folder is flushed, each name that was made, renamed or removed in it may be missing, whatever became of
the changes before and after it. No file system is as bad as that; each that we know of is a part of it.
"""

import dataclasses
import itertools
import os
import re

import sandbox
import trace

# Everything that may change a file. A call of these that the model does not know ends the proof.
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
    """A file without its name: what of it is on the device, and the changes since it was flushed."""

    number: int
    device: sandbox.Entry
    pending: list = dataclasses.field(default_factory=list)
    names: set = dataclasses.field(default_factory=set)

    def latest(self):
        entry = self.device
        for change in self.pending:
            entry = change(entry)
        return entry

    def flush(self):
        self.device = self.latest()
        self.pending = []

    def variants(self):
        """Every form in which the power cut may leave it, each once."""
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
        """Dropped, cut short at a few lengths, its length alone (zeros on the device), whole."""
        size = len(self.data)
        cuts = sorted({1, size // 2, size - 1} - {0, size} if size > 1 else set())
        return ([nothing] + [Write(self.offset, self.data[:cut]) for cut in cuts]
                + [Write(self.offset, bytes(size)), self])


@dataclasses.dataclass(frozen=True)
class Cut:
    """A file made empty when it is opened."""

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
    """The names of one file, its own and the temporary one, and every pair of inodes that they may lead to."""

    path: str
    device: tuple
    pending: list = dataclasses.field(default_factory=list)
    reached: set = dataclasses.field(default_factory=set)

    def __post_init__(self):
        self.reached = {self.device}

    def latest(self):
        pair = self.device
        for change in self.pending:
            pair = change(pair)
        return pair

    def change(self, change):
        self.pending.append(change)
        self.reached |= {change(pair) for pair in self.reached}

    def flush(self):
        self.device = self.latest()
        self.pending = []
        self.reached = {self.device}


def group_path(path):
    return path.removesuffix(sandbox.TEMPORARY_SUFFIX)


def is_temporary(path):
    return path.endswith(sandbox.TEMPORARY_SUFFIX)


def place_of(path):
    """Where the name stands in its group's pair."""
    return 1 if is_temporary(path) else 0


def set_name(place, inode):
    """The folder change after which the name leads to the inode (None: to nothing)."""
    return lambda pair: (inode, pair[1]) if place == 0 else (pair[0], inode)


def take_place(inode):
    """The rename of the temporary file to the file itself."""
    return lambda pair: (inode, None)


class Disk:
    """Plays the calls one after the other. `changed` holds the groups that the last call may have changed."""

    def __init__(self, phone, owner, umask):
        self.folders = {path for path, entry in phone.items() if entry.kind == "folder"}
        self.owner = owner
        self.umask = umask
        self.numbers = itertools.count()
        self.groups = {}
        self.inodes = []
        self.open_files = {}
        self.changed = set()
        for path, entry in phone.items():
            if entry.kind == "file":
                self.put(path, entry)

    def put(self, path, entry):
        inode = self.new_inode(path, entry)
        group = self.group(path)
        group.device = set_name(place_of(path), inode)(group.device)
        group.flush()

    def new_inode(self, path, entry):
        inode = Inode(next(self.numbers), entry)
        inode.names.add(path)
        self.inodes.append(inode)
        return inode.number

    def group(self, path):
        name = group_path(path)
        return self.groups.setdefault(name, Group(name, (None, None)))

    def inode_at(self, path):
        number = self.group(path).latest()[place_of(path)]
        return None if number is None else self.inodes[number]

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
        self.changed |= {group_path(name) for name in inode.names}
        return True

    def change_name(self, path, change):
        self.group(path).change(change)
        self.changed.add(group_path(path))
        return True

    def play_openat(self, call):
        path = call.file
        if not is_of_phone(path) or path in self.folders:
            self.open_files.pop((call.process, call.result), None)
            return False
        is_made = b"O_CREAT" in call.arguments and self.inode_at(path) is None
        if is_made:
            mode = int(OCTAL.search(call.arguments).group(1), 8) & ~self.umask
            number = self.new_inode(path, sandbox.Entry("file", mode, self.owner, b""))
            self.change_name(path, set_name(place_of(path), number))
        inode = self.inode_at(path)
        self.open_files[call.process, call.result] = [inode, 0]
        if b"O_TRUNC" in call.arguments:
            self.change_inode(inode, Cut())
        return bool(self.changed)

    play_open = play_openat

    def append(self, call, descriptor, data):
        open_file = self.open_files.get((call.process, descriptor))
        if open_file is None:
            raise UnknownCall(f"{call.name} to a file that nobody opened: {paths_of(call)}")
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
        self.changed |= {group_path(name) for name in inode.names}
        return True

    def flush_folder(self, folder):
        for group in self.groups.values():
            if os.path.dirname(group.path) == folder and group.pending:
                group.flush()
                self.changed.add(group.path)
        return True

    def play_rename(self, call):
        source, target = (text.decode(errors="surrogateescape") for text in call.texts)
        if not is_of_phone(source) and not is_of_phone(target):
            return False
        if not is_temporary(source) or group_path(source) != target:
            raise UnknownCall(f"a rename of {source} to {target}")
        inode = self.inode_at(source)
        inode.names.add(target)
        return self.change_name(target, take_place(inode.number))

    def play_unlink(self, call):
        path = call.texts[0].decode(errors="surrogateescape")
        return is_of_phone(path) and self.change_name(path, set_name(place_of(path), None))

    def play_utimensat(self, call):
        return False  # a time that is lost does no harm

    def entry(self, number):
        return None if number is None else self.inodes[number].latest()

    def latest(self):
        """The files as every process sees them."""
        return {path: tuple(self.entry(number) for number in group.latest()) for path, group in self.groups.items()}

    def oldest(self):
        """The files as they are on the device when nothing came there that need not."""
        return {path: tuple(None if number is None else self.inodes[number].device for number in group.device)
                for path, group in self.groups.items()}

    def possible(self, path):
        """Every pair (file, temporary file) that the power cut may leave, each once, always in the same order."""
        found = {}
        for pair in sorted(self.group(path).reached, key=str):
            for entries in itertools.product(*(self.variants(number) for number in pair)):
                found[entries] = True
        return list(found)

    def variants(self, number):
        return [None] if number is None else self.inodes[number].variants()


def is_of_phone(path):
    return path.split("/")[1:2] in [[tree] for tree in sandbox.TREES]


def paths_of(call):
    texts = [trace.decode(path) for path in PATHS.findall(call.arguments)] + list(call.texts[:2])
    return [text[:200].decode(errors="surrogateescape") for text in texts]


def concerns_phone(call):
    return call.name in ("sync",) or any(is_of_phone(path) for path in paths_of(call))


def descriptors_of(call):
    return [int(number) for number in re.findall(rb"(\d+)<", call.arguments)][:2]


def is_split(record):
    """Whether strace wrote one of the calls on two lines, which the reader of records would pass over."""
    return b"<unfinished" in record.read_bytes()


def files_of(state):
    """The files by their names, of a state (path of a file -> the file and its temporary file)."""
    files = {}
    for path, (file, temporary) in state.items():
        if file is not None:
            files[path] = file
        if temporary is not None:
            files[path + sandbox.TEMPORARY_SUFFIX] = temporary
    return files
