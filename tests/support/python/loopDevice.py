# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A real file system in an image file, with simulated power cuts."""

import dataclasses
import os
import pathlib
import shutil
import subprocess
import time


@dataclasses.dataclass(frozen=True)
class Kind:
    name: str
    size: int
    format: list
    options: list
    has_log: bool


# ext4 hides a missing flush before a rename unless this is disabled.
KINDS = {
    "ext4": Kind("ext4", 64 << 20, ["mkfs.ext4", "-q", "-F"], ["-o", "noauto_da_alloc"], True),
    "xfs": Kind("xfs", 320 << 20, ["mkfs.xfs", "-q", "-f"], [], True),
    "ext2": Kind("ext2", 8 << 20, ["mkfs.ext2", "-q", "-F"], [], False),
    "ext4 without a journal": Kind("ext4", 8 << 20, ["mkfs.ext4", "-q", "-F", "-O", "^has_journal"],
                                   ["-o", "noauto_da_alloc"], False),
}
MOST_STATUS_OF_REPAIR = 2  # of fsck: higher values mean that faults are left
MOST_TRIES_TO_CLAIM = 1000


def run(*command):
    subprocess.run(command, check=True, capture_output=True)


class LoopDevice:
    """Formatted, and mounted during the `with` block."""

    def __init__(self, kind, scratch):
        self.kind = KINDS[kind]
        self.image = pathlib.Path(scratch) / f"{kind}.image"
        self.folder = pathlib.Path(scratch) / kind

    def __enter__(self):
        self.folder.mkdir()
        with open(self.image, "wb") as image:
            image.truncate(self.kind.size)
        shown = subprocess.run(["losetup", "--find", "--show", self.image], check=True, capture_output=True)
        self.device = shown.stdout.decode().strip()
        try:
            run(*self.kind.format, self.device)
            self.mount()
        except BaseException:
            run("losetup", "--detach", self.device)
            raise
        return self

    def __exit__(self, *_):
        subprocess.run(["umount", self.folder], check=False, capture_output=True)
        run("losetup", "--detach", self.device)
        self.image.unlink()
        self.folder.rmdir()

    def mount(self):
        run("mount", "-t", self.kind.name, *self.kind.options, self.device, self.folder)

    def flush(self):
        run("sync", "--file-system", self.folder)

    def cut_power(self, is_log_flushed):
        """Data that is not on the device is lost. With a flushed log, there are names without their data."""
        if self.kind.has_log:
            run("xfs_io", "-x", "-c", "shutdown -f" if is_log_flushed else "shutdown", self.folder)
            run("umount", self.folder)
            self.wait_until_free()
        else:
            self.cut_power_of_copy(is_log_flushed)
        self.mount()

    def cut_power_of_copy(self, is_flushed):
        """Without a log there is no such command, and the image contains the state of the device."""
        if is_flushed:
            run("blockdev", "--flushbufs", self.device)
        content = self.image.read_bytes()
        run("umount", self.folder)
        self.wait_until_free()
        with open(self.device, "wb") as device:
            device.write(content)
        repair = subprocess.run(["e2fsck", "-f", "-y", self.device], capture_output=True, check=False)
        if repair.returncode > MOST_STATUS_OF_REPAIR:
            raise subprocess.CalledProcessError(repair.returncode, repair.args, repair.stdout, repair.stderr)

    def wait_until_free(self):
        """A sandbox that began a moment ago may still hold a copy of the mount; a mount now would return the dead one."""
        for _ in range(MOST_TRIES_TO_CLAIM):
            try:
                os.close(os.open(self.device, os.O_RDONLY | os.O_EXCL))
                return
            except OSError:
                time.sleep(0.01)
        raise RuntimeError(f"{self.device} stays in use")


def why_not(kind, scratch):
    """Why there is no such file system here; an empty text if there is one."""
    for tool in ("losetup", "xfs_io", KINDS[kind].format[0]):
        if shutil.which(tool) is None:
            return f"{tool} is not installed"
    try:
        with LoopDevice(kind, scratch) as device:
            device.cut_power(is_log_flushed=False)
    except (subprocess.CalledProcessError, OSError) as failure:
        output = getattr(failure, "stderr", None) or b""
        return f"{failure} {output.decode(errors='replace').strip()}"
    return ""
