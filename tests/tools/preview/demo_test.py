#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""script/demo is the preview on the example phone. What it builds is built already: cmake does nothing here."""

import os
import pathlib
import subprocess

import phones
import previewTool
import proof

DEMO = previewTool.PROJECT / "script" / "demo"
BUILT = previewTool.PROJECT / "build" / "host" / "tools" / "preview" / "kestrune-preview"
EXAMPLE = previewTool.PROJECT / "examples" / "phone"
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

    def test_what_it_does_not_take(self):
        self.assertEqual(self.demo("all", self.folder / "none").returncode, previewTool.NOT_DONE)
        self.assertEqual(self.demo("all", SMALL, "more").returncode, 1)
        self.assertEqual(self.demo("--html").returncode, 1)
        self.assertIn("usage: script/demo", self.demo("--help").stdout)


if __name__ == "__main__":
    if not BUILT.exists() or not BUILT.samefile(previewTool.PREVIEW):
        proof.skip("the demo is for the preset host")
    previewTool.main()
