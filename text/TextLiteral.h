// TextLiteral.h: writing 16-bit text in source code. The library's text
// unit is unsigned short; C++ writes UTF-16 literals as char16_t. The
// literal suffix _u16 turns one into a terminated unsigned short array at
// compile time; ToUnits views any char16_t text as units.
//
//   using namespace vbu::literals;
//   const unsigned short* name = u"Kapitel 1"_u16;
//   MString title(name);
#pragma once

#include <cstddef>

namespace vbu {

// A UTF-16 literal copied into units at compile time.
template <std::size_t N>
struct U16Literal {
  unsigned short units[N];
  constexpr U16Literal(const char16_t (&text)[N]) : units{} {
    for (std::size_t i = 0; i < N; ++i) units[i] = text[i];
  }
};

// A char16_t text seen as 16-bit units (the two types have one representation).
inline const unsigned short* ToUnits(const char16_t* text) { return reinterpret_cast<const unsigned short*>(text); }
inline unsigned short* ToUnits(char16_t* text) { return reinterpret_cast<unsigned short*>(text); }

namespace literals {
// u"text"_u16: a pointer to the terminated units of "text".
template <U16Literal L>
constexpr const unsigned short* operator""_u16() {
  return L.units;
}
}  // namespace literals

}  // namespace vbu
