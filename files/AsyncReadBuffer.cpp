#include "files/AsyncReadBuffer.h"

#include <algorithm>

#include "containers/UMemUtils.h"
#include "files/MFileUniv.h"
#include "platform/internal/AsyncIO.h"
#include "platform/internal/File.h"
#include "platform/internal/Memory.h"

namespace vp = vbu::platform;

namespace {

// A block: room for a sector lead in front of the data, and for the
// rounding up to whole sectors behind it.
constexpr int kLeadRoom = 2048;
constexpr int kBlockExtra = 4096;
constexpr int kPage = 4096;

// A block of `dataBytes` from page-aligned memory. The block starts its
// lead's room in front of a page boundary, so that its data starts on one:
// a transfer into data off the page takes one page more than its length,
// and the device splits it into two requests, one of them a few KiB.
char* AllocBlock(std::size_t dataBytes) {
  char* pages = static_cast<char*>(vp::AllocPages(dataBytes + kBlockExtra + kPage - kLeadRoom));
  return pages ? pages + kPage - kLeadRoom : nullptr;
}

void FreeBlock(char* block) {
  if (block) vp::FreePages(block - (kPage - kLeadRoom));
}
// Waits for a read are limited to two minutes.
constexpr unsigned long kReadSeconds = 120;
// WaitRead: a part has still to end.
constexpr int kStillReading = 1;

char* DataOf(char* block) { return block + kLeadRoom; }

// A transfer that ended with an error has put nothing trustworthy in its
// block: a wait that succeeds only says that it ended.
bool ReadFailed(const OVERLAPPED& record) { return record.Internal != 0; }

void Copy(char* destination, const char* source, int count) {
  if (count > 0) UMemUtils::memcpy(destination, source, static_cast<unsigned long>(count));
}

}  // namespace

AsyncReadBuffer::AsyncReadBuffer()
    : mFile(nullptr),
      mCurrentBlock(nullptr),
      mBlockA(nullptr),
      mBlockB(nullptr),
      mValidBytes(0),
      mBlockSize(0),
      mRemaining(0),
      mFileSize(0),
      mBlockOffset(0),
      mEvent(false),
      mReadPending(false),
      mPendingBytes(0),
      mOverlappedRecord{},
      mPartRecords{} {}

AsyncReadBuffer::~AsyncReadBuffer() {
  FinishPendingRead();
  FreeBlocks();
}

OVERLAPPED* AsyncReadBuffer::PartRecord(int block, int part) {
  return block == 0 && part == 0 ? &mOverlappedRecord : &mPartRecords[block * kReadParts + part - 1];
}

MEvent* AsyncReadBuffer::PartEvent(int block, int part) {
  return block == 0 && part == 0 ? &mEvent : &mPartEvents[block * kReadParts + part - 1];
}

void AsyncReadBuffer::FinishPendingRead() {
  EndRead(0);
  EndRead(1);
  mReadPending = false;
  mPendingBytes = 0;
}

void AsyncReadBuffer::EndRead(int block) {
  // A part that was started writes into its block until it ends: no block
  // may be reused or freed before. The events are then reset, so that the
  // next wait waits for the next read, not for this one.
  BlockRead& read = mReads[block];
  for (int part = read.ended; part < read.started; ++part) PartEvent(block, part)->Wait(kWaitForever);
  for (int part = 0; part < kReadParts; ++part) PartEvent(block, part)->Reset();
  read = BlockRead{};
}

void AsyncReadBuffer::FreeBlocks() {
  FreeBlock(mBlockA);
  FreeBlock(mBlockB);
  mBlockA = mBlockB = mCurrentBlock = nullptr;
}

void AsyncReadBuffer::BeginRead(int block, long long offset, int count) {
  BlockRead& read = mReads[block];
  read = BlockRead{};
  read.offset = offset;
  read.count = count;
  read.partBytes = PartBytesAt(offset);
  read.needed = std::max(1, (count + read.partBytes - 1) / read.partBytes);
}

uint32_t AsyncReadBuffer::StartParts(int block, int parts) {
  BlockRead& read = mReads[block];
  if (read.startError != 0) return read.startError;
  for (; read.started < std::min(parts, read.needed); ++read.started) {
    const int done = read.started * read.partBytes;
    if (uint32_t error = mFile->FReadOverlapped(read.offset + done, DataOf(BlockOf(block)) + done,
                                                std::min(read.partBytes, read.count - done),
                                                PartRecord(block, read.started), PartEvent(block, read.started))) {
      read.startError = error;
      return error;
    }
  }
  return 0;
}

uint32_t AsyncReadBuffer::StartRead(int block, long long offset, int count) {
  BeginRead(block, offset, count);
  return StartParts(block, kReadParts);
}

