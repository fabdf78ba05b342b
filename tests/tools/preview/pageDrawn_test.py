#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A browser draws the page on wide and narrow screens and on paper."""

import html
import json
import re
import shutil
import struct
import subprocess
import zlib

import previewTool
import proof

BROWSER = shutil.which("chromium")


def pixels(image):
    """Width, height and the set of colours of a PNG without interlacing."""
    at, packed = 8, b""
    while at < len(image):
        size, kind = struct.unpack(">I4s", image[at:at + 8])
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", image[at + 8:at + 18])
        if kind == b"IDAT":
            packed += image[at + 8:at + 8 + size]
        at += size + 12
    assert depth == 8 and colour in (2, 6)
    return width, height, zlib.decompress(packed)


A4_WIDTH = round((210 - 2 * 14) / 25.4 * 96)  # without the margins

MEASURE = """
const measureWords = (page, lines) => {
    const broken = [], brokenPlaces = [], cut = [], width = page.documentElement.clientWidth;
    let words = 0, smallest = 1000;
    const texts = page.createTreeWalker(page.body, NodeFilter.SHOW_TEXT);
    for (let text = texts.nextNode(); text; text = texts.nextNode()) {
        if (!text.data.trim() || !text.parentElement.getClientRects().length) continue;
        smallest = Math.min(smallest, parseFloat(getComputedStyle(text.parentElement).fontSize));
        for (const word of text.data.matchAll(/[^\\s/]+/g)) {
            const range = page.createRange();
            range.setStart(text, word.index);
            range.setEnd(text, word.index + word[0].length);
            const boxes = [...range.getClientRects()];
            words += 1;
            if (new Set(boxes.map(box => Math.round(box.bottom))).size > 1 && word[0].length < 60) {
                broken.push(word[0]);
                if (text.parentElement.closest("th, td:first-child, td.name")) brokenPlaces.push(word[0]);
            }
            const column = text.parentElement.closest("td, li, p, h1, h2")?.getBoundingClientRect().right ?? width;
            if (boxes.some(box => box.right > Math.min(column, width) + 1)) cut.push(word[0]);
        }
    }
    return {words, brokenWords: broken, brokenPlaces, cutOff: cut, smallestLetters: smallest};
};
onload = () => {
    const page = document.querySelector("iframe").contentDocument;
    const lines = cell => {
        const range = page.createRange();
        range.selectNodeContents(cell);
        return new Set([...range.getClientRects()].map(box => Math.round(box.bottom))).size;
    };
    const texts = ".chart th, .chart td:last-child, svg text";
    const result = {
        firstColumn: [...page.querySelectorAll(".wide td:first-child")].map(lines),
        added: [...page.querySelectorAll(".wide tr")].filter(row => row.cells[0].innerText == "added").length,
        misplaced: [...page.querySelectorAll(".wide table:has(th) tr")].filter(row => row.cells.length != 5
            || row.cells[0].innerText == "added" && row.cells[2].innerText
            || row.cells[0].innerText == "removed" && row.cells[3].innerText).map(row => row.innerText),
        chartText: [...page.querySelectorAll(texts)].filter(text => text.textContent).map(
            text => text.getBoundingClientRect().height / lines(text)),
        wideWarnings: [...page.querySelectorAll("div.warning")].filter(box => box.scrollWidth > box.clientWidth).length,
        pageWidth: page.documentElement.scrollWidth,
        ...measureWords(page, lines),
        bars: [...page.querySelectorAll("rect")].map(bar => bar.getBoundingClientRect().width),
    };
    document.body.textContent = "MEASURED" + JSON.stringify(result) + "END";
};
"""


