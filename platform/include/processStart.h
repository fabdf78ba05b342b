// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Makes the process safe to write files; to be called before anything else.
///
/// Standard input, output and error that are closed are opened on "/dev/null", so that no report can end up in a file
/// that happens to get their number. SIGPIPE and SIGXFSZ are ignored: a pipe without a reader or a size limit is a
/// failed write, not the end of the run. A process that runs as root leaves no core file, which would hold passwords and
/// the cipher's key. TZ is unset.
void PrepareProcess();
