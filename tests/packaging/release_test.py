# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""script/release without packages, in clones of the sources: what it refuses, its files, and that they can be made again."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import packaging
import sourceTree

VERSION = re.search(r"(?m)^project\(kestrune VERSION (\S+) ", (packaging.SOURCE / "CMakeLists.txt").read_text())[1]
NAME = f"kestrune-{VERSION}"
IDENTITY = ["-c", "user.name=Test", "-c", "user.email=test@kestrune.example"]


def output_of(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def make_repository(folder):
    """One commit with the files of the project, as they are now, and a changelog that is ready for a release."""
    sourceTree.copy_to(folder)
    (folder / "CHANGELOG.md").write_text(f"# Changelog\n\n## [Unreleased]\n\n## [{VERSION}] - 2026-01-02\n\n- Something.\n")
    commit(folder)


def commit(folder):
    output_of("git", "add", "-A", "-f", cwd=folder)
    output_of("git", *IDENTITY, "commit", "-q", "-m", "The release", cwd=folder)


class Release(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="kestrune-")))
        cls.first = cls.folder / "first"
        make_repository(cls.first)
        status, cls.output = cls.release(cls.first)
        if status != 0:
            raise AssertionError(cls.output)
        cls.made = cls.first / "build" / "release"

    @staticmethod
    def release(folder, **options):
        return packaging.run([folder / "script" / "release", BUILD], **options)

    def clone(self, name):
        output_of("git", "clone", "-q", self.first, self.folder / name)
        return self.folder / name

    def test_it_makes_these_files_with_their_checksums(self):
        files = [f"{NAME}-licences.txt", f"{NAME}.spdx", f"{NAME}.tar.gz"]
        self.assertEqual(packaging.files_below(self.made), sorted([*files, "SHA256SUMS"]))
        checked = output_of("sha256sum", "--check", "--strict", "SHA256SUMS", cwd=self.made)
        self.assertEqual(checked, "".join(f"{name}: OK\n" for name in files))

    def test_the_archive_has_the_files_of_the_commit(self):
        output_of("tar", "-x", "-f", self.made / f"{NAME}.tar.gz", "-C", self.folder)
        output_of("git", f"--git-dir={self.first}/.git", "diff", "--exit-code", "HEAD", cwd=self.folder / NAME)
        tracked = output_of("git", "ls-files", "-z", cwd=self.first).split("\0")
        self.assertEqual(packaging.files_below(self.folder / NAME), sorted(filter(None, tracked)))

    def test_it_gives_the_same_bytes_in_another_folder_at_another_time_for_another_user(self):
        second = self.clone("second")
        output_of("git", "config", "tar.umask", "0077", cwd=second)
        output_of("git", "config", "core.autocrlf", "true", cwd=second)
        status, output = self.release(second, umask=0o077, env={**os.environ, "TZ": "Asia/Tokyo", "GZIP": "-1"})
        self.assertEqual(status, 0, output)
        for name in packaging.files_below(self.made):
            self.assertTrue((second / "build" / "release" / name).read_bytes() == (self.made / name).read_bytes(), name)

    def test_it_tags_nothing_and_prints_the_two_commands(self):
        head = output_of("git", "rev-parse", "HEAD", cwd=self.first).strip()
        self.assertEqual(output_of("git", "tag", cwd=self.first), "")
        self.assertIn(f"\n  git tag -a v{VERSION} -m 'kestrune {VERSION}' {head}\n  git push origin v{VERSION}\n", self.output)

    def test_it_refuses_changes_that_are_not_committed(self):
        dirty = self.clone("dirty")
        (dirty / "new").touch()
        self.assertEqual(self.release(dirty), (1, "release: there are changes that are not committed\n"))
        self.assertFalse((dirty / "build").exists())

    def test_it_refuses_a_changelog_without_a_dated_section(self):
        undated = self.clone("undated")
        changelog = undated / "CHANGELOG.md"
        changelog.write_text(changelog.read_text().replace(" - 2026-01-02", ""))
        commit(undated)
        self.assertEqual(self.release(undated), (1, f"release: CHANGELOG.md has no dated section for {VERSION}\n"))


if __name__ == "__main__":
    packaging.need("dpkg-query", "git", "ninja", "readelf", "reuse")
    (BUILD,) = packaging.take_arguments()
    packaging.need_debian_12()
    packaging.main()
