// AsyncReadBuffer.h: reads a large file forward in small pieces while the
// disk works ahead. Two blocks take turns: the consumer copies out of the
// current one while an overlapped read fills the other. The read of a block
// goes to the disk as a few transfers side by side, so that the device is
// kept busy as by a deeper queue. A read that reaches back in front of the
// current block is served by a separate, synchronous read.
//
//   MFileUniv file;
//   file.FOpen(u"/media/title.vob"_u16, MFile::file_overlapped_read);
//   AsyncReadBuffer ahead;
//   ahead.InitReadBuffer(&file, 0, 4 << 20, 0);
//   char piece[2048];
//   for (long long at = 0; int got = ahead.ReadBuffer(at, piece, sizeof piece); at += got) { if (got < 0) break; }
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Overlapped.h>

class MFileUniv;

class VBU_API AsyncReadBuffer {
 public:
  // Results of InitReadBuffer.
  static constexpr int kOutOfMemory = -2;
  static constexpr int kReadFailed = -3;
  static constexpr int kNothingToRead = -4;

  // No blocks yet; the event is ready.
  AsyncReadBuffer();
  // Waits for a read still in flight, then frees the blocks.
  virtual ~AsyncReadBuffer();
  AsyncReadBuffer(const AsyncReadBuffer&) = delete;
  AsyncReadBuffer& operator=(const AsyncReadBuffer&) = delete;

  // Moves on to the other block, collecting its read and starting the next:
  // 0 or -1. `bytes`: the file bytes of the block that became current, 0 if
  // no read was under way.
  virtual int FillInReadBuffer(int& bytes);
  // Copies `size` bytes (at most a block) from `offset`: the count
  // delivered, short at the end of the file, 0 at or behind it, -1 on
  // failure. Reads run forward without gaps and may reach back at any time.
  virtual int ReadBuffer(long long offset, char* destination, int size);
  // Starts on `file` (not owned) at `offset` with blocks of `blockSize`
  // bytes (whole sectors, for unbuffered reads): reads the first block and
  // starts the second. 0, kOutOfMemory, kReadFailed or kNothingToRead.
  // `reserved` is not used. A later call (a seek) first waits for the read
  // still under way, then reuses the blocks: no larger size.
  virtual int InitReadBuffer(MFileUniv* file, long long offset, int blockSize, int reserved);

  // The file offset of the current block's first byte.
  long long GetBlockOffset() const { return mBlockOffset; }
  // Bytes behind the last block read: what the reads to come have still to fetch.
  long long GetRemaining() const { return mRemaining; }
  // File bytes in the current block.
  int GetValidBytes() const { return mValidBytes; }
  // True while a read into the other block is under way; GetPendingBytes is its length.
  bool IsReadPending() const { return mReadPending; }
  int GetPendingBytes() const { return mPendingBytes; }

 private:
  // Reads `size` bytes at `offset` through a block of its own, waiting: 0, -2 or -3.
  int DoReadPieceOutsideOfBuffer(long long offset, char* destination, int size);
  // Frees both blocks.
  void FreeBlocks();
  // Waits for every read under way and readies the events for the next.
  void FinishPendingRead();
  // Blocks by number: 0 is block A, 1 block B.
  char* BlockOf(int block) const { return block == 0 ? mBlockA : mBlockB; }
  int CurrentNumber() const { return mCurrentBlock == mBlockA ? 0 : 1; }
  // Readies the read of `count` bytes at `offset` into `block`, as up to
  // kReadParts transfers side by side; StartParts starts them.
  void BeginRead(int block, long long offset, int count);
  // Starts the parts of `block`'s read before part `parts` that have not
  // started: 0, or the error of a part that could not start (the parts
  // before it are under way, and no later one starts).
  uint32_t StartParts(int block, int parts);
  // Both: the whole read under way.
  uint32_t StartRead(int block, long long offset, int count);
  // Starts the first `parts` parts of the read of what follows the other
  // block into the current one, once the consumer has passed them.
  void ReadAheadInto(int parts);
  // Bytes at the start of the current block that the read ahead has taken.
  int RecycledBytes() const;
  // Copies `count` bytes of the current block from `into` on: 0, or -1 when
  // bytes that the read ahead has taken could not be read again.
  int CopyOut(char* destination, long long into, int count);
  // The consumer has passed the first `end` bytes of the current block.
  void Passed(long long end);
  // Bytes of each part of a read that starts at `offset`.
  int PartBytesAt(long long offset) const;
  // Waits at most `seconds` for each part of `block`'s read: 0 when all
  // ended whole; 1 when one is still to end (a later call waits on from
  // there); -1 when all ended and one of them failed.
  int WaitRead(int block, unsigned long seconds);
  // Waits for every part of `block`'s read that was started, and forgets it.
  void EndRead(int block);
  // The record and event of part `part` of `block`'s read.
  OVERLAPPED* PartRecord(int block, int part);
  MEvent* PartEvent(int block, int part);

  // Transfers that the read of a block is split into.
  static constexpr int kReadParts = 4;
  // One block's read, in parts.
  struct BlockRead {
    long long offset = 0;      // where the read starts
    int count = 0;             // its bytes
    int partBytes = 0;         // bytes of each part, the last one short
    int needed = 0;            // parts of the read
    int started = 0;           // of those, the first ones started
    int ended = 0;             // of those, the first ones seen to end
    bool failed = false;       // one of the ended parts failed
    uint32_t startError = 0;   // why part `started` could not start
  };

  MFileUniv* mFile;
  char* mCurrentBlock;
  char* mBlockA;
  char* mBlockB;
  int mValidBytes;
  int mBlockSize;
  long long mRemaining;
  long long mFileSize;
  long long mBlockOffset;
  MEvent mEvent;
  bool mReadPending;
  int mPendingBytes;
  OVERLAPPED mOverlappedRecord;
  // A block's read goes as parts; block A's first has mOverlappedRecord and
  // mEvent, the others these (block A's, then block B's).
  OVERLAPPED mPartRecords[2 * kReadParts - 1];
  MEvent mPartEvents[2 * kReadParts - 1];
  // Block A's and block B's read. The other block's is the read under way;
  // the current block's, once begun, the read of what follows the other
  // block, whose parts start as the consumer passes them and the rest at the
  // change of blocks.
  BlockRead mReads[2];
};
