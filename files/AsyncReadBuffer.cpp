#include "files/AsyncReadBuffer.h"

#include <algorithm>

#include "containers/UMemUtils.h"
#include "files/MFileUniv.h"
#include "platform/internal/File.h"
#include "platform/internal/Memory.h"

namespace vp = vbu::platform;

namespace {

// A block: room for a sector lead in front of the data, and for the
// rounding up to whole sectors behind it.
constexpr int kLeadRoom = 2048;
constexpr int kBlockExtra = 4096;
// Waits for a read are limited to two minutes.
constexpr unsigned long kReadSeconds = 120;

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
      mOverlappedRecord{} {}

AsyncReadBuffer::~AsyncReadBuffer() {
  FinishPendingRead();
  FreeBlocks();
}

void AsyncReadBuffer::FinishPendingRead() {
  // A read that was started (mPendingBytes > 0) writes into its block until
  // it ends: no block may be reused or freed before. Its event is then reset,
  // so that the next wait waits for the next read, not for this one.
  if (mReadPending && mPendingBytes > 0) mEvent.Wait(kWaitForever);
  mEvent.Reset();
  mReadPending = false;
  mPendingBytes = 0;
}

void AsyncReadBuffer::FreeBlocks() {
  vp::FreePages(mBlockA);
  vp::FreePages(mBlockB);
  mBlockA = mBlockB = mCurrentBlock = nullptr;
}

uint32_t AsyncReadBuffer::StartRead(long long offset, int count) {
  char* other = mCurrentBlock == mBlockA ? mBlockB : mBlockA;
  return mFile->FReadOverlapped(offset, DataOf(other), count, &mOverlappedRecord, &mEvent);
}

int AsyncReadBuffer::InitReadBuffer(MFileUniv* file, long long offset, int blockSize, int /*reserved*/) {
  if (!file || blockSize <= 0 || blockSize > 0x7FFFFFFF - kBlockExtra || offset < 0) return kReadFailed;
  mFile = file;
  mBlockSize = blockSize;
  const std::size_t blockBytes = static_cast<std::size_t>(blockSize) + kBlockExtra;
  if (!mBlockA) {
    mBlockA = static_cast<char*>(vp::AllocPages(blockBytes));
    if (!mBlockA) return kOutOfMemory;
  }
  if (!mBlockB) {
    mBlockB = static_cast<char*>(vp::AllocPages(blockBytes));
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
  bool failed = file->FReadOverlapped(offset, DataOf(mBlockA), first, &mOverlappedRecord, &mEvent) != 0;
  if (!failed && MFileUniv::FWaitOverlappedCompletion(&mEvent, kReadSeconds) != 0) {
    // Timed out: the blocks go only once the system is done with block A.
    mEvent.Wait(kWaitForever);
    mEvent.Reset();
    failed = true;
  }
  failed = failed || ReadFailed(mOverlappedRecord);
  if (!failed) {
    mValidBytes = first;
    mRemaining -= first;
    mBlockOffset = offset;
    if (mRemaining == 0) return 0;
    const int next = static_cast<int>(std::min<long long>(mRemaining, blockSize));
    if (StartRead(offset + first, next) == 0) {
      mReadPending = true;
      mPendingBytes = next;
      return 0;
    }
  }
  FreeBlocks();
  return kReadFailed;
}

int AsyncReadBuffer::FillInReadBuffer(int& bytes) {
  bytes = 0;
  if (mReadPending) {
    if (MFileUniv::FWaitOverlappedCompletion(&mEvent, kReadSeconds) != 0) return -1;
    if (ReadFailed(mOverlappedRecord)) {
      // Nothing is in flight any more; a later call starts the read again.
      mReadPending = false;
      mPendingBytes = 0;
      return -1;
    }
    mValidBytes = mPendingBytes;
    mRemaining -= mPendingBytes;
    mBlockOffset += mBlockSize;
    bytes = mPendingBytes;
    mPendingBytes = 0;
    mReadPending = false;
    mCurrentBlock = mCurrentBlock == mBlockA ? mBlockB : mBlockA;
  }
  if (mRemaining <= 0) return 0;
  if (!mBlockB) return -1;
  const int next = static_cast<int>(std::min<long long>(mRemaining, mBlockSize));
  // Marked pending even when the start fails: a later call waits for it, and fails.
  mReadPending = true;
  if (StartRead(mBlockOffset + mBlockSize, next) != 0) return -1;
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
    Copy(destination + front, DataOf(mCurrentBlock), fromBlock);
    return front + fromBlock;
  }
  const long long into = offset - mBlockOffset;
  // The block's bytes from `offset` on; none when the read starts behind them.
  const int inside = into < mValidBytes ? mValidBytes - static_cast<int>(into) : 0;
  if (inside >= size) {
    Copy(destination, DataOf(mCurrentBlock) + into, size);
    return size;
  }
  Copy(destination, DataOf(mCurrentBlock) + into, inside);
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
  Copy(destination + inside, DataOf(mCurrentBlock) + from, delivered);
  return inside + delivered;
}

int AsyncReadBuffer::DoReadPieceOutsideOfBuffer(long long offset, char* destination, int size) {
  if (!mFile || size <= 0) return size == 0 ? 0 : kReadFailed;
  MEvent event(false);
  OVERLAPPED record{};
  // The read starts at the sector in front of `offset`: placing the data at
  // that lead behind a sector boundary keeps an unbuffered transfer aligned.
  const int lead = static_cast<int>(offset % MFileUniv::kSectorSize);
  char* block = static_cast<char*>(vp::AllocPages(static_cast<std::size_t>(size) + kBlockExtra + kLeadRoom));
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
  vp::FreePages(block);
  return result;
}
