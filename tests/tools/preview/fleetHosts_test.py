#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""The two commands of docs/preview.md that spread a fleet over machines, run with two SSH servers of this one."""

import contextlib
import os
import shutil
import socket
import subprocess
import time

import previewTool
import proof
from previewTool import DONE

PHONES = 5
NEEDED_BY_ROOT = "/run/sshd"  # the service of the package creates it
SERVER = shutil.which("sshd", path=f"{os.environ['PATH']}:/usr/sbin")
NAMES = ("alpha", "beta")
SPREAD = ("find backups -name '*.tar.gz' | parallel --sshlogin alpha,beta --jobs 1 -N 500 --workdir . "
          "kestrune-preview --jsonl part-{#}.jsonl {} all")
MERGE = "kestrune-preview merge --html report.html part-*.jsonl"


def free_port():
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        return taken.getsockname()[1]


@contextlib.contextmanager
def servers(folder):
    """Two servers with keys of their own; gives a PATH with an ssh that finds them by name, and with the preview."""
    tools = folder / "bin"
    tools.mkdir()
    subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / "key"], check=True)
    shutil.copy(folder / "key.pub", folder / "authorized")
    ssh_config, started = "", []
    is_new = os.geteuid() == 0 and not os.path.exists(NEEDED_BY_ROOT)
    if is_new:
        os.mkdir(NEEDED_BY_ROOT, 0o755)
    try:
        for name in NAMES:
            port = free_port()
            config = folder / f"sshd-{name}"
            config.write_text(f"Port {port}\nListenAddress 127.0.0.1\nHostKey {folder}/key\nAuthorizedKeysFile {folder}/authorized\n"
                              f"StrictModes no\nUsePAM no\nPidFile none\nPasswordAuthentication no\nMaxStartups 100\n"
                              f"SetEnv PATH={tools}:{os.environ['PATH']} KESTRUNE_HOST={name}\n")
            started.append(subprocess.Popen([SERVER, "-D", "-E", folder / f"log-{name}", "-f", config]))
            ssh_config += (f"Host {name}\n HostName 127.0.0.1\n Port {port}\n IdentityFile {folder}/key\n IdentitiesOnly yes\n"
                           f" StrictHostKeyChecking no\n UserKnownHostsFile /dev/null\n LogLevel ERROR\n")
        (folder / "ssh_config").write_text(ssh_config)
        for name, text in (("ssh", f'exec {shutil.which("ssh")} -F {folder}/ssh_config "$@"'),
                           ("kestrune-preview", f'echo "$KESTRUNE_HOST" >>{folder}/hosts\nexec {previewTool.PREVIEW} "$@"')):
            (tools / name).write_text(f"#!/bin/sh\n{text}\n")
            (tools / name).chmod(0o755)
        variables = os.environ | {"PATH": f"{tools}:{os.environ['PATH']}", "PARALLEL_HOME": str(folder / "parallel")}
        for name in NAMES:
            wait_for(name, variables, started)
        yield variables
    finally:
        for server in started:
            server.terminate()
            server.wait()
        if is_new:
            os.rmdir(NEEDED_BY_ROOT)


def wait_for(name, variables, started):
    for _ in range(100):
        if all(server.poll() is None for server in started):
            tried = subprocess.run(["ssh", name, "true"], env=variables, capture_output=True, check=False)
            if tried.returncode == 0:
                return
        time.sleep(0.1)
    proof.skip("an SSH server cannot be started here")


class FleetHosts(previewTool.PreviewTest):
    def test_the_readme_has_these_commands(self):
        lines = (previewTool.PROJECT / "docs" / "preview.md").read_text().replace("\\\n", " ").splitlines()
        for line in lines:
            if "--sshlogin" in line:
                self.assertEqual(" ".join(line.split()), SPREAD)

    def test_the_commands_of_the_readme(self):
        images = self.images(**{f"backup {number}": DONE if number % 2 else "" for number in range(PHONES)})
        backups = self.folder / "backups" / "north"
        backups.mkdir(parents=True)
        for image in images:
            subprocess.run(["tar", "-czf", backups / f"{image.name}.tar.gz", "-C", image, "."], check=True)
        spread = SPREAD.replace("-N 500", "-N 2")
        with servers(self.folder) as variables:
            run = lambda command: subprocess.run(command, shell=True, cwd=self.folder, env=variables, capture_output=True, text=True,
                                                 timeout=120, check=False)
            spreading = run(spread)
            logs = sorted(path.name for path in self.folder.glob("part-*.jsonl"))
            self.assertEqual(logs, ["part-1.jsonl", "part-2.jsonl", "part-3.jsonl"], spreading.stderr)
            self.assertEqual(set((self.folder / "hosts").read_text().split()), set(NAMES))
            merged = run(MERGE)
        self.assertEqual(merged.returncode, previewTool.FAILS, merged.stderr)
        whole = subprocess.run([previewTool.PREVIEW, "backups", "all"], cwd=self.folder, capture_output=True, text=True, check=False)
        self.assertEqual(merged.stdout, whole.stdout)
        self.assertTrue((self.folder / "report.html").read_text().startswith("<!DOCTYPE html>"))


if __name__ == "__main__":
    if shutil.which("parallel") is None or SERVER is None:
        proof.skip("parallel or openssh-server is not installed: script/bootstrap preview")
    previewTool.main()
