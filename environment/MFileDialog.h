// MFileDialog.h: the application's open and save dialogs for media files.
// MFileDialog holds a table of up to 32 filters with the media types of DVD
// authoring, the chosen file and filter, and the last file chosen in any
// dialog; MFileDialogWin and MFileSaveDialogWin run the file chooser (see
// CPathFileDialog, platform/FileChooser.h) on that table.
//
//   MFileDialogWin dialog;
//   dialog.AddFilters(true, false, true);            // audio and video types
//   if (dialog.Execute()) MString chosen = dialog.GetFileSpec().GetFilePath();
//
//   MFileSaveDialogWin save;                         // "clip" with "*.mps" saves as "clip.mps"
#pragma once

#include <VantoroBasicUtils/files/MFileSpec.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

#include <vector>

// One line of the type list.
struct VBU_API SFileFilter {
  unsigned short mDescription[256];  // shown in the list; terminated
  unsigned short mExtension[256];    // patterns separated by ";", such as "*.aif;*.aiff"; terminated
  MString mInitialPath;              // folder the dialog moves to for this filter; may be empty
};

class VBU_API MFileDialog {
 public:
  static constexpr unsigned long kMaxFilters = 32;

  // No filters, no file, filter 1 selected.
  MFileDialog();
  MFileDialog(const MFileDialog& other) = default;
  MFileDialog& operator=(const MFileDialog& other) = default;
  virtual ~MFileDialog();

  // Runs the dialog. With no file set, it opens in the folder of the last
  // file chosen in any dialog. True when the user chose a file, which then
  // becomes that last file.
  virtual bool Execute();
  virtual bool ExecuteSelf() = 0;
  // Adds a filter: false, with nothing changed, when the table is full.
  // Texts longer than 255 units are cut; null is empty. `initialPath` may be null.
  virtual bool AddFilter(const unsigned short* description, const unsigned short* extension,
                         const unsigned short* initialPath);
  // Adds "All files (*.*)", "All Data Files", then the video, audio and image
  // types asked for, as far as the table has room. Always true.
  bool AddFilters(bool audio, bool image, bool video);
  // The start path before the dialog, the chosen file after it.
  virtual MFileSpecWin& GetFileSpec();
  void SetFileSpec(MFileSpecWin& spec);
  // The chosen filter, from 1.
  virtual int GetSelectedFilter();
  // The folder of `file`, as a file specification.
  virtual MFileSpecWin GetDirectory(MFileSpecWin& file) = 0;
  // The filter whose description is `description` (the last of equal ones), or null.
  // (`description` is only read: a literal serves.)
  SFileFilter* FindFileFilterByDescription(const unsigned short* description);
  SFileFilter* FindFileFilterByDescription(unsigned short* description);
  SFileFilter* FindFileFilterByDescription(decltype(nullptr)) {
    return FindFileFilterByDescription(static_cast<const unsigned short*>(nullptr));
  }

  // The number of filters in the table.
  unsigned long GetFilterCount() const { return mFilterCount; }
  // Filter `position` (from 1), or null.
  SFileFilter* GetFileFilter(unsigned long position);

  // The last file chosen in any dialog of the process; empty at first.
  static MFileSpecWin sLastFile;

 protected:
  SFileFilter mFilters[kMaxFilters];
  unsigned long mFilterCount;
  MFileSpecWin mFileSpec;
  int mSelectedFilter;
};

// The open dialog.
class VBU_API MFileDialogWin : public MFileDialog {
 public:
  // `parent` is the host's window, handed to the chooser; may be null.
  explicit MFileDialogWin(void* parent = nullptr);

  virtual void SetParent(void* parent);
  // An open dialog.
  bool ExecuteSelf() override;
  MFileSpecWin GetDirectory(MFileSpecWin& file) override;

  // Lets the user choose several files at once (an open dialog only); the
  // file spec is then the first one.
  void SetMultipleSelection(bool several) { mMultiple = several; }
  // The files chosen by the last run that gave true, in order.
  int GetFileCount() const { return static_cast<int>(mChosen.size()); }
  MFileSpecWin GetFile(int index) const;

 protected:
  // Runs the chooser: starts from the file set (a folder, or nothing, opens
  // on the patterns of the first filter), and on OK takes its file and
  // filter. True on OK.
  virtual bool runFileDialog(bool open);

  void* mParent;
  bool mMultiple = false;
  std::vector<MString> mChosen;
};

// The save dialog: a name typed without an extension gets the selected filter's.
class VBU_API MFileSaveDialogWin : public MFileDialogWin {
 public:
  MFileSaveDialogWin();

  // A save dialog; then the extension of the selected filter for a name that
  // has none. The name is completed also when the dialog was cancelled.
  bool ExecuteSelf() override;
  // Sets the file to `path` with the first extension of `filter`'s patterns
  // ("*.aif;*.aiff" gives ".aif"); a pattern with a wildcard in its
  // extension ("*.*") adds nothing. Nothing happens for a null argument.
  // (`path` is only read: a literal serves.)
  void AppendFilterExtension(const unsigned short* path, SFileFilter* filter);
  void AppendFilterExtension(unsigned short* path, SFileFilter* filter);
  void AppendFilterExtension(decltype(nullptr), SFileFilter* filter) {
    AppendFilterExtension(static_cast<const unsigned short*>(nullptr), filter);
  }
};
