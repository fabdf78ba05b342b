# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Given the same phone and modes, the preview with the device's own program is byte for byte that with the host's."""

import pathlib
import subprocess
import sys

import deviceRun
import phones
import proof

SEQUENCES = [(mode,) for mode in phones.MODES] + [("1", "2", "all")]


def preview(tool, program, phone, modes, folder):
    """The exit status, and the text, JSON and page."""
    outputs = [folder / "preview.json", folder / "preview.html"]
    done = subprocess.run([tool, *program, "--any-mode", "--reports", "--json", outputs[0], "--html", outputs[1], phone, *modes],
                          capture_output=True, check=False, timeout=120)
    return [done.returncode, done.stdout, done.stderr, *(path.read_bytes() for path in outputs if path.exists())]


def main():
    arguments = deviceRun.parse_arguments(__doc__)
    proof.skip_without_sandbox(with_strace=False)
    host = arguments.host_program.resolve()
    tool = host.parents[2] / "tools/preview/kestrune-preview"
    if not tool.exists():
        proof.skip("the host's preview is not built (cmake --build --preset host --target kestrune-preview)")
    faults = []
    count = 0
    with proof.scratch_folder() as scratch:
        for name in phones.PHONES:
            phone = phones.make_phone(name, f"{scratch}/phone")
            for modes in SEQUENCES:
                with proof.scratch_folder() as own, proof.scratch_folder() as other:
                    expected = preview(tool, ["--program", host], phone, modes, pathlib.Path(own))
                    emulated = ["--program", arguments.program, "--emulator", arguments.emulator]
                    found = preview(tool, emulated, phone, modes, pathlib.Path(other))
                if found != expected or len(found) < 5:
                    faults.append(f"{name} phone, modes {modes}: {found[2].decode() or 'the previews differ'}")
                count += 1
    print("\n".join(faults))
    print(f"preview: {count} runs compared, {len(faults)} differences")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
