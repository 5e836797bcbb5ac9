// A small host: keeps a sorted play list of chapter marks, walks it while
// removing marks, lays out rectangles for a menu page, and joins chapter
// files into a disc image with progress, then reads the image back ahead.
#include <VantoroBasicUtils/VantoroBasicUtils.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>

namespace {

// Prints each progress record as the engine reports it.
class ProgressLine : public LListener {
 public:
  bool ListenToMessage(long message, void* param) override {
    if (message != kMsgThreadStatus) return false;
    auto* record = static_cast<ThreadStatusRecord*>(param);
    if (record->mask & kStatusAdvance) sectors += record->position;
    return true;
  }
  long long sectors = 0;
};

MString Units(const std::string& path) {
  MString text;
  text.ImportASCII(path.c_str(), -1);
  return text;
}

// Joins three chapter files (made here) into one image, each padded to
// whole 2048-byte sectors, and reads the image back in small pieces.
int JoinChapters() {
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "vbu-example-host";
  std::filesystem::create_directories(folder);
  const long sizes[] = {1000000, 5000, 2500000};
  long long expected = 0;
  for (int i = 0; i < 3; ++i) {
    std::ofstream((folder / ("chapter" + std::to_string(i) + ".vob")).string(), std::ios::binary)
        << std::string(static_cast<std::size_t>(sizes[i]), static_cast<char>('A' + i));
    expected += (sizes[i] + 2047) / 2048 * 2048;
  }

  CMessageConsole console;  // failures of the engine show on standard output
  ProgressLine progress;
  CThreadStatus::GetThreadStatus()->AddListener(&progress);

  const std::string image = (folder / "disc.img").string();
  MFileUniv disc;
  if (disc.FOpen(Units(image), MFile::file_overlapped_create) != 0 || disc.ConcatInitialize(2048, 0) != 0) {
    std::printf("cannot start the image %s\n", image.c_str());
    return 1;
  }
  bool cancelled = false;
  for (int i = 0; i < 3; ++i) {
    MString chapter = Units((folder / ("chapter" + std::to_string(i) + ".vob")).string());
    if (disc.ConcatFile(chapter, 0, cancelled, 0) != 0) return 1;
  }
  disc.FClose();
  std::printf("disc image: %lld bytes in %lld sectors (expected %lld bytes)\n",
              static_cast<long long>(std::filesystem::file_size(image)), progress.sectors, expected);

  // Read the image back in 2048-byte pieces while the next block arrives.
  MFileUniv reader;
  AsyncReadBuffer ahead;
  long long letters[3] = {};
  if (reader.FOpen(Units(image), MFile::file_overlapped_read) == 0 && ahead.InitReadBuffer(&reader, 0, 1 << 20, 0) == 0) {
    char piece[2048];
    long long at = 0;
    for (int got; (got = ahead.ReadBuffer(at, piece, sizeof piece)) > 0; at += got) {
      for (int i = 0; i < got; ++i) {
        if (piece[i] >= 'A' && piece[i] <= 'C') ++letters[piece[i] - 'A'];
      }
    }
    reader.FClose();
  }
  std::printf("read back: %lld A, %lld B, %lld C\n", letters[0], letters[1], letters[2]);
  std::filesystem::remove_all(folder);
  return letters[0] == sizes[0] && letters[1] == sizes[1] && letters[2] == sizes[2] ? 0 : 1;
}

}  // namespace

int main() {
  // Chapter marks in frames, kept sorted whatever order they arrive in.
  LArray marks(sizeof(int32_t), nullptr, true);
  for (int32_t frame : {5400, 0, 27000, 1800, 9000, 1800}) marks.InsertItemsAt(1, kLastIndex, &frame, 0);

  std::printf("chapter marks (%lu):", marks.GetCount());
  LArrayIterator walk(marks);
  for (int32_t frame; walk.Next(&frame);) std::printf(" %d", frame);
  std::printf("\n");

  // Drop marks closer than two seconds (60 frames at 30 fps) to the one
  // before, from inside the walk.
  LArrayIterator prune(marks);
  int32_t previous = -1000;
  for (int32_t frame; prune.Next(&frame);) {
    if (frame - previous < 60) {
      marks.RemoveItemsAt(1, prune.GetCurrentIndex());
    } else {
      previous = frame;
    }
  }
  int32_t key = 9000;
  std::printf("after pruning: %lu marks; 9000 is mark %ld\n", marks.GetCount(), marks.FetchIndexOf(&key));

  // Menu buttons on a 720x480 page, scaled to a 360x240 preview.
  MRectList buttons;
  for (int i = 0; i < 3; ++i) buttons.AddList(80, 100 + i * 100, 560, 80);
  buttons.Scale(0.5, 0.5);
  for (int i = 0; MRect* r = buttons.GetAt(i); ++i) {
    std::printf("button %d: x=%d y=%d w=%d h=%d\n", i + 1, r->GetX(), r->GetY(), r->GetWidth(), r->GetHeight());
  }

  // 64-bit byte counts as decimal text, as a disc image's size is shown.
  long long bytes = 4700000000LL;
  char* text = ToString10(bytes);
  std::printf("single-layer disc: %s bytes\n", text);
  ::operator delete(text);

  return JoinChapters();
}
