# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A trace of every mode: only temporary files, the commit record and the note of the copies are written, each is
flushed once, no descriptor is inherited by a child, and no path is opened that the documentation does not name."""

import collections
import dataclasses
import re
import sys

import devicePaths
import phones
import proof
import traces
from model import comparison, systemLog

RECORDED = ("trace=%file,%process,%network,openat2,memfd_create,ftruncate,fallocate,dup,dup2,dup3,fcntl,pipe,pipe2,"
            "fsync,fdatasync,sync,syncfs")

OPENING = ("open", "openat")

# Ways to change a file or a folder that this program does not use.
NEVER = ("creat", "openat2", "truncate", "ftruncate", "fallocate", "mknod", "mknodat", "mkdir", "mkdirat", "rmdir",
         "link", "linkat", "symlink", "symlinkat", "chmod", "fchmodat", "chown", "lchown", "fchownat", "setxattr",
         "lsetxattr", "renameat2", "utime", "utimes", "futimesat", "memfd_create", "dup", "dup2", "dup3", "pipe",
         "pipe2", "mount", "fdatasync", "sync", "syncfs")

# The loader's and the C library's own files.
LIBRARY_FILES = re.compile(r"/etc/ld\.so\.(cache|preload)|/(usr/)?lib(32|64|x32)?/.*|/etc/localtime"
                           r"|/usr/share/(locale|zoneinfo)/.*|/proc/sys/vm/overcommit_memory")

# The programs that the program starts: the shell, and the copy command in it.
SHELL = "/bin/sh"

# Writes the open files of a child, each as "descriptor file". The shell itself has the text of the shim open.
COPY_SHIM = b"""#!/bin/sh
exec >>/shim/found
find /proc/$$/fd -type l -printf '%f %l\\n'
"""


@dataclasses.dataclass(frozen=True)
class Record:
    """The calls of one run, and those of its children."""

    own: list
    children: list


def is_for_writing(call):
    return re.search(rb"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_APPEND|O_TMPFILE", call.arguments) is not None


def path_of(call):
    return call.texts[0].decode(errors="surrogateescape") if call.texts else ""


def destination_of(path):
    return path.removesuffix(devicePaths.TEMPORARY_SUFFIX)


def is_written(path, mode):
    if path.endswith(devicePaths.TEMPORARY_SUFFIX):
        with_marker = (devicePaths.MARKER, *devicePaths.WITH_MARKER.get(mode, ()))
        return destination_of(path) in (*devicePaths.REPLACES[mode], *with_marker)
    return path in devicePaths.WRITTEN_IN_PLACE[mode]


def why_not_written_so(call, mode):
    """Why a file must not be opened for writing in this way; empty if it may."""
    if not is_written(path_of(call), mode):
        return "this mode has nothing to write there"
    for flag in (b"O_WRONLY", b"O_CREAT", b"O_EXCL", b"O_NOFOLLOW", b"O_CLOEXEC"):
        if flag not in call.arguments:
            return f"opened without {flag.decode()}"
    if not call.arguments.endswith(b", 0600"):
        return "others may read it before it is complete"
    return ""


def is_documented(path, mode):
    """Whether the mode may open that path for reading."""
    of_commit = (devicePaths.MARKER, *devicePaths.WRITTEN_IN_PLACE[mode])
    if path in (*devicePaths.READS[mode], *of_commit) or LIBRARY_FILES.fullmatch(path):
        return True
    if path.rstrip("/") in devicePaths.folders_flushed(mode):
        return True
    certificates = (devicePaths.USER_CERTIFICATES, devicePaths.FACTORY_CERTIFICATES)
    return mode in devicePaths.CERTIFICATE_MODES and path.startswith(certificates)


def why_not_opened_so(call, mode):
    if b"O_CLOEXEC" not in call.arguments:
        return "a child would inherit it"
    if is_for_writing(call):
        return why_not_written_so(call, mode)
    return "" if is_documented(path_of(call), mode) else "no documented path"


def why_not_renamed_so(call, mode):
    source, destination = (text.decode(errors="surrogateescape") for text in call.texts)
    if source != devicePaths.temporary_name(destination):
        return "not from the temporary name of the same file"
    return "" if is_written(source, mode) else "this mode has nothing to write there"


def why_not_removed(call, mode):
    """The leftover temporary file of a removed file is removed too."""
    path = path_of(call)
    removes = (*devicePaths.REMOVES.get(mode, ()), *devicePaths.WRITTEN_IN_PLACE[mode], devicePaths.MARKER)
    is_ours = is_written(path, mode) or destination_of(path) in removes
    return "" if is_ours else "this mode has nothing to remove there"


def why_wrong(call, mode):
    """The fault of one of the program's own calls; empty if there is none."""
    if call.name in NEVER:
        return "no way to write that this program has"
    if call.name in OPENING:
        return why_not_opened_so(call, mode)
    if call.name in ("rename", "renameat"):
        return why_not_renamed_so(call, mode)
    if call.name in ("unlink", "unlinkat"):
        return why_not_removed(call, mode)
    if call.name in ("socket", "socketpair") and b"SOCK_CLOEXEC" not in call.arguments:
        return "a child would inherit it"
    if call.name == "execve" and path_of(call) not in ("/kestrune", SHELL):
        return "no program that this one starts"
    if call.name == "fcntl" and b"F_DUPFD" in call.arguments and b"F_DUPFD_CLOEXEC" not in call.arguments:
        return "a child would inherit it"
    return ""


