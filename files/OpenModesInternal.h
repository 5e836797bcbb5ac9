// OpenModesInternal.h: what each open mode of MFile means, in one table: the
// plain file opens by it, and the segmented file reads from it what a mode
// allows and in which mode a segment of the file is opened when a transfer
// or a seek moves into it. The library's own; never installed.
#pragma once

#include "files/MFile.h"

namespace vbu::files {

struct OpenMode {
  bool overlapped;  // the unbuffered route
  bool text;        // text translation
  bool reads;
  bool writes;
  bool creates;    // a missing file is made
  bool truncates;  // an existing file is emptied
  bool atEnd;      // the position stands at the end after the open
  const char* stream;  // the stdio stream's mode
  // The mode in which a segment that exists is opened when the file moves
  // into it: never emptying, standing at its start. It is opened as a file
  // that must exist: a segment that is gone is never made anew.
  MFile::file_open_t moveInto;
};

// The row of `mode`, or null for file_unsupported and values out of range.
inline const OpenMode* OpenModeOf(MFile::file_open_t mode) {
  using M = MFile;
  static constexpr OpenMode kRows[] = {
      {false, true, true, false, false, false, false, "r", M::file_read_text},              // file_read_text
      {false, false, true, false, false, false, false, "r", M::file_read_binary},           // file_read_binary
      {false, false, true, true, true, true, false, "w", M::file_update_binary},            // file_create_binary
      {false, false, true, true, true, true, false, "w", M::file_update_binary},            // file_create_update_binary
      {false, true, true, true, true, true, false, "w", M::file_update_text},               // file_create_text
      {false, false, true, true, true, false, true, "w", M::file_update_binary},            // file_append_binary
      {false, false, true, true, true, false, true, "w", M::file_update_binary},            // file_append_update_binary
      {false, true, true, true, true, false, false, "r+", M::file_update_text},             // file_update_text
      {false, true, true, true, true, false, true, "w", M::file_update_text},               // file_append_text
      {false, false, true, true, true, false, false, "r+", M::file_update_binary},          // file_update_binary
      {},                                                                                    // file_unsupported
      {true, false, false, true, true, true, false, nullptr, M::file_overlapped_write},     // file_overlapped_create
      {true, false, false, true, true, false, false, nullptr, M::file_overlapped_write},    // file_overlapped_write
      {true, false, true, false, false, false, false, nullptr, M::file_overlapped_read},    // file_overlapped_read
      {true, false, true, true, false, false, false, nullptr, M::file_overlapped_update},   // file_overlapped_update
  };
  if (mode < M::file_read_text || mode > M::file_overlapped_update || mode == M::file_unsupported) return nullptr;
  return &kRows[mode];
}

}  // namespace vbu::files
