// The concatenation engine: whole files joined end to end into the
// destination through two buffers, so that the read of one buffer overlaps
// the write of the other. Every transfer ends in ConcatCompletionRoutine,
// which the platform runs on this thread during ConcatWaitOperation's
// alertable waits, so a whole run stays on the calling thread.
#include <algorithm>
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

uint64_t RoundUp(uint64_t value, uint64_t unit) { return (value + unit - 1) / unit * unit; }

MEvent* EventOf(ConcatCallbackInfo* record) { return static_cast<MEvent*>(record->mOverlapped.hEvent); }

// The code of a failed transfer: its own, else the thread's last error.
uint32_t FailureCode(const ConcatCallbackInfo& record) {
  uint32_t code = record.mError != 0 ? record.mError : GetLastError();
  return code != 0 ? code : kNoCode;
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

long MFileUniv::ConcatFile(unsigned short* path, long /*reserved*/, bool& cancelled, long /*reservedTwo*/) {
  ConcatInfo* info = &mConcatInfo;
  if (!info->mBufferOne || !info->mBufferTwo || !EventOf(&info->mWriteInfo)) return -1;  // no run started
  long result = -1;
  MEvent readEvent(false);
  ConcatCallbackInfo read{};
  read.mOverlapped.hEvent = &readEvent;
  read.mMarker = ConcatCallbackInfo::kLiveMarker;
  info->mWriteInfo.mError = 0;
  info->mWriteInfo.mBytes = 0;

  if (ConcatOpenSourceFile(info, path) == 0) {
    const uint64_t size = ConcatSetSourceInfo(info);
    if (size == kUnknownSize) {
      result = static_cast<long>(GetLastError());
    } else if (size == 0) {
      result = 0;  // an empty source writes nothing
    } else {
      info->mBytesWritten = 0;
      info->mErrorCode = 0;
      info->mWritePending = 0;
      info->mReadPending = 1;
      info->mBytesLeftToRead = info->mSourceSize;
      info->mBytesToRead = static_cast<uint32_t>(std::min<uint64_t>(info->mBufferSize, info->mSourceSize));
      info->mReadBuffer = info->mBufferOne;
      uint32_t error = vp::StartHandleTransfer(info->mSource, false, info->mBufferOne,
                                         info->mBytesToRead, &read.mOverlapped, &ConcatCompletionRoutine);
      if (error != 0) {
        info->mErrorCode = vp::SetLastErrorCode(error);
      } else {
        bool readInFlight = true, writeInFlight = false, waitFailed = false, finished = false;
        for (;;) {
          if (info->mReadPending) {
            if (ConcatWaitOperation(info, &read) != 0) {
              waitFailed = true;
              break;
            }
            readInFlight = false;
            if (read.mBytes != info->mBytesToRead) {
              info->mErrorCode = FailureCode(read);
              break;
            }
            info->mBytesLeftToRead -= read.mBytes;
            ConcatUpdateOverlap(&read, read.mBytes);
            read.mBytes = 0;
          }
          if (info->mWritePending) {
            if (ConcatWaitOperation(info, &info->mWriteInfo) != 0) {
              waitFailed = true;
              break;
            }
            writeInFlight = false;
            if (info->mWriteInfo.mBytes != info->mBytesToWrite) {
              info->mErrorCode = FailureCode(info->mWriteInfo);
              break;
            }
            ConcatCollectWrite(info, true);
          }
          // The write goes first: it takes the buffer that the last read filled.
          if (info->mBytesWritten < info->mRoundedSize) {
            ConcatWriteBuffer(info);
            if (info->mErrorCode != 0) break;
            info->mWritePending = 1;
            writeInFlight = true;
          } else {
            finished = true;
          }
          if (info->mBytesLeftToRead > 0) {
            ConcatReadBuffer(info, &read);
            if (info->mErrorCode != 0) break;
            readInFlight = true;
          } else {
            info->mReadPending = 0;
          }
          if (cancelled || finished) break;
        }
        // Nothing leaves while the system may still write into the buffers or the read record.
        ConcatDrain(info, &read, readInFlight, writeInFlight);
        if (!waitFailed && info->mErrorCode == 0) result = 0;
      }
      // Only a failure of this call is reported: one left from an earlier call is not news.
      ConcatReportError(info);
    }
    ConcatCloseSourceFile(info);
  }
  read.mMarker = 0;
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
  info->mBytesToWrite = info->mBytesToRead;
  if (info->mBytesToRead < static_cast<uint32_t>(info->mBufferSize) && info->mRoundedSize != info->mSourceSize) {
    // The last piece: zeros up to the sector boundary.
    const uint32_t padding = static_cast<uint32_t>(info->mRoundedSize - info->mSourceSize);
    std::memset(info->mWriteBuffer + info->mBytesToRead, 0, padding);
    info->mBytesToWrite += padding;
  }
  uint32_t error = vp::StartHandleTransfer(info->mDestination, true, info->mWriteBuffer,
                                     info->mBytesToWrite, &info->mWriteInfo.mOverlapped, &ConcatCompletionRoutine);
  if (error != 0) info->mErrorCode = vp::SetLastErrorCode(error);
}

void MFileUniv::ConcatReadBuffer(ConcatInfo* info, ConcatCallbackInfo* record) {
  info->mBytesToRead = static_cast<uint32_t>(std::min<uint64_t>(info->mBufferSize, info->mBytesLeftToRead));
  info->mReadBuffer = info->mReadBuffer != info->mBufferOne ? info->mBufferOne : info->mBufferTwo;
  uint32_t error = vp::StartHandleTransfer(info->mSource, false, info->mReadBuffer,
                                     info->mBytesToRead, &record->mOverlapped, &ConcatCompletionRoutine);
  if (error != 0) info->mErrorCode = vp::SetLastErrorCode(error);
}

long MFileUniv::ConcatOpenSourceFile(ConcatInfo* info, unsigned short* path) {
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

void MFileUniv::ConcatDrain(ConcatInfo* info, ConcatCallbackInfo* read, bool readInFlight, bool writeInFlight) {
  uint32_t savedCode = info->mErrorCode;
  if (readInFlight) ConcatWaitOperation(info, read);
  if (writeInFlight && ConcatWaitOperation(info, &info->mWriteInfo) == 0) {
    // A write that ended whole is counted, so the offset stands behind what the destination holds.
    if (info->mWriteInfo.mBytes == info->mBytesToWrite) ConcatCollectWrite(info, true);
    info->mWritePending = 0;
  }
  info->mErrorCode = savedCode;
}

void MFileUniv::ConcatReportError(ConcatInfo* info) {
  if (info->mErrorCode == 0) return;
  std::string text = vp::ErrorText(info->mErrorCode);
  if (text.empty()) return;
  MString message;
  message.ImportASCII(text.c_str(), -1);
  CMessageAction::Error(nullptr, message);
}
