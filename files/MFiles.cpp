// The segmented file. The rule that keeps it safe: a segment is made (empty
// or zero-filled) before its line goes into the info file, and its line is
// in the info file before any data goes into it; the info file itself only
// ever grows by whole lines, or is replaced in one rename.
#include "files/MFiles.h"

#include <memory>

#include "files/PathTails.h"
#include "platform/internal/Errors.h"
#include "platform/internal/FileSystem.h"
#include "platform/internal/WideText.h"
#include "platform/internal/Directory.h"
#include "text/MStringList.h"
#include "text/PathText.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

const unsigned short MFiles::kInfoHeader[] = {'#', ' ', 'B', 'r', 'e', 'v', 'a', 'n', 'd', 'e', 'r', ' ', 'c',
                                              '_', 'f', 'i', 'l', 'e', 's', ' ', 0};
const unsigned short MFiles::kSegmentSuffix[] = {'.', 'c', 'f', 'x', 0};

namespace {

// A reader compares this much of the first line.
constexpr int kHeaderCompared = 19;
constexpr long long kNoLimit = 0x3FFFFFFFFFFFFFFFLL;

bool Truncates(MFile::file_open_t mode) {
  return mode == MFile::file_create_binary || mode == MFile::file_create_update_binary ||
         mode == MFile::file_create_text || mode == MFile::file_overlapped_create;
}

// "path.cfx.N".
MString SegmentName(const unsigned short* path, int number) {
  MString name;
  name.Format(u"%s%s.%d"_u16, path, MFiles::kSegmentSuffix, number);
  return name;
}

// Where an info file is written before it replaces the real one.
MString PendingInfoName(const unsigned short* path) {
  MString name;
  name.Format(u"%s%s.new"_u16, path, MFiles::kSegmentSuffix);
  return name;
}

bool StartsWithHeader(const unsigned short* line) {
  return vbu::wtext::CompareN(line, MFiles::kInfoHeader, kHeaderCompared) == 0;
}

// True when the last FGetts of a reader stopped at the end of its file,
// not at a failure.
bool EndedAtTheEnd() { return GetLastError() == kErrorHandleEof; }

// Reads the first line of an open file: 1 when it is the info header, 0 when
// it is not (an empty file included), -1 when it cannot be read: a header
// that cannot be read must not make the info file pass for the data.
int ReadHeader(MFileUniv& reader) {
  // FGetts takes at most 2 * count - 1 bytes into 2 * count units.
  unsigned short line[2 * kHeaderCompared];
  if (reader.FGetts(line, kHeaderCompared) != 0) return EndedAtTheEnd() ? 0 : -1;
  return StartsWithHeader(line) ? 1 : 0;
}

// Writes a whole info file: the header and one line for each path. 0 or -1.
int WriteInfoFile(const unsigned short* path, MStringList& lines) {
  MFileUniv file;
  if (file.FOpen(path, MFile::file_create_text) != 0) return -1;
  MString header(MFiles::kInfoHeader);
  header += u"\n"_u16;
  bool ok = file.FPutts(header) >= 0;
  for (MString* line = lines.GetHead(); ok && line; line = lines.GetNext()) {
    ok = file.FPutts(*line + MString(u"\n"_u16)) >= 0;
  }
  // The close flushes the stream: only then are the lines on disk.
  return file.FClose() == 0 && ok ? 0 : -1;
}

// Cuts the file `path` back to `size` bytes; 0 or -1.
int CutFile(const unsigned short* path, long long size) {
  MFileUniv file;
  if (file.FOpen(path, MFile::file_update_binary) != 0) return -1;
  bool ok = file.FSeek64(size, MFile::file_seek_begin) == size && file.FSetEndOfFile() == 0;
  return file.FClose() == 0 && ok ? 0 : -1;
}

// Makes `path` a new file of `length` bytes, emptied first; 0 or -1.
int MakeFile(const unsigned short* path, long long length) {
  MFileUniv file;
  if (file.FOpen(path, MFile::file_create_binary) != 0) return -1;
  bool ok = length == 0 || (file.FSeek64(length, MFile::file_seek_begin) == length && file.FSetEndOfFile() == 0);
  return file.FClose() == 0 && ok ? 0 : -1;
}

// Places the open segment's position at `offset`, having made the segment
// that long first if `grow`. The overlapped route keeps no position (every
// transfer names its offset), so there only the size is set.
bool PlaceInSegment(MFileUniv& file, long long offset, bool grow) {
  if (file.IsOverlapped()) return !grow || file.FSetFileSize(offset) == 0;
  return file.FSeek64(offset, MFile::file_seek_begin) == offset && (!grow || file.FSetEndOfFile() == 0);
}

long long SizeOf(const unsigned short* path) {
  _stati64 info;
  return vp::StatPath(path, &info) == 0 ? info.st_size : -1;
}

}  // namespace

