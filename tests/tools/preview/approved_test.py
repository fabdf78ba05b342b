#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Previews that are compared with an approved one."""

import json
import os

import previewTool
from previewTool import DONE, USER

NO_ARCHIVE = "no archive"


class Approved(previewTool.PreviewTest):
    def test_an_approved_preview(self):
        image, other = self.images(image="[A]\na=1\n", other="[A]\na=1\n")
        approved = self.folder / "approved.json"
        previewTool.run("--json", approved, image, "all")
        self.assertEqual(previewTool.run("--expect", approved, image, "all").returncode, 0)
        self.assertEqual(previewTool.run("--expect", approved, "--reports", other, "all").returncode, 0)
        (image / "config/user/voip").mkdir()
        (image / "config/user/voip/sipAccount0.cfg").write_text("[account]\nCancelTimer=90\n")
        result = previewTool.run("--expect", approved, image, "all")
        self.assertEqual(result.returncode, previewTool.CARE)
        self.assertIn('/0/files//config/user/user.ini/changes/Feature RingbackTimeout/after: approved "180", now "90"\n',
                      result.stderr)
        self.assertIn("/0/files//config/user/voip/sipAccount0.cfg: approved nothing, now {", result.stderr)

    def test_an_approved_preview_is_compared_before_it_is_written_anew(self):
        image, other = self.images(image="[A]\na=1\n", other=DONE)
        approved = self.folder / "approved.json"
        previewTool.run("--json", approved, image, "all")
        renewal = ("--json", approved, "--expect", approved, other, "all")
        self.assertEqual(previewTool.run(*renewal).returncode, previewTool.CARE)
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
                self.assertEqual(result.returncode, previewTool.CARE)
                self.assertIn(f'approved "{before}", now "{after}"', result.stderr)

    def test_what_is_no_approved_preview(self):
        image, = self.images(image="")
        approved = self.folder / "approved.json"
        for text in ("", "[]", "{}", '{"format": "kestrune-preview", "version": 2, "previews": []}',
                     '{"format": "kestrune-preview", "version": 3, "previews": [{"files": 1}]}',
                     '{"format": "kestrune-preview", "version": 3, "previews": []}',
                     '{"format": 7, "version": 3, "previews": []}', "[" * 100_000):
            approved.write_text(text)
            result = previewTool.run("--expect", approved, image, "all")
            self.assertEqual(result.returncode, previewTool.NOT_DONE)
            self.assertRegex(result.stderr, "approved.json (is no JSON text of a preview|has another version)")

    def approve(self, *arguments):
        previewTool.run("--json", self.folder / "approved.json", *arguments)
        return json.loads((self.folder / "approved.json").read_text())

    def compare(self, *arguments):
        return previewTool.run("--expect", self.folder / "approved.json", *arguments)

    def test_reports_do_not_count(self):
        image, = self.images(image="[A]\na=1\n")
        self.approve("--reports", image, "all")
        self.assertEqual(self.compare(image, "all").returncode, 0)
        self.assertEqual(self.compare("--reports", image, "all").returncode, 0)

    def test_the_version_that_made_it_does_not_count(self):
        image, = self.images(image="[A]\na=1\n")
        approved = self.approve(image, "all")
        approved["madeBy"] = "kestrune-preview 0.0.1"
        (self.folder / "approved.json").write_text(json.dumps(approved))
        self.assertEqual(self.compare(image, "all").returncode, 0)

    def test_one_image_is_compared(self):
        images = self.images(one="", two="")
        self.approve(images[0], "all")
        for option in (("--expect", self.folder / "approved.json"), ("--save-phone", self.folder / "after")):
            for several in (images, [images[0], "--jsonl", self.folder / "log"], [images[0], "--pages", self.folder / "pages"]):
                result = previewTool.run(*option, *several, "all")
                self.assertEqual((result.returncode, result.stdout), (previewTool.NOT_DONE, ""))
                self.assertEqual(result.stderr, "kestrune-preview: --expect and --save-phone take one IMAGE\n")
                self.assertEqual([path.name for path in self.folder.iterdir() if path.name in ("log", "pages", "after")], [])

    def test_an_image_without_a_preview_is_compared(self):
        image, = self.images(image="[A]\na=1\n")
        broken = self.folder / "broken.tar"
        broken.write_text(NO_ARCHIVE)
        self.approve(broken, "all")
        self.assertEqual(self.compare(broken, "all").returncode, 0)
        result = self.compare(image, "all")
        self.assertEqual(result.returncode, previewTool.CARE)
        self.assertIn('/0/error: approved "neither a folder nor', result.stderr)

    def test_an_error_is_the_same_wherever_the_image_is(self):
        first, = self.images(image="")
        (first / "config/large").touch()
        os.truncate(first / "config/large", 1 << 30)
        second = self.folder / "elsewhere" / "image"
        second.parent.mkdir()
        self.approve(first, "all")
        first.rename(second)
        self.assertEqual(self.compare(second, "all").returncode, 0)

    def test_a_preview_with_secrets_is_not_compared_with_one_without(self):
        image, other = (self.phone({USER: f"[WebServer]\nstrAdminPassword={secret}\nstrPassword=plain\n"}).rename(
            self.folder / secret) for secret in ("plover4711", "grebe0815"))
        self.assertIs(self.approve("--reveal-secrets", image, "all")["revealed"], True)
        for arguments in ([other, "all"], [image, "all"]):
            result = self.compare(*arguments)
            self.assertEqual(result.returncode, previewTool.NOT_DONE)
            self.assertIn("made with --reveal-secrets", result.stderr)
            self.assertNotIn("4711", result.stdout + result.stderr)
        self.assertEqual(self.compare("--reveal-secrets", image, "all").returncode, 0)
        self.assertIs(self.approve(image, "all")["revealed"], False)
        self.assertIn("not made with --reveal-secrets", self.compare("--reveal-secrets", image, "all").stderr)

    def test_a_preview_without_a_word_on_secrets_is_refused(self):
        image, = self.images(image="")
        approved = self.approve(image, "all")
        del approved["revealed"]
        (self.folder / "approved.json").write_text(json.dumps(approved))
        self.assertIn("is no JSON text of a preview", self.compare(image, "all").stderr)

    def test_differences_are_printable(self):
        image, = self.images(image="[A]\na=1\n")
        approved = self.approve(image, "all")
        approved["previews"][0]["files"][0]["path"] = "/config/\x1b[2J\u202e\x9b"
        (self.folder / "approved.json").write_text(json.dumps(approved))
        result = self.compare(image, "all")
        for character in "\x1b\u202e\x9b\ufffd":
            self.assertNotIn(character, result.stderr)
        self.assertIn("/0/files//config/\\x1b[2J\\u202e\\x9b: approved {", result.stderr)

    def test_a_difference_shows_values_as_the_json_does_and_cuts_long_ones(self):
        image, = self.images(image="[A]\na=1\n")
        approved = self.approve(image, "all")
        rows = [("\\x1b", '"\\\\x1b"'), ("\u00e4" * 300, '"' + "\u00e4" * 99 + "..."),
                ("a" + "\u00e4" * 300, '"a' + "\u00e4" * 99 + "..."), ("a" * 198, '"' + "a" * 198 + '"')]
        for value, words in rows:
            with self.subTest(value):
                approved["previews"][0]["files"][0]["changes"][0]["after"] = value
                (self.folder / "approved.json").write_text(json.dumps(approved))
                self.assertIn(f'/after: approved {words}, now "180"\n', self.compare(image, "all").stderr)


if __name__ == "__main__":
    previewTool.main()
