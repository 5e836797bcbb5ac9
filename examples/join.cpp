// join: the join engine in its smallest host: two files end to end into
// one, each padded with zeros to whole 2048-byte sectors, with the progress
// that the engine reports after each write.
//
//   example_join DEST FIRST SECOND
//
// The engine runs on the calling thread here; the example host
// (example_host.cpp) runs it on a worker task with a progress bar.
#include <VantoroBasicUtils/VantoroBasicUtils.h>

#include <cstdio>
#include <cstring>

namespace {

MString Units(const char* text) {
  MString units;
  units.ImportASCII(text, -1);
  return units;
}

// Hears the engine's progress (kMsgThreadStatus), on the thread that joins.
class ProgressPrinter : public LListener {
 public:
  explicit ProgressPrinter(long long sectors) : mSectors(sectors) {}
  bool ListenToMessage(long message, void* param) override {
    if (message != kMsgThreadStatus) return false;
    const auto* record = static_cast<ThreadStatusRecord*>(param);
    if (record->mask & kStatusAdvance) mDone += record->position;  // in 2048-byte units
    std::printf("joined %lld of %lld sectors (%lld%%)\n", mDone, mSectors, mSectors ? 100 * mDone / mSectors : 100);
    return true;
  }

 private:
  long long mSectors, mDone = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return std::fprintf(stderr, "usage: example_join DEST FIRST SECOND\n"), 2;
  long long sectors = 0;
  for (int i = 2; i < 4; ++i) {
    MFileUniv source;
    if (source.FOpen(Units(argv[i]), MFile::file_read_binary) != 0) {
      return std::fprintf(stderr, "cannot read %s: %s\n", argv[i], std::strerror(int(GetLastError()))), 1;
    }
    sectors += (source.GetSize() + 2047) / 2048;
  }
  CMessageConsole console;  // shows the engine's messages: the system's reason for a failed transfer
  ProgressPrinter printer(sectors);
  CThreadStatus::GetThreadStatus()->AddListener(&printer);

  MFileUniv destination;  // written unbuffered, in whole sectors
  int status = 0;
  if (destination.FOpen(Units(argv[1]), MFile::file_overlapped_create) != 0 ||
      destination.ConcatInitialize(MFileUniv::kSectorSize, 0) != 0) {
    std::fprintf(stderr, "cannot write %s: %s\n", argv[1], std::strerror(int(GetLastError())));
    status = 1;
  }
  bool cancelled = false;  // a Cancel button would set it; the engine reads it once a pass
  for (int i = 2; i < 4 && status == 0; ++i) {
    if (destination.ConcatFile(Units(argv[i]), 0, cancelled, 0) != 0) {
      std::fprintf(stderr, "cannot join %s into %s\n", argv[i], argv[1]);
      status = 1;
    }
  }
  destination.FClose();
  CThreadStatus::GetThreadStatus()->RemoveListener(&printer);
  if (status == 0) std::printf("%s: %lld bytes\n", argv[1], sectors * 2048);
  return status;
}
