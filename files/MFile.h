// MFile.h: the abstract open file. It owns the file spec (MFileSpecWin) that names its file
// and declares the operations that the plain file (MFileUniv) and the
// segmented file implement, so that a caller can hold either as an MFile*.
// Every operation that this base does not implement fails.
//
//   MFile* file = new MFileUniv;
//   char buffer[2048];
//   if (file->FOpen(u"/media/menu.vob"_u16, MFile::file_read_binary) == 0) { file->FRead(buffer, 2048); file->FClose(); }
//   delete file;
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/FileInfo.h>
#include <VantoroBasicUtils/files/MFileSpec.h>

class VBU_API MFile {
 public:
  // How a file opens: values 0 to 9 take the stdio route, 11 to 14 the
  // overlapped route (unbuffered, whole sectors); 10 opens nothing.
  enum file_open_t {
    file_read_text = 0,             // read, text; the file must exist
    file_read_binary = 1,           // read, binary; the file must exist
    file_create_binary = 2,         // create or empty, binary
    file_create_update_binary = 3,  // the same as 2
    file_create_text = 4,           // create or empty, text
    file_append_binary = 5,         // keep or create, binary, write at the end
    file_append_update_binary = 6,  // the same as 5
    file_update_text = 7,           // keep or create, text, from the start
    file_append_text = 8,           // keep or create, text, write at the end
    file_update_binary = 9,         // keep or create, binary, from the start
    file_unsupported = 10,          // FOpen gives -1
    file_overlapped_create = 11,    // write; created or emptied
    file_overlapped_write = 12,     // write; kept or created
    file_overlapped_read = 13,      // read; must exist
    file_overlapped_update = 14,    // read and write; must exist
  };
  // Where a seek counts from; any other value counts as file_seek_current.
  enum file_seek_t { file_seek_begin = 0, file_seek_current = 1, file_seek_end = 2 };

  // Names no file yet.
  MFile();
  // Copies the file spec, nothing else.
  MFile(const MFile& other);
  MFile& operator=(const MFile& other);
  virtual ~MFile();

  // Names the file.
  virtual void SetFileSpec(MFileSpecWin& spec);
  virtual MFileSpecWin& GetFileSpec();
  // The operations of an open file: the base does none of them and gives -1.
  virtual int FDelete();
  virtual int FOpen(MFileSpecWin& spec, file_open_t mode);
  virtual int FOpen(const unsigned short* path, file_open_t mode);
  virtual int FRead(char* buffer, int count);
  virtual int FWrite(const char* buffer, int count);
  virtual long long FSeek64(long long offset, file_seek_t origin);
  virtual long long FTell64();
  virtual int FGets(char* buffer, int count);
  virtual int FPuts(const char* text);
  virtual int FClose();
  virtual int FStat(MFileSpecWin& spec, struct _stati64* info);
  virtual int FStat(struct _stati64* info);
  // The base sets all six to 0 and gives true.
  virtual bool GetCreateTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const;
  virtual bool GetModifyTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const;
  virtual bool GetAccessTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const;
  // Bytes in the file; the base gives -1.
  virtual long long GetSize();
  // The path of the file spec.
  virtual MString& GetFilePath();

  // True when `path` exists.
  static bool FileExist(const MString& path);

 private:
  MFileSpecWin mFileSpec;
};
