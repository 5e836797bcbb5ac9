// The concatenation engine: whole files joined end to end into the
// destination through two buffers, so that the read of one buffer overlaps
// the write of the other. Every transfer ends in ConcatCompletionRoutine,
// which the platform runs on this thread during ConcatWaitOperation's
// alertable waits, so a whole run stays on the calling thread.
#include <algorithm>
#include <array>
#include <cstring>

#include "files/MFileUniv.h"
#include "messaging/CMessageAction.h"
#include "platform/internal/AsyncIO.h"
#include "platform/internal/Errors.h"
#include "platform/internal/File.h"
#include "platform/internal/Memory.h"
#include "tasks/CThreadStatus.h"
#include "text/MString.h"

namespace vp = vbu::platform;

namespace {

constexpr uint64_t kUnknownSize = ~uint64_t{0};
constexpr uint32_t kNoCode = 0xFFFFFFFFu;  // a failure with no code of its own

// Transfers that each buffer's read and write is split into. Measured on 8
// sources of 128 MiB, cold caches, five interleaved rounds: 1, 2, 4 and 16
// parts ran at 1375-1411 MB/s on average, 8 parts at 1581 (and 1433 against
// 1347 for 4 in eight more rounds): the reads through the cache hold a slot
// for less time, so more of the two buffers is being written at any moment.
constexpr uint32_t kTransfersPerBuffer = 8;
// The destination's space is taken ahead of the writes in steps of this
// many bytes: direct writes that grow a file wait for each other, writes
// into the file's own space run side by side.
constexpr uint64_t kReserveStep = uint64_t{256} << 20;

uint64_t RoundUp(uint64_t value, uint64_t unit) { return (value + unit - 1) / unit * unit; }

MEvent* EventOf(ConcatCallbackInfo* record) { return static_cast<MEvent*>(record->mOverlapped.hEvent); }

// The code of a failed transfer: its own, else the thread's last error.
uint32_t FailureCode(const ConcatCallbackInfo& record) {
  uint32_t code = record.mError != 0 ? record.mError : GetLastError();
  return code != 0 ? code : kNoCode;
}

// Bytes to write of `count` source bytes at `offset` of the source held at
// `memory`: the part that ends the source is padded with zeros up to the
// sector boundary.
uint32_t PadToSector(const ConcatInfo& info, char* memory, uint64_t offset, uint32_t count) {
  if (offset + count != info.mSourceSize || info.mRoundedSize == info.mSourceSize) return count;
  const auto padding = static_cast<uint32_t>(info.mRoundedSize - info.mSourceSize);
  std::memset(memory + count, 0, padding);
  return count + padding;
}

}  // namespace

void ConcatCompletionRoutine(uint32_t error, uint32_t bytes, OVERLAPPED* overlapped) {
  auto* record = reinterpret_cast<ConcatCallbackInfo*>(overlapped);
  if (record->mMarker == ConcatCallbackInfo::kLiveMarker) {
    record->mError = error;
    record->mBytes = bytes;
  }
  if (MEvent* event = EventOf(record)) event->Set();
}

long MFileUniv::ConcatInitialize(long sectorSize, long long startOffset) {
  // A run started anew gives back the buffers of the one before.
  ConcatCleanup(&mConcatInfo);
  mConcatInfo = ConcatInfo{};
  ConcatInfo* info = &mConcatInfo;
  info->mSource = -1;
  if (sectorSize <= 0 || sectorSize > 0x7FFFFFFF / 2048 || startOffset < 0) {
    info->mErrorCode = vp::SetLastErrorInvalidArgument();
    return -1;
  }
  info->mDestination = mHandle;
  info->mSectorSize = static_cast<int32_t>(sectorSize);
  info->mBufferSize = static_cast<int32_t>(sectorSize * 2048);
  vp::SetOffset(info->mWriteInfo.mOverlapped, startOffset);
  info->mWriteInfo.mOverlapped.hEvent = new MEvent(false);
  info->mWriteInfo.mMarker = ConcatCallbackInfo::kLiveMarker;
  info->mBufferOne = static_cast<char*>(vp::AllocPages(static_cast<std::size_t>(info->mBufferSize)));
  if (!info->mBufferOne) {
    info->mErrorCode = vp::SetLastErrorCode(vp::kErrorNoMemory);
    return -1;
  }
  info->mBufferTwo = static_cast<char*>(vp::AllocPages(static_cast<std::size_t>(info->mBufferSize)));
  if (!info->mBufferTwo) {
    info->mErrorCode = vp::SetLastErrorCode(vp::kErrorNoMemory);
    vp::FreePages(info->mBufferOne);
    info->mBufferOne = nullptr;
    return -1;
  }
  return 0;
}

