# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Fleets of invented phones that differ by a seed, and what the program itself does to them."""

import pathlib
import random
import re

import phones
import previewTool
from previewTool import USER

SYSTEM, OTHER = "/config/system/system.ini", "/config/system/other.ini"
TABLE, LIST = "/phone/resource/kestrune.xml", "/phone/resource/encryptconfig.xml"
FACTORY = "/phone/factory/user/user.ini"
ACCOUNT = "/config/user/voip/sipAccount{}.cfg"
SMALL = phones.PHONES["small"] / "config/data"


def record(source, destination, file=USER, into=None, flag=None):
    """The attributes of a record. `source`, `destination`: section and key; a source may be None."""
    names = {"srcFile": file, "srcSec": source and source[0], "srcKey": source and source[1], "dstFile": into or file,
             "dstSec": destination[0], "dstKey": destination[1], "dstEncrypt": flag}
    return {name: value for name, value in names.items() if value}


# No record reads what an earlier one or a pass wrote, but the fifth.
RECORDS = [
    record(("Audio", "nVolume"), ("Audio", "nHandsetVolume")),
    record(("Audio", "nVolume"), ("Audio", "nHeadsetVolume")),
    record(("Web", "strHost"), ("Net", "strHostName"), into=SYSTEM),
    record(("Web", "strTheme"), ("Screen", "strTheme")),
    record(("Screen", "strTheme"), ("Screen", "strLook")),
    record(("Gone", "strNone"), ("Screen", "strNone")),
    record(None, ("Screen", "strAbsent")),
    record(("Web", "strAdminPassword"), ("Security", "strPassword"), flag="true"),
    record(("account", "Label"), ("account", "DisplayName"), file=ACCOUNT.format(0)),
    record(("Net", "nPort"), ("Net", "nWebPort"), file=SYSTEM),
    record(("Audio", "nVolume"), ("Volumes", "nOther"), into=OTHER),
    record(("Web", "strHost"), ("Late", "strHost")),
]


def table(records):
    lines = ["  <r" + "".join(f' {name}="{value}"' for name, value in record.items()) + "/>\n" for record in records]
    return "<t>\n" + "".join(lines) + "</t>\n"


def make(root, files):
    for path, content in files.items():
        (root / path[1:]).parent.mkdir(parents=True, exist_ok=True)
        (root / path[1:]).write_bytes(content if isinstance(content, bytes) else content.encode())
    return root


def make_firmware(root):
    return make(root, {
        TABLE: table(RECORDS), FACTORY: "[PhoneSetting]\nEnLock=1\n[Sync]\nSyncCfgByVersion=1\n[Known]\nnKnown=1\n",
        LIST: f'<l><e file="{USER}" section="Web" key="strAdminPassword"/>'
              '<e perAccount="true" section="account" key="Password"/></l>',
        "/phone/factory/user/voip/sipAccount16.cfg": "[account]\nEnable=0\nDisplayName=?\n",
        "/phone/factory/certs/phoneca/one.pem": "one\n", "/phone/factory/certs/phoneca/two.pem": "two\n",
        "/phone/factory/certs/pwcipher.key": "".join(f"{(91 * n + 7) % 256:02x}" for n in range(64)) + "\n"})


def ini(sections):
    return "".join(f"[{section}]\n" + "".join(f"{key}={value}\n" for key, value in keys.items())
                   for section, keys in sections.items())


