#include "platform/internal/SystemText.h"

#include "platform/internal/CodePage.h"
#include "platform/internal/WideText.h"

namespace vbu::platform {

std::u16string FromSystemBytes(const char* bytes, std::size_t count, uint32_t* error) {
  // A byte becomes at most one unit.
  std::u16string text(count, u'\0');
  long n = count ? BytesToUnits(bytes, count, AsUnits(text.data()), count, CodePage::kSystem, error) : 0;
  text.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
  return text;
}

std::string ToSystemBytes(const char16_t* text, uint32_t* error) {
  std::size_t count = text ? wtext::Length(AsUnits(text)) : 0;
  // A unit becomes at most three bytes.
  std::string bytes(count * 3, '\0');
  long n = count ? UnitsToBytes(AsUnits(text), count, bytes.data(), bytes.size(), CodePage::kSystem, error) : 0;
  bytes.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
  return bytes;
}

}  // namespace vbu::platform
