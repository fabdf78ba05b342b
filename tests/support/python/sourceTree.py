# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The source tree, for tests that need one of their own."""

import pathlib
import shutil
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[3]


def copy_to(folder):
    """A Git repository without a commit, with the project's files as they are now."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT, check=True,
                            stdout=subprocess.PIPE, text=True).stdout
    for name in filter(None, listed.split("\0")):
        if (ROOT / name).exists():  # one that is removed is still in the index
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, folder / name, follow_symlinks=False)
    subprocess.run(["git", "init", "-q", folder], check=True)
