// Code page conversion when the system refuses it: strings come out empty,
// never cut or garbled, and nothing is written out of bounds.
#include <VantoroBasicUtils/text/MString.h>

#include <gtest/gtest.h>

#include <thread>

#include "platform/FaultInjection.h"

TEST(CodePage, ConversionNotAtHandOrFailingMidway) {
  using Swap = void (*)(vbu::platform::SysCalls&);
  const Swap swaps[] = {
      [](vbu::platform::SysCalls& sys) {
        sys.iconv_open = [](const char*, const char*) -> void* { return reinterpret_cast<void*>(-1); };
      },
      [](vbu::platform::SysCalls& sys) {
        sys.iconv = [](void*, char**, std::size_t*, char**, std::size_t*) -> std::size_t {
          errno = EBADF;  // neither "no room" nor "no character": a hard failure
          return static_cast<std::size_t>(-1);
        };
      },
  };
  for (Swap swap : swaps) {
    // The converters are opened per thread on first use: a fresh thread meets the refusal.
    std::thread([swap] {
      StSysCallTable saved;
      swap(vbu::platform::Sys());
      MString s;
      s.ImportASCII("abc", -1);
      EXPECT_EQ(s.GetLength(), 0);
      const unsigned short text[] = {'a', 'b', 0};
      MString t(text);
      char out[8] = "zzzzzzz";
      EXPECT_EQ(t.ExportASCII(out, 7, kCharacterSetWindows), 0);
      EXPECT_EQ(out[0], 0);
    }).join();
  }
}