void AsyncReadBuffer::ReadAheadInto(int parts) {
  if (!mReadPending || mPendingBytes <= 0) return;
  const int current = CurrentNumber();
  if (mReads[current].needed == 0) {
    const int ahead = static_cast<int>(std::min<long long>(mRemaining - mPendingBytes, mBlockSize));
    if (ahead <= 0) return;
    BeginRead(current, mBlockOffset + 2LL * mBlockSize, ahead);
  }
  StartParts(current, parts);
}

int AsyncReadBuffer::RecycledBytes() const {
  const BlockRead& ahead = mReads[CurrentNumber()];
  return std::min(ahead.started * ahead.partBytes, mBlockSize);
}

int AsyncReadBuffer::CopyOut(char* destination, long long into, int count) {
  if (count <= 0) return 0;
  // Bytes whose room the read ahead has taken come from the file again.
  const int recycled = RecycledBytes();
  if (into < recycled) {
    const int front = static_cast<int>(std::min<long long>(count, recycled - into));
    if (DoReadPieceOutsideOfBuffer(mBlockOffset + into, destination, front) != 0) return -1;
    destination += front;
    into += front;
    count -= front;
  }
  Copy(destination, DataOf(mCurrentBlock) + into, count);
  return 0;
}

int AsyncReadBuffer::PartBytesAt(long long offset) const {
  // Parts start on sector boundaries; a read that does not stays whole.
  if (offset % MFileUniv::kSectorSize != 0) return mBlockSize;
  return static_cast<int>(vp::TransferPartBytes(static_cast<uint32_t>(mBlockSize), kReadParts));
}

void AsyncReadBuffer::Passed(long long end) {
  // Called for every read of the consumer: nothing to do once the read
  // ahead has started whole, or when nothing follows.
  if (!mReadPending || mPendingBytes <= 0) return;
  const BlockRead& ahead = mReads[CurrentNumber()];
  if (ahead.needed > 0 && ahead.started == ahead.needed) return;
  const int partBytes = ahead.needed > 0 ? ahead.partBytes : PartBytesAt(mBlockOffset + 2LL * mBlockSize);
  if (end >= partBytes) ReadAheadInto(static_cast<int>(end / partBytes));
}

int AsyncReadBuffer::WaitRead(int block, unsigned long seconds) {
  BlockRead& read = mReads[block];
  for (; read.ended < read.needed; ++read.ended) {
    // A part that never started is waited for like the others: nobody
    // signals it, so the wait runs out.
    if (MFileUniv::FWaitOverlappedCompletion(PartEvent(block, read.ended), seconds) != kWaitObject0) {
      return kStillReading;
    }
    read.failed = read.failed || ReadFailed(*PartRecord(block, read.ended));
  }
  return read.failed ? -1 : 0;
}

int AsyncReadBuffer::InitReadBuffer(MFileUniv* file, long long offset, int blockSize, int /*reserved*/) {
  if (!file || blockSize <= 0 || blockSize > 0x7FFFFFFF - kBlockExtra || offset < 0) return kReadFailed;
  mFile = file;
  mBlockSize = blockSize;
  if (!mBlockA) {
    mBlockA = AllocBlock(static_cast<std::size_t>(blockSize));
    if (!mBlockA) return kOutOfMemory;
  }
  if (!mBlockB) {
    mBlockB = AllocBlock(static_cast<std::size_t>(blockSize));
    if (!mBlockB) {
      FreeBlocks();
      return kOutOfMemory;
    }
  }
  FinishPendingRead();  // a seek: the read ahead of the last start is of no use
  mFileSize = file->GetSize();
  mRemaining = mFileSize - offset;
  mCurrentBlock = mBlockA;
  if (mRemaining <= 0) return kNothingToRead;

  const int first = static_cast<int>(std::min<long long>(mRemaining, blockSize));
  bool failed = StartRead(0, offset, first) != 0 || WaitRead(0, kReadSeconds) != 0;
  // After a failure or a time-out the blocks go only once the system is done with block A.
  EndRead(0);
  if (!failed) {
    mValidBytes = first;
    mRemaining -= first;
    mBlockOffset = offset;
    if (mRemaining == 0) return 0;
    const int next = static_cast<int>(std::min<long long>(mRemaining, blockSize));
    if (StartRead(1, offset + first, next) == 0) {
      mReadPending = true;
      mPendingBytes = next;
      return 0;
    }
  }
  FinishPendingRead();  // the parts of a read that started only in part
  FreeBlocks();
  return kReadFailed;
}

