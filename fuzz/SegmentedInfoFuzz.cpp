// MFiles opening an arbitrary info file (and, often, one that begins with
// the real header), beside a few real segments, and reading it through.
// Only reading modes: the lines of the info file name any path, and a
// fuzzer must not empty files outside its folder.
#include "FuzzSupport.h"

#include <VantoroBasicUtils/files/MFiles.h>

#include <cstring>

namespace {

// Lines that would reach a device or a system folder (which may block a
// read or never end) are kept out of the file.
bool Harmless(const std::string& text) {
  for (const char* bad : {"dev", "proc", "sys", "run", ".."}) {
    if (text.find(bad) != std::string::npos) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const bool header = in.ConsumeBool();
  const int mode = in.ConsumeIntegralInRange(0, 2);
  const long long seekTo = in.ConsumeIntegralInRange<long long>(-10, 100000);
  std::string body = in.ConsumeRemainingBytesAsString();
  if (!Harmless(body)) return 0;

  const auto& folder = vbu::fuzz::ScratchFolder();
  // Segments the lines may name: "title.cfx.0" to "title.cfx.2", short ones.
  for (int i = 0; i < 3; ++i) {
    std::string bytes(static_cast<std::size_t>(100 * i + 7), static_cast<char>('a' + i));
    vbu::fuzz::WriteFile(folder / ("title.cfx." + std::to_string(i)), bytes.data(), bytes.size());
  }
  std::string text = header ? "# Brevander c_files \n" + body : body;
  const auto info = folder / "title";
  vbu::fuzz::WriteFile(info, text.data(), text.size());

  static const MFile::file_open_t kModes[] = {MFile::file_read_binary, MFile::file_read_text,
                                              MFile::file_overlapped_read};
  MFiles file;
  MString path = vbu::fuzz::Text(info.string());
  (void)MFiles::IsBrevanderMFiles(path);
  if (file.FOpen(path, kModes[mode]) != 0) return 0;
  VBU_FUZZ_CHECK(file.GetCount() >= 1 && file.GetCount() <= MFiles::kMaxSegments);
  const long long total = file.FGetFileSize();
  if (kModes[mode] != MFile::file_overlapped_read) {
    // Reads through, bounded: never more than the segments hold.
    std::vector<char> buffer(4096);
    long long read = 0;
    for (int i = 0; i < 64; ++i) {
      int n = file.FRead(buffer.data(), static_cast<int>(buffer.size()));
      if (n <= 0) break;
      read += n;
    }
    VBU_FUZZ_CHECK(total < 0 || read <= total);
    if (seekTo >= 0 && seekTo <= total) {
      VBU_FUZZ_CHECK(file.FSeek64(seekTo, MFile::file_seek_begin) == seekTo);
      (void)file.FRead(buffer.data(), 100);
    }
    char line[256];
    (void)file.FGets(line, sizeof line);
  }
  file.FClose();
  return 0;
}
