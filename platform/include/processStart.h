// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Makes the process safe for writing files; call it before anything else.
///
/// If standard input, output or error is closed, it is opened on "/dev/null", so that no report can end up in a file
/// that happens to get its number. SIGPIPE and SIGXFSZ are ignored: a pipe without a reader, or a size limit, makes a
/// write fail and does not end the run. A process that runs as root leaves no core file, which would contain passwords
/// and the cipher's key. TZ is unset.
void PrepareProcess();
