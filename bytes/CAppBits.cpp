#include "bytes/CAppBits.h"

#include <cstdint>

// The masks as InitializeByteMasks computes them, written out so that they
// are constant-initialised: complete before any constructor of any module runs.
char CAppBits::sFirstByteMasks[9][8] = {
    {'\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x00'},  // 0
    {'\x80', '\x40', '\x20', '\x10', '\x08', '\x04', '\x02', '\x01'},  // 1
    {'\xC0', '\x60', '\x30', '\x18', '\x0C', '\x06', '\x03', '\x01'},  // 2
    {'\xE0', '\x70', '\x38', '\x1C', '\x0E', '\x07', '\x03', '\x01'},  // 3
    {'\xF0', '\x78', '\x3C', '\x1E', '\x0F', '\x07', '\x03', '\x01'},  // 4
    {'\xF8', '\x7C', '\x3E', '\x1F', '\x0F', '\x07', '\x03', '\x01'},  // 5
    {'\xFC', '\x7E', '\x3F', '\x1F', '\x0F', '\x07', '\x03', '\x01'},  // 6
    {'\xFE', '\x7F', '\x3F', '\x1F', '\x0F', '\x07', '\x03', '\x01'},  // 7
    {'\xFF', '\x7F', '\x3F', '\x1F', '\x0F', '\x07', '\x03', '\x01'},  // 8
};
char CAppBits::sSecondByteMasks[9][8] = {
    {'\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x00'},  // 0
    {'\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x00'},  // 1
    {'\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x80'},  // 2
    {'\x00', '\x00', '\x00', '\x00', '\x00', '\x00', '\x80', '\xC0'},  // 3
    {'\x00', '\x00', '\x00', '\x00', '\x00', '\x80', '\xC0', '\xE0'},  // 4
    {'\x00', '\x00', '\x00', '\x00', '\x80', '\xC0', '\xE0', '\xF0'},  // 5
    {'\x00', '\x00', '\x00', '\x80', '\xC0', '\xE0', '\xF0', '\xF8'},  // 6
    {'\x00', '\x00', '\x80', '\xC0', '\xE0', '\xF0', '\xF8', '\xFC'},  // 7
    {'\x00', '\x80', '\xC0', '\xE0', '\xF0', '\xF8', '\xFC', '\xFE'},  // 8
};
const unsigned char CAppBits::sLowBitMasks[8] = {0xFF, 0x7F, 0x3F, 0x1F, 0x0F, 0x07, 0x03, 0x01};

bool CAppBits::InitializeByteMasks() {
  for (int n = 0; n <= 8; ++n) {
    for (int b = 0; b < 8; ++b) {
      unsigned int top = n == 0 ? 0 : (0xFFFFu << (16 - n)) & 0xFFFFu;  // the top n bits of 16
      unsigned int mask = top >> b;
      sFirstByteMasks[n][b] = static_cast<char>(mask >> 8);
      sSecondByteMasks[n][b] = static_cast<char>(mask & 0xFF);
    }
  }
  return true;
}

// ---- CAppBits

CAppBits::CAppBits(unsigned char* buffer, int size) : mBuffer(buffer), mBitPosition(0), mBytePosition(0), mBufferSize(size) {}

void CAppBits::SetBuf(unsigned char* buffer, int size) {
  mBuffer = buffer;
  mBufferSize = size;
  mBitPosition = 0;
  mBytePosition = 0;
}

int CAppBits::FastGetBits(int count, cbits_get_t mode) {
  const int b = mBitPosition;
  const unsigned char* p = mBuffer + mBytePosition;
  unsigned int pair = (static_cast<unsigned int>(p[0] & static_cast<unsigned char>(sFirstByteMasks[count][b])) << 8) |
                      (p[1] & static_cast<unsigned char>(sSecondByteMasks[count][b]));
  int value = static_cast<int>(pair >> (16 - b - count));
  if (mode == cbits_get) {
    int t = b + count;
    mBytePosition += t >> 3;
    mBitPosition = t & 7;
  }
  return value;
}

int CAppBits::GetBits(int count, cbits_get_t mode) {
  if (count <= 0 || count > 32) return 0;
  if (count <= 8 && mBytePosition + 2 <= mBufferSize) return FastGetBits(count, mode);

  // The general path touches only the bytes that the field occupies.
  const int b = mBitPosition;
  const int available = 8 - b;
  const unsigned char* p = mBuffer + mBytePosition;
  uint64_t accumulator = p[0] & sLowBitMasks[b];
  if (count <= available) {
    int value = static_cast<int>(accumulator >> (available - count));
    if (mode == cbits_get) {
      int t = b + count;
      mBytePosition += t >> 3;
      mBitPosition = t & 7;
    }
    return value;
  }
  const int rest = count - available;
  const int further = (rest + 7) >> 3;
  // 64 bits hold the first byte's bits above a rest of up to 32.
  for (int i = 1; i <= further; ++i) accumulator = (accumulator << 8) | p[i];
  int value = static_cast<int>(static_cast<uint32_t>(accumulator >> (further * 8 - rest)));
  if (mode == cbits_get) {
    mBytePosition += (rest >> 3) + 1;
    mBitPosition = rest & 7;
  }
  return value;
}

void CAppBits::FlushBits(int count) {
  if (count <= 0) return;
  int available = 8 - mBitPosition;
  if (count > available) {
    int t = count - available;
    mBytePosition += (t >> 3) + 1;
    mBitPosition = t & 7;
  } else {
    mBitPosition += count;
    if (mBitPosition == 8) {
      ++mBytePosition;
      mBitPosition = 0;
    }
  }
}

int CAppBits::PutBits(int value, int count) {
  if (count <= 0 || count > 32) return 0;
  int free = 8 - mBitPosition;
  while (count >= free) {
    if (free == 8) mBuffer[mBytePosition] = 0;
    count -= free;
    mBuffer[mBytePosition] |= static_cast<unsigned char>((static_cast<int64_t>(value) >> count) & 0xFF);
    ++mBytePosition;
    mBitPosition = 0;
    free = 8;
  }
  if (count > 0) {
    if (free == 8) mBuffer[mBytePosition] = 0;
    mBuffer[mBytePosition] |= static_cast<unsigned char>(((value & 0xFF) << (free - count)) & 0xFF);
    mBitPosition += count;
  }
  return 0;
}

int CAppBits::GetBitsAt(int bitPosition, int count) {
  mBytePosition = bitPosition >> 3;
  mBitPosition = bitPosition & 7;
  return GetBits(count, cbits_get);
}

int CAppBits::PutBitsAt(int bitPosition, int value, int count) {
  mBytePosition = bitPosition >> 3;
  mBitPosition = bitPosition & 7;
  return PutBits(value, count);
}

// ---- CAppBytes

CAppBytes::CAppBytes(unsigned char* buffer, int size) : mBuffer(buffer), mPosition(0), mBufferSize(size) {}

void CAppBytes::SetBuf(unsigned char* buffer, int size) {
  mBuffer = buffer;
  mBufferSize = size;
  mPosition = 0;
}

int CAppBytes::GetBytes(int count, cbytes_get_t mode) {
  if (count < 1 || count > 4) return count;
  uint32_t value = 0;
  for (int i = 0; i < count; ++i) value = (value << 8) | mBuffer[mPosition + i];
  if (mode != cbytes_show) mPosition += count;
  return static_cast<int>(value);
}

int CAppBytes::PutBytes(int, int) { return 0; }
