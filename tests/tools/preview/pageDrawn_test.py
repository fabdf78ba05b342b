#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A browser draws the page on wide and narrow screens and on paper."""

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


class PageDrawn(previewTool.PreviewTest):
    def draw(self, *options):
        result = subprocess.run([BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                                 f"--user-data-dir={self.folder}/profile", *options,
                                 f"file://{self.folder}/preview.html"], capture_output=True, timeout=120, check=False)
        self.assertEqual(result.returncode, 0, result.stderr.decode(errors="replace"))

    def test_on_screens_of_any_width(self):
        self.show(self.phone({}, base="example"), "all")
        for width in (1000, 500):
            picture = self.folder / f"{width}.png"
            self.draw(f"--window-size={width},1200", f"--screenshot={picture}")
            drawn_width, drawn_height, data = pixels(picture.read_bytes())
            self.assertEqual((drawn_width, drawn_height), (width, 1200))
            self.assertGreater(len(set(data)), 50)  # more than an empty page

    def test_on_paper(self):
        self.show(self.phone({}, base="example"), "all")
        self.draw(f"--print-to-pdf={self.folder}/paper.pdf")
        self.assertTrue((self.folder / "paper.pdf").read_bytes().startswith(b"%PDF-"))


if __name__ == "__main__":
    if BROWSER is None:
        proof.skip("chromium is not installed: script/bootstrap preview")
    previewTool.main()
