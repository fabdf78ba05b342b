// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Runs one of the operations that the app library offers beside those of the modes, on the device's fixed paths: tests
// start it in the sandbox in the program's place.

#include <cstdio>
#include <string_view>

#include "allV4XToV50.h"
#include "migrateVersionSettings.h"

int main(int argumentCount, char** arguments)
{
    const std::string_view operation = argumentCount == 2 ? arguments[1] : "";
    if (operation == "BacklightMinutesToSecondsIfSmall")
        BacklightMinutesToSecondsIfSmall();
    else if (operation == "AllV4XToV50")
        std::printf("%d\n", AllV4XToV50());
    else
        return 1;
    return 0;
}
