// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "scratchFolder.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

ScratchFolder::ScratchFolder(Place place) : before_(std::filesystem::current_path())
{
    const std::filesystem::path parent = place == Place::Memory ? std::filesystem::temp_directory_path() : before_;
    path_ = parent / "kestrune-bench";  // always the same name, since a floor repeats the recorded calls
    std::filesystem::remove_all(path_); // a program that failed may have left it
    Require(std::filesystem::create_directory(path_), "make a scratch folder");
    std::filesystem::current_path(path_);
}

ScratchFolder::~ScratchFolder()
{
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(path_);
}

void WriteDurably(const std::string& path, std::string_view bytes)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    Require(file != -1, "make a file");
    Require(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "write a file");
    Require(fsync(file) == 0, "flush a file");
    (void)close(file); // flushed
}

void Require(bool isDone, const char* what)
{
    if (isDone)
        return;
    std::fprintf(stderr, "cannot %s\n", what);
    std::_Exit(1);
}
