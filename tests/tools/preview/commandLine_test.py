#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Exit statuses, options, approved previews, and several images at once."""

import json
import os
import pty
import re
import shutil
import signal
import subprocess
import time

import jsonschema

import previewTool

USER = "/config/user/user.ini"
DONE = "[Feature]\nRingbackTimeout=120\n"


class CommandLine(previewTool.PreviewTest):
    def images(self, **contents):
        """Images by these names; each has one file with the content."""
        made = []
        for name, content in contents.items():
            file = self.folder / name / USER[1:]
            file.parent.mkdir(parents=True)
            file.write_text(content)
            made.append(self.folder / name)
        return made

    def test_the_exit_status_tells_whether_something_changes(self):
        image, done = self.images(image="", done=DONE)
        self.assertEqual(previewTool.run(image, "all").returncode, previewTool.SOMETHING_CHANGES)
        self.assertEqual(previewTool.run(done, "pwd").returncode, previewTool.NOTHING_CHANGES)

    def test_errors(self):
        image, = self.images(image="")
        (self.folder / "text").write_text("no archive")
        rows = [([], "IMAGE"), ([image], "MODE"), ([self.folder / "none", "all"], "no such image"), ([image / "config", "all"],
                "no image of a phone"), ([self.folder / "text", "all"], "archive"), (["--no-such", image, "all"], "no-such"),
                (["--program", self.folder / "none", image, "all"], "no program"), (["--json", self.folder / "no/x", image,
                "all"], "cannot write"), (["--expect", self.folder / "none", image, "all"], "cannot read"),
                (["--expect", self.folder / "text", image, "all"], "no JSON"), (["--color", "blue", image, "all"], "blue"),
                ([image, "all", image], "is no MODE"), ([image, "all", "two.tar"], "is no MODE")]
        for arguments, words in rows:
            with self.subTest(words):
                result = previewTool.run(*arguments)
                self.assertEqual(result.returncode, previewTool.ERROR)
                self.assertIn(words, result.stdout + result.stderr)

    def test_a_tree_that_is_a_link_is_not_taken_for_a_missing_one(self):
        image, other = self.images(image="", other="")
        (image / "phone").symlink_to(other / "config")
        result = previewTool.run(image, "all")
        self.assertEqual(result.returncode, previewTool.ERROR)
        self.assertIn("the image's phone is no folder", result.stdout + result.stderr)

    def test_an_empty_name_is_no_option_left_out(self):
        done, = self.images(done=DONE)
        for option in ("--expect", "--json", "--html", "--save-phone"):
            with self.subTest(option):
                result = previewTool.run(option, "", done, "pwd")
                self.assertEqual(result.returncode, previewTool.ERROR)
                self.assertIn(f"{option}: the name is empty", result.stderr)

    def test_a_program_that_fails_is_an_error(self):
        program = self.folder / "program"
        program.write_text("#!/bin/sh\necho strPassword=plover >&2\nexit 3\n")
        program.chmod(0o755)
        result = previewTool.run("--program", program, *self.images(image=""), "all")
        self.assertEqual(result.returncode, previewTool.ERROR)
        self.assertIn("error: the run of mode all failed: exit status 3", result.stdout)
        self.assertNotIn("plover", result.stdout + result.stderr)

    def test_help(self):
        result = previewTool.run("--help")
        self.assertEqual(result.returncode, 0)
        for option in ("--reports", "--reveal-secrets", "--color", "--json", "--html", "--expect", "--jobs"):
            self.assertIn(option, result.stdout)

    def test_colours_are_for_terminals_and_for_who_asks(self):
        image, = self.images(image="")
        self.assertNotIn("\033", previewTool.run(image, "all").stdout)
        self.assertIn("\033[", previewTool.run("--color", "always", image, "all").stdout)
        self.assertIn("\033[", self.on_terminal([image, "all"], {"TERM": "xterm"}))
        self.assertNotIn("\033[", self.on_terminal([image, "all"], {"TERM": "xterm", "NO_COLOR": "1"}))
        self.assertNotIn("\033[", self.on_terminal(["--color", "never", image, "all"], {"TERM": "xterm"}))

    def on_terminal(self, arguments, environment, stream="stdout"):
        own, theirs = pty.openpty()
        variables = {name: value for name, value in os.environ.items() if name != "NO_COLOR"} | environment
        with subprocess.Popen([previewTool.PREVIEW, *map(str, arguments)], env=variables, stdin=subprocess.DEVNULL,
                              **{"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, stream: theirs}):
            os.close(theirs)
            output = b""
            try:
                while block := os.read(own, 4096):
                    output += block
            except OSError:  # the end of what a terminal gives
                pass
        os.close(own)
        return output.decode()

    def test_json_on_standard_output_stands_alone(self):
        result = previewTool.run("--json", "-", *self.images(image=""), "all")
        jsonschema.validate(json.loads(result.stdout), json.loads(previewTool.SCHEMA.read_text()))

    def test_the_same_image_gives_the_same_json(self):
        image = self.phone({}, base="small")
        first, second = (previewTool.run("--json", "-", image, "all").stdout for _ in range(2))
        self.assertEqual(first, second)

    def test_an_approved_preview(self):
        image, other = self.images(image="[A]\na=1\n", other="[A]\na=1\n")
        approved = self.folder / "approved.json"
        previewTool.run("--json", approved, image, "all")
        self.assertEqual(previewTool.run("--expect", approved, image, "all").returncode, 0)
        self.assertEqual(previewTool.run("--expect", approved, "--reports", other, "all").returncode, 0)
        (image / "config/user/voip").mkdir()
        (image / "config/user/voip/sipAccount0.cfg").write_text("[account]\nCancelTimer=90\n")
        result = previewTool.run("--expect", approved, image, "all")
        self.assertEqual(result.returncode, previewTool.ERROR)
        self.assertIn('/0/files//config/user/user.ini/changes/Feature RingbackTimeout/after: approved "180", now "90"\n',
                      result.stderr)
        self.assertIn("/0/files//config/user/voip/sipAccount0.cfg: approved nothing, now {", result.stderr)
        self.assertEqual(previewTool.run("--expect", approved, other, image, "all").returncode, previewTool.ERROR)

    def test_an_approved_preview_is_compared_before_it_is_written_anew(self):
        image, other = self.images(image="[A]\na=1\n", other=DONE)
        approved = self.folder / "approved.json"
        previewTool.run("--json", approved, image, "all")
        renewal = ("--json", approved, "--expect", approved, other, "all")
        self.assertEqual(previewTool.run(*renewal).returncode, previewTool.ERROR)
        self.assertEqual(previewTool.run(*renewal).returncode, 0)

    def test_values_of_like_names_are_compared_each(self):
        table = ('<t><r srcFile="/config/user/user.ini" srcSec="S" srcKey="k" dstSec="A" dstKey="B C"/>'
                 '<r srcFile="/config/user/user.ini" srcSec="S" srcKey="l" dstSec="A B" dstKey="C"/></t>')
        files = {USER: "[S]\nk=one\nl=two\n", "/phone/resource/kestrune.xml": table}
        approved = self.folder / "approved.json"
        previewTool.run("--json", approved, self.phone(files), "dev")
        self.assertEqual(previewTool.run("--expect", approved, self.phone(files), "dev").returncode, 0)
        for before, after in (("one", "other"), ("two", "other")):
            with self.subTest(before):
                image = self.phone(files | {USER: files[USER].replace(before, after)})
                result = previewTool.run("--expect", approved, image, "dev")
                self.assertEqual(result.returncode, previewTool.ERROR)
                self.assertIn(f'approved "{before}", now "{after}"', result.stderr)

    def test_what_is_no_approved_preview(self):
        image, = self.images(image="")
        approved = self.folder / "approved.json"
        for text in ("", "[]", "{}", '{"format": "kestrune-preview", "version": 2, "previews": []}',
                     '{"format": "kestrune-preview", "version": 1, "previews": [{"files": 1}]}',
                     '{"format": 7, "version": 1, "previews": []}', "[" * 100_000):
            approved.write_text(text)
            result = previewTool.run("--expect", approved, image, "all")
            self.assertEqual(result.returncode, previewTool.ERROR)
            self.assertRegex(result.stderr, "approved.json (is no JSON text of a preview|has another version)")

    def test_several_images_give_a_row_each(self):
        images = self.images(one="", two=DONE, three="[B]\n")
        result = previewTool.run("--jobs", "2", "--json", self.folder / "all.json", *images, self.folder / "none/", "fix")
        rows = [re.split(r"  +", line) for line in result.stdout.splitlines()]
        self.assertEqual(rows, [["image", "files", "keys", "warnings", "second run"],
                                ["one", "+0 ~1 !0 -0", "+1 ~0 !0 -0", "0", "0"],
                                ["two", "+0 ~0 !0 -0", "+0 ~0 !0 -0", "0", "0"],
                                ["three", "+0 ~1 !0 -0", "+1 ~0 !0 -0", "0", "0"],
                                ["none", "error: no such image"]])
        self.assertEqual(result.returncode, previewTool.ERROR)
        written = json.loads((self.folder / "all.json").read_text())
        jsonschema.validate(written, json.loads(previewTool.SCHEMA.read_text()))
        self.assertEqual([preview["image"] for preview in written["previews"]], ["one", "two", "three", "none"])
        self.assertEqual(previewTool.run(*images, "fix").returncode, previewTool.SOMETHING_CHANGES)

    def test_the_bar_is_for_terminals(self):
        images = self.images(one="", two="")
        self.assertEqual(previewTool.run(*images, "fix").stderr, "")
        self.assertIn("2/2", self.on_terminal([*images, "fix"], {"TERM": "xterm"}, "stderr"))
        self.assertEqual(self.on_terminal([images[0], "fix"], {"TERM": "xterm"}, "stderr"), "")

    def test_a_mode_that_is_also_a_folder_is_a_mode(self):
        image, = self.images(image="")
        (self.folder / "all").mkdir()
        result = subprocess.run([previewTool.PREVIEW, "image", "all"], cwd=self.folder, capture_output=True, text=True,
                                check=False)
        self.assertTrue(result.stdout.startswith("image: mode all\n"))

    def test_nothing_is_left_behind(self):
        image, = self.images(image="")
        scratch = self.folder / "scratch"
        scratch.mkdir()
        previewTool.run(image, "all", environment={"TMPDIR": str(scratch)})
        previewTool.run(self.folder / "none.tar", "all", environment={"TMPDIR": str(scratch)})
        self.assertEqual(list(scratch.iterdir()), [])
        shutil.rmtree(scratch)
        self.assertEqual(previewTool.run(image, "all", environment={"TMPDIR": str(scratch)}).returncode, previewTool.ERROR)

    def test_nothing_is_left_behind_when_it_is_interrupted(self):
        """A program that never ends keeps the preview waiting."""
        image, = self.images(image="")
        program, scratch = self.folder / "program", self.folder / "scratch"
        program.write_text("#!/bin/sh\ntouch /config/runs\nsleep 50\n")
        program.chmod(0o755)
        scratch.mkdir()
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with subprocess.Popen([previewTool.PREVIEW, "--program", program, image, "all"], stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL, env={**os.environ, "TMPDIR": str(scratch)}) as running:
                while not list(scratch.glob("*/phone/config/runs")):
                    self.assertIsNone(running.poll())
                    time.sleep(0.01)
                running.send_signal(number)
                self.assertEqual(running.wait(timeout=20), 128 + number)
            self.assertEqual(list(scratch.iterdir()), [])


if __name__ == "__main__":
    previewTool.main()
