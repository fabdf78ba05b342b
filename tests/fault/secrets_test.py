# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""No password and no key gets into the system log, an unexpected file or a command line, or becomes readable for more
users."""

import dataclasses
import os
import re
import sys

import devicePaths
import phones
import proof
import traces
from model import accountCopy, comparison, iniText, secretsOfPhone, systemLog, tablesOfPhone

RECORDED = "trace=openat,open,write,fchmod,fchown,chmod,fchmodat,rename,renameat,execve"


@dataclasses.dataclass(frozen=True)
class Locks:
    """The two EnLock settings before the run."""

    user: int
    factory: int


LOCKS = (Locks(0, 1), Locks(1, 0), Locks(1, 1), Locks(0, 0))


def set_locks(root, locks):
    for path, value in ((devicePaths.USER_INI, locks.user), (devicePaths.FACTORY_USER_INI, locks.factory)):
        file = root / path[1:]
        file.write_bytes(iniText.put(file.read_bytes(), b"PhoneSetting", b"EnLock", b"%d" % value))


def make_phone(program, phone, mode, locks, root):
    """A phone of unique secrets, plain or enciphered as its lock says. In half of the runs a copied file is new."""
    phones.make_phone(phone, root)
    secrets = secretsOfPhone.plant(root)
    if mode in devicePaths.COPIES_TO and locks.user == locks.factory:
        (root / devicePaths.COPIES_TO[mode][1:]).unlink(missing_ok=True)
    if locks.user == 1:
        set_locks(root, Locks(0, 1))
        phones.run(program, root, "pwd")
    set_locks(root, locks)
    return secrets


def allowed_places(secret, mode, phone):
    """Its own place, and all places to which the table or a copy of the whole file copies it."""
    places = {secret.place}
    if mode in ("all", "dev"):
        for record in tablesOfPhone.table_records(phone):
            source = tuple(record.get(name) for name in ("srcFile", "srcSec", "srcKey"))
            if source in places:
                places.add(tablesOfPhone.destination_of(record))
    if mode in devicePaths.COPIES_TO:
        source = accountCopy.source_of(mode, phone)
        places |= {(devicePaths.COPIES_TO[mode], *place[1:]) for place in places if place[:1] == (source,)}
    return places


def places_in(path, content, text):
    """The places of the text in a file."""
    if text not in content:
        return set()
    if not devicePaths.is_ini(path):
        return {(path,)}
    found = {(path, *(part.decode() for part in line.name)) for line in iniText.lines_of(content)
             if line.kind == "key" and text in line.value}
    in_values = sum(line.value.count(text) for line in iniText.lines_of(content) if line.kind == "key")
    return found | ({(path, "outside of", "every value")} if in_values != content.count(text) else set())


def check_places(secrets, mode, before, after):
    faults = []
    for secret in secrets:
        allowed = allowed_places(secret, mode, before)
        for path, entry in after.items():
            for place in places_in(path, entry.content, secret.text) - allowed:
                faults.append(f"the secret of {' '.join(secret.place)} is in {' '.join(place)}")
    return faults


def check_bits(secrets, before, after):
    """A file that contains secrets is readable only by its owner, as all files of this phone were; an existing file
    keeps its bits."""
    faults = []
    for path, entry in after.items():
        holds = any(secret.text in entry.content for secret in secrets)
        if holds and entry.mode & ~secretsOfPhone.PRIVATE:
            faults.append(f"{path} holds secrets and has the bits {entry.mode:04o}")
        if path in before and (entry.mode, entry.owner) != (before[path].mode, before[path].owner):
            faults.append(f"{path} had {before[path].mode:04o} {before[path].owner} and has "
                          f"{entry.mode:04o} {entry.owner}")
    return faults


def is_logging(mode, locks):
    """Copied certificates are logged, and passwords that already have the required form."""
    return mode in ("all", "dev") or (mode == "pwd" and locks.user == locks.factory)


def check_log(secrets, mode, locks, messages):
    faults = [] if messages or not is_logging(mode, locks) else ["nothing reached the system log: nothing is proven"]
    for message in messages:
        faults += [f"the secret of {' '.join(secret.place)} is in the system log: {message!r}"
                   for secret in secrets if secret.text in message]
    return faults


def check_command_lines(secrets, calls):
    """All users may read them while the command runs."""
    return [f"a command line holds the secret of {' '.join(secret.place)}"
            for call in calls if call.name == "execve" for secret in secrets if secret.text in b"\0".join(call.texts)]


def mode_given(call):
    return int(re.search(rb"0([0-7]*)$", call.arguments).group(1) or b"0", 8)


def check_temporary_files(calls):
    """Each is created readable only by its owner, and made readable for others only after the last write."""
    faults, opened_to_others = [], {}
    own = [call for call in calls if call.process == calls[0].process]
    for call in own:
        if call.name in ("open", "openat") and b"O_CREAT" in call.arguments:
            opened_to_others.pop(call.file, None)
            if mode_given(call) & ~secretsOfPhone.PRIVATE:
                faults.append(f"{call.texts[0].decode()} is made with the bits {mode_given(call):04o}")
        elif call.name == "fchmod":
            opened_to_others[call.file] = mode_given(call)
        elif call.name == "write" and opened_to_others.get(call.file, 0) & ~secretsOfPhone.PRIVATE:
            faults.append(f"{call.file} is written to when others may read it already")
        elif call.name in ("chmod", "fchmodat"):
            faults.append(f"{call.name} of {call.texts[0].decode()}: the temporary file had not all its bits")
    return faults


def give_bits(root, bits):
    for path in phones.files_of(root):
        (root / path[1:]).chmod(bits)


def check_temporary_files_of_public_phone(program, phone, mode, folder):
    """The same on a phone whose files all users may read: no user may read an incomplete file."""
    root = phones.make_phone(phone, folder / "phone")
    give_bits(root, 0o644)
    _, calls = traces.record(program, root, mode, folder / "trace", ("-y", "-xx", "-s", "1000000", "-e", RECORDED))
    return check_temporary_files(calls)


def run_logged(program, root, mode, folder):
    """The run's result, its calls, and what reached the system log. The umask hides no bit."""
    log = systemLog.SystemLog(folder)
    traced = folder / "trace"
    traced.mkdir(exist_ok=True)
    try:
        result = phones.run(program, root, mode,
                            traces.wrapper(["-y", "-xx", "-s", "1000000", "-e", RECORDED]),
                            ["--bind", str(traced), "/trace", *log.options])
        return result, traces.parse((traced / "record").read_bytes()), log.messages()
    finally:
        log.close()


