# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A record of every mode: files are written under temporary names alone, nothing is handed to a child, and no path is
opened that the documentation does not name."""

import dataclasses
import re
import sys

import comparison
import documentedPaths
import proof
import sandbox
import systemLog
import trace

RECORDED = "trace=%file,%process,%network,openat2,memfd_create,ftruncate,fallocate,dup,dup2,dup3,fcntl,pipe,pipe2"

OPENING = ("open", "openat")

# Ways to change a file or a folder that this program has no use for.
NEVER = ("creat", "openat2", "truncate", "ftruncate", "fallocate", "mknod", "mknodat", "mkdir", "mkdirat", "rmdir",
         "link", "linkat", "symlink", "symlinkat", "chmod", "fchmodat", "chown", "lchown", "fchownat", "setxattr",
         "lsetxattr", "renameat2", "utime", "utimes", "futimesat", "memfd_create", "dup", "dup2", "dup3", "pipe",
         "pipe2", "mount")

# The loader's and the C library's own files.
LIBRARY_FILES = re.compile(r"/etc/ld\.so\.(cache|preload)|/(usr/)?lib(32|64|x32)?/.*|/etc/localtime"
                           r"|/usr/share/(locale|zoneinfo)/.*|/proc/sys/vm/overcommit_memory")

# What the program starts: the shell, and the copy command in it.
SHELL = "/bin/sh"

# Writes what a child finds open, each as "descriptor file". The shell itself has the text of the shim open.
COPY_SHIM = b"""#!/bin/sh
exec >>/shim/found
find /proc/$$/fd -type l -printf '%f %l\\n'
"""


@dataclasses.dataclass(frozen=True)
class Record:
    """What one run did: its own calls, and those of its children."""

    own: list
    children: list


def is_for_writing(call):
    return re.search(rb"O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_APPEND|O_TMPFILE", call.arguments) is not None


def path_of(call):
    return call.texts[0].decode(errors="surrogateescape") if call.texts else ""


def destination_of(path):
    return path.removesuffix(sandbox.TEMPORARY_SUFFIX)


def why_not_temporary(call, mode):
    """Why a file may not be opened for writing so; empty when it may."""
    path = path_of(call)
    if not path.endswith(sandbox.TEMPORARY_SUFFIX):
        return "a file is opened for writing under its own name"
    if destination_of(path) not in documentedPaths.REPLACES[mode]:
        return "this mode has nothing to write there"
    for flag in (b"O_WRONLY", b"O_CREAT", b"O_EXCL", b"O_NOFOLLOW", b"O_CLOEXEC"):
        if flag not in call.arguments:
            return f"opened without {flag.decode()}"
    if not call.arguments.endswith(b", 0600"):
        return "others may read it before it is complete"
    return ""


def is_documented(path, mode):
    """Whether the mode may open that path for reading."""
    if path in documentedPaths.READS[mode] or LIBRARY_FILES.fullmatch(path):
        return True
    if path.rstrip("/") in documentedPaths.folders_flushed(mode):
        return True
    certificates = (documentedPaths.USER_CERTIFICATES, documentedPaths.FACTORY_CERTIFICATES)
    return mode in documentedPaths.CERTIFICATE_MODES and path.startswith(certificates)


def why_not_opened_so(call, mode):
    if b"O_CLOEXEC" not in call.arguments:
        return "a child would inherit it"
    if is_for_writing(call):
        return why_not_temporary(call, mode)
    return "" if is_documented(path_of(call), mode) else "no documented path"


def why_not_renamed_so(call, mode):
    source, destination = (text.decode(errors="surrogateescape") for text in call.texts)
    if source != documentedPaths.temporary_name(destination):
        return "not from the temporary name of the same file"
    return "" if destination in documentedPaths.REPLACES[mode] else "this mode has nothing to write there"


def why_not_removed(call, mode):
    path = path_of(call)
    if destination_of(path) in documentedPaths.REPLACES[mode] and path.endswith(sandbox.TEMPORARY_SUFFIX):
        return ""
    return "" if path in documentedPaths.REMOVES.get(mode, ()) else "this mode has nothing to remove there"


def why_wrong(call, mode):
    """What is wrong with one of the program's own calls; empty when nothing is."""
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
    """A child is the shell with the copy command: it writes certificates of the user and nothing else."""
    if call.name in OPENING and is_for_writing(call) and call.result >= 0:
        if not path_of(call).startswith((documentedPaths.USER_CERTIFICATES, "/dev/")):
            return "a child writes something else than a certificate"
    return ""


def record(program, phone, mode, folder):
    root = sandbox.make_phone(phone, folder / "phone")
    log = systemLog.SystemLog(folder)
    traced = folder / "trace"
    traced.mkdir(exist_ok=True)
    try:
        result = sandbox.run(program, root, mode, trace.wrapper(["-y", "-xx", "-s", "1000000", "-e", RECORDED]),
                             ["--bind", str(traced), "/trace", *log.options])
    finally:
        log.close()
    calls = trace.parse((traced / "record").read_bytes())
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
    """The copy command is this shim in the sandbox; gives the options that make it so."""
    shim = folder / "shim"
    shim.mkdir(exist_ok=True)
    (shim / "found").unlink(missing_ok=True)
    (shim / "cp").write_bytes(COPY_SHIM)
    (shim / "cp").chmod(0o755)
    return shim, ["--bind", str(shim), "/shim", "--ro-bind", str(shim / "cp"), "/usr/bin/cp"]


def check_children(program, phone, mode, folder):
    """What a copy command finds open besides the three standard descriptors, while a system log is connected."""
    root = sandbox.make_phone(phone, folder / "phone")
    shim, options = put_copy_shim(folder)
    log = systemLog.SystemLog(folder)
    try:
        sandbox.run(program, root, mode, options=[*options, *log.options])
        is_connected = log.messages() != []
    finally:
        log.close()
    found = (shim / "found").read_bytes().splitlines() if (shim / "found").exists() else []
    standard = (b"0 ", b"1 ", b"2 ")
    faults = [f"the copy command inherits {line.decode()}" for line in found
              if not line.startswith(standard) and not line.endswith(b" /usr/bin/cp")]
    seen = sum(line.startswith(b"0 ") for line in found)
    if mode in documentedPaths.CERTIFICATE_MODES and (seen == 0 or not is_connected):
        faults.append("no copy command was seen, or no system log was connected: nothing is proven")
    return faults, seen


def check(job):
    program, scratch, phone, mode = job
    folder = comparison.worker_folder(scratch)
    result, recorded = record(program, phone, mode, folder)
    faults = [] if result.returncode == 0 else [f"exit status {result.returncode}"]
    faults += check_record(mode, recorded)
    saves = len(saves_of(recorded))
    if saves == 0:
        faults.append("no file was written: nothing is proven")
    from_children, children = check_children(program, phone, mode, folder)
    opens = sum(call.name in OPENING for call in recorded.own)
    return [f"mode {mode}: {fault}" for fault in faults + from_children], saves, opens, children


def main():
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    with proof.scratch_folder() as scratch:
        jobs = [(chosen.program, scratch, chosen.phone, mode) for mode in chosen.mode]
        results = list(proof.in_parallel(check, jobs, at_once=1))
    faults = [fault for result in results for fault in result[0]]
    saves, opens, children = (sum(result[number] for result in results) for number in (1, 2, 3))
    return proof.end("oneWayToWrite", faults, f"{opens} opened files, {saves} of them for writing, {children} copies "
                     f"in {len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