def why_child_is_wrong(call):
    """A child is the shell with the copy command: it writes only certificates of the user."""
    if call.name in OPENING and is_for_writing(call) and call.result >= 0:
        if not path_of(call).startswith((devicePaths.USER_CERTIFICATES, "/dev/")):
            return "a child writes something else than a certificate"
    return ""


def folder_of(path):
    return path.rpartition("/")[0]


def flushes_expected(recorded):
    """The required flushes, and their number: each new content, the record and the note once; each folder once before the
    record is valid, and once after the last change in it."""
    written = [path_of(call) for call in saves_of(recorded)]
    own = [path for path in written if not path.endswith(devicePaths.TEMPORARY_SUFFIX)]
    changes = [call.texts[-1].decode() for call in recorded.own
               if call.name in ("rename", "unlink") and call.result == 0]
    ordinary = {folder_of(path) for path in changes if path not in (devicePaths.MARKER, devicePaths.RECORD)}
    expected = collections.Counter(written)
    expected.update({folder_of(path) for path in changes if devicePaths.temporary_name(path) in written}
                    if own else ())
    expected.update(ordinary)
    expected.update(folder_of(path) for path in own)
    expected.update(folder_of(path) for path in changes if path in (devicePaths.MARKER, devicePaths.RECORD))
    copies = {path_of(call) for call in recorded.children if call.name in OPENING and is_for_writing(call)
              and path_of(call).startswith(devicePaths.USER_CERTIFICATES)}
    expected.update(copies)
    expected.update({folder_of(path) for path in copies})
    return expected


def check_flushes(recorded):
    found = collections.Counter(call.file for call in recorded.own if call.name == "fsync")
    expected = flushes_expected(recorded)
    return [f"{path} is flushed {found[path]} times instead of {expected[path]}"
            for path in sorted(found.keys() | expected.keys()) if found[path] != expected[path]]


def make_phone(phone, mode, later, folder):
    """With the upgrade's marker if modes follow `later`, which may be none."""
    root = phones.make_phone(phone, folder / "phone")
    if later is not None:
        (root / devicePaths.MARKER[1:]).write_text(f"{mode}\n{later}")
    return root


