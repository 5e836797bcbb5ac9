// The plain file: opening, the stdio route, file information, size changes
// and overlapped transfers. The concatenation engine is in MFileUnivConcat.cpp.
#include "files/MFileUniv.h"

#include <cstring>
#include <memory>
#include <new>

#include "files/OpenModesInternal.h"
#include "messaging/CMessageAction.h"
#include "platform/internal/AsyncIO.h"
#include "platform/internal/CodePage.h"
#include "platform/internal/Errors.h"
#include "platform/internal/File.h"
#include "platform/internal/FileSystem.h"
#include "platform/internal/LocalTime.h"
#include "text/MString.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

namespace {

// A fresh record for a transfer at `offset` that signals `event`.
void PrepareRecord(OVERLAPPED* overlapped, long long offset, void* event) {
  *overlapped = OVERLAPPED{};
  vp::SetOffset(*overlapped, offset);
  overlapped->hEvent = event;
}

bool IsPending(uint32_t error) {
  return error == 0 || error == kErrorIoPending || error == kErrorHandleEof;
}

}  // namespace

MFileUniv::MFileUniv()
    : mStream(nullptr), mDescriptor(-1), mOverlapped(false), mSectorLead(0), mConcatInfo{}, mHandle(-1) {}

MFileUniv::MFileUniv(const MFileUniv& other)
    : MFile(other),
      mStream(other.mStream),
      mDescriptor(other.mDescriptor),
      mOverlapped(other.mOverlapped),
      mSectorLead(other.mSectorLead),
      mConcatInfo{},
      mHandle(other.mHandle) {}

MFileUniv& MFileUniv::operator=(const MFileUniv& other) {
  if (this == &other) return *this;
  MFile::operator=(other);
  mStream = other.mStream;
  mDescriptor = other.mDescriptor;
  mOverlapped = other.mOverlapped;
  mSectorLead = other.mSectorLead;
  mHandle = other.mHandle;
  return *this;
}

MFileUniv::~MFileUniv() {
  FClose();
  if (mHandle != -1) {
    vp::CancelHandleTransfers(mHandle);
    vp::CloseHandle(mHandle);
  }
  ConcatCleanup(&mConcatInfo);
}

// ---- opening and closing

int MFileUniv::FOpen(MFileSpecWin& spec, file_open_t mode) {
  SetFileSpec(spec);
  return FOpen(mode);
}

int MFileUniv::FOpen(const unsigned short* path, file_open_t mode) {
  GetFileSpec().SetFilePath(path ? path : u""_u16);
  return FOpen(mode);
}

int MFileUniv::FOpen(file_open_t mode) { return OpenAs(mode, true); }

int MFileUniv::OpenAs(file_open_t mode, bool mayCreate) {
  const unsigned short* path = GetFileSpec().GetFilePath();
  const vbu::files::OpenMode* row = vbu::files::OpenModeOf(mode);
  if (!row) return -1;
  const bool creates = row->creates && mayCreate;
  if (row->overlapped) {
    const vp::HandleAccess access = row->reads && row->writes ? vp::HandleAccess::kReadWrite
                                    : row->writes             ? vp::HandleAccess::kWrite
                                                              : vp::HandleAccess::kRead;
    const vp::HandleDisposition disposition = creates && row->truncates ? vp::HandleDisposition::kCreateAlways
                                              : creates                 ? vp::HandleDisposition::kOpenAlways
                                                                        : vp::HandleDisposition::kOpenExisting;
    mOverlapped = true;
    uint32_t error = vp::OpenHandle(path, access, disposition, {.unbuffered = true}, &mHandle);
    // A failed open leaves the object closed, on neither route.
    if (mHandle == -1) mOverlapped = false;
    return vp::ReportError(error);
  }
  const unsigned flags = (row->writes ? vp::kDescriptorReadWrite : vp::kDescriptorRead) |
                         (creates ? vp::kDescriptorCreate : 0u) | (row->truncates ? vp::kDescriptorTruncate : 0u) |
                         (row->text ? vp::kDescriptorText : 0u);
  int fd = -1;
  if (uint32_t error = vp::OpenDescriptor(path, flags, &fd)) return vp::ReportError(error);
  void* stream = nullptr;
  if (uint32_t error = vp::OpenStream(fd, row->stream, &stream)) {
    vp::CloseDescriptor(fd);
    return vp::ReportError(error);
  }
  // An append that does not stand at the end would write over the file.
  if (uint32_t error = vp::SeekDescriptor(fd, 0, row->atEnd ? file_seek_end : file_seek_begin)) {
    vp::CloseStream(stream);
    return vp::ReportError(error);
  }
  mStream = stream;
  mDescriptor = fd;
  // A file opened to be written is made writable for its owner; nobody loses access.
  if (row->writes) vp::AddOwnerReadWrite(path);
  return 0;
}

