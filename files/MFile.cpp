#include "files/MFile.h"

#include "platform/internal/FileSystem.h"

namespace {

bool ZeroTime(int& year, int& month, int& day, int& hour, int& minute, int& second) {
  year = month = day = hour = minute = second = 0;
  return true;
}

}  // namespace

MFile::MFile() = default;

MFile::MFile(const MFile& other) : mFileSpec(other.mFileSpec) {}

MFile& MFile::operator=(const MFile& other) {
  mFileSpec = other.mFileSpec;
  return *this;
}

MFile::~MFile() = default;

void MFile::SetFileSpec(MFileSpecWin& spec) { mFileSpec = spec; }

MFileSpecWin& MFile::GetFileSpec() { return mFileSpec; }

int MFile::FDelete() { return -1; }

int MFile::FOpen(MFileSpecWin&, file_open_t) { return -1; }

int MFile::FOpen(const unsigned short*, file_open_t) { return -1; }

int MFile::FRead(char*, int) { return -1; }

int MFile::FWrite(const char*, int) { return -1; }

long long MFile::FSeek64(long long, file_seek_t) { return -1; }

long long MFile::FTell64() { return -1; }

int MFile::FGets(char*, int) { return -1; }

int MFile::FPuts(const char*) { return -1; }

int MFile::FClose() { return -1; }

int MFile::FStat(MFileSpecWin&, struct _stati64*) { return -1; }

int MFile::FStat(struct _stati64*) { return -1; }

bool MFile::GetCreateTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const {
  return ZeroTime(year, month, day, hour, minute, second);
}

bool MFile::GetModifyTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const {
  return ZeroTime(year, month, day, hour, minute, second);
}

bool MFile::GetAccessTime(int& year, int& month, int& day, int& hour, int& minute, int& second) const {
  return ZeroTime(year, month, day, hour, minute, second);
}

long long MFile::GetSize() { return -1; }

MString& MFile::GetFilePath() { return GetFileSpec().GetFilePath(); }

bool MFile::FileExist(const MString& path) { return vbu::platform::PathExists(path); }
