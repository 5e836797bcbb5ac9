// Block routines, block comparison, decimal text, growable blocks and guards.
#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/UMemUtils.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <numeric>
#include <vector>

TEST(UMemUtils, CopyFillAndClearExactlyTheirSizeAtAnyAlignment) {
  for (unsigned size : {0u, 3u, 4u, 255u, 256u, 257u, 1000u}) {
    for (int offset = 0; offset < 4; ++offset) {
      std::vector<unsigned char> src(size + 8), dst(size + 16, 0xEE);
      std::iota(src.begin(), src.end(), 1);
      UMemUtils::memcpy(dst.data() + 4 + offset, src.data() + offset, size);
      ASSERT_EQ(0, std::memcmp(dst.data() + 4 + offset, src.data() + offset, size));
      ASSERT_EQ(dst[3 + offset], 0xEE);
      ASSERT_EQ(dst[4 + offset + size], 0xEE) << size;
      UMemUtils::memset(dst.data() + 4 + offset, 0x1FF, size);  // the low byte of the value
      ASSERT_EQ(dst[4 + offset + size], 0xEE);
      ASSERT_EQ(dst[3 + offset + size], size ? 0xFF : 0xEE);
      UMemUtils::zeromem(dst.data() + 4 + offset, size);
      ASSERT_EQ(dst[4 + offset + size], 0xEE);
    }
  }
  std::vector<unsigned char> overlap(300);
  std::iota(overlap.begin(), overlap.end(), 0);
  UMemUtils::memcpy(overlap.data(), overlap.data() + 4, 296);  // a downward move over itself
  EXPECT_EQ(overlap[0], 4);
  EXPECT_EQ(overlap[295], 43);  // 299 & 0xFF
  unsigned char small[8] = {};
  const unsigned char from[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  UMemUtils::memcpy(small, from, 0x80000003u);  // 2^31 and more: only the low 8 bits count
  EXPECT_EQ(small[2], 3);
  EXPECT_EQ(small[3], 0);
}

TEST(UMemUtils, FixedSizeStepsAdvanceTheirPointers) {
  unsigned char src[300], dst[300] = {};
  std::iota(src, src + 300, 0);
  auto* d = reinterpret_cast<int32_t*>(dst + 1);  // misaligned on purpose
  auto* s = reinterpret_cast<int32_t*>(src + 1);
  UMemUtils::memcpy256byte(d, s);
  UMemUtils::memcpy16byte(d, s);
  UMemUtils::memcpy4byte(d, s);
  EXPECT_EQ(reinterpret_cast<unsigned char*>(d), dst + 277);
  EXPECT_EQ(0, std::memcmp(dst + 1, src + 1, 276));
  EXPECT_EQ(dst[277], 0);
  UMemUtils::memset8byte(d, 0x01020304);
  UMemUtils::zeromem4byte(d);
  EXPECT_EQ(reinterpret_cast<unsigned char*>(d), dst + 289);
  const int32_t word = 0x01020304;
  EXPECT_EQ(0, std::memcmp(dst + 281, &word, 4));  // the word as the host stores it
  EXPECT_EQ(dst[286], 0);
}

TEST(BlockCompare, UnsignedBytesThenShorterFirst) {
  const unsigned char hi[] = {0x80}, lo[] = {0x7F}, a[] = {1, 2, 3}, b[] = {1, 2, 4};
  EXPECT_EQ(BlockCompare(hi, lo, 1), 1);
  EXPECT_EQ(BlockCompare(lo, hi, 1), -1);
  EXPECT_EQ(BlockCompare(a, b, 2, 3), -1);
  EXPECT_EQ(BlockCompare(a, b, 3, 2), 1);  // the differing byte wins over the size
  EXPECT_TRUE(BlocksAreEqual(a, b, 0) && !BlocksAreEqual(a, b, 3));
}

TEST(DecimalText, BothDirections) {
  auto read = [](const char* s) { return ToCLongLong(reinterpret_cast<unsigned char*>(const_cast<char*>(s))); };
  // Digits only, signs and separators skipped; 2^64 wraps.
  for (auto [text, value] : {std::pair{"1,234", 1234LL}, {"-5", 5LL}, {"", 0LL}, {"18446744073709551616", 0LL}}) {
    EXPECT_EQ(read(text), value) << text;
  }
  for (long long v : {0LL, 7LL, 4700000000LL, -1LL, LLONG_MIN, LLONG_MAX}) {
    char* text = ToString10(v);
    EXPECT_EQ(read(text), v);
    ::operator delete(text);
  }
  long long negative = -1;
  char* text = ToString10(negative);
  EXPECT_STREQ(text, "18446744073709551615");
  ::operator delete(text);
}

namespace {
class ProbeHandle : public Handle {
 public:
  using Handle::Handle;
  uint32_t AllocSize() const { return mAllocSize; }
};
}  // namespace

TEST(Handle, RoundingAndResizes) {
  for (auto [size, alloc] : {std::pair{0ul, 256ul}, {255ul, 256ul}, {256ul, 512ul}, {1024ul, 1280ul},
                             {Handle::kMaxSize, 0xFFFFFF00ul}, {Handle::kMaxSize + 1, 0ul}}) {
    EXPECT_EQ(Handle::GetAllocSize(size), alloc) << size;
  }
  ProbeHandle h(10);
  char* block = h.GetPtr();
  std::iota(block, block + 10, 1);
  h.Resize(200);  // same rounded size: the block stays
  EXPECT_EQ(h.GetPtr(), block);
  std::iota(h.GetPtr(), h.GetPtr() + 300 - 100, 1);
  h.Resize(300);
  EXPECT_EQ(h.AllocSize(), 512u);
  EXPECT_EQ(h.GetPtr()[199], static_cast<char>(200));
  std::iota(h.GetPtr(), h.GetPtr() + 300, 0);
  h.Resize(10);  // 256 of the 300 bytes fit the new block, and are kept
  EXPECT_EQ(h.AllocSize(), 256u);
  EXPECT_EQ(h.GetPtr()[255], static_cast<char>(255));
  h.Resize(0);
  EXPECT_NE(h.GetPtr(), nullptr);  // never frees
  h.Unlock();
  EXPECT_EQ(h.Lock(), h.Lock());
  char* before = h.GetPtr();
#if !defined(_WIN32)  // unsigned long has 32 bits there: no larger value can be asked
  EXPECT_THROW(h.Resize(0x100000000ul), std::bad_alloc);  // beyond 32 bits: refused, nothing lost
#endif
  EXPECT_EQ(h.GetPtr(), before);
  EXPECT_EQ(h.GetSize(), 0u);
  ProbeHandle none;
  none.Resize(0);
  EXPECT_EQ(none.AllocSize(), 256u);
}

TEST(ScopeGuards, HandleAndPointerBlocks) {
  StHandleBlock a(300);
  StTempHandle t(0);
  StClearHandleBlock bad(-1);
  EXPECT_EQ(static_cast<Handle*>(a)->GetSize(), 300u);
  EXPECT_NE(static_cast<Handle*>(t)->GetPtr(), nullptr);
  EXPECT_EQ(static_cast<Handle*>(bad), nullptr);
  StPointerBlock p(4096), none(0);
  StClearPointerBlock q(17);
  EXPECT_TRUE(std::all_of(&p[0], &p[0] + 4096, [](char c) { return c == 0; }));  // zero-filled
  EXPECT_EQ(q[16], 0);
  EXPECT_EQ(static_cast<char*>(none), nullptr);
}
