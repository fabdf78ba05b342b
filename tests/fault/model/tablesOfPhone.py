# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The content of a phone's translation table and of its list of enciphered entries."""

import xml.etree.ElementTree

import devicePaths


def rows(phone, path):
    return list(xml.etree.ElementTree.fromstring(phone[path].content))


def table_records(phone):
    return rows(phone, devicePaths.TABLE)


def destination_of(record):
    return tuple(record.get(f"dst{part}", record.get(f"src{part}")) for part in ("File", "Sec", "Key"))


def listed_values(phone):
    """The (file, section, key) of every active row of the enciphered-entry list."""
    for entry in rows(phone, devicePaths.ENTRY_LIST):
        if entry.get("active", "true") in ("false", "0"):
            continue
        is_per_account = entry.get("perAccount", "false") in ("true", "1")
        for file in devicePaths.CONVERTED_ACCOUNTS if is_per_account else [entry.get("file")]:
            yield file, entry.get("section"), entry.get("key")
