// FuzzSupport.h: what the fuzz targets share: 16-bit text drawn from the
// fuzzer's bytes, and a scratch folder of the process for targets that
// need a real file.
#pragma once

#include <VantoroBasicUtils/text/MString.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace vbu::fuzz {

// Up to `max` units of the input, terminated, in a block of exactly that
// size so that a read past the terminator is caught.
inline std::vector<unsigned short> Units(FuzzedDataProvider& in, std::size_t max) {
  std::size_t count = in.ConsumeIntegralInRange<std::size_t>(0, max);
  std::vector<unsigned short> units;
  for (std::size_t i = 0; i < count && in.remaining_bytes() > 0; ++i) {
    unsigned short u = in.ConsumeIntegral<unsigned short>();
    if (u == 0) break;
    units.push_back(u);
  }
  units.push_back(0);
  return units;
}

// Text from a narrow spelling, for names the targets choose themselves.
inline MString Text(const std::string& bytes) {
  MString text;
  text.ImportASCII(bytes.c_str(), -1);
  return text;
}

// A folder of this process under the system's temporary folder, made on
// first use and removed when the process ends.
inline const std::filesystem::path& ScratchFolder() {
  static struct Folder {
    std::filesystem::path path;
    Folder() {
      path = std::filesystem::temp_directory_path() / ("vbu-fuzz-" + std::to_string(getpid()));
      std::filesystem::create_directories(path);
    }
    ~Folder() {
      std::error_code ignored;
      std::filesystem::remove_all(path, ignored);
    }
  } folder;
  return folder.path;
}

// Writes `bytes` as the whole file at `path`.
inline void WriteFile(const std::filesystem::path& path, const void* bytes, std::size_t size) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
}

// Stops the run with a message when a property of the library fails: the
// fuzzer keeps the input that caused it.
#define VBU_FUZZ_CHECK(condition)                                                  \
  do {                                                                             \
    if (!(condition)) {                                                            \
      std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                \
    }                                                                              \
  } while (0)

}  // namespace vbu::fuzz
