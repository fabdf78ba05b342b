# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""docs/licences.md lists exactly the libraries that the programs of a build use, with their versions and licences."""

import pathlib
import re
import tempfile
import unittest

import linkedLibraries
import packaging


class LinkedLibraries(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.listed = linkedLibraries.listed()
        cls.used = linkedLibraries.used(BUILD)

    def test_the_page_lists_what_the_programs_use(self):
        for column, used in self.used.items():
            expected = {source: row.uses[column] for source, row in self.listed.items() if row.uses[column]}
            self.assertEqual({source: library.use for source, library in used.items()}, expected, column)

    def test_the_versions_are_those_that_were_used(self):
        for column, used in self.used.items():
            for source, library in used.items():
                if source not in self.listed:
                    continue  # the test above reports it
                version = re.escape(self.listed[source].version)
                self.assertRegex(library.version, rf"^{version}(?![0-9])", f"{column}: {source}")

    def test_the_licences_are_expressions_of_known_identifiers(self):
        with tempfile.TemporaryDirectory(prefix="kestrune-") as folder:
            for source, row in self.listed.items():
                tag = "SPDX-License-" + "Identifier"  # in two parts: this file has a licence of its own
                pathlib.Path(folder, f"{source}.txt").write_text(f"{tag}: {row.licence}\n")
            output = packaging.run(["reuse", "--root", folder, "lint"])[1]
        self.assertIn("\n* Bad licenses:\n", output)

    def test_the_packages_contain_the_notices_for_what_is_compiled_in(self):
        notices = (packaging.SOURCE / "packaging" / "debian" / "copyright").read_text()
        for row in self.listed.values():
            if "headers" in row.uses.values() and re.match("MIT|BSD", row.licence):
                self.assertRegex(notices, rf"Comment: Headers? of {re.escape(row.name)}, compiled into ")


if __name__ == "__main__":
    packaging.need("dpkg-query", "ninja", "readelf", "reuse")
    (BUILD,) = packaging.take_arguments()
    packaging.need_debian_12()
    packaging.main()
