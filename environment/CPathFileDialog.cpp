#include "environment/CPathFileDialog.h"

#include "files/PathTails.h"
#include "platform/MessageBox.h"
#include "platform/internal/WideText.h"
#include "text/PathText.h"

using namespace vbu::literals;

namespace {

MString OrEmpty(const unsigned short* text) { return text ? MString(text) : MString(); }

}  // namespace

CPathFileDialog::CPathFileDialog(int open, const unsigned short* defaultExtension, const unsigned short* fileName,
                                 unsigned long flags, const unsigned short* filter, void* parent)
    : mOpen(open != 0),
      mDefaultExtension(OrEmpty(defaultExtension)),
      mStartName(OrEmpty(fileName)),
      mFlags(flags),
      mFilter(OrEmpty(filter)),
      mParent(parent) {}

CPathFileDialog::~CPathFileDialog() {
  for (MString*& path : mInitialPaths) {
    delete path;
    path = nullptr;
  }
}

int CPathFileDialog::DoModal() {
  vbu::FileChooserRequest request{mOpen,
                                  mFlags,
                                  mDefaultExtension.GetLength() ? static_cast<const unsigned short*>(mDefaultExtension)
                                                                : nullptr,
                                  mStartName,
                                  mFilter.GetLength() ? static_cast<const unsigned short*>(mFilter) : nullptr,
                                  mFilterIndex,
                                  mParent};
  vbu::FileChooserResult result;
  if (!vbu::GetFileChooser().Run(request, *this, result)) return kIdCancel;
  mPathName = result.GetPathName();
  mPathNames.clear();
  for (unsigned long i = 0; i < result.GetPathCount(); ++i) mPathNames.emplace_back(result.GetPathNameAt(i));
  mFilterIndex = result.filterIndex;
  return kIdOk;
}

MString CPathFileDialog::GetPathName(int index) const {
  return index >= 0 && index < GetPathCount() ? mPathNames[static_cast<std::size_t>(index)] : MString();
}

void CPathFileDialog::SetInitialPath(int filter, unsigned short* path) {
  SetInitialPath(filter, static_cast<const unsigned short*>(path));
}

void CPathFileDialog::SetInitialPath(int filter, const unsigned short* path) {
  if (filter < 1 || filter > static_cast<int>(kMaxPaths)) {
    vbu::ShowMessageBox(u"CPathFileDialog::SetInitialPath out of range"_u16);
    return;
  }
  delete mInitialPaths[filter - 1];
  mInitialPaths[filter - 1] = new MString(OrEmpty(path));
}

const MString* CPathFileDialog::GetInitialPath(unsigned int filter) const {
  return filter >= 1 && filter <= kMaxPaths ? mInitialPaths[filter - 1] : nullptr;
}

void CPathFileDialog::OnInitDone(vbu::FileChooserView& view, unsigned long filter) { OnTypeChange(view, filter); }

void CPathFileDialog::OnTypeChange(vbu::FileChooserView& view, unsigned long filter) {
  // The first report (from 0) moves the chooser to the start filter's folder.
  if (filter == mCurrentFilter) return;
  SaveCurrentPath(view, static_cast<unsigned int>(mCurrentFilter));
  mCurrentFilter = filter;
  PushCurrentPath(view, static_cast<unsigned int>(filter));
}

void CPathFileDialog::OnTimer(vbu::FileChooserView& view, unsigned int id) {
  if (id != kRestoreTimer) return;
  view.SetFileName(mFileName);
  view.KillTimer(kRestoreTimer);
}

void CPathFileDialog::SaveCurrentPath(vbu::FileChooserView& view, unsigned int filter) {
  if (filter < 1 || filter > kMaxPaths || !mInitialPaths[filter - 1]) return;
  const unsigned short* folder = view.GetFolder();
  *mInitialPaths[filter - 1] = AddDirectorySeparator(folder ? folder : u""_u16, true, 1);
}

void CPathFileDialog::PushCurrentPath(vbu::FileChooserView& view, unsigned int filter) {
  if (filter < 1 || filter > kMaxPaths || !mInitialPaths[filter - 1]) return;
  // Only the last part of the name typed comes back after the move.
  const unsigned short* typed = view.GetFileName();
  MString name = OrEmpty(typed);
  const unsigned short* last = vbu::wtext::FindLast(name, kPathSeparator);
  mFileName = last ? MString(last + 1) : name;
  view.SetFolder(*mInitialPaths[filter - 1]);
  view.SetTimer(kRestoreTimer, kRestoreDelay);
}

MString CPathFileDialog::FindFilterText(unsigned int position) {
  if (position == 0) position = 1;
  const unsigned short* text = mFilter;
  for (unsigned int i = 1; i < position; ++i) {
    const unsigned short* bar = vbu::wtext::Find(text, '|');
    if (!bar) return MString();
    text = bar + 1;
  }
  const unsigned short* bar = vbu::wtext::Find(text, '|');
  int length = bar ? static_cast<int>(bar - text) : static_cast<int>(vbu::wtext::Length(text));
  return length > 0 ? MString(text, length) : MString();
}

MString CPathFileDialog::GetFilter(MString& text) {
  const unsigned short* begin = text;
  const unsigned short* open = vbu::wtext::FindLast(begin, '(');
  const unsigned short* from = open ? open + 1 : begin;
  const unsigned short* close = vbu::wtext::Find(from, ')');
  int length = close ? static_cast<int>(close - from) : static_cast<int>(vbu::wtext::Length(from));
  return length > 0 ? MString(from, length) : MString();
}

// The class constants have their one definition here, so that a host linking
// the library as a DLL reaches them like any other member.
constexpr int CPathFileDialog::kIdOk;
constexpr int CPathFileDialog::kIdCancel;
constexpr unsigned int CPathFileDialog::kMaxPaths;
constexpr unsigned int CPathFileDialog::kRestoreTimer;
constexpr unsigned int CPathFileDialog::kRestoreDelay;
