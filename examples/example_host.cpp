// A small host: keeps a sorted play list of chapter marks, walks it while
// removing marks, and lays out rectangles for a menu page.
#include <VantoroBasicUtils/VantoroBasicUtils.h>

#include <cstdint>
#include <cstdio>
#include <initializer_list>

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
  return 0;
}
