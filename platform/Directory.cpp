#include "platform/internal/Directory.h"

#include "platform/CodePage.h"
#include "platform/PathBytes.h"
#include "platform/SysCalls.h"

namespace vbu::platform {
namespace {

// `count` bytes of the system code page as 16-bit text.
bool ToUnits(const char* bytes, std::size_t count, std::u16string* out) {
  out->resize(count);
  if (count == 0) return true;
  long units = BytesToUnits(bytes, count, reinterpret_cast<unsigned short*>(out->data()), count, CodePage::kSystem);
  if (units < 0) return false;
  out->resize(static_cast<std::size_t>(units));
  return true;
}

}  // namespace
}  // namespace vbu::platform

#if defined(__linux__)
#include "linux/Directory.inc"
#else
#error "No folder calls for this system"
#endif