int MFileUniv::FClose() {
  if (mOverlapped) {
    vp::CancelHandleTransfers(mHandle);
    // A handle that cannot write has nothing to flush.
    uint32_t error = vp::HandleIsWritable(mHandle) ? vp::FlushHandle(mHandle) : 0;
    const uint32_t closeError = vp::CloseHandle(mHandle);
    if (error == 0) error = closeError;
    // Forgotten whatever the close gave: the system has let the number go,
    // and another open may already have it.
    mHandle = -1;
    mOverlapped = false;
    ConcatCleanup(&mConcatInfo);
    return vp::ReportError(error);
  }
  if (!mStream) return -1;
  // The stream is closed even without a name, so that nothing written is lost.
  int result = vp::ReportError(vp::CloseStream(mStream));
  mStream = nullptr;
  mDescriptor = -1;
  return GetFileSpec().IsNull() ? -1 : result;
}

int MFileUniv::FDelete(const MString& path) {
  if (path.GetLength() == 0) return -1;
  return vp::ReportError(vp::RemoveFile(path));
}

// ---- stdio route

int MFileUniv::FRead(char* buffer, int count) {
  if (count < 0) return -1;
  unsigned got = 0;
  if (uint32_t error = vp::ReadDescriptor(mDescriptor, buffer, static_cast<unsigned>(count), &got)) {
    return vp::ReportError(error);
  }
  return static_cast<int>(got);
}

int MFileUniv::FWrite(const char* buffer, int count) {
  if (count < 0) return -1;
  if (uint32_t error = vp::WriteDescriptor(mDescriptor, buffer, static_cast<unsigned>(count))) {
    return vp::ReportError(error);
  }
  return count;
}

long long MFileUniv::FSeek64(long long offset, file_seek_t origin) {
  if (origin != file_seek_begin && origin != file_seek_end) origin = file_seek_current;
  int64_t position = -1;
  vp::ReportError(vp::SeekDescriptor(mDescriptor, offset, origin, &position));
  return position;
}

long long MFileUniv::FTell64() {
  if (mOverlapped) return 0;
  int64_t position = -1;
  vp::ReportError(vp::SeekDescriptor(mDescriptor, 0, file_seek_current, &position));
  // Positions from 0x7FFFFFFF on are not reported, though they can be reached.
  return position < 0x7FFFFFFF ? position : -1;
}

int MFileUniv::FGets(char* buffer, int count) {
  return vp::ReportError(vp::StreamGets(mStream, buffer, count));
}

int MFileUniv::FPuts(const char* text) { return vp::ReportError(vp::StreamPuts(mStream, text)); }

int MFileUniv::FReadVoid(void* buffer, int size, int count) {
  if (size <= 0 || count <= 0) return 0;
  std::size_t items = 0;
  vp::ReportError(vp::StreamRead(mStream, buffer, static_cast<std::size_t>(size), static_cast<std::size_t>(count), &items));
  return static_cast<int>(items);
}

int MFileUniv::FWriteVoid(const void* buffer, int size, int count) {
  if (size <= 0 || count <= 0) return 0;
  std::size_t items = 0;
  vp::ReportError(vp::StreamWrite(mStream, buffer, static_cast<std::size_t>(size), static_cast<std::size_t>(count), &items));
  return static_cast<int>(items);
}

int MFileUniv::FGetts(unsigned short* buffer, int count) {
  if (!buffer || count <= 0 || count > 0x3FFFFFFF) return -1;
  std::unique_ptr<char[]> bytes(new (std::nothrow) char[static_cast<std::size_t>(count) * 2 + 1]);
  if (!bytes || vp::ReportError(vp::StreamGets(mStream, bytes.get(), count * 2)) != 0) return -1;
  // At most one unit for each byte read: the line fits the 2 * count units.
  // A line that cannot be converted fails, never reads as an empty one.
  std::size_t length = std::strlen(bytes.get());
  uint32_t error = 0;
  long units = length ? vp::BytesToUnits(bytes.get(), length, buffer, length, vp::CodePage::kSystem, &error) : 0;
  if (units < 0) return vp::ReportError(error != 0 ? error : vp::kErrorInvalidArgument);
  buffer[units] = 0;
  return 0;
}

int MFileUniv::FPutts(const unsigned short* text) {
  if (!text) return -1;
  MString line(text);
  // A unit takes up to three bytes of UTF-8.
  int room = line.GetLength() * 3 + 1;
  std::unique_ptr<char[]> bytes(new (std::nothrow) char[static_cast<std::size_t>(room) + 1]);
  if (!bytes) return -1;
  bytes[0] = 0;
  // A text that cannot be converted is not written as nothing: the caller
  // must not take a line for written that is not in the file.
  if (line.ExportASCII(bytes.get(), room, kCharacterSetWindows) == 0 && line.GetLength() > 0) return -1;
  return vp::ReportError(vp::StreamPuts(mStream, bytes.get()));
}

int MFileUniv::FNativeGetts(unsigned short* buffer, int count) {
  if (count <= 0 || count > 0x3FFFFFFF) return -1;
  return vp::ReportError(vp::StreamGetUnits(mStream, buffer, count * 2));
}

int MFileUniv::FNativePutts(const unsigned short* text) { return vp::ReportError(vp::StreamPutUnits(mStream, text)); }

