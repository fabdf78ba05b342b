// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// Runs all six translators on the device's files, in the same order as the driver. No mode calls it: the driver runs
/// them one by one, under its own condition.
///
/// @return the result of the last one, the remote phone books
int AllV4XToV50();
