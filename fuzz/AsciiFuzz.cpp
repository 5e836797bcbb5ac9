// ImportASCII and ExportASCII (and ExportUnicode) on any bytes and units,
// into blocks of exactly the room the caller gives.
#include "FuzzSupport.h"

#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int max = in.ConsumeIntegralInRange(0, 300);
  const auto set = in.ConsumeBool() ? kCharacterSetMacintosh : kCharacterSetWindows;
  const bool whole = in.ConsumeBool();
  const bool asUnits = in.ConsumeBool();

  MString text;
  if (asUnits) {
    std::vector<unsigned short> units = vbu::fuzz::Units(in, 200);
    text = MString(units.data());
  } else {
    // Bytes in the system code page: counted, or up to a terminator.
    std::string bytes = in.ConsumeRemainingBytesAsString();
    if (whole) {
      text.ImportASCII(bytes.c_str(), -1);
    } else {
      auto block = std::make_unique<char[]>(bytes.size() ? bytes.size() : 1);
      std::memcpy(block.get(), bytes.data(), bytes.size());
      text.ImportASCII(block.get(), static_cast<long>(bytes.size()));
    }
    VBU_FUZZ_CHECK(static_cast<std::size_t>(text.GetLength()) <= bytes.size());
  }

  // Room for max + 1 bytes: a whole conversion or nothing.
  auto bytes = std::make_unique<char[]>(static_cast<std::size_t>(max) + 1);
  int stored = text.ExportASCII(bytes.get(), max, set);
  VBU_FUZZ_CHECK(stored >= 0 && stored <= max);
  VBU_FUZZ_CHECK(bytes[static_cast<std::size_t>(stored)] == 0);
  // A unit of a surrogate pair alone has no character: it is stored as
  // U+FFFD's bytes, by design.
  bool pairsOnly = true;
  const unsigned short* units = text;
  for (int i = 0; units[i] != 0; ++i) {
    if (units[i] >= 0xD800 && units[i] <= 0xDBFF && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
      ++i;
    } else if (units[i] >= 0xD800 && units[i] <= 0xDFFF) {
      pairsOnly = false;
    }
  }
  if (stored > 0 && set == kCharacterSetWindows && pairsOnly) {
    // What was stored in the system code page reads back as the same text.
    MString back;
    back.ImportASCII(bytes.get(), stored);
    VBU_FUZZ_CHECK(back == text);
  }

  // Room for max units.
  if (max > 0) {
    auto units = std::make_unique<unsigned short[]>(static_cast<std::size_t>(max));
    int copied = text.ExportUnicode(units.get(), max);
    VBU_FUZZ_CHECK(copied >= 0 && copied <= max);
  }
  return 0;
}