int AsyncReadBuffer::FillInReadBuffer(int& bytes) {
  bytes = 0;
  if (mReadPending) {
    const int current = CurrentNumber();
    // The block being left is free from here on: the rest of the read of
    // what follows the other block starts into it before the wait, so that
    // the disk has work while this thread waits and wakes.
    ReadAheadInto(kReadParts);
    const int waited = WaitRead(1 - current, kReadSeconds);
    if (waited == kStillReading) return -1;  // timed out: a later call waits on
    if (waited != 0) {
      // Nothing is in flight any more; a later call starts the read again.
      FinishPendingRead();
      return -1;
    }
    mReads[1 - current] = BlockRead{};
    mValidBytes = mPendingBytes;
    mRemaining -= mPendingBytes;
    mBlockOffset += mBlockSize;
    bytes = mPendingBytes;
    mCurrentBlock = BlockOf(1 - current);
    // The read started ahead is the one under way now. Marked pending even
    // when a part of it could not start: a later call waits for it, and fails.
    const BlockRead& ahead = mReads[current];
    mReadPending = ahead.needed > 0;
    mPendingBytes = ahead.startError == 0 ? ahead.count : 0;
    if (mReadPending) return mPendingBytes == 0 ? -1 : 0;
  }
  if (mRemaining <= 0) return 0;
  if (!mBlockB) return -1;
  const int next = static_cast<int>(std::min<long long>(mRemaining, mBlockSize));
  // Marked pending even when the start fails: a later call waits for it, and fails.
  mReadPending = true;
  if (StartRead(1 - CurrentNumber(), mBlockOffset + mBlockSize, next) != 0) return -1;
  mPendingBytes = next;
  return 0;
}

int AsyncReadBuffer::ReadBuffer(long long offset, char* destination, int size) {
  if (offset >= mFileSize || size <= 0) return 0;
  if (!mCurrentBlock || !destination || offset < 0) return -1;
  // 64 bits: a read more than 2 GiB in front of the block stays in front of it.
  const long long before = mBlockOffset - offset;
  if (before > 0) {
    // The read starts in front of the current block.
    if (before > size) return DoReadPieceOutsideOfBuffer(offset, destination, size) == 0 ? size : -1;
    const int front = static_cast<int>(before);
    if (DoReadPieceOutsideOfBuffer(offset, destination, front) != 0) return -1;
    // The rest comes from the block, never past its file bytes.
    const int fromBlock = std::min(size - front, mValidBytes);
    if (CopyOut(destination + front, 0, fromBlock) != 0) return -1;
    Passed(fromBlock);
    return front + fromBlock;
  }
  const long long into = offset - mBlockOffset;
  // The block's bytes from `offset` on; none when the read starts behind them.
  const int inside = into < mValidBytes ? mValidBytes - static_cast<int>(into) : 0;
  if (inside >= size) {
    if (CopyOut(destination, into, size) != 0) return -1;
    Passed(into + size);
    return size;
  }
  if (CopyOut(destination, into, inside) != 0) return -1;
  int got = 0;
  if (FillInReadBuffer(got) != 0) return -1;
  const int rest = size - inside;
  // Where the bytes wanted start in the new block: 0 for a read without a gap.
  const long long from = offset + inside - mBlockOffset;
  if (got > 0 && from >= got) {
    // A forward gap past the new block's bytes: read those bytes directly.
    const int piece = static_cast<int>(std::min<long long>(rest, mFileSize - (offset + inside)));
    if (DoReadPieceOutsideOfBuffer(offset + inside, destination + inside, piece) != 0) return -1;
    return inside + piece;
  }
  const int available = got > 0 ? got - static_cast<int>(from) : 0;
  const int delivered = std::min(rest, available);
  if (CopyOut(destination + inside, from, delivered) != 0) return -1;
  Passed(from + delivered);
  return inside + delivered;
}

int AsyncReadBuffer::DoReadPieceOutsideOfBuffer(long long offset, char* destination, int size) {
  if (!mFile || size <= 0) return size == 0 ? 0 : kReadFailed;
  MEvent event(false);
  OVERLAPPED record{};
  // The read starts at the sector in front of `offset`: placing the data at
  // that lead behind a sector boundary keeps an unbuffered transfer aligned.
  const int lead = static_cast<int>(offset % MFileUniv::kSectorSize);
  char* block = AllocBlock(static_cast<std::size_t>(size) + kLeadRoom);
  if (!block) return kOutOfMemory;
  char* data = DataOf(block) + lead;
  int result = kReadFailed;
  if (mFile->FReadOverlapped(offset, data, size, &record, &event) == 0) {
    if (MFileUniv::FWaitOverlappedCompletion(&event, kReadSeconds) == 0) {
      if (!ReadFailed(record)) {
        Copy(destination, data, size);
        result = 0;
      }
    } else {
      event.Wait(kWaitForever);  // the block goes only once the system is done with it
    }
  }
  FreeBlock(block);
  return result;
}

// The class constants have their one definition here, so that a host linking
// the library as a DLL reaches them like any other member.
constexpr int AsyncReadBuffer::kOutOfMemory;
constexpr int AsyncReadBuffer::kReadFailed;
constexpr int AsyncReadBuffer::kNothingToRead;
constexpr int AsyncReadBuffer::kReadParts;
