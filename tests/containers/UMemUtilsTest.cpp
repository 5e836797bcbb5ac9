// Block copy, clear and fill; block comparison; decimal conversions.
#include <VantoroBasicUtils/containers/UMemUtils.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

namespace {

std::vector<unsigned char> Pattern(size_t n, unsigned char start = 1) {
  std::vector<unsigned char> v(n);
  std::iota(v.begin(), v.end(), start);
  return v;
}

}  // namespace

TEST(UMemUtils, CopiesEverySizeExactlyAtEveryAlignment) {
  // Sizes around each step of the word decomposition, at all four misalignments
  // of both ends; the guard bytes around the destination must stay untouched.
  for (unsigned size : {0u, 1u, 3u, 4u, 5u, 7u, 8u, 255u, 256u, 257u, 511u, 1000u, 4099u}) {
    for (int so = 0; so < 4; ++so) {
      for (int dof = 0; dof < 4; ++dof) {
        std::vector<unsigned char> src = Pattern(size + 8, 7);
        std::vector<unsigned char> dst(size + 16, 0xEE);
        UMemUtils::memcpy(dst.data() + 4 + dof, src.data() + so, size);
        for (int i = 0; i < 4 + dof; ++i) ASSERT_EQ(dst[i], 0xEE);
        ASSERT_EQ(0, std::memcmp(dst.data() + 4 + dof, src.data() + so, size)) << size;
        for (size_t i = 4 + dof + size; i < dst.size(); ++i) ASSERT_EQ(dst[i], 0xEE) << size;
      }
    }
  }
}

TEST(UMemUtils, MovesABlockDownOverItself) {
  std::vector<unsigned char> buf = Pattern(300);
  std::vector<unsigned char> expect(buf.begin() + 4, buf.end());
  UMemUtils::memcpy(buf.data(), buf.data() + 4, 296);
  EXPECT_TRUE(std::equal(expect.begin(), expect.end(), buf.begin()));
}

TEST(UMemUtils, FillAndClearTouchOnlyTheBlock) {
  std::vector<unsigned char> buf(300, 0x11);
  EXPECT_EQ(UMemUtils::memset(buf.data() + 1, 0x1FF, 5), buf.data() + 1);  // low byte only
  for (int i = 1; i <= 5; ++i) EXPECT_EQ(buf[i], 0xFF);
  EXPECT_EQ(buf[0], 0x11);
  EXPECT_EQ(buf[6], 0x11);

  UMemUtils::zeromem(buf.data() + 3, 290);
  EXPECT_EQ(buf[2], 0xFF);
  for (int i = 3; i < 293; ++i) ASSERT_EQ(buf[i], 0);
  EXPECT_EQ(buf[293], 0x11);

  EXPECT_EQ(UMemUtils::memset(buf.data(), 0, 0), buf.data());
  EXPECT_EQ(buf[0], 0x11);
}

TEST(UMemUtils, HugeSizesKeepOnlyTheirLowByte) {
  // 2^31 + 3: the whole-256-byte step is skipped, only 3 bytes are written.
  std::vector<unsigned char> src = Pattern(8), dst(8, 0);
  UMemUtils::memcpy(dst.data(), src.data(), 0x80000003u);
  EXPECT_EQ(dst, (std::vector<unsigned char>{1, 2, 3, 0, 0, 0, 0, 0}));
  UMemUtils::memset(dst.data(), 9, 0x80000002u);
  EXPECT_EQ(dst[1], 9);
  EXPECT_EQ(dst[2], 3);
}

TEST(UMemUtils, FixedSizeStepsMoveExactlyTheirSizeAndAdvance) {
  auto check = [](auto copy, auto zero, auto set, unsigned n) {
    std::vector<unsigned char> src = Pattern(n + 8), dst(n + 8, 0xEE);
    auto* d = reinterpret_cast<int32_t*>(dst.data() + 1);  // deliberately misaligned
    auto* s = reinterpret_cast<int32_t*>(src.data() + 1);
    copy(d, s);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(d), dst.data() + 1 + n);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(s), src.data() + 1 + n);
    EXPECT_EQ(0, std::memcmp(dst.data() + 1, src.data() + 1, n));
    EXPECT_EQ(dst[n + 1], 0xEE);

    d = reinterpret_cast<int32_t*>(dst.data() + 1);
    set(d, static_cast<int32_t>(0x04030201));
    EXPECT_EQ(dst[1], 1);
    EXPECT_EQ(dst[n], 4);
    EXPECT_EQ(dst[n + 1], 0xEE);

    d = reinterpret_cast<int32_t*>(dst.data() + 1);
    zero(d);
    EXPECT_EQ(reinterpret_cast<unsigned char*>(d), dst.data() + 1 + n);
    for (unsigned i = 1; i <= n; ++i) EXPECT_EQ(dst[i], 0);
    EXPECT_EQ(dst[n + 1], 0xEE);
    EXPECT_EQ(dst[0], 0xEE);
  };
