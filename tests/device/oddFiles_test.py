# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Given files dated 2040, or with inode numbers of 64 bits, the device's program migrates them as it does any other."""

import calendar
import dataclasses
import os
import pathlib
import subprocess
import sys

import deviceRun
import loopDevice
import phones
import proof

IN_2040 = calendar.timegm((2040, 2, 29, 12, 0, 0))  # after the last second of a signed 32-bit time
MODES = ("all", "1", "2")


class WideFileSystem(loopDevice.LoopDevice):
    """XFS on so large a device that folders are spread over inode numbers beyond 32 bits. The image is sparse."""

    def __init__(self, scratch):
        super().__init__("xfs", scratch)
        self.kind = dataclasses.replace(self.kind, size=12 << 40, format=["mkfs.xfs", "-q", "-f", "-l", "size=64m"],
                                        options=["-o", "inode64"])

    def wide_folder(self):
        for number in range(64):
            folder = self.folder / str(number)
            folder.mkdir()
            (folder / "probe").touch()
            if (folder / "probe").stat().st_ino > 1 << 32:
                return folder
        raise RuntimeError("no inode number came out beyond 32 bits")


def files_below(root):
    return [pathlib.Path(folder, name) for folder, _, names in os.walk(root) for name in names]


def date_in_2040(root):
    for path in files_below(root):
        os.utime(path, (IN_2040, IN_2040))
        assert path.stat().st_mtime == IN_2040, "this file system cannot hold the date"


def faults_of(arguments, odd, scratch, mode, what):
    plain = phones.make_phone("example", scratch / "plain")
    result = deviceRun.run_on_device(arguments, odd, mode)
    expected = deviceRun.run_on_device(arguments, plain, mode)
    faults = [f"{path} differs" for path in deviceRun.difference_of_phones(odd, plain)]
    if sorted_lines(result) != sorted_lines(expected) or result.returncode != 0:
        faults.append("the reports differ")
    return [f"{what}, mode {mode}: {fault}" for fault in faults]


def sorted_lines(result):
    """The reports of a run; certificates are in directory order."""
    return sorted((result.stdout + result.stderr).splitlines())


def faults_of_dates(arguments, scratch):
    faults = []
    for mode in MODES:
        phone = phones.make_phone("example", scratch / "dated")
        date_in_2040(phone)
        faults += faults_of(arguments, phone, scratch, mode, "files dated 2040")
    return faults


def why_no_wide_file_system(scratch):
    """An empty text if there is one: any failure after that is a fault."""
    try:
        with WideFileSystem(scratch):
            return ""
    except (OSError, subprocess.CalledProcessError) as reason:
        return str(reason)


def faults_of_inode_numbers(arguments, scratch):
    faults = []
    for mode in MODES:
        with WideFileSystem(scratch) as device:
            phone = phones.make_phone("example", device.wide_folder() / "phone")
            wide = [path for path in files_below(phone) if path.stat().st_ino > 1 << 32]
            print(f"mode {mode}: {len(wide)} of {len(files_below(phone))} files have 64-bit inode numbers")
            faults += faults_of(arguments, phone, scratch, mode, "64-bit inode numbers")
            if not wide:
                faults.append(f"mode {mode}: no file had a 64-bit inode number")
    return faults


def main():
    arguments = deviceRun.parse_arguments(__doc__)
    proof.skip_without_sandbox(with_strace=False)
    with proof.scratch_folder() as folder:
        scratch = pathlib.Path(folder)
        faults = faults_of_dates(arguments, scratch)
        reason = why_no_wide_file_system(scratch)
        if reason:
            print(f"oddFiles: skipped 64-bit inode numbers, no such file system here: {reason}")
        else:
            faults += faults_of_inode_numbers(arguments, scratch)
    print("\n".join(faults))
    print(f"oddFiles: {len(faults)} faults")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
