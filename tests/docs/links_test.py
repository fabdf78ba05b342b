# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What a page links to or names exists: pages, their headings, and files of the source tree."""

import re
import unittest

import pages

LINK = re.compile(r"\]\(([^)#\s]*)(?:#([^)\s]+))?\)")
FOLDERS = "app|bench|cmake|docs|examples|man|packaging|platform|script|tests|tools|\\.ci"
NAMED = re.compile(rf"(?<![\w/.-])((?:{FOLDERS})/[\w@./*-]*\w|(?:{FOLDERS})/)")


def anchors_of(page):
    """The names under which a browser finds the headings of a page."""
    return {re.sub(r"[^\w -]", "", re.sub(r"\]\([^)]*\)", "", section.heading)).strip().lower().replace(" ", "-")
            for section in pages.sections_of(page)}


def is_there(name):
    """A source may be named without its ending, and a manual page without that of its template."""
    return any(any(pages.PROJECT.glob(pattern)) for pattern in (name, f"{name}.*", f"{name}_test.py"))


class Links(unittest.TestCase):
    def test_each_link_leads_somewhere(self):
        found = 0
        for page in pages.PAGES:
            for path, anchor in LINK.findall(page.read_text()):
                if path.startswith(("https:", "http:")):
                    continue
                found += 1
                with self.subTest(page=pages.name_of(page), path=path, anchor=anchor):
                    target = (page.parent / path).resolve() if path else page
                    self.assertTrue(target.exists())
                    if anchor:
                        self.assertIn(anchor, anchors_of(target))
        self.assertGreater(found, 100)

    def test_each_named_file_exists(self):
        found = 0
        for page in pages.PAGES:
            for name in NAMED.findall(LINK.sub("]", page.read_text())):
                found += 1
                with self.subTest(page=pages.name_of(page), name=name):
                    self.assertTrue(is_there(name.rstrip("/")))
        self.assertGreater(found, 100)

    def test_each_page_is_listed_in_readme(self):
        readme = (pages.PROJECT / "README.md").read_text()
        for page in (pages.PROJECT / "docs").glob("*.md"):
            self.assertTrue(f"](docs/{page.name})" in readme, page.name)


if __name__ == "__main__":
    unittest.main(verbosity=2)
