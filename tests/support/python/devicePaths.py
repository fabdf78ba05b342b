# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The documented paths of the program: the files that each mode may open on the phone, and those that it may replace.

Written by hand from the documentation, so that a trace is compared with it and not the other way round.
"""

ACCOUNTS = tuple(f"/config/user/voip/sipAccount{number}.cfg" for number in range(17))
CONVERTED_ACCOUNTS = ACCOUNTS[:4]
ACCOUNT_16 = ACCOUNTS[16]
USER_INI = "/config/user/user.ini"
SYSTEM_INI = "/config/system/system.ini"
VERSION_INI = "/config/version.ini"
DIRECT_IP_FILE = "/config/user/voip/directip.cfg"
HAND_OVER = "/tmp/VersionInfo.cfg"
MARKER = "/config/kestrune-pending"
RECORD = "/config/kestrune-commit"
NOTE = "/config/kestrune-certificates"
TEMPORARY_SUFFIX = ".kestrune-new"
HAND_OVER_COPY = "/config/kestrune-handover"
FACTORY_USER_INI = "/phone/factory/user/user.ini"
FACTORY_ACCOUNT = "/phone/factory/user/voip/sipAccount16.cfg"
TABLE = "/phone/resource/kestrune.xml"
ENTRY_LIST = "/phone/resource/encryptconfig.xml"
CIPHER_KEY = "/phone/factory/certs/pwcipher.key"
FACTORY_CERTIFICATES = "/phone/factory/certs/phoneca/"
USER_CERTIFICATES = "/config/certs/phoneca/"

# Old XML data and the files made from it; the door phones are rewritten in place.
XML_DATA = {
    "/config/data/contactData.xml": ("/config/data/contact_list.xml", "/config/data/contact_group_list.xml"),
    "/config/data/dialplan.xml": ("/config/data/DialPlan.xml",),
    "/config/data/dialnow.xml": ("/config/data/DialNow.xml",),
    "/config/data/dsskey.xml": ("/config/data/memkey.xml",),
    "/config/data/doorphonedata.xml": ("/config/data/doorphonedata.xml",),
    "/config/data/remotebook.xml": ("/config/data/remote_phonebook_list.xml",),
}
NEW_XML_DATA = tuple(path for paths in XML_DATA.values() for path in paths)
KEY_LAYOUTS = ("/config/data/linekey.xml", "/config/data/programkey.xml",
               *(f"/config/data/expkey{number}.xml" for number in range(6)))

# The files in the translation tables and entry lists of the two phones, except the accounts.
NAMED_BY_TABLES = (USER_INI, SYSTEM_INI, VERSION_INI)

TABLE_PASS = (TABLE, USER_INI, CIPHER_KEY, *NAMED_BY_TABLES, *ACCOUNTS)
PASSWORD_PASS = (USER_INI, FACTORY_USER_INI, ENTRY_LIST, CIPHER_KEY, *NAMED_BY_TABLES, *CONVERTED_ACCOUNTS)
DATA_PASSES = (*TABLE_PASS, VERSION_INI, *XML_DATA, *NEW_XML_DATA)

FIX_UPS = (USER_INI, *ACCOUNTS)
READS = {
    "all": (*FIX_UPS, *DATA_PASSES, *PASSWORD_PASS),
    "dev": (*FIX_UPS, *DATA_PASSES),
    "pwd": (*FIX_UPS, *PASSWORD_PASS),
    "1": (*FIX_UPS, FACTORY_USER_INI, SYSTEM_INI, HAND_OVER, HAND_OVER_COPY, DIRECT_IP_FILE),
    "2": (*FIX_UPS, HAND_OVER, HAND_OVER_COPY, SYSTEM_INI, *KEY_LAYOUTS, DIRECT_IP_FILE, FACTORY_ACCOUNT),
    "fix-ups-only": FIX_UPS,
}

# Additional effects of a file that cannot be read or saved, compared with a missing file: an unreadable
# user.ini ends the table and the password pass where a missing one is created first, the groups are not saved without the
# contacts, no XML data is translated without the setting that allows it, and no password enciphered without the key.
TAKES_WITH_IT = {
    USER_INI: (SYSTEM_INI, *ACCOUNTS),
    "/config/data/contact_list.xml": ("/config/data/contact_group_list.xml",),
    VERSION_INI: NEW_XML_DATA,
    CIPHER_KEY: (USER_INI, SYSTEM_INI, *ACCOUNTS),
}

# Listed, and its files are passed to the device's own copy command, whose destinations are flushed.
CERTIFICATE_MODES = ("all", "dev")

REPLACES = {
    "all": (USER_INI, SYSTEM_INI, *ACCOUNTS, *NEW_XML_DATA),
    "dev": (USER_INI, SYSTEM_INI, *ACCOUNTS, *NEW_XML_DATA),
    "pwd": (USER_INI, SYSTEM_INI, *ACCOUNTS),
    "1": (USER_INI, *ACCOUNTS, HAND_OVER, HAND_OVER_COPY, DIRECT_IP_FILE),
    "2": (USER_INI, SYSTEM_INI, *ACCOUNTS, *KEY_LAYOUTS),
    "fix-ups-only": FIX_UPS,
}
WITH_MARKER = {"2": (HAND_OVER,)}  # restored from its copy
COPIES_TO = {"1": DIRECT_IP_FILE, "2": ACCOUNT_16}
REMOVES = {"1": (*ACCOUNTS, HAND_OVER_COPY), "2": (DIRECT_IP_FILE, HAND_OVER_COPY)}

# The files of the commit itself. The note exists only while certificates are copied.
WRITTEN_IN_PLACE = {mode: (RECORD, NOTE) if mode in CERTIFICATE_MODES else (RECORD,) for mode in READS}


def written_by(mode):
    """The files that the mode may replace or remove, the record, and the certificates' folder."""
    return (*REPLACES[mode], *REMOVES.get(mode, ()), RECORD, USER_CERTIFICATES)


def folders_flushed(mode):
    """Those in which files are replaced, removed or copied."""
    return {path.rpartition("/")[0] for path in written_by(mode)}


def is_temporary(path):
    return path.endswith(TEMPORARY_SUFFIX)


def is_of_commit(path):
    return path in (RECORD, NOTE) or is_temporary(path)


def is_ini(path):
    return path.endswith((".ini", ".cfg"))


def temporary_name(path):
    return path + TEMPORARY_SUFFIX
