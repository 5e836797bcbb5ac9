// MFiles.h: one logical file that may lie in several segment files. It
// starts as one plain file; once a write or a seek runs past the segment
// limit, the data moves to "name.cfx.0", later data to "name.cfx.1" and so
// on, and a small text file under the original name (the info file, header
// "# Brevander c_files ") lists the segments in order. Opening the name
// again finds the info file and reaches every segment. One segment is open
// at a time, in an embedded MFileUniv.
//
// Nothing written is lost on the way: at every moment the info file on
// disk lists every segment that holds data; a segment that is part of the
// file is never emptied by moving into it, whatever the open mode, and a
// listed segment that is gone is an error, never made anew; a name that
// another file uses on disk is never taken (a free one is chosen: the info
// file lists whole paths); an object opened to read changes nothing.
//
//   MFiles title;
//   title.SetMaxFileSize(1024LL << 20);                  // 1 GiB segments
//   char sector[2048] = {};
//   if (title.FOpen(u"/media/title.vob"_u16, MFile::file_create_binary) == 0) {
//     for (int i = 0; i < 1000000; ++i) title.FWrite(sector, 2048);   // spreads over segments
//     title.FClose();
//   }
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Overlapped.h>

class VBU_API MFiles : public MFile {
 public:
  // The first line of every info file.
  static const unsigned short kInfoHeader[];
  // Segment names are the logical path, this suffix, a point and a number.
  static const unsigned short kSegmentSuffix[];
  // At most this many segments, each named by a path of at most
  // kMaxPathLength bytes as the system names it (its longest path).
  static constexpr int kMaxSegments = 2048;
  static constexpr int kMaxPathLength = 4095;

  // Closed, with no segment limit (0x3FFFFFFFFFFFFFFF).
  MFiles();
  // Closes the file.
  ~MFiles() override;
  // Two objects on one list would delete its file specs twice.
  MFiles(const MFiles&) = delete;
  MFiles& operator=(const MFiles&) = delete;

  using MFile::FStat;

  // ---- opening and closing

  // Names the logical file and opens it as FOpen(mode).
  int FOpen(MFileSpecWin& spec, file_open_t mode) override;
  int FOpen(const unsigned short* path, file_open_t mode) override;
  // Opens the named file: an info file opens its segments, anything else is
  // a file of one segment. The first segment is opened in `mode`; a mode
  // that empties makes a segmented file one empty segment (the others and
  // their lines are removed); modes 5, 6 and 8 then stand at the logical
  // end. 0 or -1.
  int FOpen(file_open_t mode);
  // Opens an explicit list of MFileSpecWin* (copied) as FOpen(mode) does; 0 or -1.
  int FOpen(LList& specs, file_open_t mode);
  // Closes the open segment and forgets the list; the segment's close result (-1 when closed).
  int FClose() override;
  // Removes every segment and then the info file, open or not; 0.
  int FDelete() override;

  // ---- transfers; positions are logical unless said otherwise

  // Reads on across segment ends; the count (short at the logical end) or a negative value.
  int FRead(char* buffer, int count) override;
  // Writes at the position: bytes over data stay in the segment that holds
  // them and cross into the next at its end; only bytes behind the logical
  // end follow the limit, into new segments made (and listed) as needed. A
  // write that would reach a missing segment, or a new segment whose name
  // the info file cannot hold, is refused before a byte is written. The
  // count (0 for nothing, which changes nothing) or a negative value.
  int FWrite(const char* buffer, int count) override;
  // file_seek_begin: to a logical offset, growing the file (by whole new
  // segments if needed) when it lies behind the end; gives the offset.
  // file_seek_end and file_seek_current: inside the last or the open
  // segment; gives the position inside it. -1 on failure. On the overlapped
  // route, whose transfers name their offsets, file_seek_begin makes and
  // opens the segments and sets no position. Opened to read, the file cannot
  // grow: a position behind its end gives -1.
  long long FSeek64(long long offset, file_seek_t origin) override;
  // The position inside the open segment.
  long long FTell64() override;
  // A line of the open segment, or of the next if this one has none left: 0 or -1.
  int FGets(char* buffer, int count) override;
  virtual int FGetts(unsigned short* buffer, int count);
  // To the open segment, whatever the limit.
  int FPuts(const char* text) override;
  virtual int FPutts(const unsigned short* text);

  // ---- sizes

  // The sum of the segments' sizes in `info`; the other fields are the last
  // segment's. 0, or -1 at the first segment that cannot be inspected.
  int FStat(struct _stati64* info) override;
  // The sum of the segments' sizes (0 for none), or -1 at the first that cannot be inspected.
  virtual long long FGetFileSize();
  long long GetSize() override;

  // ---- the list

  int GetCount() const { return static_cast<int>(mSegments.GetCount()); }
  // The 1-based place of the open segment; -1 when closed.
  int GetCurrentPos() const { return mCurrentIndex; }
  // The MFileSpecWin* of the segments, in logical order.
  LList* GetFileNames() { return &mSegments; }
  MFileSpecWin& GetCurrentSpecNative() { return mCurrentFile.GetFileSpec(); }
  MString& GetCurrentFilePath() { return mCurrentFile.GetFileSpec().GetFilePath(); }
  // Empty while the file has no info file.
  MString& GetInfoFilePath() { return mInfoSpec.GetFilePath(); }
  // The largest segment in bytes; values below 1 count as 1.
  void SetMaxFileSize(long long size) { mMaxFileSize = size < 1 ? 1 : size; }
  long long GetMaxFileSize() const { return mMaxFileSize; }

