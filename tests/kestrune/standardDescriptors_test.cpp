// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A run whose standard descriptors are closed: no report ends up in a file that got their number.

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

#include "phoneImage.h"

namespace fs = std::filesystem;

TEST(StandardDescriptors, ARunWithoutStandardDescriptorsChangesTheFilesThatItShouldAndNoOther)
{
    PhoneImage phone;
    phone.PutExamplePhone();
    PhoneImage twin;
    twin.PutExamplePhone();
    phone.Run("all");

    // The sandbox itself gets all three; the shell in it closes them.
    std::vector<std::string> command = twin.Command({"all"});
    const auto program = std::find(command.begin(), command.end(), "--") + 1;
    command.insert(program, {"/bin/sh", "-c", "exec \"$0\" \"$@\" <&- >&- 2>&-"});
    const ProcessResult result = RunProcess(command, twin.Environment());
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");

    int compared = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(phone.HostPath("/config"))) {
        if (!entry.is_regular_file())
            continue;
        const std::string path = entry.path().string().substr(phone.HostPath("").size());
        EXPECT_EQ(twin.Get(path), phone.Get(path)) << path;
        ++compared;
    }
    EXPECT_GT(compared, 10);
}