// One ConcatFile's transfers. The two buffers are one ring of slots, each
// read and written as a transfer of its own, so that several requests are
// in flight on both legs and the device never waits for one of them. Slots
// are read, written and counted in the order of the file; a slot is read
// again as soon as its write has been counted. A buffer's worth of source is
// a piece: its progress (offset, one message) goes out once all its slots
// are written, in the order of the pieces. Memory: the two buffers and the
// slots' records, whatever the size of the source.
class MFileUniv::ConcatPipeline {
 public:
  ConcatPipeline(MFileUniv& file, ConcatInfo& info)
      : mFile(file),
        mInfo(info),
        mBufferBytes(static_cast<uint64_t>(info.mBufferSize)),
        mSlotBytes(vp::TransferPartBytes(static_cast<uint32_t>(info.mBufferSize), kTransfersPerBuffer)),
        mSlotsPerBuffer(static_cast<uint32_t>(info.mBufferSize) / mSlotBytes),
        mParts((info.mSourceSize + mSlotBytes - 1) / mSlotBytes),
        mWriteBase(static_cast<uint64_t>(vp::GetOffset(info.mWriteInfo.mOverlapped))),
        mReservedEnd(mWriteBase) {
    int64_t size = -1;
    if (vp::GetHandleSize(info.mDestination, &size) == 0) mSizeBefore = static_cast<uint64_t>(size);
    for (Slot& slot : mSlots) {
      slot.record.mOverlapped.hEvent = &mEnded;
      slot.record.mMarker = ConcatCallbackInfo::kLiveMarker;
    }
  }
  ~ConcatPipeline() {
    for (Slot& slot : mSlots) slot.record.mMarker = 0;
  }

  // Joins the open source. Returns once no transfer is in flight: false
  // when a transfer or a wait failed (mErrorCode says why).
  bool Run(const bool& cancelled) {
    bool waitFailed = false;
    for (;;) {
      // Counted slots are free for the reads; writes go first, as they
      // empty the slots that the reads fill.
      Collect(cancelled);
      if (!mStopping) {
        StartWrites(cancelled);
        if (!mReadsStopped) StartReads();
      }
      mInfo.mReadPending = mReadsInFlight;
      mInfo.mWritePending = mWritesInFlight;
      if (mReadsInFlight + mWritesInFlight == 0) break;  // all written, or stopped and drained
      if (!WaitForAnEnd()) {
        // Nothing more can be learnt of the transfers: stop, and once more
        // try to see the ones in flight end.
        waitFailed = true;
        if (mStopping) break;
        mStopping = true;
        continue;
      }
      TakeEnds();
    }
    const bool whole = !waitFailed && mInfo.mErrorCode == 0 && mCollectPart == mParts;
    // Space taken ahead and never written goes back: the file ends where its
    // counted bytes do, as if it had grown with the writes.
    const uint64_t end = std::max(mSizeBefore, static_cast<uint64_t>(vp::GetOffset(mInfo.mWriteInfo.mOverlapped)));
    if (!whole && mReservedEnd > end && mSizeBefore != kUnknownSize) {
      vp::SetHandleSize(mInfo.mDestination, static_cast<int64_t>(end));
    }
    return !waitFailed && mInfo.mErrorCode == 0;
  }

 private:
  enum class State : uint8_t { kFree, kReading, kFull, kWriting, kWritten, kFailed };
  struct Slot {
    ConcatCallbackInfo record{};  // mBytes: kPending until the transfer ends
    State state = State::kFree;
    uint32_t count = 0;           // bytes of the transfer under way or last ended
    uint64_t part = 0;            // the part of the source it holds
  };
  static constexpr uint32_t kPending = 0xFFFFFFFFu;  // no transfer is that long

  // Part `part` of the source (mSlotBytes each, the last one short) lives in
  // slot part % (2 * mSlotsPerBuffer): the first buffer, then the second.
  Slot& SlotOf(uint64_t part) { return mSlots[static_cast<std::size_t>(part % (2 * mSlotsPerBuffer))]; }
  char* MemoryOf(uint64_t part) {
    const auto slot = static_cast<uint32_t>(part % (2 * mSlotsPerBuffer));
    return (slot < mSlotsPerBuffer ? mInfo.mBufferOne : mInfo.mBufferTwo) +
           static_cast<std::size_t>(slot % mSlotsPerBuffer) * mSlotBytes;
  }
  uint64_t PieceOf(uint64_t part) const { return part / mSlotsPerBuffer; }
  bool EndsPiece(uint64_t part) const { return (part + 1) % mSlotsPerBuffer == 0 || part + 1 == mParts; }
  uint64_t SourceOffset(uint64_t part) const { return part * mSlotBytes; }

