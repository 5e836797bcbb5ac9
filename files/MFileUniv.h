// MFileUniv.h: the plain file, the one class that touches a real file. An
// object is closed or open on one of two routes: the stdio route (a
// descriptor and a buffered stream on it, binary or text) or the overlapped
// route (asynchronous transfers in whole 2048-byte sectors that bypass the
// system cache). The concatenation engine (ConcatInfo.h) is part of it.
//
//   MFileUniv file;
//   if (file.FOpen(u"/tmp/list.txt"_u16, MFile::file_create_text) == 0) {
//     file.FPuts("line\n");  file.FClose();                  // "line\r\n" on disk
//   }
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/Overlapped.h>
#include <VantoroBasicUtils/files/ConcatInfo.h>
#include <VantoroBasicUtils/files/MFile.h>

class VBU_API MFileUniv : public MFile {
 public:
  // The unit of overlapped offsets and lengths.
  static constexpr long kSectorSize = 2048;

  // Closed: no stream, descriptor -1, handle -1.
  MFileUniv();
  // Copies share the open file as it stands; only one of them may close it.
  // The concatenation engine's buffers stay with their owner: a copy has none.
  MFileUniv(const MFileUniv& other);
  MFileUniv& operator=(const MFileUniv& other);
  // Closes the file and releases the concatenation engine's buffers.
  ~MFileUniv() override;

  using MFile::FDelete;

  // ---- opening and closing

  // Names the file and opens it as FOpen(mode): 0 or -1.
  int FOpen(MFileSpecWin& spec, file_open_t mode) override;
  int FOpen(const unsigned short* path, file_open_t mode) override;
  // Opens the file that its file spec names, on the mode's route; 0 or -1.
  int FOpen(file_open_t mode);
  // Closes the route in use: 0 on success, -1 on failure or when not open.
  int FClose() override;
  // Removes the file `path`: 0, or -1 (also for an empty path).
  static int FDelete(const MString& path);

  // ---- stdio route: bytes on the descriptor

  // At most `count` bytes (text mode: after translation); the count or -1.
  int FRead(char* buffer, int count) override;
  // `count` bytes; the count or -1.
  int FWrite(const char* buffer, int count) override;
  // Moves the descriptor; the new position or -1. An unknown origin counts as current.
  long long FSeek64(long long offset, file_seek_t origin) override;
  // The descriptor's position; -1 from 0x7FFFFFFF on; 0 on the overlapped route.
  long long FTell64() override;

  // ---- stdio route: the stream

  // A line of at most `count` - 1 bytes with its end: 0, or -1 at the end or on failure.
  int FGets(char* buffer, int count) override;
  // Writes the bytes of `text`: 0 or more, or -1.
  int FPuts(const char* text) override;
  // fread and fwrite: the number of whole items.
  virtual int FReadVoid(void* buffer, int size, int count);
  virtual int FWriteVoid(const void* buffer, int size, int count);
  // A line of the system's code page as 16-bit text, its end kept; at most
  // 2 * `count` - 1 bytes are read, so `buffer` holds 2 * `count` units. 0 or -1.
  virtual int FGetts(unsigned short* buffer, int count);
  // Writes `text` in the system's code page: 0 or more, or -1.
  virtual int FPutts(const unsigned short* text);
  // Wide text as the stream takes it (binary: 16-bit little-endian units;
  // text: the system's code page). A line of at most 2 * `count` - 1 units
  // into `buffer`, which holds 2 * `count` units: 0 or -1.
  virtual int FNativeGetts(unsigned short* buffer, int count);
  virtual int FNativePutts(const unsigned short* text);

  // ---- file information

  // The information of `path`: 0 or -1.
  virtual int FStat(const unsigned short* path, struct _stati64* info);
  // Of the path of `spec`; -1 for an empty one.
  int FStat(MFileSpecWin& spec, struct _stati64* info) override;
  // Of the open descriptor.
  int FStat(struct _stati64* info) override;
  // Times of the open descriptor in local time; false (outputs untouched) if it has none.
  bool GetCreateTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const override;
  bool GetModifyTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const override;
  bool GetAccessTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const override;
  // Bytes in the file: of the handle (overlapped) or of the path (stdio); -1 if unknown.
  long long GetSize() override;

  // ---- size changes

