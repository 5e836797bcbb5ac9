#include "platform/internal/Environment.h"

#include <string>

#include "platform/CodePage.h"
#include "platform/PathBytes.h"
#include "platform/SysCalls.h"

namespace vbu::platform {
namespace {

const unsigned short* Units(const char16_t* text) { return reinterpret_cast<const unsigned short*>(text); }

// System bytes (UTF-8) as text.
std::u16string FromSystemBytes(const char* bytes, std::size_t count) {
  std::u16string text(count, u'\0');
  long n = count ? BytesToUnits(bytes, count, reinterpret_cast<unsigned short*>(text.data()), count,
                                CodePage::kSystem)
                 : 0;
  text.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
  return text;
}

}  // namespace
}  // namespace vbu::platform

#if defined(__linux__)
#include "linux/Environment.inc"
#else
#error "No application environment for this system"
#endif