  void Fail(uint32_t code) {
    if (mInfo.mErrorCode == 0) mInfo.mErrorCode = code;
    mStopping = true;
  }
  // A read of `part` failed: nothing more is read, and the pieces read
  // whole before that part's piece are still written.
  void FailRead(uint32_t code, uint64_t part) {
    if (mInfo.mErrorCode == 0) mInfo.mErrorCode = code;
    mReadsStopped = true;
    mWriteLimit = std::min(mWriteLimit, PieceOf(part) * mSlotsPerBuffer);
  }

  // Starts the read or write of `part`; on failure the slot stays free.
  void Start(uint64_t part, bool write, char* memory, uint32_t count, uint64_t offset) {
    Slot& slot = SlotOf(part);
    vp::SetOffset(slot.record.mOverlapped, static_cast<int64_t>(offset));
    slot.record.mError = 0;
    slot.record.mBytes = kPending;
    slot.count = count;
    slot.part = part;
    uint32_t error = 0;
    if (write) {
      error = mFile.ConcatStart(&mInfo, &slot.record, true, memory, count);
    } else {
      mFile.ConcatReadBuffer(&mInfo, &slot.record);  // mReadBuffer and mBytesToRead are this slot's
      error = mInfo.mErrorCode;
    }
    if (error != 0) {
      slot.state = State::kFree;
      write ? Fail(error) : FailRead(error, part);
      return;
    }
    slot.state = write ? State::kWriting : State::kReading;
    ++(write ? mWritesInFlight : mReadsInFlight);
  }

  void StartReads() {
    for (; !mStopping && !mReadsStopped && mReadPart < mParts && SlotOf(mReadPart).state == State::kFree; ++mReadPart) {
      const uint64_t offset = SourceOffset(mReadPart);
      const auto count = static_cast<uint32_t>(std::min<uint64_t>(mSlotBytes, mInfo.mSourceSize - offset));
      mInfo.mReadBuffer = MemoryOf(mReadPart);
      mInfo.mBytesToRead = count;
      Start(mReadPart, false, mInfo.mReadBuffer, count, offset);
    }
  }

  // Takes the destination's space for `part`'s piece and a step beyond,
  // once the writes come near. Only a help: where the file system cannot,
  // the writes grow the file as they go.
  void Reserve(uint64_t part) {
    const uint64_t end = mWriteBase + mInfo.mRoundedSize;
    const uint64_t pieceEnd = std::min(end, mWriteBase + (PieceOf(part) + 1) * mBufferBytes);
    if (!mReserving || pieceEnd <= mReservedEnd) return;
    const uint64_t to = std::min(end, pieceEnd + kReserveStep);
    if (vp::ReserveHandleSpace(mInfo.mDestination, static_cast<int64_t>(mReservedEnd),
                               static_cast<int64_t>(to - mReservedEnd)) != 0) {
      mReserving = false;
      return;
    }
    mReservedEnd = to;
  }

  // Writes what has been read, in order. The flag is read once the writes
  // of a whole piece are under way.
  void StartWrites(const bool& cancelled) {
    for (; !mStopping && mWritePart < mWriteLimit && SlotOf(mWritePart).state == State::kFull; ++mWritePart) {
      Reserve(mWritePart);
      const uint64_t offset = SourceOffset(mWritePart);
      mInfo.mWriteBuffer = MemoryOf(mWritePart);
      // The source's last part: zeros up to the sector boundary.
      mInfo.mBytesToWrite = PadToSector(mInfo, mInfo.mWriteBuffer, offset, SlotOf(mWritePart).count);
      Start(mWritePart, true, mInfo.mWriteBuffer, mInfo.mBytesToWrite, mWriteBase + offset);
      if (EndsPiece(mWritePart) && cancelled) mStopping = true;
    }
  }

  // Counts the slots whose writes have ended whole, in order, and frees
  // them for the reads; a piece's progress goes out with its last slot. A
  // cancellation heard with a piece's progress lets at most the next piece
  // be written, as with one write in flight: if its writes are under way
  // already, nothing more starts.
  void Collect(const bool& cancelled) {
    for (; mCollectPart < mWritePart && SlotOf(mCollectPart).state == State::kWritten; ++mCollectPart) {
      Slot& slot = SlotOf(mCollectPart);
      slot.state = State::kFree;
      mPieceWritten += slot.count;
      if (!EndsPiece(mCollectPart)) continue;
      mInfo.mWriteInfo.mBytes = mPieceWritten;
      mPieceWritten = 0;
      mFile.ConcatCollectWrite(&mInfo, true);
      if (cancelled && mWritePart >= std::min(mParts, (PieceOf(mCollectPart) + 2) * mSlotsPerBuffer)) mStopping = true;
    }
  }

