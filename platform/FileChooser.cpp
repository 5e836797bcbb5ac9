#include "platform/FileChooser.h"

#include <atomic>
#include <cstddef>
#include <string>

#include "platform/internal/DesktopModule.h"

namespace vbu {
namespace {

// Without a chooser of the host's: the desktop's own where there is a
// display, else every dialog is cancelled at once, with a line that says why.
class DesktopChooser : public FileChooser {
 public:
  bool Run(const FileChooserRequest& request, FileChooserClient& client, FileChooserResult& result) override {
    std::string why;
    if (const platform::DesktopModule* desktop = platform::Desktop(true, &why)) {
      char reason[512] = {};
      int shown = desktop->RunChooser(request, client, result, reason, sizeof reason);
      if (shown >= 0) return shown == 1;
      why = reason;
    }
    platform::WriteErrorLine(("VantoroBasicUtils: no file dialog shown, cancelled: " + why).c_str());
    return false;
  }
};

unsigned short* CopyOf(const unsigned short* path) {
  std::size_t length = 0;
  while (path && path[length]) ++length;
  unsigned short* copy = new unsigned short[length + 1];
  for (std::size_t i = 0; i < length; ++i) copy[i] = path[i];
  copy[length] = 0;
  return copy;
}

std::atomic<FileChooser*> gChooser{nullptr};

}  // namespace

FileChooserView::~FileChooserView() = default;
FileChooserClient::~FileChooserClient() = default;
FileChooser::~FileChooser() = default;

FileChooserResult::~FileChooserResult() { Clear(); }

void FileChooserResult::Clear() {
  for (unsigned long i = 0; i < mPathCount; ++i) delete[] mPaths[i];
  delete[] mPaths;
  mPaths = nullptr;
  mPathCount = 0;
}

void FileChooserResult::SetPathName(const unsigned short* path) {
  Clear();
  AddPathName(path);
}

void FileChooserResult::AddPathName(const unsigned short* path) {
  unsigned short** paths = new unsigned short*[mPathCount + 1];
  for (unsigned long i = 0; i < mPathCount; ++i) paths[i] = mPaths[i];
  paths[mPathCount] = CopyOf(path);
  delete[] mPaths;
  mPaths = paths;
  ++mPathCount;
}

const unsigned short* FileChooserResult::GetPathName() const { return GetPathNameAt(0); }

const unsigned short* FileChooserResult::GetPathNameAt(unsigned long index) const {
  static const unsigned short kEmpty[1] = {0};
  return index < mPathCount ? mPaths[index] : kEmpty;
}

unsigned long FileChooserFilterExtension(const unsigned short* patterns, unsigned short* extension,
                                         unsigned long size) {
  unsigned long from = 0, to = 0;
  if (patterns) {
    while (patterns[from] && patterns[from] != '.') ++from;
    if (!patterns[from]) from = 0;  // no "." at all: from the start
    to = from;
    while (patterns[to] && patterns[to] != ';') ++to;
    for (unsigned long i = from; i < to; ++i) {
      if (patterns[i] == '*' || patterns[i] == '?') to = from;  // a wildcard makes no name
    }
  }
  unsigned long length = to - from;
  if (extension && size > 0) {
    unsigned long n = 0;
    for (; n < length && n + 1 < size; ++n) extension[n] = patterns[from + n];
    extension[n] = 0;
  }
  return length;
}

void SetFileChooser(FileChooser* chooser) { gChooser.store(chooser); }

FileChooser& GetFileChooser() {
  static DesktopChooser desktop;
  FileChooser* chooser = gChooser.load();
  return chooser ? *chooser : desktop;
}

}  // namespace vbu