MFiles::MFiles()
    : mSegmentOpen(false),
      mCurrentIndex(-1),
      mOpenMode(file_read_binary),
      mMaxFileSize(kNoLimit),
      mEndOffset(0),
      mCurrentSize(0) {}

MFiles::~MFiles() {
  FClose();
  DeleteAll();
}

MFileSpecWin* MFiles::SegmentAt(int index) const {
  MFileSpecWin* spec = nullptr;
  if (!mSegments.FetchItemAt(index, &spec)) return nullptr;
  return spec;
}

void MFiles::DeleteAll() {
  for (int i = 1; i <= GetCount(); ++i) delete SegmentAt(i);
  mSegments.RemoveItemsAt(mSegments.GetCount(), 1);
}

MFile::file_open_t MFiles::ReopenMode() const {
  switch (mOpenMode) {
    case file_create_binary:
    case file_create_update_binary:
    case file_append_binary:
    case file_append_update_binary:
    case file_update_binary:
      return file_update_binary;
    case file_create_text:
    case file_update_text:
    case file_append_text:
      return file_update_text;
    case file_overlapped_create:
      return file_overlapped_write;
    default:
      return mOpenMode;
  }
}

// ---- opening and closing

int MFiles::FOpen(MFileSpecWin& spec, file_open_t mode) {
  SetFileSpec(spec);
  return FOpen(mode);
}

int MFiles::FOpen(const unsigned short* path, file_open_t mode) {
  GetFileSpec().SetFilePath(path ? path : u""_u16);
  return FOpen(mode);
}

int MFiles::FOpen(file_open_t mode) {
  if (IsOpen()) FClose();
  mEndOffset = mCurrentSize = 0;
  MFileSpecWin& spec = GetFileSpec();
  LList found;
  // The local list owns its copies until OpenList has taken its own.
  struct Owner {
    LList& list;
    ~Owner() {
      for (unsigned long i = 1; i <= list.GetCount(); ++i) {
        MFileSpecWin* item = nullptr;
        list.FetchItemAt(static_cast<long>(i), &item);
        delete item;
      }
    }
  } owner{found};
  auto append = [&found](const unsigned short* path) {
    auto* item = new MFileSpecWin(path);
    found.InsertItemsAt(1, kLastIndex, &item);
  };

  mInfoSpec = MFileSpecWin();
  MFileUniv reader;
  _stati64 status;
  uint32_t missing = vp::StatPath(spec.GetFilePath(), &status);
  // Only a name that is not there is a new plain file: a file that cannot be
  // asked might be an info file.
  if (missing != 0 && !vp::IsNotFound(missing)) return -1;
  if (missing != 0) {
    append(spec.GetFilePath());
  } else {
    if (reader.FOpen(spec, file_read_text) != 0) return -1;
    int header = ReadHeader(reader);
    if (header < 0) return -1;
    if (header == 0) {
      append(spec.GetFilePath());
    } else {
      mInfoSpec = spec;
      std::unique_ptr<unsigned short[]> line(new unsigned short[2 * kMaxSegments]);
      bool unterminated = false;
      while (reader.FGetts(line.get(), kMaxSegments) == 0) {
        // A line that did not end in the buffer has gone on in this one.
        if (unterminated) return -1;
        MString path(line.get());
        int length = path.GetLength();
        if (length > 0 && path[length - 1] == '\n') {
          path.Cut(0, length - 1);
        } else {
          unterminated = true;
        }
        if (path.GetLength() == 0 || path[0] == '#') continue;
        if (path.GetLength() > kMaxPathLength || static_cast<int>(found.GetCount()) >= kMaxSegments) return -1;
        append(path);
      }
      // A list cut short by a failure would open as a shorter file.
      if (!EndedAtTheEnd()) return -1;
    }
    reader.FClose();
  }
  return OpenList(found, mode);
}

