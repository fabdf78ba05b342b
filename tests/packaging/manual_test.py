# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The manual pages are clean, and name each other and everything that the documentation does."""

import pathlib
import re
import unittest

import packaging

PAGES = ("man8/kestrune.8", "man5/kestrune.xml.5", "man5/encryptconfig.xml.5")

# mandoc looks for a page only where the system keeps its own; the references are checked here.
REFERENCE = re.compile(r"(?m)^mandoc: \S+ STYLE: referenced manual not found: .*\n")


class Manual(unittest.TestCase):
    def test_mandoc_finds_nothing(self):
        for page in PAGES:
            _, output = packaging.run(["mandoc", "-T", "lint", MANUAL / page])
            self.assertEqual(REFERENCE.sub("", output), "", page)

    def test_mandoc_would_find_something(self):
        status, output = packaging.run(["mandoc", "-T", "lint", packaging.SOURCE / "LICENSE"])
        self.assertNotEqual(status, 0)
        self.assertIn("LICENSE", output)

    def test_each_page_refers_to_pages_that_are_here(self):
        for page in PAGES:
            references = re.findall(r"(?m)^\.Xr (\S+) (\d)", (MANUAL / page).read_text())
            self.assertTrue(references, page)
            for name, section in references:
                self.assertIn(f"man{section}/{name}.{section}", PAGES, page)

    def test_each_page_names_the_version(self):
        for page in PAGES:
            self.assertRegex((MANUAL / page).read_text(), r"that of version \d+\.\d+\.\d+\.\n")

    def test_every_file_of_the_upgrade_is_listed(self):
        files = (MANUAL / PAGES[0]).read_text().split("\n.Sh FILES\n")[1].split("\n.Sh ")[0]
        listed = re.findall(r"(?m)^\.It Pa /config/(kestrune-\w+)$", files)
        self.assertEqual(listed, ["kestrune-pending", "kestrune-commit", "kestrune-handover", "kestrune-certificates"])

    def test_the_attributes_are_those_of_the_documentation(self):
        for page, document, heading in ((PAGES[1], "kestrune-table.md", "Format"), (PAGES[2], "passes.md", "Passwords")):
            text = (packaging.SOURCE / "docs" / document).read_text()
            section = text.split(f"\n## {heading}\n")[1].split("\n## ")[0]
            documented = re.findall(r"(?m)^\| `(\w+)` \|", section)
            described = re.findall(r"(?m)^\.It Cm (\w+)$", (MANUAL / page).read_text())
            self.assertTrue(documented, document)
            self.assertEqual(described, documented, page)


if __name__ == "__main__":
    packaging.need("mandoc")
    (manual,) = packaging.take_arguments()
    MANUAL = pathlib.Path(manual)
    packaging.main()
