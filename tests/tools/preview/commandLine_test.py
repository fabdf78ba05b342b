#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Exit statuses, options, what goes to the terminal, and several images at once."""

import json
import os
import re
import subprocess

import previewTool
from previewTool import DONE, USER


class CommandLine(previewTool.PreviewTest):
    def test_the_exit_status_is_the_worst_severity(self):
        fails, well = self.images(image="", done=DONE)  # no factory file: a pass stops early
        certificate = well.parent / "care" / "config/certs/phoneca/a.pem"
        certificate.parent.mkdir(parents=True)
        certificate.touch()
        care = well.parent / "care"
        for images, status in (([well], previewTool.WELL), ([care], previewTool.CARE), ([fails], previewTool.FAILS),
                               ([well, care], previewTool.CARE), ([care, fails, well], previewTool.FAILS),
                               ([well, well.parent / "none"], previewTool.FAILS), ([well.parent / "none"], previewTool.NOT_DONE)):
            with self.subTest(images=[image.name for image in images]):
                modes = ["1"] if fails not in images else ["all"]
                self.assertEqual(previewTool.run(*images, *modes).returncode, status)

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
                self.assertEqual(result.returncode, previewTool.NOT_DONE)
                self.assertEqual(result.stdout, "")
                self.assertRegex(result.stderr, "^kestrune-preview: .*" + words)

    def test_a_mistyped_mode_or_image_is_an_error(self):
        image, = self.images(image="")
        missing = self.folder / "image2"
        for words in ([image, "al"], [image, "ALL"], [image, ""], [image, "all", "pdw"], [image, "all", "1 "],
                      [image, "--", "--all"], [image, missing, "al"]):
            with self.subTest(words):
                result = previewTool.run(*words)
                self.assertEqual((result.returncode, result.stdout), (previewTool.NOT_DONE, ""))
                self.assertIn(f'"{words[-1]}" is no MODE', result.stderr)
        result = previewTool.run(image, missing, "all")
        self.assertEqual(result.returncode, previewTool.FAILS)
        self.assertEqual(result.stderr, f"kestrune-preview: {missing}: no such image\n")
        self.assertIn(f"  fail  {missing}  no such image\n", result.stdout)

    def test_any_mode(self):
        image, other = self.images(image="", other="")
        text = previewTool.run("--any-mode", image, "fix", "all").stdout
        self.assertTrue(text.startswith("image: mode fix, then all\n"))
        self.assertTrue(previewTool.run("--any-mode", image, other, "fix").stdout.startswith("2 phones, mode fix: "))
        self.assertIn("is no MODE", previewTool.run("--any-mode", image, "fix", other).stderr)
        self.assertIn("is no MODE", previewTool.run("--any-mode", image, "fix", "two.tar").stderr)

    def test_odd_bytes_of_the_command_line_are_shown_as_escapes(self):
        image, = self.images(image="")
        for arguments in (["--no\x1b[2J"], ["--color", "b\x1blue"], ["--jobs", "\x1b"], [image, "a\x1bll"],
                          ["--program", "/no\x1b", image, "all"], ["--json", "/no/\x1b", image, "all"]):
            with self.subTest(arguments):
                result = previewTool.run(*arguments, *([] if "all" in arguments else [image, "all"]))
                # "a\x1bll" is read as a further image, which does not exist.
                status = previewTool.FAILS if arguments[0] == image else previewTool.NOT_DONE
                self.assertEqual(result.returncode, status)
                self.assertIn("\\x1b", result.stderr)
                self.assertNotIn("\x1b", result.stderr)

    def test_a_tree_that_is_a_link_is_not_taken_for_a_missing_one(self):
        image, other = self.images(image="", other="")
        (image / "phone").symlink_to(other / "config")
        result = previewTool.run(image, "all")
        self.assertEqual(result.returncode, previewTool.NOT_DONE)
        self.assertIn("the image's phone is no folder", result.stdout + result.stderr)

    def test_an_empty_name_is_no_option_left_out(self):
        done, = self.images(done=DONE)
        for option in ("--expect", "--json", "--html", "--save-phone"):
            with self.subTest(option):
                result = previewTool.run(option, "", done, "pwd")
                self.assertEqual(result.returncode, previewTool.NOT_DONE)
                self.assertIn(f"{option}: the name is empty", result.stderr)

    def test_a_program_that_fails_is_an_error(self):
        program = self.folder / "program"
        program.write_text("#!/bin/sh\necho strPassword=plover >&2\nexit 3\n")
        program.chmod(0o755)
        result = previewTool.run("--program", program, *self.images(image=""), "all")
        self.assertEqual(result.returncode, previewTool.NOT_DONE)
        self.assertEqual(result.stderr, "kestrune-preview: image: the run of mode all failed: exit status 3\n")
        self.assertNotIn("plover", result.stdout + result.stderr)

    def test_help(self):
        result = previewTool.run("--help")
        self.assertEqual(result.returncode, 0)
        for option in ("--reports", "--reveal-secrets", "--color", "--json", "--html", "--expect", "--jobs"):
            self.assertIn(option, result.stdout)

    def test_version(self):
        result = previewTool.run("--version")
        version = re.search(r"^project\(kestrune VERSION ([0-9.]+)", (previewTool.PROJECT / "CMakeLists.txt").read_text(),
                            re.MULTILINE)[1]
        self.assertEqual((result.returncode, result.stdout), (0, f"kestrune-preview {version}\n"))
        made = json.loads(previewTool.run("--json", "-", *self.images(image=""), "all").stdout)
        self.assertEqual(made["madeBy"], f"kestrune-preview {version}")

    def test_without_bubblewrap_there_is_one_hint(self):
        images = self.images(one="", two="")
        folder = self.folder / "bin"
        folder.mkdir()
        rows = [("", "cannot start bwrap"), ("#!/bin/sh\necho 'bwrap: No permissions' >&2\nexit 1\n", "bwrap: No permissions")]
        for stub, words in rows:
            with self.subTest(words):
                if stub:
                    (folder / "bwrap").write_text(stub)
                    (folder / "bwrap").chmod(0o755)
                result = previewTool.run(*images, "all", environment={"PATH": str(folder)})
                self.assertEqual((result.returncode, result.stdout), (previewTool.NOT_DONE, ""))
                self.assertEqual(len(result.stderr.splitlines()), 1)
                self.assertIn(words, result.stderr)
                self.assertIn("package bubblewrap", result.stderr)
                self.assertIn("user namespaces", result.stderr)

    def test_colours_are_for_terminals_and_for_who_asks(self):
        image, = self.images(image="")
        self.assertNotIn("\033", previewTool.run(image, "all").stdout)
        self.assertIn("\033[", previewTool.run("--color", "always", image, "all").stdout)
        self.assertIn("\033[", self.on_terminal([image, "all"], {"TERM": "xterm"}))
        self.assertNotIn("\033[", self.on_terminal([image, "all"], {"TERM": "xterm", "NO_COLOR": "1"}))
        self.assertNotIn("\033[", self.on_terminal(["--color", "never", image, "all"], {"TERM": "xterm"}))

    def on_terminal(self, arguments, environment, stream="stdout"):
        variables = {name: value for name, value in os.environ.items() if name != "NO_COLOR"} | environment
        hidden = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL} | {stream: None}
        return previewTool.run_on_terminal(*arguments, environment=variables, **hidden)[1]

    def test_the_same_image_gives_the_same_json(self):
        image = self.phone({}, base="small")
        first, second = (previewTool.run("--json", "-", image, "all").stdout for _ in range(2))
        self.assertEqual(first, second)

    def test_several_images_give_one_report(self):
        images = self.images(one="", two=DONE, three="[B]\n")
        missing = self.folder / "none"
        result = previewTool.run("--any-mode", "--jobs", "2", "--json", self.folder / "all.json", *images, missing, "fix")
        self.assertEqual(result.stdout.splitlines()[:4], [
            "4 phones, mode fix: 3 end well, 0 need care, 1 fail", "", "Changes, the rarest first",
            f"  2  2 added  {USER} [Feature] RingbackTimeout  such as {images[0]}"])
        self.assertEqual(result.stdout.splitlines()[-2:], ["Phones, worst first", f"  fail  {missing}  no such image"])
        self.assertEqual(result.returncode, previewTool.FAILS)
        self.assertEqual(result.stderr, f"kestrune-preview: {missing}: no such image\n")
        written = json.loads((self.folder / "all.json").read_text())
        self.assertEqual(written["phones"], {"all": 4, "well": 3, "care": 0, "fail": 1})
        self.assertEqual({phone["image"] for phone in written["images"]}, {str(image) for image in [*images, missing]})
        self.assertEqual(previewTool.run(*images, "pwd").returncode, previewTool.FAILS)

    def test_columns_count_characters(self):
        images = self.images(**{"\u00e4\u00f6\u00fc\u3042": "", "ascii": ""})
        lines = previewTool.run(*images, "pwd").stdout.splitlines()
        self.assertEqual(len({line.index(" errors") for line in lines if line.startswith("  fail")}), 1, lines)

    def test_blanks_at_the_ends_of_a_value_are_seen(self):
        image = self.phone({"/config/a.xml": '<a><b c="x y "/><b c="z"/></a>'})
        program = self.folder / "program"
        program.write_text("#!/bin/sh\nprintf '<a><b c=\" x y \"/><b c=\" \"/></a>' >/config/a.xml\n")
        program.chmod(0o755)
        shown = self.show("--program", program, image, "all")
        for text in (shown.text, shown.html):
            self.assertIn("x y\\x20", text)
            self.assertIn("\\x20x y\\x20", text)
        self.assertIn("z -> \\x20\n", shown.text)

    def test_the_bar_is_for_terminals(self):
        images = self.images(one="", two="")
        self.assertEqual(previewTool.run(*images, "pwd").stderr, "")
        self.assertIn("2/2", self.on_terminal([*images, "pwd"], {"TERM": "xterm"}, "stderr"))
        self.assertEqual(self.on_terminal([images[0], "pwd"], {"TERM": "xterm"}, "stderr"), "")

    def test_a_mode_that_is_also_a_folder_is_a_mode(self):
        image, = self.images(image="")
        (self.folder / "all").mkdir()
        result = subprocess.run([previewTool.PREVIEW, "image", "all"], cwd=self.folder, capture_output=True, text=True,
                                check=False)
        self.assertTrue(result.stdout.startswith("image: mode all\n"))


if __name__ == "__main__":
    previewTool.main()