int MFiles::FOpen(LList& specs, file_open_t mode) {
  if (IsOpen()) FClose();
  mEndOffset = mCurrentSize = 0;
  mInfoSpec = MFileSpecWin();
  return OpenList(specs, mode);
}

int MFiles::OpenList(LList& specs, file_open_t mode) {
  DeleteAll();
  for (unsigned long i = 1; i <= specs.GetCount(); ++i) {
    MFileSpecWin* spec = nullptr;
    specs.FetchItemAt(static_cast<long>(i), &spec);
    if (!spec) continue;
    auto* copy = new MFileSpecWin(*spec);
    mSegments.InsertItemsAt(1, kLastIndex, &copy);
  }
  auto fail = [this] {
    CloseSegment();
    mCurrentIndex = -1;
    DeleteAll();
    return -1;
  };
  if (GetCount() == 0) return fail();
  if (mCurrentFile.FOpen(*SegmentAt(1), mode) != 0) return fail();
  mSegmentOpen = true;
  mCurrentIndex = 1;
  mOpenMode = mode;
  // A mode that empties the file empties all of it; the segments stay listed.
  if (Truncates(mode)) {
    for (int i = 2; i <= GetCount(); ++i) {
      MString& path = SegmentAt(i)->GetFilePath();
      if (vp::PathExists(path) && CutFile(path, 0) != 0) return fail();
    }
  }
  if ((mode == file_append_binary || mode == file_append_update_binary || mode == file_append_text) &&
      FSeek64(0, file_seek_end) == -1) {
    return fail();
  }
  return 0;
}

int MFiles::FClose() {
  if (!IsOpen()) return -1;
  int result = mSegmentOpen ? CloseSegment() : -1;
  mCurrentIndex = -1;
  DeleteAll();
  return result;
}

int MFiles::OpenSegment(int index, file_open_t mode) {
  MFileSpecWin* spec = SegmentAt(index);
  if (!spec) return -1;
  if (CloseSegment() != 0) return -1;
  if (mCurrentFile.FOpen(*spec, mode) != 0) return -1;
  mSegmentOpen = true;
  mCurrentIndex = index;
  return 0;
}

int MFiles::CloseSegment() {
  if (!mSegmentOpen) return 0;
  mSegmentOpen = false;
  // A segment that cannot be closed may not have its data on disk.
  return mCurrentFile.FClose() == 0 ? 0 : -1;
}

int MFiles::FDelete() {
  CloseSegment();
  mCurrentIndex = -1;
  for (int i = 1; i <= GetCount(); ++i) MFileUniv::FDelete(SegmentAt(i)->GetFilePath());
  DeleteAll();
  if (!mInfoSpec.IsNull()) MFileUniv::FDelete(mInfoSpec.GetFilePath());
  return 0;
}

// ---- transfers

int MFiles::FRead(char* buffer, int count) {
  if (!IsOpen()) return -1;
  if (count <= 0) return 0;
  int done = 0;
  for (;;) {
    int got = mCurrentFile.FRead(buffer + done, count - done);
    if (got < 0) return got;
    done += got;
    if (done == count) return count;
    // A short read may still leave bytes (text mode): only nothing ends the segment.
    if (got > 0) continue;
    if (mCurrentIndex >= GetCount()) return done;
    if (OpenSegment(mCurrentIndex + 1, ReopenMode()) != 0) return -1;
  }
}

int MFiles::FWrite(const char* buffer, int count) {
  if (!IsOpen() || count < 0) return -1;
  long long position = mCurrentFile.FSeek64(0, file_seek_current);
  if (position < 0) return -1;
  if (position + count <= mMaxFileSize) return mCurrentFile.FWrite(buffer, count);
  // A segment already at or above the limit takes nothing more.
  int first = position < mMaxFileSize ? static_cast<int>(mMaxFileSize - position) : 0;
  if (first > 0) {
    int written = mCurrentFile.FWrite(buffer, first);
    if (written < 0) return written;
  }
  if (mCurrentIndex >= GetCount()) {
    if (CloseSegment() != 0) return -1;
    if (mInfoSpec.IsNull() && DoSwitchToInfoFile() != 0) return -1;
    if (AppendSegment(0) != 0) return -1;
  }
  if (OpenSegment(mCurrentIndex + 1, ReopenMode()) != 0) return -1;
  int rest = mCurrentFile.FWrite(buffer + first, count - first);
  return rest < 0 ? rest : first + rest;
}