def record(program, root, mode, folder):
    log = systemLog.SystemLog(folder)
    traced = folder / "trace"
    traced.mkdir(exist_ok=True)
    try:
        result = phones.run(program, root, mode, traces.wrapper(["-y", "-xx", "-s", "1000000", "-e", RECORDED]),
                            ["--bind", str(traced), "/trace", *log.options])
    finally:
        log.close()
    calls = traces.parse((traced / "record").read_bytes())
    own = calls[0].process
    return result, Record([call for call in calls if call.process == own],
                          [call for call in calls if call.process != own])


def told(call):
    texts = ", ".join(text.decode(errors="replace") for text in call.texts)
    flags = re.sub(rb'"[^"]*"', b"_", re.sub(rb"<[^>]*>", b"", call.arguments)).decode()
    return f"{call.name}({flags}) [{texts}]"


def check_record(mode, recorded):
    faults = []
    for call in recorded.own:
        reason = why_wrong(call, mode)
        if reason:
            faults.append(f"{told(call)}: {reason}")
    for call in recorded.children:
        reason = why_child_is_wrong(call)
        if reason:
            faults.append(f"child: {told(call)}: {reason}")
    return faults


def saves_of(recorded):
    return [call for call in recorded.own if call.name in OPENING and is_for_writing(call)]


def put_copy_shim(folder):
    """Returns the options with which the copy command in the sandbox is this shim."""
    shim = folder / "shim"
    shim.mkdir(exist_ok=True)
    (shim / "found").unlink(missing_ok=True)
    (shim / "cp").write_bytes(COPY_SHIM)
    (shim / "cp").chmod(0o755)
    return shim, ["--bind", str(shim), "/shim", "--ro-bind", str(shim / "cp"), "/usr/bin/cp"]


def check_children(program, phone, mode, folder):
    """The open files of a copy command other than the three standard descriptors, while a system log is connected."""
    root = phones.make_phone(phone, folder / "phone")
    shim, options = put_copy_shim(folder)
    log = systemLog.SystemLog(folder)
    try:
        phones.run(program, root, mode, options=[*options, *log.options])
        is_connected = log.messages() != []
    finally:
        log.close()
    found = (shim / "found").read_bytes().splitlines() if (shim / "found").exists() else []
    standard = (b"0 ", b"1 ", b"2 ")
    faults = [f"the copy command inherits {line.decode()}" for line in found
              if not line.startswith(standard) and not line.endswith(b" /usr/bin/cp")]
    seen = sum(line.startswith(b"0 ") for line in found)
    if mode in devicePaths.CERTIFICATE_MODES and (seen == 0 or not is_connected):
        faults.append("no copy command was seen, or no system log was connected: nothing is proven")
    return faults, seen


def check(job):
    program, scratch, phone, mode, later = job
    folder = comparison.worker_folder(scratch)
    result, recorded = record(program, make_phone(phone, mode, later, folder), mode, folder)
    faults = [] if result.returncode == 0 else [f"exit status {result.returncode}"]
    faults += check_record(mode, recorded) + check_flushes(recorded)
    saves = len(saves_of(recorded))
    if saves == 0:
        faults.append("no file was written: nothing is proven")
    from_children, children = check_children(program, phone, mode, folder)
    opens = sum(call.name in OPENING for call in recorded.own)
    where = f"mode {mode}" + ("" if later is None else f", marker with {later.split()}")
    return [f"{where}: {fault}" for fault in faults + from_children], saves, opens, children


def main():
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    with proof.scratch_folder() as scratch:
        jobs = [(chosen.program, scratch, chosen.phone, mode, later)
                for mode in chosen.mode for later in (None, "", "later\n")]
        results = list(proof.in_parallel(check, jobs, at_once=1))
    faults = [fault for result in results for fault in result[0]]
    saves, opens, children = (sum(result[number] for result in results) for number in (1, 2, 3))
    return proof.end("oneWayToWrite", faults, f"{opens} opened files, {saves} of them for writing, {children} copies "
                     f"in {len(jobs)} runs of {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
