#include "platform/FileChooser.h"

#include <atomic>

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

void SetFileChooser(FileChooser* chooser) { gChooser.store(chooser); }

FileChooser& GetFileChooser() {
  static CancellingChooser cancelling;
  FileChooser* chooser = gChooser.load();
  return chooser ? *chooser : cancelling;
}

}  // namespace vbu