long long MFiles::SegmentSize(int index) const {
  MFileSpecWin* spec = SegmentAt(index);
  return spec ? SizeOf(spec->GetFilePath()) : -1;
}

long long MFiles::FSeek64(long long offset, file_seek_t origin) {
  if (!IsOpen()) return -1;
  if (origin != file_seek_begin && origin != file_seek_end) origin = file_seek_current;
  if (origin == file_seek_current) return mCurrentFile.FSeek64(offset, file_seek_current);
  const int last = GetCount();
  if (origin == file_seek_end) {
    if (mCurrentIndex != last && OpenSegment(last, ReopenMode()) != 0) return -1;
    return mCurrentFile.FSeek64(offset, file_seek_end);
  }
  if (offset < 0) return -1;
  long long base = 0;
  long long size = 0;
  for (int i = 1; i <= last; ++i) {
    size = SegmentSize(i);
    if (size < 0) return -1;
    if (offset <= base + size) {
      if (mCurrentIndex != i && OpenSegment(i, ReopenMode()) != 0) return -1;
      return PlaceInSegment(mCurrentFile, offset - base, false) ? offset : -1;
    }
    if (i < last) base += size;
  }
  // Behind the end: the last segment grows, up to the limit.
  if (mCurrentIndex != last && OpenSegment(last, ReopenMode()) != 0) return -1;
  if (offset <= base + mMaxFileSize) {
    return PlaceInSegment(mCurrentFile, offset - base, true) ? offset : -1;
  }
  // Then whole new segments. A segment above the limit keeps its data.
  if (size < mMaxFileSize) {
    if (!PlaceInSegment(mCurrentFile, mMaxFileSize, true)) return -1;
    size = mMaxFileSize;
  }
  if (mInfoSpec.IsNull()) {
    if (CloseSegment() != 0 || DoSwitchToInfoFile() != 0) return -1;
  }
  long long remaining = offset - base - size;
  long long length = 0;
  while (remaining > 0) {
    length = remaining < mMaxFileSize ? remaining : mMaxFileSize;
    if (AppendSegment(length) != 0) return -1;
    remaining -= length;
  }
  if (OpenSegment(GetCount(), ReopenMode()) != 0) return -1;
  return PlaceInSegment(mCurrentFile, length, false) ? offset : -1;
}

long long MFiles::FTell64() { return IsOpen() ? mCurrentFile.FTell64() : -1; }

int MFiles::FGets(char* buffer, int count) {
  if (!IsOpen()) return -1;
  int result = mCurrentFile.FGets(buffer, count);
  if (result >= 0 || mCurrentIndex >= GetCount()) return result;
  if (OpenSegment(mCurrentIndex + 1, ReopenMode()) != 0) return -1;
  return mCurrentFile.FGets(buffer, count);
}

int MFiles::FGetts(unsigned short* buffer, int count) {
  if (!IsOpen()) return -1;
  int result = mCurrentFile.FGetts(buffer, count);
  if (result >= 0 || mCurrentIndex >= GetCount()) return result;
  if (OpenSegment(mCurrentIndex + 1, ReopenMode()) != 0) return -1;
  return mCurrentFile.FGetts(buffer, count);
}

int MFiles::FPuts(const char* text) { return IsOpen() ? mCurrentFile.FPuts(text) : -1; }

int MFiles::FPutts(const unsigned short* text) { return IsOpen() ? mCurrentFile.FPutts(text) : -1; }

// ---- sizes

int MFiles::FStat(_stati64* info) {
  if (!info) return -1;
  long long total = 0;
  int result = -1;
  for (int i = 1; i <= GetCount(); ++i) {
    result = mCurrentFile.FStat(*SegmentAt(i), info);
    if (result != 0) return result;
    total += info->st_size;
  }
  if (result == 0) info->st_size = total;
  return result;
}

long long MFiles::FGetFileSize() {
  long long total = 0;
  for (int i = 1; i <= GetCount(); ++i) {
    long long size = SegmentSize(i);
    if (size < 0) return size;
    total += size;
  }
  return total;
}

