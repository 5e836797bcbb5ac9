// CAppBits.h: a cursor over a big-endian bit stream in a caller's buffer,
// reading and writing fields of 1 to 32 bits; and CAppBytes, its byte-wise
// companion. Neither owns the buffer. Reads and writes are not checked
// against the buffer's size: the caller keeps the cursor inside it.
//
//   unsigned char packet[14] = {0x00, 0x00, 0x01, 0xBA, 0x44};
//   CAppBits bits(packet, sizeof packet);
//   int startCode = bits.GetBits(32, cbits_get);    // 0x000001BA
//   bits.FlushBits(2);  int scr = bits.GetBits(3, cbits_get);
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

// Whether a read moves the cursor.
enum cbits_get_t { cbits_show = 0, cbits_get = 1 };
enum cbytes_get_t { cbytes_show = 0, cbytes_get = 1 };

// Bit position 0 is the bit of value 0x80 of a byte; bytes follow in rising
// address order; a field's first stream bit is its value's top bit.
class VBU_API CAppBits {
 public:
  // The cursor at bit 0 of byte 0.
  CAppBits(unsigned char* buffer = nullptr, int size = 0);
  ~CAppBits() {}
  // Two cursors on one buffer.
  CAppBits(const CAppBits&) = default;
  CAppBits& operator=(const CAppBits&) = default;

  // A new buffer, with the cursor at its start.
  void SetBuf(unsigned char* buffer, int size);
  // 1 at bit position 0 of a byte.
  int IsByteAlligned() const { return mBitPosition == 0 ? 1 : 0; }
  // 1 once the cursor has left the last byte.
  int IsEOB() const { return mBytePosition >= mBufferSize ? 1 : 0; }
  int GetBytePosition() const { return mBytePosition; }
  // Reads `count` bits (0 to 32; others give 0) and moves the cursor behind
  // them for cbits_get.
  int GetBits(int count, cbits_get_t mode);
  // Reads without moving the cursor.
  int ShowBits(int count) { return GetBits(count, cbits_show); }
  // Moves the cursor `count` bits on.
  void FlushBits(int count);
  // Writes the low `count` bits of `value` (which must have no higher bits
  // set). A write that begins at bit 0 of a byte clears that whole byte;
  // one that begins inside a byte ORs into it. Gives 0.
  int PutBits(int value, int count);
  // Reads from bit `bitPosition` of the buffer; the cursor stays behind the field.
  int GetBitsAt(int bitPosition, int count);
  // Writes at bit `bitPosition` of the buffer. Gives 0.
  int PutBitsAt(int bitPosition, int value, int count);

  // Masks of `n` bits (0 to 8) from bit position `b` of a pair of bytes:
  // the part in the first byte and the part in the second. Filled at
  // compile time, so they are ready before any code runs.
  static char sFirstByteMasks[9][8];
  static char sSecondByteMasks[9][8];
  // The bits from position `b` to the end of a byte.
  static const unsigned char sLowBitMasks[8];
  // True once the tables are filled (they always are).
  static bool sByteMasksInitialized;
  // Fills the tables (again) and gives true.
  static bool InitializeByteMasks();

 protected:
  // The two-byte read alone: `count` at most 8, two bytes readable at the cursor.
  int FastGetBits(int count, cbits_get_t mode);

 private:
  unsigned char* mBuffer;
  int mBitPosition;
  int mBytePosition;
  int mBufferSize;
};

// A cursor over the bytes of a caller's buffer.
class VBU_API CAppBytes {
 public:
  CAppBytes(unsigned char* buffer = nullptr, int size = 0);
  ~CAppBytes() {}
  CAppBytes(const CAppBytes&) = default;
  CAppBytes& operator=(const CAppBytes&) = default;

  void SetBuf(unsigned char* buffer, int size);
  int IsEOB() const { return mPosition >= mBufferSize ? 1 : 0; }
  // The value of `count` bytes (1 to 4), big-endian and unsigned, moving the
  // cursor by `count` for cbytes_get. Other counts give `count` back and
  // leave the cursor alone.
  int GetBytes(int count, cbytes_get_t mode);
  int ShowBytes(int count) { return GetBytes(count, cbytes_show); }
  void FlushBytes(int count) { mPosition += count; }
  // Writes nothing and gives 0.
  int PutBytes(int value, int count);

 private:
  unsigned char* mBuffer;
  int mPosition;
  int mBufferSize;
};
