// The platform's zeroed block, and what the container layer does when the
// platform has no memory for its scratch blocks.
#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/LArray.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "platform/FaultInjection.h"
#include "platform/internal/Memory.h"
#include "support/ArrayProbe.h"


TEST(PlatformMemory, ZeroedBlockIsZeroAndStable) {
  // Dirty the heap first so that a non-clearing allocator would show.
  for (int i = 0; i < 8; ++i) {
    std::vector<unsigned char> junk(100000, 0xAB);
  }
  auto* block = static_cast<unsigned char*>(vbu::platform::AllocZeroedBlock(100000));
  ASSERT_NE(block, nullptr);
  for (int i = 0; i < 100000; ++i) ASSERT_EQ(block[i], 0) << i;
  vbu::platform::FreeBlock(block);
  EXPECT_EQ(vbu::platform::AllocZeroedBlock(0), nullptr);
  vbu::platform::FreeBlock(nullptr);  // harmless
}

TEST(PlatformMemory, NoScratchBlockLeavesItemsAndStateAlone) {
  LArray a(4);
  Append(a, {5, 3, 9, 1});
  ASSERT_FALSE(a.IsSorted());
  {
    StSysCallFaults fail(1, ENOMEM, StSysCallFaults::kFromThenOn, {"calloc"});
    a.Sort();
    a.SwapItems(1, 2);
    a.MoveItem(1, 4);
  }
  EXPECT_EQ(ItemsOf(a), (std::vector<int32_t>{5, 3, 9, 1}));
  EXPECT_FALSE(a.IsSorted());  // not claimed sorted without a sort

  a.Sort();  // memory is back
  EXPECT_EQ(ItemsOf(a), (std::vector<int32_t>{1, 3, 5, 9}));
  EXPECT_TRUE(a.IsSorted());
}

TEST(PlatformMemory, PointerGuardsHoldNullWhenThePlatformHasNoMemory) {
  StSysCallFaults fail(2, ENOMEM, StSysCallFaults::kFromThenOn, {"calloc"});  // from the second call on
  StPointerBlock first(16), second(16);
  StClearPointerBlock clear(64);
  EXPECT_NE(static_cast<char*>(first), nullptr);
  EXPECT_EQ(static_cast<char*>(second), nullptr);
  EXPECT_EQ(static_cast<char*>(clear), nullptr);
}  // the empty ones destroy without effect