def phone_files(dice):
    """The files of one phone of the old firmware: some lack values or files, some have odd values or damaged files."""
    maybe = lambda chance, keys: keys if dice.random() < chance else {}
    user = {"PhoneSetting": {"EnLock": dice.choice("0011")},
            "Audio": maybe(0.9, {"nVolume": dice.choice(["", "3", "5", "-1", "9999999999"])})
                     | maybe(0.3, {"nHandsetVolume": "5"}),
            "Web": maybe(0.9, {"strHost": dice.choice(["", "a.example.com", "x=y;z", "\u00e4\u00f6 \\n", '"q" & <b>'])})
                   | maybe(0.8, {"strTheme": dice.choice(["dark", "light", ""])})
                   | maybe(0.9, {"strAdminPassword": f"harbour-{dice.randrange(10**6)}"}),
            "Feature": maybe(0.4, {"RingbackTimeout": "120"}), "Known": maybe(0.5, {"nKnown": "4"}),
            "Left": maybe(0.6, {"nStandard": dice.choice("17")}) | maybe(0.2, {f"strOwn{dice.randrange(3)}": "kept"})}
    files = {USER: ini(user), FACTORY: "[Left]\nnStandard=1\n[PhoneSetting]\nEnLock=0\n"}
    for number in sorted(dice.sample(range(17), dice.randrange(5))):
        files[ACCOUNT.format(number)] = ini({"account": {
            "Enable": "1", "Label": dice.choice(["desk", "", "hall 4"]), "Password": f"mole-{dice.randrange(10**6)}",
            "Enable2": "x"} | maybe(0.5, {"CancelTimer": dice.choice(["90", "abc", ""])})})
    files |= maybe(0.9, {SYSTEM: ini({"Net": maybe(0.8, {"nPort": dice.choice(["80", "8080"])}), "Odd": {"a b": "c"}})})
    files |= maybe(0.8, {OTHER: ini({"Volumes": maybe(0.3, {"nOther": "3"})})})
    for name in ("contactData", "dialplan", "dsskey", "doorphonedata"):
        content = (SMALL / f"{name}.xml").read_bytes()
        files |= maybe(0.6, {f"/config/data/{name}.xml": dice.choice([content, content, content[:len(content) // 2], b""])})
    return files | maybe(0.3, {"/config/certs/phoneca/one.pem": dice.choice(["one\n", ""])}) \
        | maybe(0.2, {"/config/version.ini": "[SyncConfig]\nbEnableFromOld=0\n"})


def make_fleet(folder, count, seed=1):
    """The phones, in folders of folders."""
    return [make(folder / f"site{number % 3}" / f"phone{number:03d}", phone_files(random.Random(1000 * seed + number)))
            for number in range(count)]


def install(image, firmware, root, new_table=None):
    """A copy of the phone on which the firmware was installed."""
    files = {path: entry.content for path, entry in phones.files_of(image).items() if not path.startswith("/phone/")}
    files |= {path: entry.content for path, entry in phones.files_of(firmware).items()}
    make(root, files | ({} if new_table is None else {TABLE: new_table}))
    for tree in phones.TREES:
        (root / tree).mkdir(exist_ok=True)
    return root


def run_program(root, mode="all"):
    """The files below /config after the program ran there, by path."""
    result = phones.run(previewTool.PROGRAM, root, mode)
    assert result.returncode == 0, result.stderr
    return config_of(root)


def config_of(root):
    return {path: entry.content for path, entry in phones.files_of(root).items() if path.startswith("/config/")}


def keys_of(content):
    """The values of a configuration file, by section and key, read in the simplest way that suits these phones."""
    keys, section = {}, None
    for line in content.decode().split("\n"):
        if found := re.match(r"\s*\[([^\]]*)\]", line):
            section = found[1]
        elif section is not None and "=" in line and line.lstrip()[0] not in ";#":
            key, value = line.split("=", 1)
            keys.setdefault((section, key.strip(" \t")), value.lstrip(" \t"))
    return keys


def is_ini(path):
    return pathlib.Path(path).suffix in (".ini", ".cfg")


def kind_of(before, after):
    if before is None or after is None:
        return "added" if before is None else "removed"
    return "emptied" if before and not after else "changed"


def changes(before, after):
    """Of two phones: what became of each key, (file, section, key): (kind, before, after), and of each whole file. A file whose
    keys are the same in another order is one that changed."""
    found = {}
    for path in before.keys() | after.keys():
        old, new = before.get(path), after.get(path)
        if old is None or new is None:
            found[path, "", ""] = (kind_of(old, new), None, None)
        elif old != new and is_ini(path):
            old, new = keys_of(old), keys_of(new)
            keys = {(path, *key): (kind_of(old.get(key), new.get(key)), old.get(key), new.get(key))
                    for key in old.keys() | new.keys() if old.get(key) != new.get(key)}
            found |= keys or {(path, "", ""): ("changed", None, None)}
    return found
