# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Phones in folders, and the real program run on them in a bubblewrap sandbox.

The counterpart of tests/support/phoneImage for tests that run the program thousands of times, or under strace.
"""

import dataclasses
import os
import pathlib
import shutil
import stat
import subprocess

PROJECT = pathlib.Path(__file__).resolve().parents[3]
PHONES = {"small": PROJECT / "tests" / "support" / "small-phone", "example": PROJECT / "examples" / "phone"}
MODES = ("all", "dev", "pwd", "1", "2", "fix-ups-only")
TREES = ("config", "phone", "tmp")


@dataclasses.dataclass(frozen=True)
class Entry:
    """One directory entry of a phone: its kind, permissions, owner, and content (bytes, or a link's target)."""

    kind: str
    mode: int
    owner: tuple
    content: bytes


def hard_link(path):
    """A second name of the file at that path of the phone, only for `make_from`."""
    return Entry("hard link", 0, (), os.fsencode(path))


def make_phone(name, root):
    """Copies the phone of that name to the folder, which is created again."""
    root = pathlib.Path(root)
    if root.exists():
        shutil.rmtree(root)
    shutil.copytree(PHONES[name], root, symlinks=True)
    for tree in TREES:
        (root / tree).mkdir(exist_ok=True)
    return root


def entry_of(path):
    status = os.lstat(path)
    mode = stat.S_IMODE(status.st_mode)
    owner = (status.st_uid, status.st_gid)
    if stat.S_ISLNK(status.st_mode):
        return Entry("link", mode, owner, os.fsencode(os.readlink(path)))
    if stat.S_ISDIR(status.st_mode):
        return Entry("folder", mode, owner, b"")
    if stat.S_ISREG(status.st_mode):
        return Entry("file", mode, owner, path.read_bytes())
    return Entry("special", mode, owner, b"")


def snapshot(root):
    """Every name of the phone, by its device path such as "/config/user/user.ini"."""
    root = pathlib.Path(root)
    found = {}
    for folder, folders, files in os.walk(root):
        for name in folders + files:
            path = pathlib.Path(folder, name)
            found["/" + str(path.relative_to(root))] = entry_of(path)
    return found


def files_of(root):
    return {path: entry for path, entry in snapshot(root).items() if entry.kind != "folder"}


def system_folders():
    options = ["--ro-bind", "/usr", "/usr"]
    for name in ("/bin", "/sbin", "/lib", "/lib32", "/lib64", "/libx32"):
        if os.path.islink(name):
            options += ["--symlink", os.readlink(name), name]
        elif os.path.isdir(name):
            options += ["--ro-bind", name, name]
    return options


def sandbox(*options):
    """The beginning of a command that then runs with the system's own folders and these options of bwrap."""
    return ["bwrap", "--unshare-pid", "--die-with-parent", "--tmpfs", "/", *system_folders(), "--proc", "/proc", "--dev",
            "/dev", *options, "--"]


def command(program, root, arguments, wrapper=(), options=()):
    """The command that runs the program as process 1 of a sandbox on the phone; `wrapper` precedes it."""
    binds = ["--ro-bind", str(program), "/kestrune"]
    for tree in TREES:
        binds += ["--bind", f"{root}/{tree}", f"/{tree}"]
    begin = sandbox("--as-pid-1", *binds, *options, "--remount-ro", "/", "--chdir", "/")
    return [*begin, *wrapper, "/kestrune", *arguments]


def run(program, root, mode, wrapper=(), options=(), environment=None, timeout=60):
    """Runs a mode to its end, of any kind; the result has the exit status and both outputs."""
    variables = {"PATH": "/usr/bin:/bin"}
    variables.update(environment or {})
    return subprocess.run(command(program, root, [mode], wrapper, options), env=variables, stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=timeout, check=False)


def make_from(entries, root):
    """Creates a phone from a snapshot. Owners are set if we can set them."""
    root = pathlib.Path(root)
    if root.exists():
        shutil.rmtree(root)
    root.mkdir(parents=True)
    folders = [path for path, entry in entries.items() if entry.kind == "folder"]
    for path in sorted(folders):
        os.mkdir(f"{root}{path}")
    for path, entry in entries.items():
        if entry.kind == "file":
            pathlib.Path(f"{root}{path}").write_bytes(entry.content)
        elif entry.kind == "link":
            os.symlink(entry.content, f"{root}{path}")
    for path, entry in entries.items():
        if entry.kind == "hard link":
            os.link(f"{root}{os.fsdecode(entry.content)}", f"{root}{path}")
    for path in sorted(entries, reverse=True):
        give_owner_and_mode(f"{root}{path}", entries[path])
    return root


def give_owner_and_mode(path, entry):
    if entry.kind == "hard link":
        return
    if os.geteuid() == 0:
        os.chown(path, *entry.owner, follow_symlinks=False)
    if entry.kind != "link":
        os.chmod(path, entry.mode)
