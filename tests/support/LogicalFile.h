// Test helpers for segmented files: the logical content as a fresh reader
// sees it through the info file, and a check that every listed segment exists.
#pragma once

#include <VantoroBasicUtils/files/MFiles.h>

#include <string>

// The whole logical file at `path`, read by a new MFiles; "<unreadable>" if
// it does not open or read.
inline std::string ReadLogical(const MString& path) {
  MFiles file;
  if (file.FOpen(path, MFile::file_read_binary) != 0) return "<unreadable>";
  long long size = file.GetSize();
  if (size < 0) return "<unreadable>";
  std::string bytes(static_cast<std::size_t>(size) + 1, '\0');
  int got = file.FRead(bytes.data(), static_cast<int>(bytes.size()));
  if (got < 0) return "<unreadable>";
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

// The paths that the file at `path` lists (itself for a plain file); empty if it does not open.
inline std::vector<MString> ListedSegments(const MString& path) {
  std::vector<MString> paths;
  MFiles file;
  if (file.FOpen(path, MFile::file_read_binary) != 0) return paths;
  for (int i = 1; i <= file.GetCount(); ++i) {
    MFileSpecWin* spec = nullptr;
    file.GetFileNames()->FetchItemAt(i, &spec);
    paths.push_back(spec->GetFilePath());
  }
  return paths;
}
