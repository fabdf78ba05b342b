// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>

/// What the XML library must not be given: it recurses once per nesting level, searches an element's attributes one by
/// one and takes some fifty bytes of memory per byte of input.

/// Nested empty elements print to many times what they were read from.
constexpr std::size_t kLargestPrintedXml = std::size_t{16} << 20;
constexpr int kDeepestElement = 200; ///< the root is the first
constexpr int kMostElements = 100000;
constexpr int kMostAttributes = 256; ///< in one element

/// @return why a file of that size is refused, or null
const char* RefuseSize(std::size_t size);

/// Follows a document just as TinyXML 2.6.2 would parse it, quirks included, but without recursion: what hides an
/// element from the library must hide it here, and the other way round, or nesting could be faked or a harmless file be
/// refused. Where the library would give up with an error, so does this, and leaves the error to the library.
///
/// @param text  line ends normalised, no zero byte
/// @return why the document is refused, or null
const char* RefuseXml(std::string_view text);
