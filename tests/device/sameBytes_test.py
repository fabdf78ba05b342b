# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Given the same phone, the device's program leaves the same files and says the same as the host's, mode by mode."""

import pathlib
import sys

import deviceRun
import phones
import proof

# After one another on one phone: a second run, and the hand-over with what comes after it.
SEQUENCES = [(mode,) for mode in phones.MODES] + [("all", "all"), ("1", "all", "2"), ("dev", "pwd", "pwd")]


def faults_of(arguments, phone, modes, scratch):
    device = phones.make_phone(phone, scratch / "device")
    host = phones.make_phone(phone, scratch / "host")
    faults = []
    for mode in modes:
        differing = deviceRun.difference_of_runs(deviceRun.run_on_device(arguments, device, mode),
                                                 deviceRun.run_on_host(arguments, host, mode))
        differing += deviceRun.difference_of_phones(device, host)
        faults += [f"{phone} phone, modes {modes}: {what} differs after mode {mode}" for what in differing]
    return faults


def main():
    arguments = deviceRun.parse_arguments(__doc__)
    proof.skip_without_sandbox(with_strace=False)
    if not arguments.host_program.exists():
        proof.skip("the host's program is not built (cmake --build --preset host)")
    faults = []
    runs = 0
    with proof.scratch_folder() as folder:
        for phone in phones.PHONES:
            for modes in SEQUENCES:
                faults += faults_of(arguments, phone, modes, pathlib.Path(folder))
                runs += len(modes)
    print("\n".join(faults))
    print(f"sameBytes: {runs} runs compared, {len(faults)} differences")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
