# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""One file under two names: a run sees its own change under each of them before it is on the device.

The translation table gets rows that write under one name and read under the other. The phone must end as with the
file's own name in all rows; another hard link is another file.
"""

import os
import shutil

import devicePaths
import phones
from model import comparison, iniText

MODES = ("all", "dev")
FILE = devicePaths.USER_INI
OTHER = devicePaths.SYSTEM_INI
ROW = ('<item srcFile="{0}" srcSec="Alias" srcKey="Begin" dstFile="{0}" dstSec="Alias" dstKey="First"/>'
       '<item srcFile="{1}" srcSec="Alias" srcKey="First" dstFile="{2}" dstSec="Alias" dstKey="Second"/>'
       '<item srcFile="{2}" srcSec="Alias" srcKey="Second" dstFile="{1}" dstSec="Alias" dstKey="Third"/>'
       '<item srcFile="{0}" srcSec="Alias" srcKey="Third" dstFile="{2}" dstSec="Alias" dstKey="Fourth"/>')


VALUE = b"heron-7"  # the value that the last row must read

# With all keys that the fix-ups would add.
ACCOUNT = b"[account]\ndirectip=1\nSCALineKeyNumber=7\n"


def link(root):
    os.symlink(FILE, root / "config/alias.ini")
    return "/config/alias.ini", ()


def relative_link(root):
    os.symlink("user/user.ini", root / "config/alias.ini")
    return "/config/alias.ini", ()


def link_of_link(root):
    os.symlink(FILE, root / "config/first.ini")
    os.symlink("first.ini", root / "config/alias.ini")
    return "/config/alias.ini", ()


def linked_folder(root):
    os.symlink("user", root / "config/alias")
    return "/config/alias/user.ini", ()


def dotted_path(root):
    return "/config/system/../user//user.ini", ()


def folder_mounted_twice(root):
    (root / "config/alias").mkdir()
    return "/config/alias/user.ini", ("--bind", f"{root}/config/user", "/config/alias")


def hard_link(root):
    os.link(root / FILE[1:], root / "config/alias.ini")
    return "/config/alias.ini", ()


def copy(root):
    shutil.copy2(root / FILE[1:], root / "config/alias.ini")
    return "/config/alias.ini", ()


def no_alias(root):
    return FILE, ()


# Each with the expected phone.
ALIASES = {link: no_alias, relative_link: no_alias, link_of_link: no_alias, linked_folder: no_alias,
           dotted_path: no_alias, folder_mounted_twice: no_alias, hard_link: copy}


def final(program, phone, mode, alias, first_name, root):
    """The phone after the run. The rows write first under the file's own name, or under the alias."""
    phones.make_phone(phone, root)
    with open(root / FILE[1:], "ab") as file:
        file.write(b"\n[Alias]\nBegin=" + VALUE + b"\n")
    name, options = alias(root)
    names = (FILE, name) if first_name == "own" else (name, FILE)
    table = root / devicePaths.TABLE[1:]
    text = table.read_text()
    end = text.rindex("</")
    table.write_text(text[:end] + ROW.format(*names, OTHER) + text[end:])
    result = phones.run(program, root, mode, options=options)
    return result.returncode, {path: entry for path, entry in phones.files_of(root).items()
                               if path != devicePaths.TABLE}


def without_links(phone):
    return {path: entry for path, entry in phone.items() if entry.kind != "link"}


def check(program, phone, mode, folder):
    results = []
    for alias, like in ALIASES.items():
        for first_name in ("own", "alias"):
            _, expected = final(program, phone, mode, like, first_name, folder / "phone")
            status, found = final(program, phone, mode, alias, first_name, folder / "phone")
            faults = comparison.differences(without_links(expected), without_links(found))
            faults += [f"exit status {status}"] if status != 0 else []
            if like is no_alias and iniText.read(found[OTHER].content, b"Alias", b"Fourth") != VALUE:
                faults.append("a row did not see what another one had saved")
            results.append((f"{alias.__name__}, {first_name} name first", faults))
    return results


def check_link_to_source(program, phone, mode, folder):
    """A copy's destination is a link to the file that is copied and then removed: it becomes a separate file."""
    source, destination = {"1": (devicePaths.ACCOUNTS[4], devicePaths.DIRECT_IP_FILE),
                           "2": (devicePaths.DIRECT_IP_FILE, devicePaths.ACCOUNT_16)}[mode]
    ends = []
    for is_link in (False, True):
        root = phones.make_phone(phone, folder / "phone")
        (root / destination[1:]).unlink(missing_ok=True)
        (root / source[1:]).write_bytes(ACCOUNT)
        if is_link:
            os.symlink(source, root / destination[1:])
        phones.run(program, root, mode)
        ends.append(phones.files_of(root))
    return [("copy to a link to its own source", comparison.differences(*ends))]
