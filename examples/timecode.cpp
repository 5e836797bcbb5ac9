// timecode: parses timecode text and prints it as the library reads it,
// with its drop-frame label.
//
//   example_timecode [TEXT...]      e.g. 01:00:00:00 or 00:10:00;12
//
// Timecode text is "hh:mm:ss:ff". A ";" before the frame means 25 frames per
// second (PAL); ":" means 30 (NTSC labels). Drop-frame labels are written
// with ":" too: whether a label is drop-frame is a matter of agreement, and
// CTimecode::Nondrop2Drop gives the drop-frame label of a plain 30 fps label,
// counted from a reference (here 00:00:00:00).
#include <VantoroBasicUtils/VantoroBasicUtils.h>

#include <cstdio>
#include <string>

namespace {

std::string Utf8(MString text) {
  char bytes[64];
  const int length = text.ExportASCII(bytes, sizeof bytes - 1, kCharacterSetWindows);
  return std::string(bytes, static_cast<std::size_t>(length > 0 ? length : 0));
}

void Show(const char* entered) {
  MString text;
  text.ImportASCII(entered, -1);
  CTimecodeParser parser;
  parser.Parse(text, false);  // the frame type follows the text: ";" is 25 fps
  CTimecode time = parser.GetTime();  // the fields, checked against the rate

  MString label;
  time.GetTime(&label);
  std::printf("%-14s %s at %g fps, frame %ld from 00:00:00:00", entered, Utf8(label).c_str(),
              time.GetFrameRate(), time.GetTotalFrame());
  if (time.GetFrameType() == kFrameType30) {
    CTimecode dropFrame;
    time.Nondrop2Drop(CTimecode(), &dropFrame);
    dropFrame.GetTime(&label);
    std::printf(", drop-frame label %s", Utf8(label).c_str());
  } else {
    std::printf(", no drop-frame labels at this rate");
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 1) {
    for (const char* text : {"00:00:59:29", "00:01:00:00", "01:00:00:00", "00:10:00;12", "1:2"}) Show(text);
  }
  for (int i = 1; i < argc; ++i) Show(argv[i]);
  return 0;
}
