# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Shared code of the packaging tests: their arguments, missing tools, and their exit status."""

import pathlib
import re
import shutil
import subprocess
import sys
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
SKIPPED = 77


def skip(reason):
    print(f"SKIPPED: {reason}")
    sys.exit(SKIPPED)


def need(*tools):
    for tool in tools:
        if shutil.which(tool) is None:
            skip(f"{tool} is not installed")


def need_debian_12():
    """For tests of libraries, notices and versions as Debian 12 has them."""
    if '\nVERSION_ID="12"\n' not in pathlib.Path("/etc/os-release").read_text():
        skip("this is not Debian 12")


def take_arguments():
    """The paths and texts after the test's name; the others are for unittest."""
    arguments = sys.argv[1:]
    del sys.argv[1:]
    return arguments


def run(command, **options):
    """The exit status, and both outputs as one text."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, **options)
    return done.returncode, done.stdout


def replace_once(text, old, new):
    if text.count(old) != 1:
        raise AssertionError(f"the file contains {old!r} {text.count(old)} times, not once")
    return text.replace(old, new)


def documented_block(part):
    """The only block of commands or settings that contains this part, on the page that describes how to start the program."""
    blocks = re.findall(r"(?ms)^```(?:sh|ini)\n(.*?)^```$", (SOURCE / "docs" / "your-phone.md").read_text())
    (found,) = [block for block in blocks if part in block]
    return found


def files_below(root):
    """Every file and link, by its path below the folder."""
    root = pathlib.Path(root)
    return sorted(str(path.relative_to(root)) for path in root.rglob("*") if path.is_symlink() or not path.is_dir())


def main():
    unittest.main(verbosity=2)
