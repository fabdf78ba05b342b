// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The cost of any C++ program.

int main()
{
    return 0;
}