  // Waits until at least one transfer has ended; false when the wait failed.
  bool WaitForAnEnd() {
    // Completion routines run only in this thread's alertable waits, so none
    // can slip in between the look and the reset.
    for (const Slot& slot : mSlots) {
      if ((slot.state == State::kReading || slot.state == State::kWriting) && slot.record.mBytes != kPending) {
        return true;
      }
    }
    mEnded.Reset();
    return mFile.ConcatWaitOperation(&mInfo, &mSlots[0].record) == 0;
  }

  void TakeEnds() {
    for (Slot& slot : mSlots) {
      const bool reading = slot.state == State::kReading;
      if ((!reading && slot.state != State::kWriting) || slot.record.mBytes == kPending) continue;
      --(reading ? mReadsInFlight : mWritesInFlight);
      if (slot.record.mBytes != slot.count) {
        slot.state = State::kFailed;
        reading ? FailRead(FailureCode(slot.record), slot.part) : Fail(FailureCode(slot.record));
      } else if (reading) {
        slot.state = State::kFull;
        mInfo.mBytesLeftToRead -= slot.count;
      } else {
        slot.state = State::kWritten;
      }
    }
  }

  MFileUniv& mFile;
  ConcatInfo& mInfo;
  const uint64_t mBufferBytes;
  const uint32_t mSlotBytes;
  const uint32_t mSlotsPerBuffer;
  const uint64_t mParts;      // slots' worth of the source, the last one short
  const uint64_t mWriteBase;  // where the source's first byte goes
  MEvent mEnded{false};       // signalled by the routine of every slot
  std::array<Slot, 2 * kTransfersPerBuffer> mSlots{};
  uint64_t mReadPart = 0, mWritePart = 0, mCollectPart = 0;  // the next part to read, write, count
  uint32_t mPieceWritten = 0;  // bytes counted of the piece being collected
  int mReadsInFlight = 0, mWritesInFlight = 0;
  uint64_t mReservedEnd;                    // the destination's space taken up to here
  uint64_t mSizeBefore = kUnknownSize;      // the destination's size when the call began
  bool mReserving = true;                   // false once the file system refused
  uint64_t mWriteLimit = mParts;   // parts that may be written: those before a failed read's piece
  bool mReadsStopped = false;      // a read failed: start no more reads
  bool mStopping = false;          // a write failed, or the cancellation: start nothing more
};

long MFileUniv::ConcatFile(unsigned short* path, long reserved, bool& cancelled, long reservedTwo) {
  return ConcatFile(static_cast<const unsigned short*>(path), reserved, cancelled, reservedTwo);
}

long MFileUniv::ConcatFile(const unsigned short* path, long /*reserved*/, bool& cancelled, long /*reservedTwo*/) {
  ConcatInfo* info = &mConcatInfo;
  if (!info->mBufferOne || !info->mBufferTwo || !EventOf(&info->mWriteInfo)) return -1;  // no run started
  long result = -1;
  info->mWriteInfo.mError = 0;
  info->mWriteInfo.mBytes = 0;
  if (ConcatOpenSourceFile(info, path) != 0) return result;
  const uint64_t size = ConcatSetSourceInfo(info);
  if (size == kUnknownSize) {
    result = static_cast<long>(GetLastError());
  } else if (size == 0) {
    result = 0;  // an empty source writes nothing
  } else {
    info->mBytesWritten = 0;
    info->mErrorCode = 0;
    info->mBytesLeftToRead = info->mSourceSize;
    if (ConcatPipeline(*this, *info).Run(cancelled)) result = 0;
    // Only a failure of this call is reported: one left from an earlier call is not news.
    ConcatReportError(info);
  }
  ConcatCloseSourceFile(info);
  return result;
}

long MFileUniv::ConcatBufferSynchronously(char* buffer, long count) {
  ConcatInfo* info = &mConcatInfo;
  if (!info->mBufferOne || !EventOf(&info->mWriteInfo) || !buffer || count < 0 || count > info->mBufferSize) {
    return -1;
  }
  if (count == 0) return 0;
  info->mErrorCode = 0;
  info->mReadBuffer = info->mBufferOne;
  std::memcpy(info->mBufferOne, buffer, static_cast<std::size_t>(count));
  info->mBytesToRead = static_cast<uint32_t>(count);
  info->mSourceSize = static_cast<uint64_t>(count);
  info->mRoundedSize = RoundUp(info->mSourceSize, static_cast<uint64_t>(info->mSectorSize));
  info->mWriteInfo.mError = 0;
  info->mWriteInfo.mBytes = 0;
  ConcatWriteBuffer(info);
  if (info->mErrorCode != 0) return -1;
  if (ConcatWaitOperation(info, &info->mWriteInfo) != 0) return -1;
  if (info->mWriteInfo.mBytes != info->mBytesToWrite) return -1;
  ConcatCollectWrite(info, false);
  return 0;
}

