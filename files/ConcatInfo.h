// ConcatInfo.h: the state of the concatenation engine of MFileUniv, which
// joins whole files end to end into one destination through two buffers,
// each source padded with zeros to a whole number of sectors. The buffers
// are moved as a ring of slots (eight to a buffer), each read and written as
// a transfer of its own, so that both legs keep several requests in flight;
// what a host sees stays that of two buffers: one progress message per
// buffer written, in order. A source is read once, through the system's
// cache, and its pages go back to the system as the join passes them.
//
//   MFileUniv dest;
//   dest.FOpen(u"/media/title.vob"_u16, MFile::file_overlapped_create);
//   dest.ConcatInitialize(2048, 0);
//   bool cancelled = false;
//   MString source(u"/media/part1.vob"_u16);
//   dest.ConcatFile(source, 0, cancelled, 0);   // see MFileUniv.h
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Overlapped.h>

// The record of one transfer. The OVERLAPPED record comes first, so that the
// completion routine can go from the pointer it is given to the whole record.
struct ConcatCallbackInfo {
  static constexpr uint32_t kLiveMarker = 0xDEADBEEFu;

  OVERLAPPED mOverlapped;  // offset of the next transfer; hEvent: the MEvent to signal
  uint32_t mMarker;        // kLiveMarker while the record is live
  uint32_t mError;         // error code of the last completion
  uint32_t mBytes;         // bytes moved by the last completion
};

// A run of concatenation into one destination. Sizes are 64-bit: sources of
// 4 GiB and more are joined whole.
struct ConcatInfo {
  intptr_t mDestination;          // the destination's handle
  intptr_t mSource;               // the present source's handle, -1 when closed
  ConcatCallbackInfo mWriteInfo;  // destination writes; its offset is the running write offset
  uint64_t mSourceSize;           // bytes of the present source
  uint64_t mRoundedSize;          // mSourceSize rounded up to whole mSectorSize
  int32_t mBufferSize;            // bytes of each buffer: mSectorSize * 2048
  char* mReadBuffer;              // buffer of the last read started
  uint32_t mBytesToRead;          // its length
  char* mWriteBuffer;             // buffer of the last write started
  uint32_t mBytesToWrite;         // its length, padding included
  char* mBufferOne;               // the two buffers, page-aligned
  char* mBufferTwo;
  int32_t mSectorSize;            // unit of rounding in bytes
  uint64_t mBytesWritten;         // what the destination has of the present source, padding included
  uint64_t mBytesLeftToRead;      // bytes of the present source not yet read
  int32_t mWritePending;          // non-zero while a write is started and not collected
  int32_t mReadPending;           // the same for a read
  uint32_t mErrorCode;            // first failure's code, 0xFFFFFFFF if there was none to give; 0: none
};

// Completion routine of every transfer of the engine: stores `error` and
// `bytes` in a live record and signals the record's event.
VBU_API void ConcatCompletionRoutine(uint32_t error, uint32_t bytes, OVERLAPPED* overlapped);
