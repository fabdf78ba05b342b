#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""script/demo is the preview on the example phone, or on a fleet. What it builds is built already: cmake does nothing here."""

import json
import os
import pathlib
import re
import subprocess

import jsonschema
import phones
import previewTool
import proof

MAKE_FLEET = previewTool.PROJECT / "script" / "make-fleet"
DEMO = previewTool.PROJECT / "script" / "demo"
BUILT = previewTool.PROJECT / "build" / "host" / "tools" / "preview" / "kestrune-preview"
EXAMPLE = previewTool.PROJECT / "examples" / "phone"
FLEET_SCHEMA = previewTool.PROJECT / "tools" / "preview" / "fleet.schema.json"
SMALL = phones.PHONES["small"]


class Demo(previewTool.PreviewTest):
    def demo(self, *arguments):
        stub = self.folder / "bin" / "cmake"
        stub.parent.mkdir(exist_ok=True)
        stub.write_text("#!/bin/sh\n")
        stub.chmod(0o755)
        path = f"{stub.parent}:{os.environ['PATH']}"
        return subprocess.run([DEMO, *map(str, arguments)], cwd=self.folder, capture_output=True, text=True,
                              env={**os.environ, "PATH": path}, timeout=120, check=False)

    def test_it_shows_what_the_preview_shows(self):
        rows = [([], [EXAMPLE, "all"]), (["pwd"], [EXAMPLE, "pwd"]), (["hand-over"], [EXAMPLE, "1", "2"]),
                (["all", SMALL], [SMALL, "all"]), (["--reports", "dev"], ["--reports", EXAMPLE, "dev"]),
                (["hand-over", SMALL, "--color", "always"], ["--color", "always", SMALL, "1", "2"])]
        for given, direct in rows:
            with self.subTest(given):
                shown = self.demo(*given)
                self.assertEqual((shown.returncode, shown.stderr), (0, ""))
                self.assertEqual(shown.stdout, previewTool.run(*direct).stdout)

    def test_it_leaves_a_page_where_it_was_asked_to(self):
        self.assertEqual(self.demo("--html", "out.html").returncode, 0)
        self.assertIn("/config/data/contact_list.xml", pathlib.Path(self.folder / "out.html").read_text())

    def test_the_report_on_a_fleet(self):
        scratch = self.folder / "scratch"
        scratch.mkdir()
        os.environ["TMPDIR"], before = str(scratch), os.environ["TMPDIR"]
        self.addCleanup(os.environ.__setitem__, "TMPDIR", before)
        shown = self.demo("--json", "report.json", "--html", "report.html", "--pages", "pages", "-j", 2, "fleet", 60)
        self.assertEqual((shown.returncode, list(scratch.iterdir())), (0, []))
        report = json.loads((self.folder / "report.json").read_text())
        jsonschema.validate(report, json.loads(FLEET_SCHEMA.read_text()))
        endings = {name: report["phones"][name] for name in ("well", "care", "fail")}
        self.assertEqual(sum(endings.values()), 60)
        self.assertGreater(min(endings["well"], endings["care"]), endings["fail"])
        self.assertGreater(endings["fail"], 0)
        self.assertIn(f"60 phones, mode all: {endings['well']} end well, ", shown.stdout)
        links = re.findall('href="([^"]*)"', (self.folder / "report.html").read_text())
        self.assertEqual({(self.folder / link).exists() for link in links}, {True})  # relative to the report
        # Secrets of locked phones are enciphered already: the firmware changes those of a few others only.
        password = next(place for place in report["changes"] if place["key"] == "strUserPassword")
        self.assertLess(password["phones"], 15)
        self.assertEqual([value["secret"] for value in password["values"]], ["same, now enciphered"])

    def test_a_fleet_is_the_same_each_time(self):
        made = []
        for name, seed in (("one", 1), ("two", 1), ("other", 2)):
            subprocess.run([MAKE_FLEET, self.folder / name, "10", str(seed)], check=True)
            made.append({file.relative_to(self.folder / name): file.read_bytes()
                         for file in (self.folder / name).rglob("*") if file.is_file()})
        self.assertEqual(made[0], made[1])
        self.assertNotEqual(made[0], made[2])
        self.assertGreater(len(made[0]), 10)

    def test_an_option_keeps_its_value(self):
        for option, value in (("--firmware", EXAMPLE), ("--table", EXAMPLE / "phone" / "resource" / "kestrune.xml")):
            with self.subTest(option):
                self.assertEqual(self.demo(option, value).stdout, previewTool.run(option, value, EXAMPLE, "all").stdout)

    def test_what_it_does_not_take(self):
        self.assertEqual(self.demo("all", self.folder / "none").returncode, previewTool.NOT_DONE)
        self.assertEqual(self.demo("all", SMALL, "more").returncode, 1)
        self.assertEqual(self.demo("--html").returncode, 1)
        self.assertIn("usage: script/demo", self.demo("--help").stdout)


if __name__ == "__main__":
    if not BUILT.exists() or not BUILT.samefile(previewTool.PREVIEW):
        proof.skip("the demo is for the preset host")
    previewTool.main()
