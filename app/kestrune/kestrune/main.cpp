// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "processStart.h"
#include "runSequence.h"

int main(int argumentCount, char** arguments)
{
    PrepareProcess();
    return RunSequence(argumentCount, arguments);
}
