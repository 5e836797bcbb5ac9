// Makes the platform refuse io_uring, as some sandboxes do, so that every
// transfer of this program runs on the layer's own threads. A test checks
// that the route is the one meant.
#include <gtest/gtest.h>

#include <cerrno>

#include "platform/internal/AsyncIO.h"
#include "platform/internal/SysCalls.h"

namespace {

const bool kRefused = [] {
  vbu::platform::Sys().io_uring_queue_init = [](unsigned, struct ::io_uring*, unsigned) { return -EPERM; };
  return true;
}();

}  // namespace

TEST(Route, TransfersRunOnTheLayersThreads) {
  ASSERT_TRUE(kRefused);
  EXPECT_FALSE(vbu::platform::TransfersUseIoUring());
}
