#include "platform/internal/PathBytes.h"

#include "platform/internal/CodePage.h"
#include "platform/internal/WideText.h"

namespace vbu::platform {

PathBytes::PathBytes(const unsigned short* path) {
  if (!path) return;
  std::size_t units = wtext::Length(path);
  if (units == 0) return;
  // A unit becomes at most three bytes of UTF-8.
  mBytes.resize(units * 3);
  long written = UnitsToBytes(path, units, mBytes.data(), mBytes.size(), CodePage::kSystem);
  mBytes.resize(written > 0 ? static_cast<std::size_t>(written) : 0);
}

}  // namespace vbu::platform
