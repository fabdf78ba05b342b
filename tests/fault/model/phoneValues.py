# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Settings of a phone that differ from every default, so that a default in place of a value shows.

Other files lack the keys that the start-up fix-ups add: sipAccount0.cfg, and on the example phone user.ini too.
"""

import pathlib

import devicePaths
from model import iniText

# File, section, key, value. The defaults are -1, 180 or another file's value, 1 and 1.
VALUES = {
    "small": (
        (devicePaths.USER_INI, b"Feature", b"RingbackTimeout", b"47"),
        (devicePaths.USER_INI, b"Backlight", b"nBacklightTime", b"7"),
        (devicePaths.ACCOUNTS[4], b"account", b"SCALineKeyNumber", b"5"),
        (devicePaths.ACCOUNTS[16], b"account", b"SCALineKeyNumber", b"2"),
    ),
    "example": (
        (devicePaths.USER_INI, b"Backlight", b"nBacklightTime", b"7"),
        (devicePaths.ACCOUNTS[0], b"account", b"CancelTimer", b"151"),
        (devicePaths.ACCOUNTS[3], b"account", b"SCALineKeyNumber", b"4"),
        (devicePaths.ACCOUNTS[16], b"account", b"SCALineKeyNumber", b"2"),
    ),
}


def put(phone, root):
    for path, section, key, value in VALUES[phone]:
        file = pathlib.Path(f"{root}{path}")
        file.write_bytes(iniText.put(file.read_bytes(), section, key, value))
