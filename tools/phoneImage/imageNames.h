// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

/// Finds the images that the words of a command line name. A word is
/// - "@FILE": a list of names, one per line, relative to the working directory; "@-" is standard input. Empty lines and lines
///   that begin with "#" are skipped. A name in it is not a further list;
/// - a folder with the trees of a phone (`FindTrees`): an image;
/// - another folder: searched at all depths for such folders and for files that end in .tar, .tar.gz or .tgz. Links in it
///   are not followed. A folder that cannot be read counts as an image, so that its opening says why;
/// - any other name: an image. Whether it exists is found when it is opened.
///
/// Throws `ToolError` for a list that cannot be read, and for a list or a folder without any image.
///
/// @return their names as given, those in a searched folder with its name in front; in the order of the words, those in a
///         searched folder sorted by their bytes; each once
std::vector<std::string> FindImages(const std::vector<std::string>& words);
