// Field functions at any alignment, and byte swaps.
#include <VantoroBasicUtils/bytes/ByteOrder.h>
#include <VantoroBasicUtils/bytes/UByteSwapper.h>

#include <gtest/gtest.h>

#include <cstring>

TEST(ByteOrder, FieldsAtEveryAlignment) {
  for (int offset = 0; offset < 8; ++offset) {
    alignas(8) unsigned char raw[16] = {};
    unsigned char* p = raw + offset;
    const unsigned char pattern[] = {0x12, 0x34, 0x56, 0x78};
    std::memcpy(p, pattern, 4);
    EXPECT_EQ(GetMB32(p), 0x12345678);
    EXPECT_EQ(GetInt32(p), 0x12345678);
    EXPECT_EQ(GetLB32(reinterpret_cast<char*>(p)), 0x78563412);
    EXPECT_EQ(GetLong(p), 0x12345678);
    SetMB32(p, 0xCAFEBABE);
    EXPECT_EQ(static_cast<uint32_t>(GetLB32(reinterpret_cast<char*>(p))), UByteSwapper::SwapLong(0xCAFEBABE));
    SetLong(reinterpret_cast<char*>(p), -2);
    EXPECT_EQ(GetLong(reinterpret_cast<char*>(p)), -2);  // 32 bits, signed, on every host
    p[0] = 0xFF;
    p[1] = 0xFE;
    EXPECT_EQ(GetMB16(p), 65534);
    EXPECT_EQ(GetShort(p), -2);
    EXPECT_EQ(GetLB16(p), 65279);
    SetLB16(p, 0x12345);
    EXPECT_EQ(p[0], 0x45);
    EXPECT_EQ(p[1], 0x23);
    EXPECT_EQ(p[2], 0xFF);  // nothing beyond the field (left from SetLong)
    SetShort(p, -3);
    EXPECT_EQ(GetInt16(p), 0xFFFD);
    SetInt16(p, 0xABCD);
    SetLB32(p + 4, 0x01020304);
    EXPECT_EQ(p[4], 0x04);
    EXPECT_EQ(GetMB16(p), 0xABCD);
  }
  EXPECT_EQ(GetMB32(nullptr), 0);
  EXPECT_EQ(GetShort(static_cast<unsigned char*>(nullptr)), 0);
  SetLB16(nullptr, 1);
  SetMB32(nullptr, 1);
}

TEST(UByteSwapper, SwapsAndTheirInverses) {
  EXPECT_EQ(UByteSwapper::SwapLongLong(0x0102030405060708LL), 0x0807060504030201LL);
  EXPECT_EQ(UByteSwapper::SwapShort(static_cast<unsigned short>(0x1234)), 0x3412);
  char three[] = {1, 2, 3};
  UByteSwapper::Swap(three, 3);
  UByteSwapper::Swap(three, 1);
  UByteSwapper::Swap(three, 0);
  EXPECT_EQ(std::memcmp(three, "\x03\x02\x01", 3), 0);
  unsigned char five[] = {1, 2, 3, 4, 5};
  UByteSwapper::SwapShort(five, 5);  // pairs; the odd byte stays
  EXPECT_EQ(std::memcmp(five, "\x02\x01\x04\x03\x05", 5), 0);

  // Values of every width come out reversed, and back whole.
  float f = 3.25f;
  UByteSwapper::Swap(f);
  EXPECT_NE(f, 3.25f);
  UByteSwapper::Swap(&f);
  double d = -1234.5678;
  long double ld = 1.5L;
  UByteSwapper::Swap(&d), UByteSwapper::Swap(&d), UByteSwapper::Swap(&ld), UByteSwapper::Swap(&ld);
  EXPECT_TRUE(f == 3.25f && d == -1234.5678 && ld == 1.5L);
  int32_t i = 0x11223344;
  UByteSwapper::Swap(i);
  EXPECT_EQ(i, 0x44332211);

  char bytes[4] = {0x12, 0x34, 0x56, 0x78}, out[4];
  uint32_t native, back;
  std::memcpy(&native, bytes, 4);
  EXPECT_EQ(UByteSwapper::SwapUL(bytes), UByteSwapper::SwapLong(native));  // the value at p, reversed
  EXPECT_EQ(bytes[0], 0x12);                                                // memory untouched
  UByteSwapper::SwapToBuf(static_cast<uint32_t>(0x01020304), out);
  std::memcpy(&back, out, 4);
  EXPECT_EQ(back, 0x04030201u);
  UByteSwapper::SwapToBuf(static_cast<short>(0x0102), out);
  EXPECT_EQ(UByteSwapper::SwapSS(out), 0x0102);
}