class PageDrawn(previewTool.PreviewTest):
    def draw(self, *options):
        result = subprocess.run([BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                                 f"--user-data-dir={self.folder}/profile", *options,
                                 f"file://{self.folder}/preview.html"], capture_output=True, timeout=120, check=False)
        self.assertEqual(result.returncode, 0, result.stderr.decode(errors="replace"))
        return result.stdout.decode()

    def measure(self, page, width):
        """Draws the page in a frame of that width and measures its texts there."""
        (self.folder / "preview.html").write_text(
            f'<!DOCTYPE html><body><script>{MEASURE}</script><iframe width="{width}" height="800" style="border: 0" '
            f'srcdoc="{html.escape(page)}"></iframe></body>')
        drawn = self.draw("--window-size=1200,900", "--dump-dom")
        return json.loads(html.unescape(re.search("<body>MEASURED(.*)END", drawn)[1]))

    def test_on_screens_of_any_width(self):
        self.show(self.phone({}, base="example"), "all")
        for width in (1000, 500):
            picture = self.folder / f"{width}.png"
            self.draw(f"--window-size={width},1200", f"--screenshot={picture}")
            drawn_width, drawn_height, data = pixels(picture.read_bytes())
            self.assertEqual((drawn_width, drawn_height), (width, 1200))
            self.assertGreater(len(set(data)), 50)  # more than an empty page

    def test_texts_can_be_read_on_a_narrow_screen(self):
        page = self.show(self.phone({}, base="example"), "all").html
        for width, drawn in ((390, page), (1280, page), (A4_WIDTH, page.replace("@media print", "@media all"))):
            with self.subTest(width):
                measured = self.measure(drawn, width)
                self.assertEqual(set(measured["firstColumn"]), {1})  # "added" stays whole
                self.assertEqual(measured["brokenPlaces"], [])
                self.assertGreater(measured["added"], 100)
                self.assertEqual(measured["misplaced"], [])  # what is added is under "after"
                self.assertGreater(min(measured["chartText"]), 11)  # a line of 9 px letters
                self.assertLessEqual(measured["pageWidth"], width)
                self.assertEqual(measured["wideWarnings"], 0)
                self.assertGreater(max(measured["bars"]), width / 6)
                self.assertGreater(min(measured["bars"]), 0)

    def test_long_places_and_values_fit(self):
        certs, user = "certs/phoneca/authority_of_invented_examples.pem", "/config/user/user.ini"
        moves = f'<t><r srcFile="{user}" srcSec="A" srcKey="k" dstKey="strNameOfAKeyThatIsLongAsSomeAre"/></t>'
        image = self.phone({user: "[A]\nk=" + "v" * 600, "/phone/factory/" + certs: "x", "/config/certs/phoneca/b.pem": "y",
                            "/phone/resource/kestrune.xml": moves})
        page = self.show(image, "dev").html
        self.assertEqual(page.count("authority"), 3)  # in the chart, as a file, and what it is a copy of
        for width, drawn in ((390, page), (A4_WIDTH, page.replace("@media print", "@media all"))):
            with self.subTest(width):
                measured = self.measure(drawn, width)
                self.assertEqual(measured["brokenPlaces"], [])
                self.assertLessEqual(measured["pageWidth"], width)

    def fleet_page(self):
        """The report on some invented phones, one of them with a name that fits no column."""
        subprocess.run([previewTool.PROJECT / "script" / "make-fleet", self.folder / "fleet", "20"], check=True)
        self.images(**{"n" * 120: ""})
        subprocess.run([previewTool.PREVIEW, "--firmware", previewTool.PROJECT / "examples" / "phone", "--html", "all.html",
                        "fleet", "n" * 120, "all"], cwd=self.folder, capture_output=True, check=False)
        return (self.folder / "all.html").read_text()

    def test_the_report_of_a_fleet_can_be_read_everywhere(self):
        page = self.fleet_page()
        for width, drawn in ((390, page), (1280, page), (A4_WIDTH, page.replace("@media print", "@media all"))):
            with self.subTest(width):
                measured = self.measure(drawn, width)
                self.assertGreater(measured["words"], 1000)
                self.assertEqual(measured["brokenWords"], [])
                self.assertGreaterEqual(measured["smallestLetters"], 9)
                self.assertEqual(measured["cutOff"], [])
                self.assertLessEqual(measured["pageWidth"], width)

    def test_on_paper(self):
        self.show(self.phone({}, base="example"), "all")
        self.draw(f"--print-to-pdf={self.folder}/paper.pdf")
        self.assertTrue((self.folder / "paper.pdf").read_bytes().startswith(b"%PDF-"))


if __name__ == "__main__":
    if BROWSER is None:
        proof.skip("chromium is not installed: script/bootstrap preview")
    previewTool.main()
