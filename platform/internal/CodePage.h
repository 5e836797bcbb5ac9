// CodePage.h: conversion between 16-bit text and the byte code pages the
// library knows: the system's (UTF-8 here) and the Macintosh character set
// (Mac Roman). Internal; never installed.
//
//   long units = vbu::platform::BytesToUnits(bytes, n, out, room, vbu::platform::CodePage::kSystem);
//   long bytes = vbu::platform::UnitsToBytes(text, n, out, room, vbu::platform::CodePage::kMacintosh);
#pragma once

#include <cstddef>

namespace vbu::platform {

enum class CodePage { kSystem, kMacintosh };

// Converts `count` bytes into at most `room` units (no terminator is
// written). Bytes that are no character of the page become U+FFFD. Gives the
// units written, or -1 if they do not fit or the conversion is not at hand.
long BytesToUnits(const char* bytes, std::size_t count, unsigned short* out, std::size_t room, CodePage page);
// Converts `count` units into at most `room` bytes (no terminator). Units the
// page cannot show become '?' (U+FFFD's bytes in UTF-8). Gives the bytes
// written, or -1 if they do not fit or the conversion is not at hand.
long UnitsToBytes(const unsigned short* units, std::size_t count, char* out, std::size_t room, CodePage page);

}  // namespace vbu::platform
