# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Settings of a phone that differ from every default, so that a default that takes the place of a value shows.

Other files go without the keys that the start-up fix-ups add: sipAccount0.cfg, and on the example phone user.ini too.
"""

import pathlib

USER_INI = "config/user/user.ini"
ACCOUNT = "config/user/voip/sipAccount{}.cfg"

# File, section, key, value. The defaults are -1, 180 or another file's value, 1 and 1.
VALUES = {
    "small": (
        (USER_INI, "Feature", "RingbackTimeout", "47"),
        (USER_INI, "Backlight", "nBacklightTime", "7"),
        (ACCOUNT.format(4), "account", "SCALineKeyNumber", "5"),
        (ACCOUNT.format(16), "account", "SCALineKeyNumber", "2"),
    ),
    "example": (
        (USER_INI, "Backlight", "nBacklightTime", "7"),
        (ACCOUNT.format(0), "account", "CancelTimer", "151"),
        (ACCOUNT.format(3), "account", "SCALineKeyNumber", "4"),
        (ACCOUNT.format(16), "account", "SCALineKeyNumber", "2"),
    ),
}


def put(phone, root):
    for path, section, key, value in VALUES[phone]:
        file = pathlib.Path(root, path)
        file.write_bytes(with_value(file.read_bytes(), section.encode(), key.encode(), value.encode()))


def with_value(text, section, key, value):
    """The text of an INI file with the key set where it is, or else added at the head of its section."""
    lines = text.splitlines(keepends=True)
    end = b"\r\n" if lines[0].endswith(b"\r\n") else b"\n"
    new_line = key + b"=" + value + end
    is_in_section = False
    head = None
    for number, line in enumerate(lines):
        if line.startswith(b"["):
            is_in_section = line.startswith(b"[" + section + b"]")
            head = number if is_in_section else head
        elif is_in_section and line.split(b"=")[0].strip() == key:
            lines[number] = new_line
            return b"".join(lines)
    if head is None:
        return text + end + b"[" + section + b"]" + end + new_line
    lines.insert(head + 1, new_line)
    return b"".join(lines)
