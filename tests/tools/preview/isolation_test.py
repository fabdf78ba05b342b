#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What the program in the sandbox can reach of this machine: no network, and nothing to write to but the phone."""

import socket
import subprocess

import previewTool

PROBE = """#!/bin/bash
(: </dev/tcp/127.0.0.1/{port}) 2>/dev/null && echo connected
echo probed
"""

WRITER = """#!/bin/sh
for place in / /usr /usr/bin /usr/lib /etc /root /home /var /run /sys /mnt {folder} /kestrune; do
    [ -w "$place" ] && echo "$place" >>/config/writable  # a look only: with a fault, this machine must not suffer
done
mount -o remount,rw,bind /usr 2>/dev/null && echo remounted >>/config/writable
for tree in config phone tmp; do
    echo written >/$tree/probe
done
"""

LEAVER = """#!/bin/sh
[ -e /config/first ] && exec sleep 1
touch /config/first
setsid sh -c 'sleep 0.5; touch /config/late' &
"""

KILLER = """#!/bin/sh
cat /proc/$PPID/environ >/config/environ 2>/dev/null || rm /config/environ
ls -l /proc/$PPID/fd/0 >/config/descriptors 2>/dev/null || rm /config/descriptors
[ -e /config/kill ] && kill -9 $PPID && sleep 30
exit 0
"""


class Isolation(previewTool.PreviewTest):
    def program(self, text):
        program = self.folder / "program"
        program.write_text(text)
        program.chmod(0o755)
        return program

    def test_there_is_no_network(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            probe = self.program(PROBE.format(port=listener.getsockname()[1]))
            outside = subprocess.run([probe], capture_output=True, text=True, check=False)
            self.assertEqual(outside.stdout, "connected\nprobed\n")  # or the probe would prove nothing
            listener.accept()[0].close()
            shown = self.show("--reports", "--program", probe, self.phone({}), "all")
            self.assertEqual((shown.errors, shown.preview["reports"][0]["output"]), ("", ["probed"]))
            listener.settimeout(0)
            self.assertRaises(BlockingIOError, listener.accept)

    def test_signals_are_as_usual(self):
        """The preview blocks some and ignores others, which a program that a shell starts does not."""
        program = self.program("#!/bin/sh\nexec grep -E '^Sig(Blk|Ign)' /proc/self/status\n")
        shown = self.show("--reports", "--program", program, self.phone({}), "all")
        masks = [int(line.split("\\t")[1], 16) for line in shown.preview["reports"][0]["output"]]
        self.assertEqual([mask & 0x7FFFFFFF for mask in masks], [0, 0])  # those above are the C library's own

    def test_nothing_but_the_phone_can_be_written_to(self):
        writer = self.program(WRITER.format(folder=self.folder))
        self.show("--program", writer, "--save-phone", self.folder / "after", self.phone({}), "all")
        for tree in ("config", "phone", "tmp"):
            self.assertTrue((self.folder / "after" / tree / "probe").exists(), tree)
        writable = self.folder / "after/config/writable"
        self.assertEqual(writable.read_text() if writable.exists() else "", "")

    def test_what_a_run_leaves_running_ends_with_it(self):
        shown = self.show("--program", self.program(LEAVER), self.phone({}), "all")
        self.assertEqual((shown.errors, shown.preview["secondRun"]["files"]), ("", []))
        self.assertEqual([file["path"] for file in shown.preview["files"]], ["/config/first"])

    def test_the_program_cannot_reach_what_started_it(self):
        program = self.program(KILLER)
        shown = self.show("--program", program, self.phone({}), "all")
        self.assertEqual((shown.errors, shown.preview["files"]), ("", []))
        killed = previewTool.run("--program", program, self.phone({"/config/kill": ""}), "all")
        self.assertEqual((killed.returncode, killed.stderr),
                         (previewTool.NOT_DONE, "kestrune-preview: image: kestrune-preview-steps failed in the sandbox: "
                                             "exit status 137\n"))

    def test_what_the_program_writes_has_a_limit(self):
        program = self.program("#!/bin/sh\nhead -c 70000000 /dev/zero\n")
        result = previewTool.run("--program", program, self.phone({}), "all")
        self.assertEqual((result.returncode, result.stderr),
                         (previewTool.NOT_DONE, "kestrune-preview: image: a program wrote more than 67108864 bytes\n"))


if __name__ == "__main__":
    previewTool.main()
