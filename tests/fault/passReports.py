# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Which lines a disturbed run must have written: those of the passes that nothing disturbed."""

import re

# They show values that the passes before them may have failed to write.
VALUE = re.compile(rb"^etlTrace 2: (Encrypt|Decrypt):")

# What the password pass may end with.
OF_PASSWORDS = re.compile(rb"^(app_log 60/(4: Can's load|6: No need)|etlTrace (2: (En|De)crypt|3: Fail to))")

# What the device's own shell and copy command say is theirs.
FOREIGN = re.compile(rb"^(cp|sh): ")


def lines_of(written):
    return [line for line in written.splitlines(keepends=True) if not FOREIGN.match(line)]


def without_values(lines):
    return [line for line in lines if not VALUE.match(line)]


def of_passes(run, is_included):
    return [line for place, line in run.reports if is_included(place)]


def first_difference(expected, found):
    return next((f"{line!r}" for line in expected if line not in found), "them in this order")


def why_not_all(run, written):
    """Every pass must have reported as it did undisturbed, but for the values."""
    every = len(run.passes)
    return why_not_around(run, every, written) or why_more(run, written)


def why_more(run, written):
    lines = without_values(lines_of(written))
    return "" if len(lines) == len(without_values(of_passes(run, lambda place: True))) else f"more reports: {lines!r}"


def why_not_around(run, place, written, last=None):
    """The passes before and behind that place, or the places from it to the last, must have reported as undisturbed."""
    last = place if last is None else last
    lines = without_values(lines_of(written))
    before = without_values(of_passes(run, lambda other: other < place))
    behind = without_values(of_passes(run, lambda other: other > last))
    # Certificates come in the order of their folder, so the order is nothing to rely on.
    if sorted(lines[:len(before)]) != sorted(before):
        return f"the passes before it did not report {first_difference(before, lines)}"
    if len(lines) < len(before) + len(behind) or sorted(lines[len(lines) - len(behind):]) != sorted(behind):
        return f"the passes behind it did not report {first_difference(behind, lines[len(before):])}"
    return why_password_pass_is_silent(run, place, lines_of(written))


def why_password_pass_is_silent(run, place, lines):
    last = len(run.passes) - 1
    if run.passes[last].name != "TransPasswordFile" or last <= place:
        return ""
    expected = [line for line in of_passes(run, lambda other: other == last) if VALUE.match(line)]
    found = [line for line in lines if VALUE.match(line)]
    return "" if found or not expected else "the password pass converted nothing"


def why_not_begun(run, place, written):
    """Every pass behind that place that reports at all must have reported something, if only its failure."""
    lines = lines_of(written)
    for one in run.passes[place + 1:]:
        if one.name.endswith("V4XToV50") and f"chTraceStack: enter {one.name}\n".encode() not in lines:
            return f"{one.name} did not run"
        if one.name == "TransPasswordFile" and not (lines and OF_PASSWORDS.match(lines[-1])):
            return "TransPasswordFile did not run"
    return ""