#define VBU_CHECK_STEP(N) \
  check(UMemUtils::memcpy##N##byte, UMemUtils::zeromem##N##byte, UMemUtils::memset##N##byte, N)
  VBU_CHECK_STEP(4);
  VBU_CHECK_STEP(8);
  VBU_CHECK_STEP(16);
  VBU_CHECK_STEP(32);
  VBU_CHECK_STEP(64);
  VBU_CHECK_STEP(128);
  VBU_CHECK_STEP(256);
#undef VBU_CHECK_STEP
}

TEST(BlockCompare, OrdersByUnsignedBytesThenBySize) {
  const unsigned char hi[] = {0x80}, lo[] = {0x7F};
  EXPECT_EQ(BlockCompare(hi, lo, 1), 1);
  EXPECT_EQ(BlockCompare(lo, hi, 1), -1);
  const unsigned char ff[] = {0xFF}, zero[] = {0x00};
  EXPECT_EQ(BlockCompare(ff, zero, 1), 255);
  EXPECT_EQ(BlockCompare(zero, ff, 1), -255);

  const unsigned char a[] = {1, 2, 3}, b[] = {1, 2, 4};
  EXPECT_EQ(BlockCompare(a, b, 2), 0);
  EXPECT_EQ(BlockCompare(a, b, 3), -1);
  EXPECT_EQ(BlockCompare(a, b, 2, 3), -1);  // equal prefix: shorter is less
  EXPECT_EQ(BlockCompare(a, b, 3, 2), 1);   // the byte difference wins over size
  EXPECT_EQ(BlockCompare(a, a, 0, 0), 0);
  EXPECT_EQ(BlockCompare(a, b, 0, 2), -2);

  EXPECT_TRUE(BlocksAreEqual(a, b, 0));
  EXPECT_TRUE(BlocksAreEqual(a, b, 2));
  EXPECT_FALSE(BlocksAreEqual(a, b, 3));
}

TEST(DecimalText, ReadsDigitsOnlyWithWrap) {
  auto read = [](const char* s) { return ToCLongLong(reinterpret_cast<unsigned char*>(const_cast<char*>(s))); };
  EXPECT_EQ(read(""), 0);
  EXPECT_EQ(read("1,234"), 1234);
  EXPECT_EQ(read("-5"), 5);
  EXPECT_EQ(read("a1b2c3"), 123);
  EXPECT_EQ(read("9223372036854775807"), INT64_MAX);
  EXPECT_EQ(static_cast<uint64_t>(read("18446744073709551615")), UINT64_MAX);
  EXPECT_EQ(read("18446744073709551616"), 0);  // 2^64 wraps
}

TEST(DecimalText, WritesUnsignedSixtyFourBits) {
  auto write = [](long long v) {
    char* text = ToString10(v);
    std::string s(text);
    for (int i = static_cast<int>(s.size()); i < 21; ++i) EXPECT_EQ(text[i], 0);  // zero-filled
    ::operator delete(text);
    return s;
  };
  EXPECT_EQ(write(0), "0");
  EXPECT_EQ(write(7), "7");
  EXPECT_EQ(write(4700000000LL), "4700000000");
  EXPECT_EQ(write(-1), "18446744073709551615");
  EXPECT_EQ(write(INT64_MIN), "9223372036854775808");
  EXPECT_EQ(write(INT64_MAX), "9223372036854775807");
  for (long long v : {1LL, 10LL, 99LL, 1000000007LL, 123456789012345LL}) {
    std::string s = write(v);
    EXPECT_EQ(ToCLongLong(reinterpret_cast<unsigned char*>(s.data())), v);  // the two are inverses
  }
}
