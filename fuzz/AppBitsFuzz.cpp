// CAppBits and CAppBytes: reads, shows and flushes that the caller keeps
// inside the buffer, on any buffer, checked against a plain bit-by-bit
// reading of the same bytes. The buffer is a block of exactly its size, so a
// read past its end is caught.
#include "FuzzSupport.h"

#include <VantoroBasicUtils/bytes/CAppBits.h>

#include <cstring>
#include <memory>

namespace {

// The field of `count` bits at bit `position`, one bit at a time.
uint32_t Slow(const unsigned char* bytes, long position, int count) {
  uint32_t value = 0;
  for (int i = 0; i < count; ++i, ++position) {
    value = (value << 1) | ((bytes[position / 8] >> (7 - position % 8)) & 1u);
  }
  return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const std::size_t length = in.ConsumeIntegralInRange<std::size_t>(0, 64);
  std::vector<uint8_t> content = in.ConsumeBytes<uint8_t>(length);
  const std::size_t n = content.size();
  auto buffer = std::make_unique<unsigned char[]>(n ? n : 1);
  if (n) std::memcpy(buffer.get(), content.data(), n);
  const long bits = static_cast<long>(n) * 8;

  CAppBits cursor(n ? buffer.get() : nullptr, static_cast<int>(n));
  CAppBytes bytes(n ? buffer.get() : nullptr, static_cast<int>(n));
  long at = 0;       // the bit cursor's place
  long byteAt = 0;   // the byte cursor's place
  for (int step = 0; step < 200 && in.remaining_bytes() > 0; ++step) {
    const int op = in.ConsumeIntegralInRange(0, 5);
    const int count = in.ConsumeIntegralInRange(0, 32);
    switch (op) {
      case 0:
      case 1: {  // GetBits / ShowBits
        if (at + count > bits) break;
        int got = op == 0 ? cursor.GetBits(count, cbits_get) : cursor.ShowBits(count);
        VBU_FUZZ_CHECK(static_cast<uint32_t>(got) == Slow(buffer.get(), at, count));
        if (op == 0) at += count;
        break;
      }
      case 2:  // FlushBits
        if (at + count > bits) break;
        cursor.FlushBits(count);
        at += count;
        break;
      case 3: {  // GetBitsAt
        if (bits == 0) break;
        long position = in.ConsumeIntegralInRange<long>(0, bits - 1);
        if (position + count > bits) break;
        int got = cursor.GetBitsAt(static_cast<int>(position), count);
        VBU_FUZZ_CHECK(static_cast<uint32_t>(got) == Slow(buffer.get(), position, count));
        at = position + count;
        break;
      }
      case 4: {  // GetBytes / ShowBytes
        const int c = count % 5;
        if (c < 1 || byteAt + c > static_cast<long>(n)) break;
        const bool move = in.ConsumeBool();
        int got = move ? bytes.GetBytes(c, cbytes_get) : bytes.ShowBytes(c);
        VBU_FUZZ_CHECK(static_cast<uint32_t>(got) == Slow(buffer.get(), byteAt * 8, c * 8));
        if (move) byteAt += c;
        break;
      }
      default:  // where the cursors say they are
        VBU_FUZZ_CHECK(cursor.GetBytePosition() == at / 8);
        VBU_FUZZ_CHECK(cursor.IsByteAlligned() == (at % 8 == 0 ? 1 : 0));
        VBU_FUZZ_CHECK(cursor.IsEOB() == (at / 8 >= static_cast<long>(n) ? 1 : 0));
        VBU_FUZZ_CHECK(bytes.IsEOB() == (byteAt >= static_cast<long>(n) ? 1 : 0));
    }
  }
  return 0;
}
