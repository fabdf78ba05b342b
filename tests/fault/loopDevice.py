# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A real file system in an image file, that can lose its power."""

import os
import pathlib
import shutil
import subprocess
import time

# ext4 hides a missing flush before a rename unless it is told not to.
KINDS = {
    "ext4": (64 << 20, ["mkfs.ext4", "-q", "-F"], ["-o", "noauto_da_alloc"]),
    "xfs": (320 << 20, ["mkfs.xfs", "-q", "-f"], []),
}
MOST_TRIES_TO_CLAIM = 1000


def run(*command):
    subprocess.run(command, check=True, capture_output=True)


class LoopDevice:
    """Formatted and mounted as long as the `with` block lasts."""

    def __init__(self, kind, scratch):
        self.size, self.format, self.options = KINDS[kind]
        self.kind = kind
        self.image = pathlib.Path(scratch) / f"{kind}.image"
        self.folder = pathlib.Path(scratch) / kind

    def __enter__(self):
        self.folder.mkdir()
        with open(self.image, "wb") as image:
            image.truncate(self.size)
        shown = subprocess.run(["losetup", "--find", "--show", self.image], check=True, capture_output=True)
        self.device = shown.stdout.decode().strip()
        try:
            run(*self.format, self.device)
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
        run("mount", "-t", self.kind, *self.options, self.device, self.folder)

    def flush(self):
        run("sync", "--file-system", self.folder)

    def cut_power(self, is_log_flushed):
        """Whatever is not on the device is gone. With the log flushed, names are there whose data is not."""
        run("xfs_io", "-x", "-c", "shutdown -f" if is_log_flushed else "shutdown", self.folder)
        run("umount", self.folder)
        self.wait_until_free()
        self.mount()

    def wait_until_free(self):
        """A sandbox that began a moment ago may still hold a copy of the mount; a mount now would give it back dead."""
        for _ in range(MOST_TRIES_TO_CLAIM):
            try:
                os.close(os.open(self.device, os.O_RDONLY | os.O_EXCL))
                return
            except OSError:
                time.sleep(0.01)
        raise RuntimeError(f"{self.device} stays in use")


def why_not(kind, scratch):
    """Why there is no such file system here; an empty text when there is one."""
    for tool in ("losetup", "xfs_io", KINDS[kind][1][0]):
        if shutil.which(tool) is None:
            return f"{tool} is not installed"
    try:
        with LoopDevice(kind, scratch) as device:
            device.cut_power(is_log_flushed=False)
    except (subprocess.CalledProcessError, OSError) as failure:
        output = getattr(failure, "stderr", None) or b""
        return f"{failure} {output.decode(errors='replace').strip()}"
    return ""
