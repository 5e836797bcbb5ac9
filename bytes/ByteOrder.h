// ByteOrder.h: reading and writing one multi-byte field of a stated byte
// order at any address, aligned or not, whatever the processor's own order.
// MB and Int are big-endian (most significant byte first), LB little-endian;
// Long and Short are big-endian too. 32-bit values are 32 bits on every host.
//
//   unsigned char header[4] = {0x12, 0x34, 0x56, 0x78};
//   unsigned int id = GetMB32(header);          // 0x12345678
//   unsigned char wav[44] = {};
//   SetLB16(wav + 22, 2);                       // 0x02 0x00: two channels
//   unsigned char sample[2] = {0xFF, 0xFE};
//   short delta = GetShort(sample);             // signed: -2
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

// Four bytes, big-endian, signed 32-bit. No null test.
VBU_API long GetLong(char* p);
VBU_API long GetLong(unsigned char* p);
// Stores the low 32 bits of `value`, big-endian. No null test.
VBU_API void SetLong(char* p, long value);
// Two bytes, big-endian, signed; 0 for null.
VBU_API short GetShort(char* p);
VBU_API short GetShort(unsigned char* p);
// Nothing for null.
VBU_API void SetShort(char* p, short value);
VBU_API void SetShort(unsigned char* p, short value);
// Four bytes, big-endian; 0 for null.
VBU_API int GetMB32(unsigned char* p);
VBU_API int GetInt32(unsigned char* p);
VBU_API void SetMB32(unsigned char* p, unsigned int value);
VBU_API void SetInt32(unsigned char* p, unsigned int value);
// Four bytes, little-endian; 0 for null.
VBU_API int GetLB32(char* p);
VBU_API void SetLB32(unsigned char* p, unsigned int value);
// Two bytes, big-endian, 0 to 65535; 0 for null.
VBU_API int GetMB16(unsigned char* p);
VBU_API int GetInt16(unsigned char* p);
// The low 16 bits of `value`.
VBU_API void SetMB16(unsigned char* p, unsigned int value);
VBU_API void SetInt16(unsigned char* p, unsigned int value);
// Two bytes, little-endian, 0 to 65535; 0 for null.
VBU_API int GetLB16(unsigned char* p);
VBU_API void SetLB16(unsigned char* p, unsigned int value);
