// The segmented file. The rules that keep it safe: a segment is made before
// its line goes into the info file, and its line is in the info file before
// any data goes into it; the info file itself only ever grows by whole
// lines, or is replaced in one rename; lines leave the info file before
// their segments are removed. A segment is never made anew once listed, a
// name in use on disk is never taken, and an object opened to read changes
// nothing on disk.
#include "files/MFiles.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "files/OpenModesInternal.h"
#include "files/PathTails.h"
#include "platform/internal/Directory.h"
#include "platform/internal/Errors.h"
#include "platform/internal/File.h"
#include "platform/internal/FileSystem.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/WideText.h"
#include "text/MStringList.h"
#include "text/PathText.h"

using namespace vbu::literals;
namespace vp = vbu::platform;
using vbu::files::OpenMode;
using vbu::files::OpenModeOf;

const unsigned short MFiles::kInfoHeader[] = {'#', ' ', 'B', 'r', 'e', 'v', 'a', 'n', 'd', 'e', 'r', ' ', 'c',
                                              '_', 'f', 'i', 'l', 'e', 's', ' ', 0};
const unsigned short MFiles::kSegmentSuffix[] = {'.', 'c', 'f', 'x', 0};

namespace {

// A reader compares this much of the first line.
constexpr int kHeaderCompared = 19;
constexpr long long kNoLimit = 0x3FFFFFFFFFFFFFFFLL;
// Free names tried beside a name in use.
constexpr int kNameTries = 1000;

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

// True when the last line read of a reader stopped at the end of its file,
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

// The line of the info file that names `path`: the path's own bytes, as
// the system names the file, and a line end. A path that begins with '#'
// would read as a comment and is written from "./"; a path that holds a
// line end, or is longer than a reader takes, cannot be written: false.
bool InfoLine(const unsigned short* path, std::string* line) {
  vp::PathBytes bytes(path);
  if (!bytes.Ok()) return false;
  std::string text(bytes.Get(), bytes.Size());
  if (text.find_first_of("\r\n") != std::string::npos) return false;
  if (text[0] == '#') text = "./" + text;
  if (text.size() > static_cast<std::size_t>(MFiles::kMaxPathLength)) return false;
  *line = text + "\n";
  return true;
}

// Writes a whole info file: the header and the lines. 0 or -1.
int WriteInfoFile(const unsigned short* path, const std::vector<std::string>& lines) {
  MFileUniv file;
  if (file.FOpen(path, MFile::file_create_text) != 0) return -1;
  bool ok = file.FPutts(MString(MFiles::kInfoHeader) + MString(u"\n"_u16)) >= 0;
  for (std::size_t i = 0; ok && i < lines.size(); ++i) ok = file.FPuts(lines[i].c_str()) >= 0;
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

// True when `path` names anything on disk, or cannot be asked.
bool TakenOnDisk(const unsigned short* path) {
  vp::PathKind kind;
  uint32_t error = vp::InspectPath(path, &kind);
  return error == 0 || !vp::IsNotFound(error);
}

// Makes the new file `path` of `length` bytes (zeros); a file of that name
// is never touched: 1 when the name is taken, 0 when made, -1 on failure.
int MakeNewFile(const unsigned short* path, long long length) {
  int fd = -1;
  uint32_t error = vp::OpenDescriptor(path, vp::kDescriptorReadWrite | vp::kDescriptorCreate | vp::kDescriptorExclusive, &fd);
  if (error != 0) return TakenOnDisk(path) ? 1 : -1;
  bool ok = length == 0 ||
            (vp::SeekDescriptor(fd, length, MFile::file_seek_begin) == 0 && vp::EndFileAtPosition(fd) == 0);
  ok = vp::CloseDescriptor(fd) == 0 && ok;
  vp::AddOwnerReadWrite(path);
  if (ok) return 0;
  vp::RemoveFile(path);
  return -1;
}

// Places the open segment's position at `offset`, having made the segment
// that long first if `grow`. The overlapped route keeps no position (every
// transfer names its offset), so there only the size is set.
bool PlaceInSegment(MFileUniv& file, long long offset, bool grow) {
  if (file.IsOverlapped()) return !grow || file.FSetFileSize(offset) == 0;
  return file.FSeek64(offset, MFile::file_seek_begin) == offset && (!grow || file.FSetEndOfFile() == 0);
}

long long SizeOf(const unsigned short* path) {
  struct _stati64 info;
  return vp::StatPath(path, &info) == 0 ? info.st_size : -1;
}

// Reads what the file `spec` lists: itself for a plain file or a name that
// is not there, the path lines of an info file. 1 for an info file, 0 for a
// plain one, -1 when it cannot be read or lists too much.
int ReadList(MFileSpecWin& spec, std::vector<MString>* paths) {
  paths->clear();
  struct _stati64 status;
  uint32_t missing = vp::StatPath(spec.GetFilePath(), &status);
  // Only a name that is not there is a new plain file: a file that cannot be
  // asked might be an info file.
  if (missing != 0 && !vp::IsNotFound(missing)) return -1;
  if (missing != 0) {
    paths->push_back(spec.GetFilePath());
    return 0;
  }
  MFileUniv reader;
  if (reader.FOpen(spec, MFile::file_read_text) != 0) return -1;
  int header = ReadHeader(reader);
  if (header <= 0) {
    if (header == 0) paths->push_back(spec.GetFilePath());
    return header;
  }
  // Room for the longest path, its line end and the terminator.
  std::vector<char> line(MFiles::kMaxPathLength + 3);
  bool unterminated = false;
  while (reader.FGets(line.data(), static_cast<int>(line.size())) == 0) {
    // A line that did not end in the buffer has gone on in this one.
    if (unterminated) return -1;
    std::size_t length = std::strlen(line.data());
    if (length > 0 && line[length - 1] == '\n') {
      --length;
    } else {
      unterminated = true;
    }
    if (length == 0 || line[0] == '#') continue;
    if (static_cast<int>(paths->size()) >= MFiles::kMaxSegments) return -1;
    std::u16string text = vp::PathText(line.data(), length);
    paths->push_back(MString(reinterpret_cast<const unsigned short*>(text.c_str())));
  }
  // A list cut short by a failure would open as a shorter file.
  return EndedAtTheEnd() ? 1 : -1;
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

void MFiles::Append(const unsigned short* path) {
  auto* item = new MFileSpecWin(path);
  mSegments.InsertItemsAt(1, kLastIndex, &item);
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
  DeleteAll();
  mEndOffset = mCurrentSize = 0;
  mInfoSpec = MFileSpecWin();
  std::vector<MString> paths;
  int kind = ReadList(GetFileSpec(), &paths);
  if (kind < 0) return -1;
  if (kind == 1) mInfoSpec = GetFileSpec();
  for (const MString& path : paths) Append(path);
  return OpenSegments(mode);
}

int MFiles::FOpen(LList& specs, file_open_t mode) {
  if (IsOpen()) FClose();
  DeleteAll();
  mEndOffset = mCurrentSize = 0;
  mInfoSpec = MFileSpecWin();
  for (unsigned long i = 1; i <= specs.GetCount(); ++i) {
    MFileSpecWin* spec = nullptr;
    specs.FetchItemAt(static_cast<long>(i), &spec);
    if (spec) Append(spec->GetFilePath());
  }
  return OpenSegments(mode);
}

int MFiles::OpenSegments(file_open_t mode) {
  auto fail = [this] {
    CloseSegment();
    mCurrentIndex = -1;
    DeleteAll();
    return -1;
  };
  const OpenMode* row = OpenModeOf(mode);
  if (!row || GetCount() == 0) return fail();
  // A mode that makes the file anew makes it one empty segment.
  if (row->truncates && !mInfoSpec.IsNull() && DropLaterSegments() != 0) return fail();
  // A listed segment must be there; only a plain file may be made.
  mCurrentFile.SetFileSpec(*SegmentAt(1));
  if (mCurrentFile.OpenAs(mode, mInfoSpec.IsNull() || row->truncates) != 0) return fail();
  mSegmentOpen = true;
  mCurrentIndex = 1;
  mOpenMode = mode;
  // An explicit list has no info file to leave: its later segments are emptied.
  if (row->truncates) {
    for (int i = 2; i <= GetCount(); ++i) {
      MString& path = SegmentAt(i)->GetFilePath();
      if (vp::PathExists(path) && CutFile(path, 0) != 0) return fail();
    }
  }
  if (row->atEnd && FSeek64(0, file_seek_end) == -1) return fail();
  return 0;
}

int MFiles::DropLaterSegments() {
  if (GetCount() <= 1) return 0;
  std::vector<std::string> lines(1);
  if (!InfoLine(SegmentAt(1)->GetFilePath(), &lines[0])) return -1;
  MString info = mInfoSpec.GetFilePath();
  MString pending = FreeName(PendingInfoName(info));
  if (pending.GetLength() == 0 || WriteInfoFile(pending, lines) != 0 || vp::RenamePath(pending, info) != 0) {
    vp::RemoveFile(pending);
    return -1;
  }
  // Unlisted now: what is left of them on a failure is no part of the file.
  while (GetCount() > 1) {
    MFileSpecWin* spec = SegmentAt(GetCount());
    vp::RemoveFile(spec->GetFilePath());
    delete spec;
    mSegments.RemoveItemsAt(1, GetCount());
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

int MFiles::MoveTo(int index) {
  if (index == mCurrentIndex && mSegmentOpen) return 0;
  MFileSpecWin* spec = SegmentAt(index);
  const OpenMode* row = OpenModeOf(mOpenMode);
  if (!spec || !row) return -1;
  if (CloseSegment() != 0) return -1;
  mCurrentIndex = index;
  mCurrentFile.SetFileSpec(*spec);
  if (mCurrentFile.OpenAs(row->moveInto, false) != 0) return -1;
  mSegmentOpen = true;
  return 0;
}

int MFiles::CloseSegment() {
  if (!mSegmentOpen) return 0;
  mSegmentOpen = false;
  // A segment that cannot be closed may not have its data on disk.
  return mCurrentFile.FClose() == 0 ? 0 : -1;
}

int MFiles::FDelete() {
  if (!IsOpen()) {
    // Closed: the list is read again from the info file, or is the plain file.
    MFileSpecWin named = mInfoSpec.IsNull() ? GetFileSpec() : mInfoSpec;
    std::vector<MString> paths;
    DeleteAll();
    int kind = named.IsNull() ? -1 : ReadList(named, &paths);
    if (kind == 1) mInfoSpec = named;
    for (const MString& path : paths) Append(path);
  }
  CloseSegment();
  mCurrentIndex = -1;
  for (int i = 1; i <= GetCount(); ++i) MFileUniv::FDelete(SegmentAt(i)->GetFilePath());
  DeleteAll();
  if (!mInfoSpec.IsNull()) MFileUniv::FDelete(mInfoSpec.GetFilePath());
  return 0;
}

// ---- transfers

int MFiles::FRead(char* buffer, int count) {
  if (!IsOpen() || !mSegmentOpen) return -1;
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
    if (MoveTo(mCurrentIndex + 1) != 0) return -1;
  }
}

bool MFiles::NewSegmentsListable() {
  std::string line;
  MFileSpecWin* last = SegmentAt(GetCount());
  if (!last) return false;
  // An info file gone from its name (renamed behind the object's back)
  // would be made anew with the new line alone: no segment is added then.
  if (!mInfoSpec.IsNull()) {
    return TakenOnDisk(mInfoSpec.GetFilePath()) && InfoLine(SegmentName(mInfoSpec.GetFilePath(), GetCount()), &line);
  }
  // The switch lists every segment, the first under its new name.
  for (int i = 1; i < GetCount(); ++i) {
    if (!InfoLine(SegmentAt(i)->GetFilePath(), &line)) return false;
  }
  return InfoLine(SegmentName(last->GetFilePath(), 0), &line) &&
         InfoLine(SegmentName(last->GetFilePath(), GetCount()), &line);
}

int MFiles::PlanWrite(int count, bool* grows) {
  *grows = false;
  long long position = mCurrentFile.FSeek64(0, file_seek_current);
  struct _stati64 info;
  if (position < 0 || mCurrentFile.FStat(&info) != 0) return -1;
  long long size = info.st_size;
  long long left = count;
  for (int index = mCurrentIndex;; ++index) {
    if (index >= GetCount()) {
      *grows = position + left > std::max(size, mMaxFileSize);
      return 0;
    }
    // Bytes go no further than a segment's end, then on at the next one's start.
    if (position > size) return -1;
    left -= std::min(left, size - position);
    if (left == 0) return 0;
    position = 0;
    size = SegmentSize(index + 1);
    if (size < 0) return -1;
  }
}

int MFiles::FWrite(const char* buffer, int count) {
  const OpenMode* row = OpenModeOf(mOpenMode);
  if (!IsOpen() || !mSegmentOpen || count < 0 || !row || !row->writes || row->overlapped) return -1;
  if (count == 0) return 0;
  if (!buffer) return -1;
  // A failure on the way gives a negative value, never a short count.
  auto stop = [](int result) { return result < 0 ? result : -1; };
  long long position = 0;
  long long end = WriteEnd(&position);
  if (end < 0) return -1;
  // Most writes stay inside the open segment: nothing to plan.
  if (position <= end && count <= end - position) {
    int written = mCurrentFile.FWrite(buffer, count);
    return written == count ? written : stop(written);
  }
  // Refused before a byte is written: a segment it would cross that is
  // gone, a new segment whose name the info file cannot hold.
  bool grows = false;
  if (PlanWrite(count, &grows) != 0 || (grows && !NewSegmentsListable())) return -1;
  int done = 0;
  for (bool first = true; done < count; first = false) {
    if (!first && (end = WriteEnd(&position)) < 0) return stop(-1);
    const bool last = mCurrentIndex >= GetCount();
    if (position > end) {
      if (!last) return stop(-1);
      // Behind the limit: the seek makes the file that long first.
      long long base = SegmentBase(mCurrentIndex);
      if (base < 0 || FSeek64(base + position, file_seek_begin) != base + position) return stop(-1);
      continue;
    }
    int piece = static_cast<int>(std::min<long long>(end - position, count - done));
    if (piece > 0) {
      int written = mCurrentFile.FWrite(buffer + done, piece);
      if (written != piece) return stop(written);
      done += written;
      continue;
    }
    if (last && AppendSegment(0) != 0) return stop(-1);
    if (MoveTo(mCurrentIndex + 1) != 0) return stop(-1);
  }
  return done;
}

long long MFiles::WriteEnd(long long* position) {
  *position = mCurrentFile.FSeek64(0, file_seek_current);
  struct _stati64 info;
  if (*position < 0 || mCurrentFile.FStat(&info) != 0) return -1;
  // An overwrite stays in its segment; only the last one grows, and only up to the limit.
  const long long size = info.st_size;
  return mCurrentIndex >= GetCount() ? std::max(size, mMaxFileSize) : size;
}

long long MFiles::SegmentSize(int index) const {
  MFileSpecWin* spec = SegmentAt(index);
  return spec ? SizeOf(spec->GetFilePath()) : -1;
}

long long MFiles::SegmentBase(int index) const {
  long long base = 0;
  for (int i = 1; i < index; ++i) {
    long long size = SegmentSize(i);
    if (size < 0) return -1;
    base += size;
  }
  return base;
}

long long MFiles::FSeek64(long long offset, file_seek_t origin) {
  const OpenMode* row = OpenModeOf(mOpenMode);
  if (!IsOpen() || !row) return -1;
  if (origin != file_seek_begin && origin != file_seek_end) origin = file_seek_current;
  const int last = GetCount();
  if (origin != file_seek_begin) {
    if (origin == file_seek_end && MoveTo(last) != 0) return -1;
    if (!mSegmentOpen) return -1;
    // A file opened to read cannot grow: no position behind its end.
    if (!row->writes) {
      long long from = origin == file_seek_end ? mCurrentFile.GetSize() : mCurrentFile.FTell64();
      if (from < 0 || from + offset > mCurrentFile.GetSize()) return -1;
    }
    return mCurrentFile.FSeek64(offset, origin);
  }
  if (offset < 0) return -1;
  long long base = 0;
  long long size = 0;
  for (int i = 1; i <= last; ++i) {
    size = SegmentSize(i);
    if (size < 0) return -1;
    if (offset <= base + size) {
      if (MoveTo(i) != 0) return -1;
      return PlaceInSegment(mCurrentFile, offset - base, false) ? offset : -1;
    }
    if (i < last) base += size;
  }
  if (!row->writes) return -1;
  // Behind the end: the last segment grows, up to the limit.
  const bool needsSegments = offset > base + std::max(size, mMaxFileSize);
  if (needsSegments && !NewSegmentsListable()) return -1;
  if (MoveTo(last) != 0) return -1;
  if (!needsSegments) return PlaceInSegment(mCurrentFile, offset - base, true) ? offset : -1;
  // Then whole new segments. A segment above the limit keeps its data.
  if (size < mMaxFileSize) {
    if (!PlaceInSegment(mCurrentFile, mMaxFileSize, true)) return -1;
    size = mMaxFileSize;
  }
  long long remaining = offset - base - size;
  long long length = 0;
  while (remaining > 0) {
    length = std::min(remaining, mMaxFileSize);
    if (AppendSegment(length) != 0) return -1;
    remaining -= length;
  }
  if (MoveTo(GetCount()) != 0) return -1;
  return PlaceInSegment(mCurrentFile, length, false) ? offset : -1;
}

long long MFiles::FTell64() { return IsOpen() ? mCurrentFile.FTell64() : -1; }

int MFiles::GetLine(void* buffer, int count, bool wide) {
  if (!IsOpen() || !mSegmentOpen) return -1;
  auto read = [&] {
    return wide ? mCurrentFile.FGetts(static_cast<unsigned short*>(buffer), count)
                : mCurrentFile.FGets(static_cast<char*>(buffer), count);
  };
  int result = read();
  if (result >= 0 || mCurrentIndex >= GetCount()) return result;
  if (MoveTo(mCurrentIndex + 1) != 0) return -1;
  return read();
}

int MFiles::FGets(char* buffer, int count) { return GetLine(buffer, count, false); }

int MFiles::FGetts(unsigned short* buffer, int count) { return GetLine(buffer, count, true); }

int MFiles::FPuts(const char* text) { return IsOpen() && mSegmentOpen ? mCurrentFile.FPuts(text) : -1; }

int MFiles::FPutts(const unsigned short* text) { return IsOpen() && mSegmentOpen ? mCurrentFile.FPutts(text) : -1; }

// ---- sizes

int MFiles::FStat(struct _stati64* info) {
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

MString MFiles::FreeName(const MString& wanted) const {
  MString name = wanted;
  auto listed = [this](const MString& path) {
    for (int i = 1; i <= GetCount(); ++i) {
      if (SegmentAt(i)->GetFilePath() == path) return true;
    }
    return false;
  };
  // A folder where every name looks taken (it cannot be searched) ends the
  // search: no name, and the caller fails.
  for (int counter = 1; TakenOnDisk(name) || listed(name); ++counter) {
    if (counter > kNameTries) return MString();
    name.Format(u"%s-%d"_u16, static_cast<const unsigned short*>(wanted), counter);
  }
  return name;
}

int MFiles::DoSwitchToInfoFile() {
  MFileSpecWin* segment = SegmentAt(GetCount());
  if (!segment) return -1;
  MString plain = segment->GetFilePath();
  // The first segment's name is one that no file uses.
  MString first = FreeName(SegmentName(plain, 0));
  if (first.GetLength() == 0) return -1;
  std::vector<std::string> lines(static_cast<std::size_t>(GetCount()));
  for (int i = 1; i <= GetCount(); ++i) {
    if (!InfoLine(i < GetCount() ? SegmentAt(i)->GetFilePath() : first, &lines[static_cast<std::size_t>(i - 1)])) {
      return -1;
    }
  }
  // The new info file, whole, under a name of its own.
  MString pending = FreeName(PendingInfoName(plain));
  if (pending.GetLength() == 0) return -1;
  if (WriteInfoFile(pending, lines) != 0) {
    vp::RemoveFile(pending);
    return -1;
  }
  // A second name for the data, then the info file takes the plain name in
  // one step: the data is reachable through the plain name at every moment.
  // A link never replaces a file; a rename would, so it goes only to a free name.
  uint32_t linkError = vp::LinkPath(plain, first);
  bool linked = linkError == 0;
  if (!linked && (TakenOnDisk(first) || vp::RenamePath(plain, first) != 0)) {
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
  if (mInfoSpec.IsNull()) {
    if (CloseSegment() != 0 || DoSwitchToInfoFile() != 0) return -1;
  }
  if (GetCount() >= kMaxSegments || !TakenOnDisk(mInfoSpec.GetFilePath())) return -1;
  // Not listed yet, so the file made is no part of the logical file. A free
  // name that another file takes between the search and the exclusive
  // create is passed over; a few such races in a row end the call.
  MString name;
  for (int made = 1, races = 0; made == 1; ++races) {
    name = FreeName(SegmentName(mInfoSpec.GetFilePath(), GetCount()));
    made = name.GetLength() == 0 || races == 3 ? -1 : MakeNewFile(name, length);
    if (made < 0) return -1;
  }
  MFileSpecWin spec(name);
  if (AddToInfoFile(spec) != 0) {
    vp::RemoveFile(name);
    return -1;
  }
  Append(name);
  return 0;
}

int MFiles::CreateInfoFile(MFileSpecWin& spec) {
  if (WriteInfoFile(spec.GetFilePath(), {}) != 0) return -1;
  mInfoSpec = spec;
  return 0;
}

int MFiles::AddToInfoFile(MFileSpecWin& spec) {
  std::string text;
  if (mInfoSpec.IsNull() || !InfoLine(spec.GetFilePath(), &text)) return -1;
  MString& info = mInfoSpec.GetFilePath();
  // Opened (made if missing) first and asked for its size after: a file that
  // cannot be asked is never taken for a missing one and written anew.
  MFileUniv file;
  if (file.FOpen(info, file_append_text) != 0) return -1;
  struct _stati64 status;
  if (file.FStat(&status) != 0) {
    file.FClose();
    return -1;
  }
  bool ok = status.st_size != 0 || file.FPutts(MString(kInfoHeader) + MString(u"\n"_u16)) >= 0;
  ok = ok && file.FPuts(text.c_str()) >= 0;
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
  std::vector<std::string> lines;
  bool listable = true;
  for (int i = 1; i <= GetCount(); ++i) {
    MString& path = SegmentAt(i)->GetFilePath();
    const unsigned short* tail = path;
    // An absolute line keeps only its last name.
    if (path.GetLength() != 0 && path[0] == kPathSeparator) tail = vbu::wtext::FindLast(path, kPathSeparator) + 1;
    lines.emplace_back();
    listable = listable && InfoLine(folder + MString(tail), &lines.back());
  }
  FClose();
  DeleteAll();
  // An info file of no lines would lose the segments.
  if (info.GetLength() == 0 || !directory || lines.empty() || !listable) return -1;
  MString pending = FreeName(PendingInfoName(info));
  if (pending.GetLength() == 0 || WriteInfoFile(pending, lines) != 0 || vp::RenamePath(pending, info) != 0) {
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
    if (MoveTo(mCurrentIndex + 1) != 0) return false;
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
    if (MoveTo(mCurrentIndex - 1) != 0) return static_cast<uint32_t>(-1);
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

// The class constants have their one definition here, so that a host linking
// the library as a DLL reaches them like any other member.
constexpr int MFiles::kMaxSegments;
constexpr int MFiles::kMaxPathLength;