// ---- file information

int MFileUniv::FStat(const unsigned short* path, struct _stati64* info) {
  return info ? vp::ReportError(vp::StatPath(path, info)) : -1;
}

int MFileUniv::FStat(MFileSpecWin& spec, struct _stati64* info) {
  if (spec.IsNull()) return -1;
  return FStat(static_cast<const unsigned short*>(spec.GetFilePath()), info);
}

int MFileUniv::FStat(struct _stati64* info) {
  return info ? vp::ReportError(vp::StatDescriptor(mDescriptor, info)) : -1;
}

bool MFileUniv::GetTime(int which, int& year, int& month, int& day, int& hour, int& minute, int& second) const {
  struct _stati64 status;
  if (vp::ReportError(vp::StatDescriptor(mDescriptor, &status)) != 0) return false;
  int64_t seconds = vp::StatSeconds(status, which);
  vp::CalendarTime t;
  if (!vp::ToLocalTime(seconds, &t)) return false;
  year = t.year;
  month = t.month;
  day = t.day;
  hour = t.hour;
  minute = t.minute;
  second = t.second;
  return true;
}

bool MFileUniv::GetCreateTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const {
  return GetTime(0, year, month, day, hour, minute, second);
}

bool MFileUniv::GetModifyTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const {
  return GetTime(1, year, month, day, hour, minute, second);
}

bool MFileUniv::GetAccessTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const {
  return GetTime(2, year, month, day, hour, minute, second);
}

long long MFileUniv::GetSize() {
  if (mOverlapped) {
    int64_t size = -1;
    vp::ReportError(vp::GetHandleSize(mHandle, &size));
    return size;
  }
  struct _stati64 status;
  if (vp::ReportError(vp::StatPath(GetFileSpec().GetFilePath(), &status)) != 0) return -1;
  return status.st_size;
}

// ---- size changes

int MFileUniv::FSetEndOfFile() { return vp::ReportError(vp::EndFileAtPosition(mDescriptor)); }

int MFileUniv::FSetFileSize(long long size) { return vp::ReportError(vp::SetHandleSize(mHandle, size)); }

// ---- overlapped transfers

uint32_t MFileUniv::FReadOverlapped(long long offset, char* buffer, long count, OVERLAPPED* overlapped,
                                    void* event) {
  // Arguments that no transfer can take are refused as the system refuses
  // them, and take the same road: a warning, one retry, an error.
  const bool valid = offset >= 0 && count >= 0 && buffer && overlapped;
  mSectorLead = valid ? static_cast<long>(offset % kSectorSize) : 0;
  const long long length = (count + mSectorLead + kSectorSize - 1) / kSectorSize * kSectorSize;
  char* start = valid ? buffer - mSectorLead : nullptr;
  auto attempt = [&]() -> uint32_t {
    if (!valid) return vp::kErrorInvalidArgument;
    PrepareRecord(overlapped, offset - mSectorLead, event);
    return vp::StartHandleTransfer(mHandle, false, start, static_cast<uint32_t>(length), overlapped, nullptr);
  };
  const int sector = static_cast<int>(offset / kSectorSize);
  uint32_t error = attempt();
  if (IsPending(error)) return 0;
  MString text;
  text.Format(u"Retry ReadFile at sector %d due to Win32 error %d ..."_u16, sector, static_cast<int>(error));
  CMessageAction::Warning(nullptr, text);
  error = attempt();
  if (IsPending(error)) return 0;
  text.Format(u"ReadFile at sector %d failed, Win32 error %d"_u16, sector, static_cast<int>(error));
  CMessageAction::Error(nullptr, text);
  return vp::SetLastErrorCode(error);
}

uint32_t MFileUniv::FWriteOverlapped(long long offset, char* buffer, long count, OVERLAPPED* overlapped,
                                     void* event) {
  uint32_t error = vp::kErrorInvalidArgument;
  if (offset >= 0 && count >= 0 && buffer && overlapped) {
    PrepareRecord(overlapped, offset, event);
    error = vp::StartHandleTransfer(mHandle, true, buffer, static_cast<uint32_t>(count), overlapped, nullptr);
    if (error == 0 || error == kErrorIoPending) return 0;
  }
  MString text;
  text.Format(u"WriteFile failed at sector %d, error %d"_u16, static_cast<int>(offset / kSectorSize),
              static_cast<int>(error));
  CMessageAction::Error(nullptr, text, 16);
  return vp::SetLastErrorCode(error);
}

uint32_t MFileUniv::FWaitOverlappedCompletion(void* event, unsigned long seconds) {
  auto* waited = static_cast<MEvent*>(event);
  if (!waited) return kWaitFailed;
  const uint32_t limit = seconds >= kWaitForever / 1000 ? kWaitForever : static_cast<uint32_t>(seconds * 1000);
  uint32_t result = waited->Wait(limit, false);
  waited->Reset();
  return result;
}

// The class constants have their one definition here, so that a host linking
// the library as a DLL reaches them like any other member.
constexpr long MFileUniv::kSectorSize;
