#include "environment/MFileDialog.h"

#include "environment/CPathFileDialog.h"
#include "platform/internal/WideText.h"
#include "text/PathText.h"

using namespace vbu::literals;

namespace {

// Copies `text` into a filter's array, cut to fit; null gives empty.
void CopyInto(unsigned short (&to)[256], const unsigned short* text) {
  std::size_t n = 0;
  for (; text && text[n] && n + 1 < 256; ++n) to[n] = text[n];
  to[n] = 0;
}

constexpr const char16_t* kVideoPatterns = u"*.mpeg;*.mpg;*.mpv;*.mps";
constexpr const char16_t* kAudioPatterns = u"*.ac3;*.aif;*.aiff;*.dts;*.mpa;*.wav";
constexpr const char16_t* kImagePatterns =
    u"*.bmp;*.dib;*.gif;*.jfif;*.jif;*.jpeg;*.jpg;*.pcd;*.pct;*.pic;*.pict;*.psd;*.8pbs;*.sgi;*.bw;*.rgb;*.rgba;"
    u"*.tga;*.tpic;*.tif;*.tiff;*.yuv";

struct Type {
  const char16_t* description;
  const char16_t* patterns;
};

constexpr Type kVideoTypes[] = {
    {u"All Video Files", kVideoPatterns},
    {u"  Mpeg1, Mpeg2 Video (mpeg,mpg,mpv)", u"*.mpeg;*.mpg;*.mpv"},
    {u"  Mpeg1, Mpeg2 Still (mps)", u"*.mps"},
};
constexpr Type kAudioTypes[] = {
    {u"All Audio Files", kAudioPatterns},
    {u"  Dolby Digital Audio (ac3)", u"*.ac3"},
    {u"  AIFF [PCM,DTS] Audio (aif,aiff)", u"*.aif;*.aiff"},
    {u"  Digital Theater Sound (dts)", u"*.dts"},
    {u"  Mpeg1, Mpeg2 Audio (mpa)", u"*.mpa"},
    {u"  Windows Wave [PCM] Audio (wav)", u"*.wav"},
};
constexpr Type kImageTypes[] = {
    {u"All Image Files", kImagePatterns},
    {u"  Windows,OS2 Bitmap (bmp,dib)", u"*.bmp;*.dib"},
    {u"  CompuServe Bitmap (gif)", u"*.gif"},
    {u"  JPEG Image (jfif,jif,jpeg,jpg)", u"*.jfif;*.jif;*.jpeg;*.jpg"},
    {u"  Kodak Photo CD Image (pcd)", u"*.pcd"},
    {u"  Macintosh PICT Image (pct,pic,pict)", u"*.pct;*.pic;*.pict"},
    {u"  Adobe Photoshop Image (psd,8pbs)", u"*.psd;*.8pbs"},
    {u"  Silicon Graphics Image (sgi,bw,rgb,rgba)", u"*.sgi;*.bw;*.rgb;*.rgba"},
    {u"  Truevision Targa Image (tga,tpic)", u"*.tga;*.tpic"},
    {u"  TIFF Bitmap (tif,tiff)", u"*.tif;*.tiff"},
    {u"  YUV [NTSC,PAL] 4:2:0 Image (yuv)", u"*.yuv"},
};

}  // namespace

// ---- MFileDialog

MFileDialog::MFileDialog() : mFilters(), mFilterCount(0), mSelectedFilter(1) {}

MFileDialog::~MFileDialog() = default;

bool MFileDialog::Execute() {
  // A dialog with no start path opens where the last one ended.
  if (GetFileSpec().IsNull() && !sLastFile.IsNull()) {
    MFileSpecWin folder = GetDirectory(sLastFile);
    SetFileSpec(folder);
  }
  if (!ExecuteSelf()) return false;
  sLastFile = GetFileSpec();
  return true;
}

bool MFileDialog::AddFilter(const unsigned short* description, const unsigned short* extension,
                            const unsigned short* initialPath) {
  if (mFilterCount >= kMaxFilters) return false;
  SFileFilter& filter = mFilters[mFilterCount];
  CopyInto(filter.mDescription, description);
  CopyInto(filter.mExtension, extension);
  if (initialPath) filter.mInitialPath = initialPath;
  ++mFilterCount;
  return true;
}

bool MFileDialog::AddFilters(bool audio, bool image, bool video) {
  // "All Data Files" joins the lists asked for: audio and image each
  // followed by ";", video by nothing.
  MString all;
  if (audio) all += MString(vbu::ToUnits(kAudioPatterns)) + MString(u";"_u16);
  if (image) all += MString(vbu::ToUnits(kImagePatterns)) + MString(u";"_u16);
  if (video) all += vbu::ToUnits(kVideoPatterns);
  AddFilter(u"All files (*.*)"_u16, u"*.*"_u16, nullptr);
  AddFilter(u"All Data Files"_u16, all, nullptr);
  auto add = [this](const auto& types) {
    for (const Type& type : types) AddFilter(vbu::ToUnits(type.description), vbu::ToUnits(type.patterns), nullptr);
  };
  if (video) add(kVideoTypes);
  if (audio) add(kAudioTypes);
  if (image) add(kImageTypes);
  return true;
}

