#include <cstdlib>
#include <memory>

#include "platform/internal/Thread.h"

#if __has_include(<cxxabi.h>)
#include <cxxabi.h>
#define VBU_HAS_CXXABI 1
#endif

namespace vbu::platform {

std::string TypeName(const std::type_info& type) {
#if defined(VBU_HAS_CXXABI)
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  if (status == 0 && name) return name.get();
#endif
  return type.name();
}

}  // namespace vbu::platform
