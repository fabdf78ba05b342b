# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A system log that the sandbox's /dev/log leads to."""

import socket


class SystemLog:
    """Takes messages from the moment it is made; `options` brings it into the sandbox."""

    def __init__(self, folder):
        self.path = folder / "log"
        self.path.unlink(missing_ok=True)
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK)
        self.socket.bind(str(self.path))
        self.path.chmod(0o666)
        self.options = ["--bind", str(self.path), "/dev/log"]

    def messages(self):
        """Those that came since the last call."""
        found = []
        while True:
            try:
                found.append(self.socket.recv(1 << 20))
            except BlockingIOError:
                return found

    def close(self):
        self.socket.close()
