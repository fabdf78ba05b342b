# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""What must have become of the phone when some passes of a run were disturbed: the rules, and what broke them."""

import passReports
import recordedRun
import wholeSaves


def shown(entry):
    return f"{entry.kind} {entry.mode:04o} {entry.owner} {entry.content!r}" if entry else "nothing"


def paths_of(run, found):
    return sorted(run.before.keys() | run.after.keys() | found.keys())


def temporary_files(found):
    return [f"{path} is left" for path in found if recordedRun.is_temporary(path)]


def differences(expected, found):
    """A temporary file is told elsewhere."""
    return [f"{path}: expected {shown(expected.get(path))}, found {shown(found.get(path))}"
            for path in sorted(expected.keys() | found.keys())
            if expected.get(path) != found.get(path) and not recordedRun.is_temporary(path)]


def broken_files(whole, disturbed, found):
    """Only the files of the disturbed passes may differ from those after the undisturbed run, and only by whole saves
    that are missing."""
    run = whole.run
    problems = []
    for path in paths_of(run, found):
        if recordedRun.is_temporary(path) or found.get(path) == run.after.get(path):
            continue
        if any(one.may_write(origin) for one in disturbed for origin in origins_of(run, path)):
            reason = whole.why_not(path, found.get(path))
            problems += [f"{path} {reason}"] if reason else []
        else:
            problems.append(f"{path} is not as after an undisturbed run: {shown(found.get(path))}")
    return problems


def origins_of(run, path):
    """The file itself, and the files of which the mode may make a copy there."""
    return [path] + list(wholeSaves.copied_to(run.mode, run.before).get(path, ()))


def after_one_pass(whole, place, found, written):
    """That pass alone was disturbed: what else there was to do is done, and reported."""
    reason = passReports.why_not_around(whole.run, place, written)
    return broken_files(whole, [whole.run.passes[place]], found) + ([reason] if reason else [])


def without_translations(whole, found, written):
    """The setting that allows the XML translations could not be read: then none of them runs, since door phones that were
    translated before would lose their texts."""
    places = [place for place, one in enumerate(whole.run.passes) if one.is_translator()]
    reason = passReports.why_not_around(whole.run, places[0], written, places[-1])
    return broken_files(whole, [whole.run.passes[place] for place in places], found) + ([reason] if reason else [])


def after_some_pass(whole, found, written):
    """One pass alone was disturbed, nobody knows which: the problems of the likeliest one."""
    places = range(len(whole.run.passes))
    possible = [after_one_pass(whole, place, found, written) for place in places]
    if any(one.is_translator() for one in whole.run.passes):
        possible.append(without_translations(whole, found, written))
    return min(possible, key=len)


def after_last_passes(whole, place, found):
    """That pass was disturbed, and all behind it."""
    return broken_files(whole, whole.run.passes[place:], found)