  // ---- the info file

  // Writes a new info file at `spec`, header only, and makes it this
  // object's info file. 0 or -1.
  int CreateInfoFile(MFileSpecWin& spec);
  // Appends the path of `spec` to the info file (made if missing). The line
  // is there whole or not at all. 0 or -1 (also with no info file).
  int AddToInfoFile(MFileSpecWin& spec);
  // True when the path is a readable file that begins with the info header.
  static bool IsBrevanderMFiles(MFileSpecWin& spec);
  static bool IsBrevanderMFiles(MString& path);
  // Closes the object and rewrites its info file so that each segment
  // stands in `directory`: a relative line is put behind it whole, an
  // absolute line by its last name. Moves no file. 0 or -1.
  int ChangeAllFilesDirectory(const unsigned short* directory);
  // A free name beside `path`: its stem (up to the last point of its last
  // name), `suffix`, "." and `extension`; then stem, suffix, 1, 2, ... .
  // False for a null argument.
  static bool GenerateNewFilePath(const unsigned short* path, const unsigned short* suffix,
                                  const unsigned short* extension, MString* result);

  // ---- overlapped reads and the join engine, on the open segment

  // Starts reading the logical range of `count` bytes at `offset` (an
  // overlapped mode): pieces in earlier segments are read and waited for
  // here, the last piece is left running on `event`. 0, an error code
  // (kErrorHandleEof behind the end, with `count` the bytes that were
  // there), or a negative open result.
  uint32_t FReadOverlapped(long long offset, char* buffer, long& count, OVERLAPPED* overlapped, void* event);
  static uint32_t FWaitOverlappedCompletion(void* event, unsigned long seconds) {
    return MFileUniv::FWaitOverlappedCompletion(event, seconds);
  }
  long ConcatInitialize(long sectorSize, long long startOffset) {
    return mCurrentFile.ConcatInitialize(sectorSize, startOffset);
  }
  long ConcatBufferSynchronously(char* buffer, long count) {
    return mCurrentFile.ConcatBufferSynchronously(buffer, count);
  }
  long ConcatFile(const unsigned short* path, long reserved, bool& cancelled) {
    return mCurrentFile.ConcatFile(path, reserved, cancelled, -1);
  }
  long ConcatFile(unsigned short* path, long reserved, bool& cancelled) {
    return ConcatFile(static_cast<const unsigned short*>(path), reserved, cancelled);
  }
  long ConcatFile(decltype(nullptr), long reserved, bool& cancelled) {
    return ConcatFile(static_cast<const unsigned short*>(nullptr), reserved, cancelled);
  }

 protected:
  // Turns the file of one segment into segment 0 behind a new info file
  // (the object's segment is closed). 0, or -1 with nothing changed.
  int DoSwitchToInfoFile();
  // Deletes the file specs and empties the list.
  void DeleteAll();

 private:
  MFileSpecWin* SegmentAt(int index) const;
  bool IsOpen() const { return mCurrentIndex != -1; }
  // Appends a file spec of `path` to the list.
  void Append(const unsigned short* path);
  // Opens the first segment of the list in `mode`; 0 or -1, the list emptied on failure.
  int OpenSegments(file_open_t mode);
  // Makes the info file list the first segment alone, then removes the others; 0 or -1.
  int DropLaterSegments();
  // Makes segment `index` the open one (closing the one open), in the mode
  // that moving into a segment takes: it must exist. 0 or -1.
  int MoveTo(int index);
  // Closes the open segment, if one is; 0 or -1.
  int CloseSegment();
  // The size of segment `index` by its path, or -1; the logical offset of its start, or -1.
  long long SegmentSize(int index) const;
  long long SegmentBase(int index) const;
  // Where a write of `count` bytes at the position goes: -1 when it would
  // cross into a segment that is not there; `grows` when it needs a new one.
  int PlanWrite(int count, bool* grows);
  // The open segment's write position (`*position`) and how far a write may
  // go in it; -1 when they cannot be read.
  long long WriteEnd(long long* position);
  // True when the info file can hold the lines that a new segment adds.
  bool NewSegmentsListable();
  // Makes a new last segment of `length` bytes (zeros), switching to an
  // info file first if there is none, lists it and appends it to the list;
  // 0 or -1 with nothing listed.
  int AppendSegment(long long length);
  // `wanted`, or the first of wanted-1, wanted-2, ... that no file on disk
  // and no segment of the list uses.
  MString FreeName(const MString& wanted) const;
  // FGets (`wide` false) and FGetts, moving on to the next segment.
  int GetLine(void* buffer, int count, bool wide);

  LList mSegments;             // MFileSpecWin*, owned, in logical order
  MFileUniv mCurrentFile;      // the open segment
  bool mSegmentOpen;           // mCurrentFile is open (not so after a failed move)
  int mCurrentIndex;           // 1-based place of the open segment, -1 when closed
  file_open_t mOpenMode;       // of the last successful open
  MFileSpecWin mInfoSpec;      // the info file; empty while there is none
  long long mMaxFileSize;      // largest segment
  long long mEndOffset;        // FReadOverlapped: logical offset behind the open segment, 0 unprimed
  long long mCurrentSize;      // FReadOverlapped: size of the open segment
};
