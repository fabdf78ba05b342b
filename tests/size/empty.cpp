// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// What any C++ program costs.

int main()
{
    return 0;
}
