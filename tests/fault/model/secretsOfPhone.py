# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A phone whose passwords and keys are all unique, so that each can be found in any place."""

import dataclasses
import re

import devicePaths
import phones
from model import iniText, tablesOfPhone

SECRET_KEY = re.compile(rb"(?!b[A-Z]).*(password|pwd|pin|psk|community)", re.IGNORECASE)
XML_SECRET = re.compile(rb"(<UnlockPIN>)[^<]+(</UnlockPIN>)")

# The permission bits of files that contain secrets.
PRIVATE = 0o600


@dataclasses.dataclass(frozen=True)
class Secret:
    """`place` is (file, section, key), or (file,) if the file has no keys."""

    text: bytes
    place: tuple


def next_text(secrets):
    return b"Unique-%04d-nightjar" % len(secrets)


def named_by_the_phone(phone):
    """The places that the entry list or an encrypt flag of the table names, as (file, section, key) of texts."""
    places = set(tablesOfPhone.listed_values(phone))
    for record in tablesOfPhone.table_records(phone):
        if "true" in (record.get("srcEncrypt"), record.get("dstEncrypt")):
            places.add(tuple(record.get(name) for name in ("srcFile", "srcSec", "srcKey")))
    return places


def plant_in_ini(path, content, named, secrets):
    for line in iniText.lines_of(content):
        if line.kind != "key" or not line.value:
            continue
        section, key = (part.decode() for part in line.name)
        if (path, section, key) not in named and not SECRET_KEY.fullmatch(line.name[1]):
            continue
        mark = b"?" if line.value.startswith(b"?") else b""
        secret = Secret(next_text(secrets), (path, section, key))
        content = iniText.put(content, *line.name, mark + secret.text)
        secrets.append(secret)
    return content


def plant_in_xml(path, content, secrets):
    def plant(found):
        secrets.append(Secret(next_text(secrets), (path,)))
        return found.group(1) + secrets[-1].text + found.group(2)
    return XML_SECRET.sub(plant, content)


def plant_key(root, secrets):
    """The phone's own cipher key; its files are created if the phone has none."""
    text = b"".join(b"%02x" % ((11 * n + 5) % 256) for n in range(64))
    path = root / devicePaths.CIPHER_KEY[1:]
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(text + b"\n")
    secrets += [Secret(text, (devicePaths.CIPHER_KEY,)), Secret(bytes.fromhex(text.decode()), ())]


def plant(root):
    """Replaces every secret of the phone with a unique one, and makes its files private; returns the secrets."""
    secrets = []
    plant_key(root, secrets)
    phone = phones.files_of(root)
    named = named_by_the_phone(phone)
    for path, entry in sorted(phone.items()):
        content = plant_in_ini(path, entry.content, named, secrets) if devicePaths.is_ini(path) else entry.content
        if path.startswith("/config/data/"):
            content = plant_in_xml(path, content, secrets)
        (root / path[1:]).write_bytes(content)
        (root / path[1:]).chmod(PRIVATE)
    return secrets
