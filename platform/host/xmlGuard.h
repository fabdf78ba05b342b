// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string_view>

/// Limits on the input of the XML library: it recurses once per nesting level, searches an element's attributes one by
/// one and needs some fifty bytes of memory per byte of input.

/// The printed form of nested empty elements is many times longer than the input.
constexpr std::size_t kLargestPrintedXml = std::size_t{16} << 20;
constexpr int kDeepestElement = 200; ///< the root is the first
constexpr int kMostElements = 100000;
constexpr int kMostAttributes = 256; ///< in one element

/// @return the reason why a file of that size is refused, or null
const char* RefuseSize(std::size_t size);

/// Scans a document exactly as TinyXML 2.6.2 would parse it, including its quirks, but without recursion: an element
/// that is hidden from the library must be hidden here, and the other way round. Otherwise nesting could be faked, or a
/// harmless file refused. If the library would stop with an error, the scan stops too and leaves the error to the
/// library.
///
/// @param text  line ends normalised, no zero byte
/// @return the reason why the document is refused, or null
const char* RefuseXml(std::string_view text);
