#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The copies of a phone contain its secrets: no run leaves one, and the next run removes those of a run that was killed."""

import os
import pathlib
import shutil
import signal
import stat
import unittest

import previewTool


class Scratch(previewTool.PreviewTest):
    def test_nothing_is_left_behind(self):
        image, = self.images(image="")
        scratch = self.folder / "scratch"
        scratch.mkdir()
        previewTool.run(image, "all", environment={"TMPDIR": str(scratch)})
        previewTool.run(self.folder / "none.tar", "all", environment={"TMPDIR": str(scratch)})
        self.assertEqual(list(scratch.iterdir()), [])
        shutil.rmtree(scratch)
        self.assertEqual(previewTool.run(image, "all", environment={"TMPDIR": str(scratch)}).returncode, previewTool.NOT_DONE)

    def test_nothing_is_left_behind_when_it_is_interrupted(self):
        """A program that never ends keeps the preview waiting."""
        image, = self.images(image="")
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT):
            with self.subTest(number), previewTool.running(self.folder, image, "all") as process:
                process.send_signal(number)
                self.assertEqual(process.wait(timeout=20), 128 + number)
                self.assertEqual(list((self.folder / "scratch").iterdir()), [])

    def test_copies_are_for_their_owner_only(self):
        image, = self.images(image="")
        with previewTool.hold(self.folder, image, "all"):
            for folder in (self.folder / "scratch").iterdir():
                self.assertEqual(stat.S_IMODE(folder.stat().st_mode), 0o700)

    def test_the_next_run_removes_what_a_killed_one_left(self):
        image, = self.images(image="")
        scratch = self.folder / "scratch"
        with previewTool.running(self.folder, image, "all") as process:
            process.kill()
            process.wait(timeout=20)
        self.assertTrue(list(scratch.glob("*/phone/config/user/user.ini")))
        previewTool.run(image, "all", environment={"TMPDIR": str(scratch)})
        self.assertEqual(list(scratch.iterdir()), [])

    def test_the_next_run_leaves_a_living_one_alone(self):
        image, = self.images(image="")
        scratch = self.folder / "scratch"
        with previewTool.running(self.folder, image, "all"):
            before = sorted(scratch.iterdir())
            self.assertEqual(previewTool.run(image, "all", environment={"TMPDIR": str(scratch)}).returncode,
                             previewTool.FAILS)
            self.assertEqual(sorted(scratch.iterdir()), before)
            self.assertTrue(list(scratch.glob("*/phone/config/user/user.ini")))

    @unittest.skipUnless(previewTool.has_memory(), "too little memory")
    def test_without_a_folder_for_it_it_is_in_memory(self):
        program = self.folder / "program"
        program.write_text("#!/bin/sh\ngrep ' /config ' /proc/self/mountinfo\n")
        program.chmod(0o755)
        for folder, expected in (("", " "), (str(self.folder), self.folder.name)):
            with self.subTest(folder):
                result = previewTool.run("--program", program, "--reports", self.phone({}), "all",
                                         environment={"TMPDIR": folder})
                self.assertEqual((result.returncode, result.stderr), (previewTool.WELL, ""))
                self.assertIn(f"{expected}/{previewTool.SCRATCH}", result.stdout)

    def test_what_was_left_in_memory_and_on_the_disk_is_removed(self):
        left = pathlib.Path(previewTool.MEMORY) / f"{previewTool.SCRATCH}{os.getpid()}"
        scratch = self.folder / "scratch"
        on_disk = scratch / f"{previewTool.SCRATCH}old001"
        for folder in (left, on_disk):
            folder.mkdir(parents=True)
        previewTool.run(*self.images(image=""), "all", environment={"TMPDIR": str(scratch)})
        self.assertEqual((left.exists(), on_disk.exists()), (False, False))

    def test_what_is_no_folder_of_ours_stays(self):
        image, kept = self.images(image="", kept="keep")
        scratch = self.folder / "scratch"
        scratch.mkdir()
        name = previewTool.SCRATCH
        (scratch / f"{name}link01").symlink_to(kept)
        (scratch / f"{name}file01").write_text("keep")
        os.mkfifo(scratch / f"{name}pipe01")
        (scratch / "kestrune-preview-test-abc").mkdir()
        (scratch / "kestrune-preview").mkdir()
        before = sorted(scratch.iterdir())
        previewTool.run(image, "all", environment={"TMPDIR": str(scratch)})
        self.assertEqual(sorted(scratch.iterdir()), before)
        self.assertTrue((kept / "config/user/user.ini").exists())

    @unittest.skipUnless(os.geteuid() == 0, "only root can make another user's folder")
    def test_another_users_folder_stays(self):
        image, = self.images(image="")
        scratch = self.folder / "scratch"
        theirs = scratch / f"{previewTool.SCRATCH}theirs"
        theirs.mkdir(parents=True)
        os.chown(theirs, 65534, 65534)
        previewTool.run(image, "all", environment={"TMPDIR": str(scratch)})
        self.assertEqual(list(scratch.iterdir()), [theirs])

    def test_links_in_what_was_left_are_not_followed(self):
        image, kept = self.images(image="", kept="keep")
        scratch = self.folder / "scratch"
        (scratch / f"{previewTool.SCRATCH}old001" / "phone").mkdir(parents=True)
        (scratch / f"{previewTool.SCRATCH}old001" / "phone" / "config").symlink_to(kept)
        previewTool.run(image, "all", environment={"TMPDIR": str(scratch)})
        self.assertEqual(list(scratch.iterdir()), [])
        self.assertTrue((kept / "config/user/user.ini").exists())


if __name__ == "__main__":
    previewTool.main()
