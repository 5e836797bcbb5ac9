#include "platform/FileChooser.h"

#include <atomic>
#include <cstddef>

namespace vbu {
namespace {

// Without a chooser every dialog is cancelled at once.
class CancellingChooser : public FileChooser {
 public:
  bool Run(const FileChooserRequest&, FileChooserClient&, FileChooserResult&) override { return false; }
};

std::atomic<FileChooser*> gChooser{nullptr};

}  // namespace

FileChooserView::~FileChooserView() = default;
FileChooserClient::~FileChooserClient() = default;
FileChooser::~FileChooser() = default;

FileChooserResult::~FileChooserResult() { delete[] mPathName; }

void FileChooserResult::SetPathName(const unsigned short* path) {
  std::size_t length = 0;
  while (path && path[length]) ++length;
  unsigned short* copy = new unsigned short[length + 1];
  for (std::size_t i = 0; i < length; ++i) copy[i] = path[i];
  copy[length] = 0;
  delete[] mPathName;
  mPathName = copy;
}

const unsigned short* FileChooserResult::GetPathName() const {
  static const unsigned short kEmpty[1] = {0};
  return mPathName ? mPathName : kEmpty;
}

void SetFileChooser(FileChooser* chooser) { gChooser.store(chooser); }

FileChooser& GetFileChooser() {
  static CancellingChooser cancelling;
  FileChooser* chooser = gChooser.load();
  return chooser ? *chooser : cancelling;
}

}  // namespace vbu
