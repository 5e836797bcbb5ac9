// The field functions and UByteSwapper.
#include <cstring>

#include "bytes/ByteOrder.h"
#include "bytes/UByteSwapper.h"

namespace {

// Byte by byte, so that neither alignment nor the host's order matters.
uint32_t Big32(const unsigned char* p) {
  return (uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) | (uint32_t{p[2]} << 8) | p[3];
}
uint32_t Little32(const unsigned char* p) {
  return (uint32_t{p[3]} << 24) | (uint32_t{p[2]} << 16) | (uint32_t{p[1]} << 8) | p[0];
}
void PutBig32(unsigned char* p, uint32_t v) {
  p[0] = static_cast<unsigned char>(v >> 24);
  p[1] = static_cast<unsigned char>(v >> 16);
  p[2] = static_cast<unsigned char>(v >> 8);
  p[3] = static_cast<unsigned char>(v);
}
void PutLittle32(unsigned char* p, uint32_t v) {
  p[0] = static_cast<unsigned char>(v);
  p[1] = static_cast<unsigned char>(v >> 8);
  p[2] = static_cast<unsigned char>(v >> 16);
  p[3] = static_cast<unsigned char>(v >> 24);
}
unsigned int Big16(const unsigned char* p) { return (unsigned{p[0]} << 8) | p[1]; }
void PutBig16(unsigned char* p, unsigned int v) {
  p[0] = static_cast<unsigned char>(v >> 8);
  p[1] = static_cast<unsigned char>(v);
}

unsigned char* U(char* p) { return reinterpret_cast<unsigned char*>(p); }

// Reverses the bytes of any trivially copyable value in place.
template <class T>
void Reverse(T* p) {
  unsigned char bytes[sizeof(T)];
  std::memcpy(bytes, p, sizeof(T));
  for (std::size_t i = 0; i < sizeof(T) / 2; ++i) {
    unsigned char held = bytes[i];
    bytes[i] = bytes[sizeof(T) - 1 - i];
    bytes[sizeof(T) - 1 - i] = held;
  }
  std::memcpy(p, bytes, sizeof(T));
}

}  // namespace

// ---- field functions

long GetLong(char* p) { return static_cast<int32_t>(Big32(U(p))); }
long GetLong(unsigned char* p) { return static_cast<int32_t>(Big32(p)); }
void SetLong(char* p, long value) { PutBig32(U(p), static_cast<uint32_t>(value)); }

short GetShort(char* p) { return GetShort(U(p)); }
short GetShort(unsigned char* p) { return p ? static_cast<short>(Big16(p)) : 0; }
void SetShort(char* p, short value) { SetShort(U(p), value); }
void SetShort(unsigned char* p, short value) {
  if (p) PutBig16(p, static_cast<unsigned short>(value));
}

int GetMB32(unsigned char* p) { return p ? static_cast<int>(Big32(p)) : 0; }
int GetInt32(unsigned char* p) { return GetMB32(p); }
void SetMB32(unsigned char* p, unsigned int value) {
  if (p) PutBig32(p, value);
}
void SetInt32(unsigned char* p, unsigned int value) { SetMB32(p, value); }

int GetLB32(char* p) { return p ? static_cast<int>(Little32(U(p))) : 0; }
void SetLB32(unsigned char* p, unsigned int value) {
  if (p) PutLittle32(p, value);
}

int GetMB16(unsigned char* p) { return p ? static_cast<int>(Big16(p)) : 0; }
int GetInt16(unsigned char* p) { return GetMB16(p); }
void SetMB16(unsigned char* p, unsigned int value) {
  if (p) PutBig16(p, value & 0xFFFF);
}
void SetInt16(unsigned char* p, unsigned int value) { SetMB16(p, value); }

int GetLB16(unsigned char* p) { return p ? static_cast<int>((unsigned{p[1]} << 8) | p[0]) : 0; }
void SetLB16(unsigned char* p, unsigned int value) {
  if (!p) return;
  p[0] = static_cast<unsigned char>(value);
  p[1] = static_cast<unsigned char>(value >> 8);
}

// ---- UByteSwapper

void UByteSwapper::Swap(short* p) { Reverse(p); }
void UByteSwapper::Swap(unsigned short* p) { Reverse(p); }
void UByteSwapper::Swap(int32_t* p) { Reverse(p); }
void UByteSwapper::Swap(uint32_t* p) { Reverse(p); }
void UByteSwapper::Swap(float* p) { Reverse(p); }
void UByteSwapper::Swap(int32_t& value) { Reverse(&value); }
void UByteSwapper::Swap(uint32_t& value) { Reverse(&value); }
void UByteSwapper::Swap(float& value) { Reverse(&value); }
void UByteSwapper::Swap(double* p) { Reverse(p); }

void UByteSwapper::Swap(long double* p) {
  Swap(reinterpret_cast<char*>(p), static_cast<short>(sizeof(long double) >= 10 ? 10 : sizeof(long double)));
}

void UByteSwapper::Swap(char* p, short size) {
  for (int i = 0; i < size / 2; ++i) {
    char held = p[i];
    p[i] = p[size - 1 - i];
    p[size - 1 - i] = held;
  }
}

void UByteSwapper::SwapShort(unsigned char* p, short size) {
  for (int i = 0; i + 1 < size; i += 2) {
    unsigned char held = p[i];
    p[i] = p[i + 1];
    p[i + 1] = held;
  }
}

short UByteSwapper::SwapSS(char* p) { return static_cast<short>(SwapUS(p)); }
unsigned short UByteSwapper::SwapUS(char* p) {
  unsigned short value;
  std::memcpy(&value, p, 2);
  return SwapShort(value);
}
int32_t UByteSwapper::SwapSL(char* p) { return static_cast<int32_t>(SwapUL(p)); }
uint32_t UByteSwapper::SwapUL(char* p) {
  uint32_t value;
  std::memcpy(&value, p, 4);
  return SwapLong(value);
}

void UByteSwapper::SwapToBuf(short value, char* p) { SwapToBuf(static_cast<unsigned short>(value), p); }
void UByteSwapper::SwapToBuf(unsigned short value, char* p) {
  unsigned short swapped = SwapShort(value);
  std::memcpy(p, &swapped, 2);
}
void UByteSwapper::SwapToBuf(int32_t value, char* p) { SwapToBuf(static_cast<uint32_t>(value), p); }
void UByteSwapper::SwapToBuf(uint32_t value, char* p) {
  uint32_t swapped = SwapLong(value);
  std::memcpy(p, &swapped, 4);
}
