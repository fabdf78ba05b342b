#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The page refers to nothing outside of it, and contains what the text does."""

import html.parser
import re

import previewTool

USER = "/config/user/user.ini"


class Reader(html.parser.HTMLParser):
    """Collects what a page refers to, and finds tags that are not closed."""

    VOID = {"meta", "br", "wbr"}

    def __init__(self):
        super().__init__()
        self.open, self.references, self.text = [], [], ""

    def handle_starttag(self, tag, attributes):
        if tag not in self.VOID:
            self.open.append(tag)
        self.references += [value for name, value in attributes if name in ("src", "href", "xlink:href", "action", "style")]
        self.references += [name for name, _ in attributes if name.startswith("on")] + ([tag] if tag == "script" else [])

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag

    def handle_data(self, data):
        self.text += data


class Page(previewTool.PreviewTest):
    def read(self, page):
        reader = Reader()
        reader.feed(page)
        self.assertEqual(reader.open, [])
        return reader

    def test_it_refers_to_nothing_outside(self):
        page = self.show("--reports", self.phone({}, base="example"), "all").html
        self.assertEqual(self.read(page).references, [])
        style = page[page.index("<style>"):page.index("</style>")]
        self.assertIsNone(re.search(r"url\(|@import", style))
        self.assertIn("default-src 'none'", page)

    def test_it_holds_the_summary_the_chart_and_the_changes(self):
        shown = self.show(self.phone({}, base="example"), "all")
        text = self.read(shown.html).text
        for words in ("phone", "18", "files: 9 added, 9 changed", "KP005", "Changes by pass", "translation table",
                      "Changes by file", "/config/data/contact_list.xml", "same, now enciphered", "Zo\u00eb Marchbanks"):
            self.assertIn(words, text)
        self.assertGreater(shown.html.count("<svg"), 10)
        self.assertNotIn("<text", shown.html)  # text in a drawing shrinks with it
        self.assertIn("@media print", shown.html)
        self.assertIn("width=device-width", shown.html)

    def test_several_images_are_on_one_page(self):
        image = self.phone({USER: "[A]\n"})
        previewTool.run("--html", self.folder / "all.html", image, image, self.folder / "none.tar", "all")
        page = (self.folder / "all.html").read_text()
        reader = self.read(page)
        self.assertEqual(reader.references, [])
        self.assertEqual(reader.text.count("no such image"), 1)
        self.assertIn("2 phones, mode all: 0 end well, 0 need care, 2 fail", reader.text)
        self.assertIn(str(image), reader.text)


if __name__ == "__main__":
    previewTool.main()
