// Growable blocks and the scope guards.
#include <VantoroBasicUtils/containers/Handle.h>

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <numeric>

namespace {
// Reads the protected fields of a Handle.
class ProbeHandle : public Handle {
 public:
  using Handle::Handle;
  uint32_t AllocSize() const { return mAllocSize; }
  bool Blockless() const { return mPtr == nullptr && mSize == 0 && mAllocSize == 0; }
};

void Fill(Handle& h, unsigned n) {
  auto* p = reinterpret_cast<unsigned char*>(h.GetPtr());
  for (unsigned i = 0; i < n; ++i) p[i] = static_cast<unsigned char>(i * 7 + 1);
}

bool Holds(Handle& h, unsigned n) {
  auto* p = reinterpret_cast<unsigned char*>(h.GetPtr());
  for (unsigned i = 0; i < n; ++i) {
    if (p[i] != static_cast<unsigned char>(i * 7 + 1)) return false;
  }
  return true;
}
}  // namespace

TEST(Handle, AllocationSizeIsTheNextMultipleOf256StrictlyAbove) {
  EXPECT_EQ(Handle::GetAllocSize(0), 256u);
  EXPECT_EQ(Handle::GetAllocSize(1), 256u);
  EXPECT_EQ(Handle::GetAllocSize(255), 256u);
  EXPECT_EQ(Handle::GetAllocSize(256), 512u);
  EXPECT_EQ(Handle::GetAllocSize(1000), 1024u);
  EXPECT_EQ(Handle::GetAllocSize(1024), 1280u);
  EXPECT_EQ(Handle::GetAllocSize(Handle::kMaxSize), 0xFFFFFF00u);
  // Where the 32-bit rounding wraps, as it does for every size above 32 bits.
  EXPECT_EQ(Handle::GetAllocSize(Handle::kMaxSize + 1), 0u);
  EXPECT_EQ(Handle::GetAllocSize(0x100000010ul), 0u);
}

TEST(Handle, ResizeKeepsTheBlockWhileTheRoundedSizeStays) {
  ProbeHandle h(10);
  char* before = h.GetPtr();
  Fill(h, 10);
  h.Resize(200);
  EXPECT_EQ(h.GetPtr(), before);
  EXPECT_EQ(h.GetSize(), 200u);
  EXPECT_EQ(h.AllocSize(), 256u);
  EXPECT_TRUE(Holds(h, 10));
}

TEST(Handle, GrowingAndShrinkingMoveTheContents) {
  ProbeHandle h(200);
  Fill(h, 200);
  h.Resize(300);
  EXPECT_EQ(h.AllocSize(), 512u);
  EXPECT_TRUE(Holds(h, 200));

  Fill(h, 300);
  h.Resize(10);  // 256 bytes of the 300 fit the new block, and are kept
  EXPECT_EQ(h.AllocSize(), 256u);
  EXPECT_EQ(h.GetSize(), 10u);
  EXPECT_TRUE(Holds(h, 256));

  h.Resize(0);  // never frees
  EXPECT_NE(h.GetPtr(), nullptr);
  EXPECT_EQ(h.AllocSize(), 256u);
}

TEST(Handle, ResizeOfABlocklessHandleAllocates) {
  ProbeHandle h;
  EXPECT_TRUE(h.Blockless());
  h.Resize(0);
  EXPECT_NE(h.GetPtr(), nullptr);
  EXPECT_EQ(h.AllocSize(), 256u);
}

TEST(Handle, LockAndUnlockCountNothing) {
  Handle h(50);
  h.Unlock();  // without Lock: harmless
  char* p = h.Lock();
  EXPECT_EQ(h.Lock(), p);
  EXPECT_EQ(h.GetPtr(), p);
  h.Unlock();
  h.Unlock();
  EXPECT_EQ(h.GetPtr(), p);
}

TEST(Handle, SizesBeyondThirtyTwoBitsAreRefusedAndNothingIsLost) {
  ProbeHandle h(100);
  Fill(h, 100);
  char* before = h.GetPtr();
  EXPECT_THROW(h.Resize(Handle::kMaxSize + 1), std::bad_alloc);
  EXPECT_THROW(h.Resize(0x100000000ul), std::bad_alloc);
  EXPECT_EQ(h.GetPtr(), before);
  EXPECT_EQ(h.GetSize(), 100u);
  EXPECT_TRUE(Holds(h, 100));
  EXPECT_THROW(Handle(0x100000000ul), std::bad_alloc);
}

TEST(ScopeGuards, HandleGuardsOwnAHandleOfTheSize) {
  StHandleBlock a(300);
  StClearHandleBlock b(10);
  StTempHandle c(0);
  ASSERT_NE(static_cast<Handle*>(a), nullptr);
  EXPECT_EQ(static_cast<Handle*>(a)->GetSize(), 300u);
  EXPECT_EQ(static_cast<Handle*>(b)->GetSize(), 10u);
  EXPECT_NE(static_cast<Handle*>(c)->GetPtr(), nullptr);
  StHandleBlock bad(-1);  // a bad size gives no handle, and destroys without effect
  EXPECT_EQ(static_cast<Handle*>(bad), nullptr);
}

TEST(ScopeGuards, PointerGuardsGiveZeroFilledBlocks) {
  StPointerBlock a(4096);
  StClearPointerBlock b(17);
  ASSERT_NE(static_cast<char*>(a), nullptr);
  ASSERT_NE(static_cast<char*>(b), nullptr);
  for (int i = 0; i < 4096; ++i) ASSERT_EQ(a[i], 0);
  for (int i = 0; i < 17; ++i) ASSERT_EQ(b[i], 0);
  StPointerBlock none(0), negative(-5);
  EXPECT_EQ(static_cast<char*>(none), nullptr);
  EXPECT_EQ(static_cast<char*>(negative), nullptr);
}
