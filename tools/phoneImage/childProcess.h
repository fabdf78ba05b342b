// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a program that has ended gave.
struct ChildResult {
    int exitStatus = -1; ///< 128 plus the number of a signal that killed it
    std::string output;
    std::string errors;
};

/// Runs a program to its end, with nothing to read. Throws `ToolError` when it cannot be started, writes more than 64 MiB or
/// has not ended after a minute.
///
/// @param arguments  the program, searched on PATH, and its arguments
ChildResult RunChild(const std::vector<std::string>& arguments);

/// A started program that gets messages on its standard input and sends others on its standard output: eight bytes with the
/// size in the machine's order, then the bytes. It is killed when the object goes.
class TalkingChild
{
public:
    /// Throws `ToolError` when it cannot be started.
    explicit TalkingChild(const std::vector<std::string>& arguments);
    ~TalkingChild();
    TalkingChild(const TalkingChild&) = delete;
    TalkingChild& operator=(const TalkingChild&) = delete;

    void Send(std::string_view message);

    /// Throws `ToolError` when nothing comes for a minute.
    ///
    /// @return none when the program has closed its output, as one that ends does
    std::optional<std::string> Receive();

    /// Waits for its end, after `Receive` has given none.
    ChildResult End();

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};
