#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What became of each record of the translation table, and the keys of the phone that it forgets."""

import json

import jsonschema

import previewTool
from previewTool import DONE, USER

SYSTEM = "/config/system/system.ini"
TABLE, LIST = "/phone/resource/kestrune.xml", "/phone/resource/encryptconfig.xml"
FACTORY = "/phone/factory/user/user.ini"
LOST = "x" * 160  # too long for the cipher


def record(source, key, file=USER, flags=""):
    return f'  <r srcFile="{USER}" srcSec="A" {source} dstFile="{file}" dstSec="A" dstKey="{key}" {flags}/>'


RECORDS = (record('srcKey="a"', "moved"), record('srcKey="a"', "same"), record('srcKey="empty"', "b"),
           record('srcKey="none"', "b"), record("", "absent"), record('srcKey="moved"', "moved again"),
           record('srcKey="lost"', "c", flags='dstEncrypt="true"'), record('srcKey="a"', "d", SYSTEM),
           record('srcKey="a"', "e"))
FILES = {USER: DONE + f"[PhoneSetting]\nEnLock=1\n[A]\na=1\nsame=1\nempty=\nb=2\nlost={LOST}\n",
         TABLE: "<!-- a table -->\n<t>\n\n" + "\n".join(RECORDS) + "\n</t>\n"}


class Records(previewTool.PreviewTest):
    def outcomes(self, files, *arguments):
        shown = self.show(self.phone(files), *arguments)
        jsonschema.validate(shown.json, json.loads(previewTool.SCHEMA.read_text()))
        return [(one["line"], one["outcome"]) for one in shown.preview["records"]]

    def test_all_outcomes(self):
        self.assertEqual(self.outcomes(FILES, "dev"), [
            (4, "moved"), (5, "nothing changed"), (6, "wrote empty"), (7, "no source"), (8, "no source"), (9, "moved"),
            (10, "wrote empty"), (11, "never ran"), (12, "never ran")])

    def test_the_first_of_two_runs_counts(self):
        self.assertEqual(self.outcomes(FILES, "1", "dev", "dev")[0], (4, "moved"))

    def test_a_mode_without_the_table(self):
        self.assertEqual({outcome for _, outcome in self.outcomes(FILES, "pwd")}, {"never ran"})

    def test_what_passes_before_the_table_wrote(self):
        source = f'<r srcFile="{USER}" srcSec="Feature" srcKey="RingbackTimeout" dstKey="nNew"/>'
        self.assertEqual(self.outcomes({USER: "", TABLE: f"<t>{source}{source}</t>"}, "dev"),
                         [(1, "moved"), (1, "nothing changed")])

    def test_the_places_of_a_record(self):
        records = self.show(self.phone(FILES), "dev").preview["records"]
        self.assertEqual((records[0]["source"], records[0]["destination"]), (f"[A] a of {USER}", f"[A] moved of {USER}"))
        self.assertEqual((records[4]["source"], records[4]["destination"]), ("", f"[A] absent of {USER}"))

    def test_another_comment_in_the_table_is_as_approved(self):
        image, approved = self.phone(FILES), self.folder / "approved.json"
        previewTool.run("--json", approved, image, "dev")
        image = self.phone(FILES | {TABLE: "<!-- one\nmore -->" + FILES[TABLE]})
        self.assertEqual(previewTool.run("--expect", approved, image, "dev").returncode, 0)
        image = self.phone(FILES | {USER: FILES[USER].replace("same=1", "same=1\nmoved=1")})
        result = previewTool.run("--expect", approved, image, "dev")
        self.assertIn(f"/0/records/[A] a of {USER} [A] moved of {USER}/outcome: approved \"moved\", now", result.stderr)


class Forgotten(previewTool.PreviewTest):
    FILES = {USER: DONE + "[A]\na=1\nold=1\nown=2\nown too=2\n", FACTORY: "[A]\nold=1\nown=1\nown too=\n",
             TABLE: "<t>" + record('srcKey="a"', "b") + "</t>"}

    def forgotten(self, shown):
        jsonschema.validate(shown.json, json.loads(previewTool.SCHEMA.read_text()))
        return [(key["file"], key["section"], key["key"], key["own"]) for key in shown.preview["forgotten"]]

    def firmware(self, factory):
        """One that no longer knows the keys of the old one."""
        for path, content in ((FACTORY, factory), (TABLE, self.FILES[TABLE])):
            (self.folder / "new" / path[1:]).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / "new" / path[1:]).write_text(content)
        return self.folder / "new"

    def test_what_the_new_firmware_does_not_know(self):
        shown = self.show("--firmware", self.firmware("[A]\nown=\nown too=\n"), self.phone(self.FILES), "dev")
        self.assertEqual(self.forgotten(shown), [(USER, "A", "old", False)])
        shown = self.show("--firmware", self.firmware(""), self.phone(self.FILES), "dev")
        self.assertEqual(self.forgotten(shown), [(USER, "A", "old", False), (USER, "A", "own", True),
                                                  (USER, "A", "own too", True)])
        self.assertIn(f"\nWhat the table forgets\n  {USER} [A] own, own too\n\n", shown.text)
        section = shown.html.split("<h2>What the table forgets</h2>")[1].split("<h2>")[0]
        self.assertIn("[A]</span></td><td>own, own too</td>", section)
        self.assertNotIn("old", section)

    def test_nothing_is_said_when_nothing_is_forgotten(self):
        shown = self.show(self.phone(self.FILES), "dev")
        self.assertEqual(self.forgotten(shown), [])
        self.assertNotIn("forgets", shown.text + shown.html)

    def test_a_secret_in_a_name_is_hidden(self):
        files = self.FILES | {USER: DONE + "[A]\na=1\nstrPassword=plover4711\n[plover4711]\nplover4711=x\n"}
        shown = self.show(self.phone(files), "dev")
        mask = "\u2022" * 6
        self.assertIn((USER, mask, mask, True), self.forgotten(shown))
        self.assertNotIn("plover4711", shown.text + shown.html + str(shown.json))

    def test_another_forgotten_key_is_not_as_approved(self):
        approved = self.folder / "approved.json"
        previewTool.run("--json", approved, self.phone(self.FILES), "dev")
        image = self.phone(self.FILES | {USER: self.FILES[USER] + "more=1\n"})
        result = previewTool.run("--expect", approved, image, "dev")
        self.assertEqual(result.returncode, previewTool.CARE)
        self.assertIn(f"/0/forgotten/{USER} A more: approved nothing, now", result.stderr)


if __name__ == "__main__":
    previewTool.main()
