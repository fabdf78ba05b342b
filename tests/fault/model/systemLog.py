# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""A system log at the sandbox's /dev/log."""

import socket
import threading

END = b"end of the log"


class SystemLog:
    """Accepts messages from its creation on; `options` makes it available in the sandbox. It reads all the time: a log
    that is not read has space for few messages, and the program would wait for it."""

    def __init__(self, folder):
        self.path = folder / "log"
        self.path.unlink(missing_ok=True)
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.socket.bind(str(self.path))
        self.path.chmod(0o666)
        self.options = ["--bind", str(self.path), "/dev/log"]
        self.found = []
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()

    def read(self):
        while (message := self.socket.recv(1 << 20)) != END:
            self.found.append(message)

    def messages(self):
        """All messages. None is accepted afterwards."""
        if self.reader.is_alive():
            with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as own:
                own.sendto(END, str(self.path))
            self.reader.join()
        return self.found

    def close(self):
        self.messages()
        self.socket.close()