def check(job):
    program, scratch, phone, mode, locks = job
    os.umask(0)
    folder = comparison.worker_folder(scratch)
    root = folder / "phone"
    secrets = make_phone(program, phone, mode, locks, root)
    before = phones.files_of(root)
    result, calls, messages = run_logged(program, root, mode, folder)
    after = phones.files_of(root)

    faults = [] if result.returncode == 0 else [f"exit status {result.returncode}"]
    faults += check_places(secrets, mode, before, after)
    faults += check_bits(secrets, before, after)
    faults += check_log(secrets, mode, locks, messages)
    faults += check_command_lines(secrets, calls)
    faults += check_temporary_files(calls)
    faults += check_temporary_files_of_public_phone(program, phone, mode, folder)
    return [f"mode {mode}, locks {locks.user} and {locks.factory}: {fault}" for fault in faults], len(secrets)


def main():
    chosen = proof.parse_arguments(__doc__)
    proof.skip_without_sandbox()
    with proof.scratch_folder() as scratch:
        jobs = [(chosen.program, scratch, chosen.phone, mode, locks) for mode in chosen.mode for locks in LOCKS]
        results = list(proof.in_parallel(check, jobs, at_once=1))
    faults = [fault for result in results for fault in result[0]]
    return proof.end("secrets", faults, f"{results[0][1]} secrets in each of {len(jobs)} runs in "
                     f"{len(chosen.mode)} modes")


if __name__ == "__main__":
    sys.exit(main())
