#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The files that a run writes: each is replaced in one step, and only its owner may read one that shows secrets."""

import json
import os
import resource
import stat
import subprocess
import time

import jsonschema

import previewTool

DOCUMENTS = ("--json", "--html")


def mode(path):
    return stat.S_IMODE(path.stat().st_mode)


class Outputs(previewTool.PreviewTest):
    def setUp(self):
        super().setUp()
        self.image, = self.images(image="[A]\na=1\n")
        self.out = self.folder / "out"
        self.out.mkdir()

    def names(self):
        return sorted(path.name for path in self.out.iterdir())

    def test_json_on_standard_output_is_all_that_is_there(self):
        result = previewTool.run("--json", "-", self.image, "all")
        jsonschema.validate(json.loads(result.stdout), json.loads(previewTool.SCHEMA.read_text()))

    def test_a_page_on_standard_output_is_all_that_is_there(self):
        result = previewTool.run("--html", "-", self.image, "all")
        self.assertEqual(result.returncode, previewTool.FAILS)
        self.assertTrue(result.stdout.startswith("<!DOCTYPE html>") and result.stdout.endswith("</html>\n"))
        both = previewTool.run("--html", "-", "--json", "-", self.image, "all")
        self.assertEqual((both.returncode, both.stdout), (previewTool.NOT_DONE, ""))
        self.assertIn("only one of", both.stderr)

    def test_an_error_on_standard_error_too_when_json_is_on_standard_output(self):
        result = previewTool.run("--json", "-", self.folder / "none", "all")
        self.assertEqual(json.loads(result.stdout)["previews"][0]["error"], "no such image")
        self.assertEqual(result.stderr, "kestrune-preview: none: no such image\n")

    def test_only_the_owner_may_read_secrets(self):
        for option in DOCUMENTS:
            for before in (None, 0o644, 0o666):
                with self.subTest(option=option, before=before):
                    path = self.out / f"{option}{before}"
                    if before is not None:
                        path.write_text("old")
                        path.chmod(before)
                    self.assertEqual(previewTool.run("--reveal-secrets", option, path, self.image, "all").returncode,
                                     previewTool.FAILS)
                    self.assertNotEqual(path.read_text(), "old")
                    self.assertEqual(mode(path), 0o600)

    def test_whoever_may_read_an_output_without_secrets(self):
        old, new = self.out / "old", self.out / "new"
        old.write_text("old")
        old.chmod(0o640)
        for path in (old, new):
            subprocess.run([previewTool.PREVIEW, "--json", path, self.image, "all"], umask=0o027, check=False,
                           stdout=subprocess.DEVNULL)
        self.assertEqual((mode(old), mode(new)), (0o640, 0o640))
        new.chmod(0o604)
        previewTool.run("--json", new, self.image, "all")
        self.assertEqual(mode(new), 0o604)

    def test_a_reader_of_the_old_file_keeps_it(self):
        for option in DOCUMENTS:
            path = self.out / option
            path.write_text("old")
            with path.open() as opened:
                previewTool.run(option, path, self.image, "all")
                self.assertEqual(opened.read(), "old")
            self.assertNotEqual(path.read_text(), "old")

    def test_a_write_that_fails_leaves_the_old_files(self):
        """No file may grow beyond 64 KiB, which the page and the JSON of this phone do and its own files do not."""
        image = self.phone({"/config/data/a.xml": "<a>" + "<b c='1'/>" * 4000 + "</a>"})
        program = self.folder / "program"
        program.write_text("#!/bin/sh\nsed -i 's/1/2/g' /config/data/a.xml\n")
        program.chmod(0o755)

        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 16, 1 << 16))

        paths = {option: self.out / option[2:] for option in DOCUMENTS}
        for path in paths.values():
            path.write_text("old")
        for options in ([("--json")], [("--html")], DOCUMENTS):
            with self.subTest(options):
                result = subprocess.run([previewTool.PREVIEW, *(word for option in options for word in (option, paths[option])),
                                         "--program", program, image, "all"], preexec_fn=limit, capture_output=True,
                                        text=True, check=False)
                self.assertEqual(result.returncode, previewTool.NOT_DONE)
                self.assertRegex(result.stderr, "^kestrune-preview: cannot write .*: File too large\n$")
                self.assertEqual([path.read_text() for path in paths.values()], ["old", "old"])
                self.assertEqual(self.names(), ["html", "json"])

    def test_a_page_that_cannot_be_written_leaves_the_old_json(self):
        program = self.folder / "program"
        program.write_text("#!/bin/sh\ntouch /config/runs\nsleep 1\n")
        program.chmod(0o755)
        old, folder, scratch = self.out / "old.json", self.out / "pages", self.folder / "scratch"
        old.write_text("old")
        folder.mkdir()
        scratch.mkdir()
        with subprocess.Popen([previewTool.PREVIEW, "--program", program, "--json", old, "--html", folder / "page", self.image,
                               "all"], env={**os.environ, "TMPDIR": str(scratch)}, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL) as process:
            while not list(scratch.glob("*/phone/config/runs")):
                self.assertIsNone(process.poll())
                time.sleep(0.01)
            folder.rmdir()
            self.assertEqual(process.wait(timeout=60), previewTool.NOT_DONE)
        self.assertEqual(old.read_text(), "old")
        self.assertEqual(self.names(), ["old.json"])

    def test_what_is_no_regular_file_is_refused(self):
        os.mkfifo(self.out / "pipe")
        (self.out / "target").write_text("old")
        (self.out / "link").symlink_to("target")
        (self.out / "stdout").symlink_to("/proc/self/fd/1")  # as /dev/stdout is
        for path in (self.out / "pipe", self.out / "link", self.out / "stdout", self.out):
            for option in DOCUMENTS:
                with self.subTest(path=path, option=option):
                    result = previewTool.run(option, path, self.image, "all")
                    self.assertEqual((result.returncode, result.stdout), (previewTool.NOT_DONE, ""))
                    self.assertIn("it is no regular file; - means standard output", result.stderr)
        self.assertEqual((self.out / "target").read_text(), "old")

    def test_outputs_are_looked_at_before_the_work(self):
        """The program never ends: the caller would wait for a minute."""
        program = self.folder / "program"
        program.write_text("#!/bin/sh\nsleep 100\n")
        program.chmod(0o755)
        (self.out / "text").write_text("no preview")
        (self.out / "old").mkdir()
        none = self.out / "none/x"
        for option, path in (("--json", none), ("--html", none), ("--save-phone", none), ("--save-phone", self.out / "old"),
                             ("--expect", none), ("--expect", self.out / "text"), ("--json", self.out / "old")):
            with self.subTest(option=option, path=path):
                result = subprocess.run([previewTool.PREVIEW, option, path, "--program", program, self.image, "all"],
                                        capture_output=True, text=True, timeout=20, check=False)
                self.assertEqual((result.returncode, result.stdout), (previewTool.NOT_DONE, ""))
                self.assertIn(path.name, result.stderr)

    def test_a_saved_phone_is_there_whole_or_not_at_all(self):
        program = self.folder / "program"
        result = previewTool.run("--save-phone", self.out / "after", self.image, "all")
        self.assertEqual(result.returncode, previewTool.FAILS)
        self.assertEqual(mode(self.out / "after"), 0o700)
        self.assertEqual(sorted(path.name for path in (self.out / "after").iterdir()), ["config", "phone", "tmp"])
        program = self.folder / "program"
        program.write_text("#!/bin/sh\ncd /config\ni=0\nwhile [ $i -lt 120 ]; do mkdir d; cd d; i=$((i + 1)); done\n")
        program.chmod(0o755)
        result = previewTool.run("--program", program, "--save-phone", self.out / "other", self.image, "all")
        self.assertEqual(result.returncode, previewTool.NOT_DONE)
        self.assertIn("nested too deep", result.stderr)
        self.assertEqual(self.names(), ["after"])

    def test_a_saved_phone_with_a_slash_at_its_end(self):
        previewTool.run("--save-phone", f"{self.out}/after/", self.image, "all")
        self.assertTrue((self.out / "after/config").is_dir())


if __name__ == "__main__":
    previewTool.main()
