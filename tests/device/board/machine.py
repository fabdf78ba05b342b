# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A 32-bit ARM machine with two chips of NOR flash, emulated by QEMU. It is started once, kept right before the flash is
touched, and continues from there with any content of the flash.
"""

import json
import pathlib
import re
import shutil
import socket
import subprocess
import tempfile
import time

FIRMWARE_CHIP = ("mx25l25655e", 32 << 20)  # Debian's kernel erases these two models in blocks of 64 KiB, others in 4 KiB
CONFIG_CHIP = ("mx25l12855e", 16 << 20)  # too small for UBIFS
MACHINE = f"ast2600-evb,fmc-model={FIRMWARE_CHIP[0]},spi-model={CONFIG_CHIP[0]}"
KERNEL_OPTIONS = "console=ttyS4,115200n8 quiet loglevel=1 panic=-1 maxcpus=1 nosmp"
SECONDS_TO_START = 600
SECONDS_TO_ANSWER = 240
MOST_TRIES = 10


class Failed(Exception):
    """The machine has ended or does not answer."""


class Machine:
    """A running machine. The images are only read: only the log has what it programs."""

    def __init__(self, images, firmware, config, state=None):
        """`images`: the folder with kernel and initramfs; `firmware` and `config`: files with the content of the two chips.
        `state`: what `keep` has written, from which the machine continues; without it, the machine is switched on."""
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kestrune-machine-"))
        self.log = self.folder / "log"
        self.lines = b""
        try:
            self.start(pathlib.Path(images), firmware, config, state)
        except BaseException:
            self.end()
            raise

    def start(self, images, firmware, config, state):
        serial, control = self.listen("serial"), self.listen("control")
        command = ["qemu-system-arm", "-M", MACHINE, "-m", "256M", "-accel", "tcg,thread=single", "-nodefaults",
                   "-display", "none", "-nic", "none", "-no-reboot", "-kernel", images / "vmlinuz", "-dtb",
                   images / "board.dtb", "-initrd", images / "initrd.gz", "-append", KERNEL_OPTIONS,
                   "-chardev", f"socket,id=serial,path={serial.getsockname()}", "-serial", "chardev:serial",
                   "-qmp", f"unix:{control.getsockname()}"]
        for image in (firmware, config):
            command += ["-drive", f"file={image},format=raw,if=mtd,readonly=on"]
        command += ["-D", self.log, "-trace", "enable=m25p80_page_program", "-trace", "enable=m25p80_flash_erase"]
        if state:
            command += ["-incoming", f"exec:cat {state}"]
        with open(self.folder / "errors", "wb") as errors:
            self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=errors, stderr=errors)
        self.serial = self.accept(serial)
        self.control = self.accept(control)
        self.replies = self.control.makefile("rb")
        self.replies.readline()
        self.ask_qemu("qmp_capabilities")
        if state:
            self.wait_for_qemu("query-status", lambda status: status["status"] != "inmigrate")
            self.ask_qemu("cont")
        else:
            self.answer(SECONDS_TO_START)

    def listen(self, name):
        server = socket.socket(socket.AF_UNIX)
        server.bind(str(self.folder / name))
        server.listen(1)
        server.settimeout(30)
        return server

    def accept(self, server):
        try:
            return server.accept()[0]
        except TimeoutError as reason:
            raise Failed((self.folder / "errors").read_text()) from reason
        finally:
            server.close()

    def ask_qemu(self, command, **arguments):
        self.control.sendall(json.dumps({"execute": command, "arguments": arguments}).encode())
        while True:
            reply = json.loads(self.replies.readline())
            if "error" in reply:
                raise Failed(f"{command}: {reply['error']['desc']}")
            if "return" in reply:
                return reply["return"]

    def wait_for_qemu(self, command, is_done):
        end = time.monotonic() + SECONDS_TO_START
        while not is_done(self.ask_qemu(command)):
            if time.monotonic() > end:
                raise Failed(f"{command} does not end")
            time.sleep(0.02)

    def keep(self, state):
        """Stops the machine and writes its state. The content of the flash is no part of it."""
        self.ask_qemu("stop")
        self.ask_qemu("migrate", uri=f"exec:cat >{state}")
        self.wait_for_qemu("query-migrate", lambda status: status.get("status") == "completed")

    def run(self, line, seconds=SECONDS_TO_ANSWER):
        """Runs the line in the machine's shell; returns its exit status and what it has printed."""
        for _ in range(MOST_TRIES):
            self.serial.sendall(f"{len(line)} {line}\n\n".encode())
            status, printed = self.answer(seconds)
            if status is not None:
                return status, printed
        raise Failed(f"the serial line garbles {line}")

    def must(self, line, seconds=SECONDS_TO_ANSWER):
        status, printed = self.run(line, seconds)
        if status != 0:
            raise Failed(f"{line}: status {status}: {printed.decode(errors='replace')}")
        return printed

    def answer(self, seconds):
        """The exit status, None if the line did not arrive whole, and what was printed before it."""
        end = time.monotonic() + seconds
        while (found := re.search(rb"@(?:DONE (\d+)|AGAIN)\r?\n", self.lines)) is None:
            self.serial.settimeout(max(0.1, end - time.monotonic()))
            try:
                piece = self.serial.recv(65536)
            except TimeoutError:
                piece = b""
            if not piece:
                raise Failed(f"no answer after {self.lines[-2000:].decode(errors='replace')!r}")
            self.lines += piece
        printed, self.lines = self.lines[:found.start()], self.lines[found.end():]
        return int(found.group(1)) if found.group(1) else None, printed

    def programmed(self):
        """The flash's changes so far."""
        return self.log.read_bytes() if self.log.exists() else b""

    def end(self):
        process = getattr(self, "process", None)
        if process is not None:
            process.kill()
            process.wait()
        for name in ("serial", "control", "replies"):
            if hasattr(self, name):
                getattr(self, name).close()
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end()
