// The bit cursor against a plain bit-by-bit reader, and the byte cursor.
#include <VantoroBasicUtils/bytes/CAppBits.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

// The field of `count` bits from stream bit `at`, one bit at a time.
uint32_t Reference(const std::vector<unsigned char>& buffer, int at, int count) {
  uint32_t value = 0;
  for (int i = 0; i < count; ++i) {
    int bit = at + i;
    value = (value << 1) | ((buffer[bit >> 3] >> (7 - (bit & 7))) & 1u);
  }
  return value;
}

// Opens the two-byte path for direct comparison.
class Cursor : public CAppBits {
 public:
  using CAppBits::CAppBits;
  using CAppBits::FastGetBits;
};

}  // namespace

TEST(CAppBits, BothReadPathsAgreeWithABitByBitReader) {
  std::mt19937 rng(2024);
  std::vector<unsigned char> buffer(64);
  for (int round = 0; round < 20; ++round) {
    for (auto& byte : buffer) byte = static_cast<unsigned char>(rng());
    for (int count = 1; count <= 32; ++count) {
      for (int startBit = 0; startBit < 8; ++startBit) {
        for (int startByte : {0, 3, 27}) {
          const int at = startByte * 8 + startBit;
          const uint32_t expect = Reference(buffer, at, count);
          Cursor whole(buffer.data(), static_cast<int>(buffer.size()));
          ASSERT_EQ(static_cast<uint32_t>(whole.GetBitsAt(at, count)), expect) << count << " bits at " << at;
          const int end = at + count;
          ASSERT_EQ(whole.GetBytePosition(), end >> 3);
          ASSERT_EQ(whole.IsByteAlligned(), (end & 7) == 0 ? 1 : 0);
          // The general path, forced by a buffer that ends where the field does.
          Cursor tight(buffer.data(), (end + 7) >> 3);
          ASSERT_EQ(static_cast<uint32_t>(tight.GetBitsAt(at, count)), expect) << count << " bits at " << at;
          if (count <= 8) {
            Cursor fast(buffer.data(), static_cast<int>(buffer.size()));
            fast.FlushBits(at);
            ASSERT_EQ(static_cast<uint32_t>(fast.FastGetBits(count, cbits_get)), expect);
            ASSERT_EQ(fast.GetBytePosition(), end >> 3);
          }
        }
      }
    }
  }
}

TEST(CAppBits, CursorMovesAndEnds) {
  unsigned char data[] = {0xAB, 0xCD, 0xEF};
  CAppBits bits(data, 3);
  EXPECT_EQ(bits.GetBits(12, cbits_get), 0xABC);
  EXPECT_EQ(bits.ShowBits(4), 0xD);
  EXPECT_EQ(bits.GetBits(4, cbits_show), 0xD);
  EXPECT_EQ(bits.GetBits(0, cbits_get), 0);
  EXPECT_EQ(bits.GetBits(33, cbits_get), 0);  // beyond 32: nothing read, nothing moved
  EXPECT_EQ(bits.GetBytePosition(), 1);
  bits.SetBuf(data, 3);
  bits.FlushBits(6);
  bits.FlushBits(2);
  EXPECT_EQ(bits.GetBytePosition(), 1);
  EXPECT_EQ(bits.IsByteAlligned(), 1);
  bits.FlushBits(15);
  EXPECT_EQ(bits.IsEOB(), 0);  // inside the last byte
  bits.FlushBits(1);
  EXPECT_EQ(bits.IsEOB(), 1);
  EXPECT_EQ(bits.GetBitsAt(12, 4), 0xD);
  EXPECT_EQ(bits.GetBytePosition(), 2);
}

TEST(CAppBits, WritesClearOnlyBytesTheyBeginAt) {
  unsigned char data[] = {0xFF, 0xFF, 0xFF, 0xFF};
  CAppBits bits(data, 4);
  bits.PutBits(0xA, 4);
  bits.PutBits(0xB, 4);
  EXPECT_EQ(data[0], 0xAB);
  bits.PutBitsAt(8, 1, 1);  // begins at bit 0: the whole byte is cleared first
  EXPECT_EQ(data[1], 0x80);
  data[2] = 0x00;
  bits.PutBitsAt(17, 1, 1);  // inside a byte: one bit, nothing else changes
  bits.PutBits(0x7, 0);
  EXPECT_EQ(data[2], 0x40);
  // Writes and reads of every width round-trip through a cleared buffer.
  std::vector<unsigned char> buffer(16);
  for (int count = 1; count <= 32; ++count) {
    for (int at = 0; at < 8; ++at) {
      std::fill(buffer.begin(), buffer.end(), 0);
      uint32_t value = count == 32 ? 0xDEADBEEFu : (0xDEADBEEFu & ((1u << count) - 1));
      CAppBits w(buffer.data(), 16);
      w.PutBitsAt(at, static_cast<int>(value), count);
      CAppBits r(buffer.data(), 16);
      ASSERT_EQ(static_cast<uint32_t>(r.GetBitsAt(at, count)), value) << count << " at " << at;
    }
  }
}

TEST(CAppBytes, ReadsUnsignedBigEndianValues) {
  unsigned char data[] = {0xFF, 0x12, 0x34, 0x56, 0x78};
  CAppBytes bytes(data, 5);
  EXPECT_EQ(bytes.GetBytes(1, cbytes_get), 255);
  EXPECT_EQ(bytes.ShowBytes(2), 0x1234);
  EXPECT_EQ(bytes.GetBytes(4, cbytes_get), 0x12345678);
  EXPECT_EQ(bytes.IsEOB(), 1);
  bytes.SetBuf(data, 5);
  EXPECT_EQ(bytes.GetBytes(7, cbytes_get), 7);  // outside 1..4: the count back, no move
  bytes.FlushBytes(4);
  EXPECT_EQ(bytes.GetBytes(1, cbytes_show), 0x78);
  EXPECT_EQ(bytes.PutBytes(1, 1), 0);
  EXPECT_EQ(data[4], 0x78);
}
