# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""After every mode, every user who can read a file could read it before, and every user who can read a new file could
read the file from which it is made. Before the run the files belong to three users, with bits and access lists of many
kinds in turn.

The hand-over file is made from no file: by its contract it is a plain new file, 0644 less the umask.
"""

import dataclasses
import errno
import itertools
import os
import stat
import struct
import sys

import devicePaths
import phones
import proof
from model import accountCopy, comparison

UMASK = 0o022
ACCESS_LIST = "system.posix_acl_access"

# Entries of an access list, as acl(5) and its attribute number them.
OWNER, USER, GROUP, NAMED_GROUP, MASK, OTHER = 0x01, 0x02, 0x04, 0x08, 0x10, 0x20
NO_ID = 0xffffffff
READS = 4

OWNERS = (0, 1000, 1201)
GROUPS = (0, 1000, 1301, 1302)
NAMED_USER, NAMED_USERS_GROUP = 1202, 1303

# All users: each owner, the user that lists name, and a stranger, in each group and in several.
USERS = (*OWNERS[1:], NAMED_USER, 4000)
MEMBERSHIPS = tuple(frozenset(groups) for groups in
                    ((4000,), (0,), (1000,), (1301,), (1302,), (NAMED_USERS_GROUP,), (1000, 1301), (1301, 1302),
                     (1302, NAMED_USERS_GROUP)))
PEOPLE = tuple(itertools.product(USERS, MEMBERSHIPS))


@dataclasses.dataclass(frozen=True)
class Access:
    """The access to a file: its bits, and its access list as pairs of (tag, id) and bits; no list is empty."""

    owner: int
    group: int
    mode: int
    entries: tuple = ()


def access_list(*entries):
    return struct.pack("<I", 2) + b"".join(struct.pack("<HHI", tag, bits, number) for tag, number, bits in entries)


# The attributes of the files before the run, in turn. An access list sets the bits itself.
ATTRIBUTES = (
    0o600, 0o640, 0o644, 0o604, 0o664, 0o400, 0o660,
    access_list((OWNER, NO_ID, 6), (USER, NAMED_USER, 4), (GROUP, NO_ID, 0), (MASK, NO_ID, 4), (OTHER, NO_ID, 0)),
    access_list((OWNER, NO_ID, 6), (GROUP, NO_ID, 0), (NAMED_GROUP, NAMED_USERS_GROUP, 4), (MASK, NO_ID, 4),
                (OTHER, NO_ID, 0)),
    access_list((OWNER, NO_ID, 6), (USER, NAMED_USER, 0), (GROUP, NO_ID, 4), (MASK, NO_ID, 4), (OTHER, NO_ID, 4)),
)
TURNS = 30  # three owners, four groups and ten attributes meet in other ways each time


def access_of(path):
    status = os.stat(path)
    try:
        value = os.getxattr(path, ACCESS_LIST)
    except OSError as error:
        if error.errno not in (errno.ENODATA, errno.ENOTSUP):
            raise
        value = b"\0" * 4
    entries = tuple((tag, number, bits) for tag, bits, number in struct.iter_unpack("<HHI", value[4:]))
    return Access(status.st_uid, status.st_gid, stat.S_IMODE(status.st_mode), entries)


def may_read(person, access):
    """As the kernel decides: the first of owner, named users, groups and others that matches."""
    user, groups = person
    if user == access.owner:
        return bool(access.mode >> 6 & READS)
    if not access.entries:
        return bool((access.mode >> 3 if access.group in groups else access.mode) & READS)
    mask = next((bits for tag, _, bits in access.entries if tag == MASK), 7)
    for tag, number, bits in access.entries:
        if tag == USER and number == user:
            return bool(bits & mask & READS)
    fitting = [bits for tag, number, bits in access.entries
               if (tag == GROUP and access.group in groups) or (tag == NAMED_GROUP and number in groups)]
    if fitting:
        return any(bits & mask & READS for bits in fitting)
    return bool(next(bits for tag, _, bits in access.entries if tag == OTHER) & READS)


def readers(access):
    return frozenset(person for person in PEOPLE if may_read(person, access))


def shown(people):
    user, groups = min(people, key=lambda person: (person[0], sorted(person[1])))
    return f"{len(people)} more, such as user {user} of the groups {sorted(groups)}"


def accesses_of(root):
    files = comparison.files_of(root)
    return {path: access_of(f"{root}{path}") for path, entry in files.items() if entry.kind == "file"}


def put_attributes(root, turn):
    for number, path in enumerate(sorted(phones.files_of(root))):
        file = f"{root}{path}"
        os.chown(file, OWNERS[(number + turn) % len(OWNERS)], GROUPS[(number + turn // 3) % len(GROUPS)])
        attributes = ATTRIBUTES[(number * 3 + turn) % len(ATTRIBUTES)]
        if isinstance(attributes, int):
            os.chmod(file, attributes)
        else:
            os.setxattr(file, ACCESS_LIST, attributes)
    hand_over = f"{root}{devicePaths.HAND_OVER}"
    if os.path.exists(hand_over):
        os.chown(hand_over, 0, 0)  # in a world-writable folder another user's file counts as missing
    os.chmod(f"{root}/tmp", 0o1777)


def prepare(job, root):
    phones.make_phone(job.phone, root)
    for path in job.missing:
        (root / path[1:]).unlink(missing_ok=True)
    put_attributes(root, job.turn)
    return root


def sources_of(path, mode, phone):
    """The file from which a new file may be made; None if no other file determines its readers."""
    if path == devicePaths.HAND_OVER or path.startswith(devicePaths.USER_CERTIFICATES):
        return None
    for old, new in devicePaths.XML_DATA.items():
        if path in new:
            return old
    if path == devicePaths.COPIES_TO.get(mode):
        return accountCopy.source_of(mode, phone)
    return "nothing"


@dataclasses.dataclass(frozen=True)
class Job:
    program: str
    scratch: str
    phone: str
    mode: str
    turn: int
    missing: tuple


def bits_withheld(mode, phone, before, after):
    """A copy onto an existing file has no bits that its source does not have."""
    path = devicePaths.COPIES_TO.get(mode)
    if path not in before or path not in after:
        return []
    source = sources_of(path, mode, phone)
    if source not in before or (mode == "2" and source == devicePaths.FACTORY_ACCOUNT):
        return []
    allowed = before[source].mode & ~(0o077 if before[source].entries else 0)
    more = after[path].mode & ~allowed
    return [f"{path}: {after[path].mode:04o} has bits that {source} withholds ({before[source]})"] if more else []


def check(job):
    os.umask(UMASK)
    root = prepare(job, comparison.worker_folder(job.scratch) / "phone")
    phone = comparison.files_of(root)
    before = accesses_of(root)
    status = phones.run(job.program, root, job.mode).returncode
    after = accesses_of(root)
    faults = [] if status == 0 else [f"exit status {status}"]
    compared = 0
    for path, access in after.items():
        origin = path if path in before else sources_of(path, job.mode, phone)
        if origin is None:
            continue
        if origin not in before:
            faults.append(f"{path} is made of {origin}, which was not there")
            continue
        compared += 1
        more = readers(access) - readers(before[origin])
        if more:
            faults.append(f"{path}: {shown(more)}; it has {access}, and {origin} had {before[origin]}")
        if path not in before and access.owner != before[origin].owner:
            faults.append(f"{path} belongs to {access.owner}, {origin} to {before[origin].owner}")
    faults += bits_withheld(job.mode, phone, before, after)
    return compared, [f"mode {job.mode}, turn {job.turn}, without {' '.join(job.missing) or 'nothing'}: {fault}"
                      for fault in faults]


def jobs_of(chosen, scratch, mode):
    """With the copies' destinations and without them, and with the new XML files made by the run."""
    copied = devicePaths.COPIES_TO.get(mode)
    ways = [()] + ([(copied,)] if copied else [])
    if mode == "2":
        ways.append((devicePaths.DIRECT_IP_FILE, devicePaths.ACCOUNT_16))
    return [Job(str(chosen.program), str(scratch), chosen.phone, mode, turn, missing)
            for turn in range(TURNS) for missing in ways]


def has_access_lists(folder):
    path = f"{folder}/tried"
    with open(path, "wb"):
        pass
    try:
        os.setxattr(path, ACCESS_LIST, ATTRIBUTES[-1])
    except OSError:
        return False
    return True


def main():
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox(with_strace=False)
    if os.geteuid() != 0:
        proof.skip("only root can give files to other users")
    with proof.scratch_folder() as scratch:
        if not has_access_lists(scratch):
            proof.skip("no access lists here")
        jobs = [job for mode in chosen.mode for job in jobs_of(chosen, scratch, mode)]
        results = list(proof.in_parallel(check, jobs))
    faults = [fault for _, found in results for fault in found]
    compared = sum(count for count, _ in results)
    return proof.end("readers", faults, f"{compared} files in {len(jobs)} runs of {len(chosen.mode)} modes, for "
                     f"{len(PEOPLE)} people each")


if __name__ == "__main__":
    sys.exit(main())
