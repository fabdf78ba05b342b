# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""script/sbom: the format of the SBOM, its files, the libraries of the programs, and the licence texts."""

import hashlib
import os
import pathlib
import re
import shutil
import tempfile
import unittest

import packaging

# What SPDX 2.3 requires of each element, and the values that we use of its enumerations.
REQUIRED = {
    "document": {"SPDXVersion", "DataLicense", "SPDXID", "DocumentName", "DocumentNamespace", "Creator", "Created"},
    "FileName": {"FileName", "SPDXID", "FileChecksum"},
    "PackageName": {"PackageName", "SPDXID", "PackageDownloadLocation", "FilesAnalyzed"},
}
RELATIONS = {"DESCRIBES", "CONTAINS", "GENERATED_FROM", "STATIC_LINK", "DYNAMIC_LINK"}


def elements(text):
    """The document, files and packages of an SBOM in tag-value form: lists of pairs."""
    found = [("document", [])]
    for tag, value in re.findall(r"(?m)^(\w+): (.*)$", text):
        if tag in REQUIRED:
            found.append((tag, []))
        found[-1][1].append((tag, value))
    return found


class Sbom(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory(prefix="kestrune-")))
        cls.tree = cls.folder / "tree"
        shutil.copytree(packaging.SOURCE / "platform", cls.tree / "platform")
        cls.make("first")
        cls.text = (cls.folder / "first-1.2.spdx").read_text()
        cls.elements = elements(cls.text)
        cls.relations = [value.split() for value in re.findall(r"(?m)^Relationship: (.*)$", cls.text)]

    @classmethod
    def make(cls, name):
        status, output = packaging.run([packaging.SOURCE / "script" / "sbom", cls.folder / f"{name}-1.2", cls.tree, BUILD],
                                       env={**os.environ, "SOURCE_DATE_EPOCH": "1790000000"})
        if status != 0:
            raise AssertionError(output)

    def identifiers(self, kind):
        return [dict(fields)["SPDXID"] for of, fields in self.elements if of == kind]

    def package(self, name):
        (found,) = [dict(fields) for _, fields in self.elements if dict(fields).get("PackageName") == name]
        return found

    def test_each_element_has_what_the_format_requires(self):
        for kind, fields in self.elements:
            self.assertLessEqual(REQUIRED[kind], {tag for tag, _ in fields}, fields)
        self.assertEqual(dict(self.elements[0][1])["Created"], "2026-09-21T14:13:20Z")

    def test_identifiers_are_unique_and_relations_name_them(self):
        identifiers = [identifier for kind in REQUIRED for identifier in self.identifiers(kind)]
        self.assertEqual(len(identifiers), len(set(identifiers)))
        for identifier in identifiers:
            self.assertRegex(identifier, r"^SPDXRef-[A-Za-z0-9.-]+$")
        for left, relation, right in self.relations:
            self.assertLessEqual({left, right}, set(identifiers))
            self.assertIn(relation, RELATIONS)

    def test_the_source_contains_every_file_with_its_checksum(self):
        files = [dict(fields) for kind, fields in self.elements if kind == "FileName"]
        found = {file["FileName"].removeprefix("./"): file["FileChecksum"].removeprefix("SHA1: ") for file in files}
        sums = {path: hashlib.sha1((self.tree / path).read_bytes()).hexdigest() for path in packaging.files_below(self.tree)}
        self.assertEqual(found, sums)
        contained = [right for left, relation, right in self.relations if (left, relation) == ("SPDXRef-Source", "CONTAINS")]
        self.assertEqual(sorted(contained), sorted(self.identifiers("FileName")))
        self.assertEqual(self.package("kestrune")["PackageVerificationCode"],
                         hashlib.sha1("".join(sorted(sums.values())).encode()).hexdigest())

    def test_the_program_links_nettle_as_it_was_built(self):
        is_static = "NEEDED" not in packaging.run(["readelf", "-dW", pathlib.Path(BUILD, "app/kestrune/kestrune")])[1]
        kind, relation = ("static", "STATIC_LINK") if is_static else ("shared", "DYNAMIC_LINK")
        program = self.package(f"kestrune, {kind} program ({pathlib.Path(BUILD).name})")["SPDXID"]
        for name in ("Nettle", "GNU C Library", "pugixml", "TinyXML"):
            self.assertIn([program, relation, self.package(name)["SPDXID"]], self.relations, name)
        self.assertRegex(self.text, r"(?m)^ExternalRef: PACKAGE-MANAGER purl pkg:deb/debian/nettle-dev@3\.")

    def test_the_texts_of_the_licences_are_complete(self):
        text = (self.folder / "first-1.2-licences.txt").read_text()
        self.assertTrue(text.startswith((packaging.SOURCE / "docs" / "licences.md").read_text()))
        for title in (r"GNU GENERAL PUBLIC LICENSE\s+Version 3", r"GNU LESSER GENERAL PUBLIC LICENSE\s+Version 3",
                      r"GNU LESSER GENERAL PUBLIC LICENSE\s+Version 2\.1", "Arseny Kapoulkine"):
            self.assertTrue(re.search(title, text), title)

    def test_a_second_run_gives_the_same_bytes(self):
        self.make("second")
        for end in (".spdx", "-licences.txt"):
            second = (self.folder / f"second-1.2{end}").read_text()
            self.assertEqual(second.replace("second-1.2", "first-1.2"), (self.folder / f"first-1.2{end}").read_text())


if __name__ == "__main__":
    packaging.need("dpkg-query", "ninja", "readelf", "reuse")
    (BUILD,) = packaging.take_arguments()
    packaging.need_debian_12()
    packaging.main()
