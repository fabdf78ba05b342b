# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The source tree, for tests that need one of their own."""

import shutil
import subprocess

import phones


def copy_to(folder):
    """A Git repository without a commit, with the project's files as they are now."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=phones.PROJECT,
                            check=True, stdout=subprocess.PIPE, text=True).stdout
    for name in filter(None, listed.split("\0")):
        if (phones.PROJECT / name).exists():  # one that is removed is still in the index
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(phones.PROJECT / name, folder / name, follow_symlinks=False)
    subprocess.run(["git", "init", "-q", folder], check=True)