long long MFiles::GetSize() { return FGetFileSize(); }

// ---- the info file

int MFiles::DoSwitchToInfoFile() {
  MFileSpecWin* segment = SegmentAt(GetCount());
  if (!segment) return -1;
  MString plain = segment->GetFilePath();
  MString first = SegmentName(plain, 0);
  MString pending = PendingInfoName(plain);
  // The new info file, whole, under a name of its own.
  MStringList lines;
  for (int i = 1; i < GetCount(); ++i) lines.Add(SegmentAt(i)->GetFilePath());
  lines.Add(first);
  if (WriteInfoFile(pending, lines) != 0) {
    vp::RemoveFile(pending);
    return -1;
  }
  // A second name for the data, then the info file takes the plain name in
  // one step: the data is reachable through the plain name at every moment.
  vp::RemoveFile(first);
  bool linked = vp::LinkPath(plain, first) == 0;
  if (!linked && vp::RenamePath(plain, first) != 0) {
    vp::RemoveFile(pending);
    return -1;
  }
  if (vp::RenamePath(pending, plain) != 0) {
    if (linked) {
      vp::RemoveFile(first);
    } else {
      vp::RenamePath(first, plain);
    }
    vp::RemoveFile(pending);
    return -1;
  }
  segment->SetFilePath(first);
  mInfoSpec.SetFilePath(plain);
  return 0;
}

int MFiles::AppendSegment(long long length) {
  if (mInfoSpec.IsNull() || GetCount() >= kMaxSegments) return -1;
  MString name = SegmentName(mInfoSpec.GetFilePath(), GetCount());
  // Not listed yet, so a file of this name is no part of the logical file.
  if (MakeFile(name, length) != 0) return -1;
  MFileSpecWin spec(name);
  if (AddToInfoFile(spec) != 0) {
    vp::RemoveFile(name);
    return -1;
  }
  auto* item = new MFileSpecWin(spec);
  mSegments.InsertItemsAt(1, kLastIndex, &item);
  return 0;
}

int MFiles::CreateInfoFile(MFileSpecWin& spec) {
  MStringList none;
  if (WriteInfoFile(spec.GetFilePath(), none) != 0) return -1;
  mInfoSpec = spec;
  return 0;
}

int MFiles::AddToInfoFile(MFileSpecWin& spec) {
  if (mInfoSpec.IsNull()) return -1;
  MString& info = mInfoSpec.GetFilePath();
  // Opened (made if missing) first and asked for its size after: a file that
  // cannot be asked is never taken for a missing one and written anew.
  MFileUniv file;
  if (file.FOpen(info, file_append_text) != 0) return -1;
  _stati64 status;
  if (file.FStat(&status) != 0) {
    file.FClose();
    return -1;
  }
  MString line = spec.GetFilePath() + MString(u"\n"_u16);
  if (status.st_size == 0) line = MString(kInfoHeader) + MString(u"\n"_u16) + line;
  bool ok = file.FPutts(line) >= 0;
  if (file.FClose() == 0 && ok) return 0;
  // A line that did not get there whole is taken off again.
  CutFile(info, status.st_size);
  return -1;
}

bool MFiles::IsBrevanderMFiles(MFileSpecWin& spec) { return IsBrevanderMFiles(spec.GetFilePath()); }

bool MFiles::IsBrevanderMFiles(MString& path) {
  if (!vp::PathExists(path)) return false;
  MFileUniv reader;
  if (reader.FOpen(path, file_read_binary) != 0) return false;
  bool header = ReadHeader(reader) == 1;
  reader.FClose();
  return header;
}

int MFiles::ChangeAllFilesDirectory(const unsigned short* directory) {
  MString info = mInfoSpec.GetFilePath();
  MString folder = directory ? MString(directory) : MString();
  if (folder.GetLength() == 0 || folder[folder.GetLength() - 1] != kPathSeparator) {
    folder += MString(u"/"_u16);
  }
  MStringList lines;
  for (int i = 1; i <= GetCount(); ++i) {
    MString& path = SegmentAt(i)->GetFilePath();
    const unsigned short* tail = path;
    // An absolute line keeps only its last name.
    if (path.GetLength() != 0 && path[0] == kPathSeparator) tail = vbu::wtext::FindLast(path, kPathSeparator) + 1;
    lines.Add(folder + MString(tail));
  }
  FClose();
  DeleteAll();
  // An info file of no lines would lose the segments.
  if (info.GetLength() == 0 || !directory || lines.GetSize() == 0) return -1;
  MString pending = PendingInfoName(info);
  if (WriteInfoFile(pending, lines) != 0 || vp::RenamePath(pending, info) != 0) {
    vp::RemoveFile(pending);
    return -1;
  }
  return 0;
}

