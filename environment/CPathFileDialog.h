// CPathFileDialog.h: the file chooser of the open and save dialogs, with a
// folder for each filter: when the user picks another file type, the
// chooser moves to the folder remembered for it, and the folder left is
// remembered for the type left. The folders last for one DoModal.
//
//   MString name(u"/media/*.vob"_u16), filters(u"Video|*.vob|Audio|*.ac3|"_u16);
//   CPathFileDialog dialog(true, nullptr, name, vbu::kFileChooserExplorer, filters, nullptr);
//   MString audio(u"/media/audio/"_u16);
//   dialog.SetInitialPath(2, audio);
//   if (dialog.DoModal() == CPathFileDialog::kIdOk) MString chosen = dialog.GetPathName();
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/FileChooser.h>
#include <VantoroBasicUtils/text/MString.h>

#include <vector>

class VBU_API CPathFileDialog : public vbu::FileChooserClient {
 public:
  static constexpr int kIdOk = 1;
  static constexpr int kIdCancel = 2;
  static constexpr unsigned int kMaxPaths = 64;
  // The timer that gives the user's file name back after a change of folder.
  static constexpr unsigned int kRestoreTimer = 1000;
  static constexpr unsigned int kRestoreDelay = 250;

  // `open`: an open (non-zero) or save chooser; `fileName`: the start name;
  // `filter`: "description|patterns|" pairs ending in "|"; `parent`: the
  // host's window. Texts may be null.
  CPathFileDialog(int open, const unsigned short* defaultExtension, const unsigned short* fileName,
                  unsigned long flags, const unsigned short* filter, void* parent);
  CPathFileDialog(const CPathFileDialog&) = delete;
  CPathFileDialog& operator=(const CPathFileDialog&) = delete;
  ~CPathFileDialog() override;

  // Runs the installed chooser; kIdOk when the user chose a file, else kIdCancel.
  virtual int DoModal();
  // The chosen file's path (the first one, with several chosen).
  MString GetPathName() const { return mPathName; }
  // With kFileChooserAllowMultiSelect: how many files were chosen, and each
  // one's path (from 0; empty past the end).
  int GetPathCount() const { return static_cast<int>(mPathNames.size()); }
  MString GetPathName(int index) const;
  // The filter in force, from 1 (the first one shown, before DoModal).
  unsigned long GetFilterIndex() const { return mFilterIndex; }
  void SetFilterIndex(unsigned long filter) { mFilterIndex = filter; }

  // The folder of `filter` (1 to 64). Any other number shows the message
  // "CPathFileDialog::SetInitialPath out of range" and changes nothing.
  // `path` is only read: a literal serves.
  void SetInitialPath(int filter, const unsigned short* path);
  void SetInitialPath(int filter, unsigned short* path);
  void SetInitialPath(int filter, decltype(nullptr)) {
    SetInitialPath(filter, static_cast<const unsigned short*>(nullptr));
  }
  // The folder remembered for `filter`, or null.
  const MString* GetInitialPath(unsigned int filter) const;

  // The chooser is up: it moves to the folder of the filter it shows.
  void OnInitDone(vbu::FileChooserView& view, unsigned long filter) override;
  // Remembers the folder shown for the filter left, and moves to the one of `filter`.
  void OnTypeChange(vbu::FileChooserView& view, unsigned long filter) override;
  // Timer kRestoreTimer gives the file name back; others are ignored.
  void OnTimer(vbu::FileChooserView& view, unsigned int id) override;
  // Remembers the folder shown (with a final separator) for `filter`, if it has an entry.
  void SaveCurrentPath(vbu::FileChooserView& view, unsigned int filter);
  // Moves the chooser to the folder of `filter`, if it has one, keeping the
  // file name typed (its last part) to give back when kRestoreTimer comes due.
  void PushCurrentPath(vbu::FileChooserView& view, unsigned int filter);

  // Text `position` (from 1; 0 is 1) of the filter list, where descriptions
  // and patterns alternate; empty past its end.
  MString FindFilterText(unsigned int position);
  // The part of `text` between its last "(" and the next ")" ("*.*" of
  // "All files (*.*)"); without "(", the text up to its first ")".
  MString GetFilter(MString& text);

 private:
  bool mOpen;
  MString mDefaultExtension;
  MString mStartName;
  unsigned long mFlags;
  MString mFilter;
  void* mParent;
  unsigned long mFilterIndex = 1;
  MString mPathName;
  std::vector<MString> mPathNames;

  MString* mInitialPaths[kMaxPaths] = {};
  unsigned long mCurrentFilter = 0;
  MString mFileName;
};
