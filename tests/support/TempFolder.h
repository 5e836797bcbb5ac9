// Test helpers for files: a fresh temporary folder removed at the end, paths
// in it as 16-bit text, whole files as bytes, and a listener that keeps the
// user messages and progress records it hears.
#pragma once

#include <VantoroBasicUtils/messaging/CMessageAction.h>
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/tasks/CThreadStatus.h>
#include <VantoroBasicUtils/text/MString.h>
#include <VantoroBasicUtils/text/PathText.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

class TempFolder {
 public:
  TempFolder() {
    static std::mt19937_64 random(std::random_device{}());
    mPath = std::filesystem::temp_directory_path() / ("vbu-test-" + std::to_string(random()));
    std::filesystem::create_directories(mPath);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  // `name` in the folder, as bytes and as 16-bit text.
  std::string Bytes(const std::string& name) const { return mPath.string() + kPathSeparatorChar + name; }
  MString Path(const std::string& name) const {
    MString path;
    path.ImportASCII(Bytes(name).c_str(), -1);
    return path;
  }

 private:
  std::filesystem::path mPath;
};

inline std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void WriteAll(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// `count` bytes that differ from place to place, so that a misplaced byte shows.
inline std::string Pattern(std::size_t count, unsigned seed = 1) {
  std::string bytes(count, '\0');
  std::mt19937 random(seed);
  for (char& b : bytes) b = static_cast<char>(random() % 251 + 1);
  return bytes;
}

inline std::u16string Text(const unsigned short* units) {
  return units ? std::u16string(reinterpret_cast<const char16_t*>(units)) : u"<null>";
}

// Hears user messages (kind and text) and progress records while it lives.
class Hearing : public LListener {
 public:
  Hearing() {
    CMessageAction::GetMessageAction()->AddListener(this);
    CThreadStatus::GetThreadStatus()->AddListener(this);
  }
  bool ListenToMessage(long message, void* param) override {
    if (message == kMsgThreadStatus) {
      auto* record = static_cast<ThreadStatusRecord*>(param);
      masks.push_back(record->mask);
      advanced += record->position;
    } else if (message >= kMsgInteractionBase && message < kMsgInteractionBase + 60) {
      messages.push_back(message);
      texts.push_back(Text(static_cast<InteractionRecord*>(param)->text));
      sources.push_back(static_cast<InteractionRecord*>(param)->source);
    }
    return true;
  }
  std::vector<long> messages;  // 26000 + 10 * window + kind
  std::vector<std::u16string> texts;
  std::vector<void*> sources;  // the library's own messages carry none
  std::vector<int> masks;      // of progress records
  long long advanced = 0;      // sum of their positions
};
