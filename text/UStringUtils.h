// UStringUtils.h: the string calls on terminated 16-bit text in one place,
// and conversion to and from the system's byte code page through two fixed
// buffers.
//
//   MString text(u"Kapitel"_u16);
//   unsigned int n = UStringUtils::strlen(text);
//   char* bytes = UStringUtils::TtoA(text);       // valid until the next TtoA
//   unsigned short* units = UStringUtils::AtoT(bytes);
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

class VBU_API UStringUtils {
 public:
  // `text` in the system's code page, in mABuffer; a text that doesn't fit
  // its 1024 bytes (terminator included) comes out empty, never cut.
  static char* TtoA(unsigned short* text);
  static char* TtoA(const unsigned short* text);
  static char* TtoA(decltype(nullptr)) { return TtoA(static_cast<const unsigned short*>(nullptr)); }
  // `text` from the system's code page, in mTBuffer (up to 2047 units; more is cut).
  static unsigned short* AtoT(char* text);
  static unsigned short* AtoT(const char* text);
  static unsigned short* AtoT(decltype(nullptr)) { return AtoT(static_cast<const char*>(nullptr)); }

  static unsigned short* strchr(const unsigned short* text, int c);
  static unsigned short* strrchr(const unsigned short* text, int c);
  static unsigned short* strstr(const unsigned short* text, const unsigned short* part);
  static unsigned int strlen(const unsigned short* text);
  static unsigned short* strcpy(unsigned short* dest, const unsigned short* source);
  static unsigned short* strncpy(unsigned short* dest, const unsigned short* source, unsigned int count);
  static unsigned short* strcat(unsigned short* dest, const unsigned short* source);
  static unsigned short* strncat(unsigned short* dest, const unsigned short* source, unsigned int count);
  static int strcmp(const unsigned short* a, const unsigned short* b);
  static int strncmp(const unsigned short* a, const unsigned short* b, unsigned int count);
  // Case-blind.
  static int stricmp(const unsigned short* a, const unsigned short* b);
  static int strnicmp(const unsigned short* a, const unsigned short* b, unsigned int count);
  static int atoi(const unsigned short* text);
  // Through TtoA (so it overwrites mABuffer).
  static double atof(const unsigned short* text);
  // Splits at units of `separators`, with one scanning position per thread.
  static unsigned short* strtok(unsigned short* text, const unsigned short* separators);

  static char mABuffer[1024];
  static unsigned short mTBuffer[2048];
};
