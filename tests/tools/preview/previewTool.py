# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Phones in folders, and the preview run on them."""

import contextlib
import dataclasses
import json
import os
import pathlib
import pty
import shutil
import subprocess
import tempfile
import time
import unittest

import phones
import proof

PROJECT = phones.PROJECT
PREVIEW = os.environ["KESTRUNE_PREVIEW"]
PROGRAM = os.environ["KESTRUNE_PROGRAM"]
SCHEMA = PROJECT / "tools" / "preview" / "preview.schema.json"

MEMORY = "/dev/shm"  # each phone is made, read and thrown away: none of them needs a device
if os.access(MEMORY, os.W_OK):
    os.environ["TMPDIR"] = MEMORY

USER = "/config/user/user.ini"
DONE = "[Feature]\nRingbackTimeout=120\n"  # nothing changes in it
WELL, CARE, FAILS, NOT_DONE = range(4)
SKIPPED = 77
SCRATCH = "kestrune-preview-scratch."  # how the names of its folders begin


@dataclasses.dataclass(frozen=True)
class Shown:
    """What one call of the preview gave."""

    status: int
    text: str
    errors: str
    json: dict
    html: str

    @property
    def preview(self):
        return self.json["previews"][0]

    def file(self, path):
        return next((file for file in self.preview["files"] if file["path"] == path), None)

    def change(self, path, group, name):
        changes = (self.file(path) or {}).get("changes", [])
        return next((change for change in changes if (change["group"], change.get("name")) == (group, name)), None)

    @property
    def expected_status(self):
        """The exit status that belongs to the warnings."""
        severities = {warning["severity"] for warning in self.preview["warnings"]}
        return FAILS if "error" in severities else CARE if "warning" in severities else WELL

    def rules(self):
        return [warning["rule"] for warning in self.preview["warnings"]]


def has_memory():
    """Whether there is memory for the largest image."""
    return os.access(MEMORY, os.W_OK) and shutil.disk_usage(MEMORY).free > 3 * 512 * 2**20


def run(*arguments, environment=None):
    """The preview as it is, with these arguments."""
    return subprocess.run([PREVIEW, *map(str, arguments)], capture_output=True, text=True, stdin=subprocess.DEVNULL,
                          env={**os.environ, **(environment or {})}, timeout=120, check=False)


def run_on_terminal(*arguments, environment=None, stdout=None, stderr=None):
    """The status, and what a terminal gets from those streams for which none is given."""
    own, theirs = pty.openpty()
    with subprocess.Popen([PREVIEW, *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=stdout or theirs,
                          stderr=stderr or theirs, env=environment) as process:
        os.close(theirs)
        output = b""
        try:
            while block := os.read(own, 4096):
                output += block
        except OSError:  # the end of what a terminal gives
            pass
    os.close(own)
    return process.returncode, output.decode()


def show(folder, *arguments):
    """All outputs of one call."""
    result = run("--json", folder / "preview.json", "--html", folder / "preview.html", *arguments)
    written = (folder / "preview.json").exists()
    return Shown(result.returncode, result.stdout, result.stderr,
                 json.loads((folder / "preview.json").read_text()) if written else {},
                 (folder / "preview.html").read_text() if written else "")


@contextlib.contextmanager
def hold(folder, *arguments):
    """Starts a preview that waits for a program which does not end, and gives its scratch folder; ends it afterwards."""
    with running(folder, *arguments) as process:
        scratch = next(path.parents[2] for path in (folder / "scratch").glob("*/phone/config/runs"))
        yield scratch
        process.terminate()


@contextlib.contextmanager
def running(folder, *arguments):
    """The process of a preview whose program has begun and does not end; its scratch folders are in folder/scratch."""
    program, scratch = folder / "program", folder / "scratch"
    program.write_text("#!/bin/sh\ntouch /config/runs\nsleep 50\n")
    program.chmod(0o755)
    scratch.mkdir(exist_ok=True)
    before = set(scratch.glob("*/phone/config/runs"))
    with subprocess.Popen([PREVIEW, "--program", program, *map(str, arguments)], stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, env={**os.environ, "TMPDIR": str(scratch)}) as process:
        while not set(scratch.glob("*/phone/config/runs")) - before:
            assert process.poll() is None, "it ended before its program began"
            time.sleep(0.01)
        try:
            yield process
        finally:
            process.kill()


class PreviewTest(unittest.TestCase):
    """A test with a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="kestrune-preview-test-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def phone(self, files, base=None):
        """A phone with these files, by device path, over a copy of the named phone or over nothing."""
        root = self.folder / "image"
        if root.exists():
            shutil.rmtree(root)
        if base is not None:
            phones.make_phone(base, root)
        for path, content in files.items():
            file = root / path[1:]
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_bytes(content.encode() if isinstance(content, str) else content)
        (root / "config").mkdir(parents=True, exist_ok=True)
        return root

    def images(self, **contents):
        """Images by these names; each has one file with the content."""
        made = []
        for name, content in contents.items():
            file = self.folder / name / USER[1:]
            file.parent.mkdir(parents=True)
            file.write_text(content)
            made.append(self.folder / name)
        return made

    def show(self, *arguments):
        return show(self.folder, *arguments)


def main():
    """Runs the tests of the file that was started."""
    proof.skip_without_sandbox(with_strace=False)
    unittest.main()