void MFileUniv::ConcatCleanup(ConcatInfo* info) {
  vp::FreePages(info->mBufferOne);
  vp::FreePages(info->mBufferTwo);
  info->mBufferOne = info->mBufferTwo = nullptr;
  delete EventOf(&info->mWriteInfo);
  info->mWriteInfo.mOverlapped.hEvent = nullptr;
}

uint32_t MFileUniv::ConcatWaitOperation(ConcatInfo* info, ConcatCallbackInfo* record) {
  MEvent* event = EventOf(record);
  if (!event) {
    info->mErrorCode = vp::SetLastErrorInvalidArgument();
    return kWaitFailed;
  }
  uint32_t result;
  do {
    result = event->Wait(kWaitForever, true);
  } while (result == kWaitIoCompletion);
  if (result == kWaitFailed) {
    uint32_t code = GetLastError();
    info->mErrorCode = code != 0 ? code : result;
  }
  return result;
}

void MFileUniv::ConcatWriteBuffer(ConcatInfo* info) {
  info->mWriteBuffer = info->mReadBuffer;
  info->mBytesToWrite = PadToSector(*info, info->mWriteBuffer, 0, info->mBytesToRead);
  ConcatStart(info, &info->mWriteInfo, true, info->mWriteBuffer, info->mBytesToWrite);
}

void MFileUniv::ConcatReadBuffer(ConcatInfo* info, ConcatCallbackInfo* record) {
  ConcatStart(info, record, false, info->mReadBuffer, info->mBytesToRead);
}

uint32_t MFileUniv::ConcatStart(ConcatInfo* info, ConcatCallbackInfo* record, bool write, char* buffer, uint32_t count) {
  uint32_t error = vp::StartHandleTransfer(write ? info->mDestination : info->mSource, write, buffer, count,
                                           &record->mOverlapped, &ConcatCompletionRoutine);
  if (error != 0) info->mErrorCode = vp::SetLastErrorCode(error);
  return error;
}

long MFileUniv::ConcatOpenSourceFile(ConcatInfo* info, const unsigned short* path) {
  // The source goes through the system cache, unlike the destination.
  return vp::ReportError(vp::OpenHandle(path, vp::HandleAccess::kRead, vp::HandleDisposition::kOpenExisting,
                                        {.sequential = true}, &info->mSource));
}

void MFileUniv::ConcatCloseSourceFile(ConcatInfo* info) {
  if (info->mSource == -1) return;
  vp::CloseHandle(info->mSource);
  info->mSource = -1;
}

uint64_t MFileUniv::ConcatSetSourceInfo(ConcatInfo* info) {
  int64_t size = -1;
  if (vp::ReportError(vp::GetHandleSize(info->mSource, &size)) != 0) return kUnknownSize;
  info->mSourceSize = static_cast<uint64_t>(size);
  if (size > 0) info->mRoundedSize = RoundUp(info->mSourceSize, static_cast<uint64_t>(info->mSectorSize));
  return info->mSourceSize;
}

void MFileUniv::ConcatUpdateOverlap(ConcatCallbackInfo* record, unsigned long bytes) {
  vp::SetOffset(record->mOverlapped, vp::GetOffset(record->mOverlapped) + static_cast<int64_t>(bytes));
  if (MEvent* event = EventOf(record)) event->Reset();
}

void MFileUniv::ConcatCollectWrite(ConcatInfo* info, bool reportProgress) {
  const uint32_t bytes = info->mWriteInfo.mBytes;
  info->mBytesWritten += bytes;
  ConcatUpdateOverlap(&info->mWriteInfo, bytes);
  // Progress counts 2048-byte units, whatever the sector size.
  if (reportProgress) CThreadStatus::AdvancePosition(bytes / 2048);
  info->mWriteInfo.mBytes = 0;
}

void MFileUniv::ConcatReportError(ConcatInfo* info) {
  if (info->mErrorCode == 0) return;
  std::string text = vp::ErrorText(info->mErrorCode);
  if (text.empty()) return;
  MString message;
  message.ImportASCII(text.c_str(), -1);
  CMessageAction::Error(nullptr, message);
}