MFileSpecWin& MFileDialog::GetFileSpec() { return mFileSpec; }

void MFileDialog::SetFileSpec(MFileSpecWin& spec) { mFileSpec = spec; }

int MFileDialog::GetSelectedFilter() { return mSelectedFilter; }

SFileFilter* MFileDialog::FindFileFilterByDescription(unsigned short* description) {
  return FindFileFilterByDescription(static_cast<const unsigned short*>(description));
}

SFileFilter* MFileDialog::FindFileFilterByDescription(const unsigned short* description) {
  if (!description) return nullptr;
  SFileFilter* found = nullptr;
  for (unsigned long i = 0; i < mFilterCount; ++i) {
    if (vbu::wtext::Compare(mFilters[i].mDescription, description) == 0) found = &mFilters[i];
  }
  return found;
}

SFileFilter* MFileDialog::GetFileFilter(unsigned long position) {
  return position >= 1 && position <= mFilterCount ? &mFilters[position - 1] : nullptr;
}

// ---- MFileDialogWin

MFileDialogWin::MFileDialogWin(void* parent) : mParent(parent) {}

void MFileDialogWin::SetParent(void* parent) { mParent = parent; }

bool MFileDialogWin::ExecuteSelf() { return runFileDialog(true); }

MFileSpecWin MFileDialogWin::GetDirectory(MFileSpecWin& file) {
  return MFileSpecWin(MFileSpecWin::GetDirectory(file.GetFilePath()));
}

bool MFileDialogWin::runFileDialog(bool open) {
  MString filter;
  for (unsigned long i = 0; i < mFilterCount; ++i) {
    filter += mFilters[i].mDescription;
    filter += u"|"_u16;
    filter += mFilters[i].mExtension;
    filter += u"|"_u16;
  }
  filter += u"|"_u16;

  // The start name: a folder, or nothing, opens on the patterns of the first filter.
  MString start = mFileSpec.GetFilePath();
  const MString patterns(mFilterCount > 0 ? mFilters[0].mExtension : u"*.*"_u16);
  int length = start.GetLength();
  if (length == 0) {
    start = patterns;
  } else if (start[length - 1] == kPathSeparator) {
    start += patterns;
  }

  constexpr unsigned long kOpenFlags = vbu::kFileChooserHideReadOnly | vbu::kFileChooserPathMustExist |
                                       vbu::kFileChooserFileMustExist | vbu::kFileChooserExplorer;
  constexpr unsigned long kSaveFlags = vbu::kFileChooserOverwritePrompt | vbu::kFileChooserHideReadOnly;
  const unsigned long several = open && mMultiple ? vbu::kFileChooserAllowMultiSelect : 0;
  CPathFileDialog dialog(open, nullptr, start, (open ? kOpenFlags : kSaveFlags) | several, filter, mParent);
  for (unsigned long i = 0; i < mFilterCount; ++i) {
    if (mFilters[i].mInitialPath.GetLength() != 0) dialog.SetInitialPath(static_cast<int>(i + 1), mFilters[i].mInitialPath);
  }
  if (dialog.DoModal() != CPathFileDialog::kIdOk) return false;
  MString chosen = dialog.GetPathName();
  mFileSpec.SetFilePath(chosen);
  mSelectedFilter = static_cast<int>(dialog.GetFilterIndex());
  mChosen.clear();
  for (int i = 0; i < dialog.GetPathCount(); ++i) mChosen.push_back(dialog.GetPathName(i));
  if (mChosen.empty()) mChosen.push_back(chosen);
  return true;
}

MFileSpecWin MFileDialogWin::GetFile(int index) const {
  return index >= 0 && index < GetFileCount() ? MFileSpecWin(mChosen[static_cast<std::size_t>(index)]) : MFileSpecWin();
}

// ---- MFileSaveDialogWin

MFileSaveDialogWin::MFileSaveDialogWin() : MFileDialogWin(nullptr) {}

bool MFileSaveDialogWin::ExecuteSelf() {
  bool chosen = runFileDialog(false);
  MString path = mFileSpec.GetFilePath();
  MString drive, directory, name, extension;
  SplitPath(path, drive, directory, name, extension);
  if (extension.GetLength() == 0) {
    SFileFilter* filter = mSelectedFilter >= 1 ? GetFileFilter(static_cast<unsigned long>(mSelectedFilter)) : nullptr;
    AppendFilterExtension(path, filter);
  }
  return chosen;
}

void MFileSaveDialogWin::AppendFilterExtension(unsigned short* path, SFileFilter* filter) {
  AppendFilterExtension(static_cast<const unsigned short*>(path), filter);
}

void MFileSaveDialogWin::AppendFilterExtension(const unsigned short* path, SFileFilter* filter) {
  if (!path || !filter) return;
  // The rule the desktop chooser completes a name by, too.
  unsigned short suffix[256];
  vbu::FileChooserFilterExtension(filter->mExtension, suffix, 256);
  MString named = MString(path) + MString(suffix);
  mFileSpec.SetFilePath(named);
}

// The class constants have their one definition here, so that a host linking
// the library as a DLL reaches them like any other member.
constexpr unsigned long MFileDialog::kMaxFilters;
