// FileChooser.h: the modal file chooser behind the library's open and save
// dialogs. The library has no user interface of its own: a host installs a
// chooser (a desktop dialog, or a scripted one in tests); without one every
// dialog answers "cancelled". With no chooser installed and a display there,
// the library shows the desktop's own chooser (GTK, from the desktop module
// beside the library); headless, it cancels and says why on standard error.
//
//   class MyChooser : public vbu::FileChooser {
//     bool Run(const vbu::FileChooserRequest& request, vbu::FileChooserClient& client,
//              vbu::FileChooserResult& result) override;   // shows the dialog
//   };
//   MyChooser chooser;
//   vbu::SetFileChooser(&chooser);
//
// While it runs, a chooser tells its client when it is up and when the user
// picks another filter (OnInitDone, OnTypeChange), and fires the client's
// timers (OnTimer); the client reads and changes what the chooser shows
// through the FileChooserView it is given.
#pragma once

#include <VantoroBasicUtils/platform/Export.h>

namespace vbu {

// The open chooser, as its client sees it. Texts are terminated 16-bit
// text; a text given back stays valid until the next call on the view.
class VBU_API FileChooserView {
 public:
  virtual ~FileChooserView();
  // The folder shown, with its final separator.
  virtual const unsigned short* GetFolder() = 0;
  // Shows the folder `path`; false if it cannot be shown.
  virtual bool SetFolder(const unsigned short* path) = 0;
  // The text of the file-name field, and its replacement.
  virtual const unsigned short* GetFileName() = 0;
  virtual void SetFileName(const unsigned short* name) = 0;
  // Starts (or restarts) timer `id`: the client's OnTimer(id) comes after
  // about `milliseconds`, and again after each period until KillTimer.
  virtual void SetTimer(unsigned int id, unsigned int milliseconds) = 0;
  virtual void KillTimer(unsigned int id) = 0;
};

// The one a chooser reports to. Filters are counted from 1.
class VBU_API FileChooserClient {
 public:
  virtual ~FileChooserClient();
  // The chooser is up and shows `filter`.
  virtual void OnInitDone(FileChooserView& view, unsigned long filter) = 0;
  // The user picked `filter`.
  virtual void OnTypeChange(FileChooserView& view, unsigned long filter) = 0;
  // Timer `id` of the view has come due.
  virtual void OnTimer(FileChooserView& view, unsigned int id) = 0;
};

// What a chooser is asked to show.
struct FileChooserRequest {
  bool open;                                // open a file (true) or name one to save (false)
  unsigned long flags;                      // the dialog flags of the caller (kFileChooser...)
  const unsigned short* defaultExtension;   // appended to a bare name; may be null
  const unsigned short* fileName;           // start name: a path, or patterns in a folder ("/media/*.vob")
  const unsigned short* filter;             // "description|patterns|" pairs, ending in "|"; may be null
  unsigned long filterIndex;                // the filter shown first, from 1
  void* parent;                             // the host's window; may be null
};

// Flags of a request, with the values of the desktop platform they come from.
constexpr unsigned long kFileChooserOverwritePrompt = 0x2;
constexpr unsigned long kFileChooserAllowMultiSelect = 0x200;
constexpr unsigned long kFileChooserHideReadOnly = 0x4;
constexpr unsigned long kFileChooserPathMustExist = 0x800;
constexpr unsigned long kFileChooserFileMustExist = 0x1000;
constexpr unsigned long kFileChooserExplorer = 0x80000;

// What the user chose. The chooser sets both before it gives true.
class VBU_API FileChooserResult {
 public:
  FileChooserResult() = default;
  FileChooserResult(const FileChooserResult&) = delete;
  FileChooserResult& operator=(const FileChooserResult&) = delete;
  ~FileChooserResult();

  // The full path of the file chosen (a copy is kept; null is empty).
  void SetPathName(const unsigned short* path);
  // The path set, terminated; empty before.
  const unsigned short* GetPathName() const;
  // With several files chosen: each path in turn, the first one also being
  // SetPathName's. The count is 1 after SetPathName alone, 0 before.
  void AddPathName(const unsigned short* path);
  unsigned long GetPathCount() const { return mPathCount; }
  // Path `index` (from 0), or empty.
  const unsigned short* GetPathNameAt(unsigned long index) const;

  unsigned long filterIndex = 0;  // the filter in force, from 1

 private:
  void Clear();

  unsigned short** mPaths = nullptr;
  unsigned long mPathCount = 0;
};

// The extension that a bare name takes from a filter's patterns: from the
// first "." to the first ";" or the end (".aif" of "*.aif;*.aiff"), or
// empty where it has a wildcard ("*.*"). Gives its length; the units go to
// `extension`, terminated, as far as `size` allows.
VBU_API unsigned long FileChooserFilterExtension(const unsigned short* patterns, unsigned short* extension,
                                                 unsigned long size);

class VBU_API FileChooser {
 public:
  virtual ~FileChooser();
  // Shows the chooser and returns when the user is done: true with `result`
  // filled for a chosen file, false for a cancelled one.
  virtual bool Run(const FileChooserRequest& request, FileChooserClient& client, FileChooserResult& result) = 0;
};

// Installs `chooser` (null: none, every dialog cancelled); the library does not own it.
VBU_API void SetFileChooser(FileChooser* chooser);
// The installed chooser, or the one that cancels.
VBU_API FileChooser& GetFileChooser();

}  // namespace vbu
