// Makes every unbuffered open fail as on a file system without direct
// transfers, so that the overlapped route of this program goes through the
// system cache. A test checks that the route is the one meant.
#include <fcntl.h>

#include <gtest/gtest.h>

#include <cerrno>

#include "platform/internal/File.h"
#include "platform/internal/SysCalls.h"
#include "support/TempFolder.h"

namespace {

const bool kRefused = [] {
  vbu::platform::Sys().open = [](const char* path, int flags, unsigned mode) {
    if (flags & O_DIRECT) {
      errno = EINVAL;
      return -1;
    }
    return vbu::platform::DefaultSysCalls().open(path, flags, mode);
  };
  return true;
}();

}  // namespace

TEST(Route, OverlappedHandlesGoThroughTheCache) {
  ASSERT_TRUE(kRefused);
  TempFolder dir;
  intptr_t handle = -1;
  ASSERT_EQ(vbu::platform::OpenHandle(dir.Path("f"), vbu::platform::HandleAccess::kWrite,
                                      vbu::platform::HandleDisposition::kCreateAlways, {.unbuffered = true}, &handle),
            0u);
  EXPECT_FALSE(vbu::platform::HandleIsUnbuffered(handle));
  vbu::platform::CloseHandle(handle);
}
