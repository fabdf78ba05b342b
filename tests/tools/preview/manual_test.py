#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The manual page, the completion and the page in docs/ describe every option and every rule, and no other."""

import re
import shutil
import subprocess
import unittest

import previewTool

MANUAL = previewTool.PROJECT / "man" / "kestrune-preview.1"
COMPLETION = previewTool.PROJECT / "packaging" / "completions" / "kestrune-preview"
PAGE = previewTool.PROJECT / "docs" / "preview.md"
RULES = previewTool.PROJECT / "tools" / "preview" / "warnings" / "warningList.h"


COMMANDS = ("merge", "diff")  # in addition to the preview, which has no word


def options_of_the_program():
    """Those of all three commands."""
    helps = "".join(previewTool.run(*command, "--help").stdout for command in [(), *((word,) for word in COMMANDS)])
    return set(re.findall(r"--[a-z][a-z-]*", helps))


def completed(*words):
    script = (f". {COMPLETION}; COMP_WORDS=(kestrune-preview {' '.join(words)}); COMP_CWORD={len(words)}; "
              "compopt() { :; }; _kestrune_preview; echo ${COMPREPLY[@]}")
    result = subprocess.run(["bash", "-c", script], cwd="/", capture_output=True, text=True, check=False)
    assert result.stderr == "", result.stderr
    return set(result.stdout.split())


def rules_of_the_program():
    numbers = re.findall(r"^    [A-Z]\w+ = (\d+),$", RULES.read_text(), re.MULTILINE)
    return {f"KP{int(number):03d}" for number in numbers}


def titles_of_the_program():
    names = dict(re.findall(r"^    ([A-Z]\w+) = (\d+),$", RULES.read_text(), re.MULTILINE))
    titles = re.findall(r'\{WarningRule::(\w+), Severity::(\w+), "([^"]+)"', RULES.with_suffix(".cpp").read_text())
    return {f"KP{int(names[name]):03d}": (severity.lower(), title) for name, severity, title in titles}


class Manual(unittest.TestCase):
    @unittest.skipIf(shutil.which("mandoc") is None, "mandoc is not installed")
    def test_the_page_is_clean(self):
        result = subprocess.run(["mandoc", "-T", "lint", MANUAL], capture_output=True, text=True, check=False)
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_it_describes_every_option(self):
        described = {f"-{option}" for option in re.findall(r"^\.(?:Op|It) Fl (-[a-z-]+)", MANUAL.read_text(), re.MULTILINE)}
        self.assertEqual(described | {"--help"}, options_of_the_program())

    def test_it_describes_every_rule(self):
        self.assertEqual(set(re.findall(r"^\.It (KP\d+)$", MANUAL.read_text(), re.MULTILINE)), rules_of_the_program())
        self.assertEqual(set(re.findall(r"^\| (KP\d+) ", PAGE.read_text(), re.MULTILINE)), rules_of_the_program())

    def test_each_rule_has_the_words_of_the_program(self):
        titles = titles_of_the_program()
        self.assertEqual(set(titles), rules_of_the_program())
        manual, page = MANUAL.read_text(), PAGE.read_text()
        for rule, (severity, title) in titles.items():
            self.assertRegex(manual, rf"(?m)^\.It {rule}\n{title[0].upper()}{re.escape(title[1:])}[.:]")
            self.assertRegex(page, rf"(?m)^\| {rule} \| {severity} \| {re.escape(title)}[ ,:]")

    def test_the_completion_offers_every_option(self):
        self.assertEqual(completed("--"), options_of_the_program())

    def test_the_commands_are_described_and_offered(self):
        help_text, manual, page = previewTool.run("--help").stdout, MANUAL.read_text(), PAGE.read_text()
        for command in COMMANDS:
            with self.subTest(command):
                self.assertIn(f"kestrune-preview {command} ", help_text)
                self.assertIn(f".Nm\n.Cm {command}\n", manual)
                self.assertIn(f"kestrune-preview {command} ", page)
                self.assertIn(command, completed("''"))
                self.assertNotIn(command, completed("phone", "''"))


if __name__ == "__main__":
    previewTool.main()