  // Stdio route: ends the file at the descriptor's position; 0 or -1.
  int FSetEndOfFile();
  // Overlapped route: makes the file `size` bytes long; 0 or -1.
  int FSetFileSize(long long size);

  // ---- overlapped transfers; the caller owns record, event and buffer until the end

  // Starts reading `count` bytes at `offset` so that the first lands at
  // `buffer`: the transfer starts at the sector boundary in front (up to
  // 2047 bytes before `buffer`) and runs on to whole sectors. 0 when started,
  // else an error code (after one retry, with the user told).
  uint32_t FReadOverlapped(long long offset, char* buffer, long count, OVERLAPPED* overlapped, void* event);
  // Starts writing whole sectors at a sector offset; 0 when started, else an
  // error code (the user told, no retry).
  uint32_t FWriteOverlapped(long long offset, char* buffer, long count, OVERLAPPED* overlapped, void* event);
  // Waits at most `seconds` for the MEvent* `event` and resets it: 0 when it
  // was signalled, kWaitTimeout or kWaitFailed else. Touches no object.
  static uint32_t FWaitOverlappedCompletion(void* event, unsigned long seconds);

  // ---- the concatenation engine (destination open in an overlapped write mode)

  // Starts a run: buffers of `sectorSize` * 2048 bytes, the first byte to
  // `startOffset`. 0, or -1 (out of memory, bad size).
  long ConcatInitialize(long sectorSize, long long startOffset);
  // Appends the file `path`, padded with zeros to whole sectors: 0 on success
  // or cancellation (`cancelled` is read once a pass), -1 on failure, or an
  // error code when the source's size cannot be had. `reserved` and
  // `reservedTwo` are not used.
  long ConcatFile(const unsigned short* path, long reserved, bool& cancelled, long reservedTwo);
  long ConcatFile(unsigned short* path, long reserved, bool& cancelled, long reservedTwo);
  long ConcatFile(decltype(nullptr), long reserved, bool& cancelled, long reservedTwo) {
    return ConcatFile(static_cast<const unsigned short*>(nullptr), reserved, cancelled, reservedTwo);
  }
  // Appends `count` bytes (at most one buffer), padded alike; 0 or -1.
  long ConcatBufferSynchronously(char* buffer, long count);

  // ---- state

  // Bytes between the last overlapped read's sector boundary and its offset.
  long GetSectorLead() const { return mSectorLead; }
  // The engine's state, meaningful after ConcatInitialize.
  const ConcatInfo& GetConcatInfo() const { return mConcatInfo; }
  // True while open on the overlapped route.
  bool IsOverlapped() const { return mOverlapped; }

 private:
  friend class MFiles;
  // Opens as FOpen(mode) does; with `mayCreate` false the file must exist.
  int OpenAs(file_open_t mode, bool mayCreate);

  void ConcatCleanup(ConcatInfo* info);
  uint32_t ConcatWaitOperation(ConcatInfo* info, ConcatCallbackInfo* record);
  void ConcatWriteBuffer(ConcatInfo* info);
  void ConcatReadBuffer(ConcatInfo* info, ConcatCallbackInfo* record);
  long ConcatOpenSourceFile(ConcatInfo* info, const unsigned short* path);
  void ConcatCloseSourceFile(ConcatInfo* info);
  uint64_t ConcatSetSourceInfo(ConcatInfo* info);
  void ConcatUpdateOverlap(ConcatCallbackInfo* record, unsigned long bytes);

  // The engine's steps that the operations above share.
  class ConcatPipeline;  // one ConcatFile's transfers in flight (MFileUnivConcat.cpp)
  uint32_t ConcatStart(ConcatInfo* info, ConcatCallbackInfo* record, bool write, char* buffer, uint32_t count);
  void ConcatCollectWrite(ConcatInfo* info, bool reportProgress);
  void ConcatReportError(ConcatInfo* info);
  bool GetTime(int which, int& year, int& month, int& day, int& hour, int& minute, int& second) const;

  void* mStream;         // the buffered stream, null when none
  int mDescriptor;       // the descriptor under mStream, -1 when none
  bool mOverlapped;      // an overlapped mode is in use
  long mSectorLead;      // of the last overlapped read, 0 to 2047
  ConcatInfo mConcatInfo;
  intptr_t mHandle;      // the overlapped route's handle, -1 when none
};
