// WideText.h: routines on terminated 16-bit text, for what the C library
// offers only on its own wide characters (32 bits wide here). Internal;
// never installed.
//
//   size_t n = vbu::wtext::Length(text);
//   int order = vbu::wtext::Compare(a, b);       // as wcscmp
//   long v = vbu::wtext::ToInt(digits);           // as _wtoi
#pragma once

#include <cstddef>

namespace vbu::wtext {

using Unit = unsigned short;

// Units before the terminator.
std::size_t Length(const Unit* text);
// <0, 0, >0 by unsigned unit values; a prefix sorts first.
int Compare(const Unit* a, const Unit* b);
// As Compare over at most `count` units.
int CompareN(const Unit* a, const Unit* b, std::size_t count);
// As Compare, each unit lowered first (case-blind).
int CompareNoCase(const Unit* a, const Unit* b);
int CompareNoCaseN(const Unit* a, const Unit* b, std::size_t count);
// The first / last unit equal to `c` (the terminator included for 0), or null.
Unit* Find(const Unit* text, Unit c);
Unit* FindLast(const Unit* text, Unit c);
// The first place where `part` stands in `text`, or null; `text` for an empty part.
Unit* FindText(const Unit* text, const Unit* part);
// Splits `text` at units of `separators` (as wcstok): the next token, cut
// off in place, or null. A null `text` goes on from `*position`.
Unit* Tokenize(Unit* text, const Unit* separators, Unit** position);
// Leading white space, an optional sign, then decimal digits (as _wtoi).
// Values beyond 32 bits are held at its limits.
int ToInt(const Unit* text);

// Case of one unit (the system's Unicode case tables; units outside them stay).
bool IsLower(Unit c);
bool IsUpper(Unit c);
Unit ToUpper(Unit c);
Unit ToLower(Unit c);

// Writes `value` as "%d", "%x" or "%f" would into `out` (room for `room`
// units, terminator included: at least 1), cutting what does not fit.
// Gives the units written, terminator excluded.
std::size_t FormatDecimal(int value, Unit* out, std::size_t room);
std::size_t FormatHex(int value, Unit* out, std::size_t room);
std::size_t FormatFixed(double value, Unit* out, std::size_t room);

}  // namespace vbu::wtext
