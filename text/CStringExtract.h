// CStringExtract.h: taking a quoted word out of a line. Positions count
// units from the start of the text; 0 means no double quote.
//
//   MString line(u"title \"Main menu\" 3"_u16);
//   unsigned short word[256];
//   int at = CStringExtract::SeekLeftDoubleQuat(line);        // behind the opening quote
//   int step = CStringExtract::GetString(line + at, word);    // "Main menu", up to the closing one
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

class VBU_API CStringExtract {
 public:
  // The position just behind the first double quote; 0 if there is none.
  static int SeekLeftDoubleQuat(unsigned short* text);
  static int SeekLeftDoubleQuat(const unsigned short* text);
  static int SeekLeftDoubleQuat(decltype(nullptr)) { return SeekLeftDoubleQuat(static_cast<const unsigned short*>(nullptr)); }
  // Copies what stands before the first double quote into `result` (which
  // must hold it) and gives the position behind that quote; with no quote,
  // an empty result and 0.
  static int GetString(unsigned short* text, unsigned short* result);
  static int GetString(const unsigned short* text, unsigned short* result);
  static int GetString(decltype(nullptr), unsigned short* result) {
    return GetString(static_cast<const unsigned short*>(nullptr), result);
  }
  static int SeekLeftDoubleQuatChar(const char* text);
  static int GetStringChar(const char* text, char* result);
};