bool MFiles::GenerateNewFilePath(const unsigned short* path, const unsigned short* suffix,
                                 const unsigned short* extension, MString* result) {
  if (!path || !suffix || !extension || !result) return false;
  const unsigned short* separator = vbu::wtext::FindLast(path, kPathSeparator);
  const unsigned short* leaf = separator ? separator + 1 : path;
  const unsigned short* point = vbu::wtext::FindLast(leaf, '.');
  MString stem = point ? MString(path, static_cast<int>(point - path)) : MString(path);
  if (point == path) stem = MString();
  result->Format(u"%s%s.%s"_u16, static_cast<const unsigned short*>(stem), suffix, extension);
  for (int counter = 1; MFile::FileExist(*result); ++counter) {
    result->Format(u"%s%s%d.%s"_u16, static_cast<const unsigned short*>(stem), suffix, counter, extension);
  }
  return true;
}

// ---- overlapped reads

uint32_t MFiles::FReadOverlapped(long long offset, char* buffer, long& count, OVERLAPPED* overlapped,
                                 void* event) {
  if (!IsOpen()) return static_cast<uint32_t>(-1);
  // Moves on to the next segment; mEndOffset and mCurrentSize follow.
  auto forward = [this]() -> bool {
    if (OpenSegment(mCurrentIndex + 1, ReopenMode()) != 0) return false;
    mCurrentSize = mCurrentFile.GetSize();
    mEndOffset += mCurrentSize;
    return mCurrentSize >= 0;
  };
  if (mEndOffset == 0) {
    long long start = 0;
    for (int i = 1; i < mCurrentIndex; ++i) {
      long long size = SegmentSize(i);
      if (size < 0) return static_cast<uint32_t>(-1);
      start += size;
    }
    mCurrentSize = mCurrentFile.GetSize();
    if (mCurrentSize < 0) return static_cast<uint32_t>(-1);
    mEndOffset = start + mCurrentSize;
  }
  while (offset < mEndOffset - mCurrentSize) {
    if (mCurrentIndex == 1) return static_cast<uint32_t>(-1);
    // Going back, the end becomes the start of the segment left.
    long long start = mEndOffset - mCurrentSize;
    if (OpenSegment(mCurrentIndex - 1, ReopenMode()) != 0) return static_cast<uint32_t>(-1);
    mCurrentSize = mCurrentFile.GetSize();
    if (mCurrentSize < 0) return static_cast<uint32_t>(-1);
    mEndOffset = start;
  }
  while (offset >= mEndOffset) {
    if (mCurrentIndex >= GetCount()) {
      count = 0;
      return kErrorHandleEof;
    }
    if (!forward()) return static_cast<uint32_t>(-1);
  }
  long long inside = offset - (mEndOffset - mCurrentSize);
  long long available = mCurrentSize - inside;
  if (count <= available) return mCurrentFile.FReadOverlapped(inside, buffer, count, overlapped, event);
  // The range crosses segment ends: the pieces before the last are waited for here.
  MEvent own;
  long done = 0;
  long left = count;
  uint32_t result = 0;
  while (left > available) {
    result = mCurrentFile.FReadOverlapped(inside, buffer + done, static_cast<long>(available), overlapped, &own);
    if (result == 0) result = FWaitOverlappedCompletion(&own, 120);
    if (result == 0 && overlapped->Internal != 0 && overlapped->Internal != kErrorHandleEof) {
      result = static_cast<uint32_t>(overlapped->Internal);
    }
    if (result != 0) return result;
    left -= static_cast<long>(available);
    done += static_cast<long>(available);
    if (mCurrentIndex >= GetCount()) {
      count = done;
      return kErrorHandleEof;
    }
    if (!forward()) return static_cast<uint32_t>(-1);
    inside = 0;
    available = mCurrentSize;
  }
  return mCurrentFile.FReadOverlapped(inside, buffer + done, left, overlapped, event);
}
