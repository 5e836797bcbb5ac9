#include "environment/CBrevanderDirectories.h"

#include "environment/CBrevanderProfile.h"
#include "environment/CVersionControl.h"
#include "files/MFileSpec.h"
#include "files/PathTails.h"
#include "platform/internal/WideText.h"
#include "platform/internal/Environment.h"
#include "text/PathText.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

namespace {

MString FromText(const std::u16string& text) { return MString(vbu::ToUnits(text.c_str())); }

MString ExecutablePath() { return FromText(vp::ExecutablePath()); }

// Makes the one folder `path`; a folder that is there already, or one that
// cannot be made, goes unnoticed until the caller uses it.
void Make(const unsigned short* path) { vp::MakeFolder(reinterpret_cast<const char16_t*>(path)); }

// `folder` + `name`, made, with a separator added.
MString MadeBelow(const MString& folder, const unsigned short* name) {
  MString path = folder + MString(name);
  Make(path);
  return path + MString(u"/"_u16);
}

// A folder of a cache; none when the cache has none.
MString CacheBelow(const MString& cache, const unsigned short* name) {
  return cache.GetLength() == 0 ? MString() : MadeBelow(cache, name);
}

// The settings file beside the executable: its path with ".ini" for the
// extension of its file name (added where the name has none); "Error" if the
// path has no separator.
MString ProfileBeside() {
  MString path = ExecutablePath();
  const unsigned short* begin = path;
  const unsigned short* last = vbu::wtext::FindLast(begin, kPathSeparator);
  if (!last) return MString(u"Error"_u16);
  // The extension is the file name's: a dot in a folder name is no cut, and
  // neither is the leading dot of a hidden file's name.
  const unsigned short* dot = vbu::wtext::FindLast(last + 1, '.');
  int keep = dot && dot > last + 1 ? static_cast<int>(dot - begin) : path.GetLength();
  return MString(begin, keep) + MString(u".ini"_u16);
}

// The application keeps what it writes beside the executable where it may
// write there, or where a settings file there makes it a portable install;
// otherwise (an installed program) in the user's base folders.
bool KeepsBesideExecutable(const MString& app, const MString& profile) {
  if (app == MString(u"Error"_u16)) return true;
  return vp::Exists(reinterpret_cast<const char16_t*>(static_cast<const unsigned short*>(profile))) ||
         vp::IsWritableFolder(reinterpret_cast<const char16_t*>(static_cast<const unsigned short*>(app)));
}

// The application's own folder of `base` with a final separator:
// GetAppDirectory(), or <base>/<name>/ for an installed program, where
// <name> is the settings file's name without ".ini". `make` makes the
// latter with its parents.
MString AppFolder(vp::UserBase base, bool make) {
  MString app = CBrevanderDirectories::GetAppDirectory();
  MString profile = ProfileBeside();
  if (KeepsBesideExecutable(app, profile)) return app;
  std::u16string root = vp::UserBaseFolder(base);
  if (root.empty()) return app;  // nowhere else to go
  const unsigned short* name = static_cast<const unsigned short*>(profile) + app.GetLength();
  MString folder = FromText(root) + MString(u"/"_u16) + MString(name, vbu::wtext::Length(name) - 4);
  if (make) vp::MakeFolders(reinterpret_cast<const char16_t*>(static_cast<const unsigned short*>(folder)));
  return folder + MString(u"/"_u16);
}

// The user's folder `tail` in the home folder; empty, and nothing made
// anywhere, for a user without one.
MString InHome(const unsigned short* tail) {
  MString home = CBrevanderDirectories::GetSystemDrive();
  if (home.GetLength() == 0 && vp::UserHomeFolder().empty()) return MString();
  return home + MString(tail);
}

MString Support(const unsigned short* name) { return CBrevanderDirectories::GetSupportDataDirectory() + MString(name); }

MString ByResolution(resolution_t resolution, const unsigned short* ntsc, const unsigned short* pal) {
  return Support(resolution == kResolutionNTSC ? ntsc : pal);
}

// The settings section of the user's folders.
const unsigned short* const kSection = u"BREVANDER"_u16;

}  // namespace

MString CBrevanderDirectories::GetSystemDrive() {
  return DeleteTailDirectorySeparator(vbu::ToUnits(vp::UserHomeFolder().c_str()));
}

MString CBrevanderDirectories::GetSystemDirectoryW() { return MString(u"/usr/lib/"_u16); }

MString CBrevanderDirectories::GetSystemDriverDirectory() { return GetSystemDirectoryW() + MString(u"drivers/"_u16); }

MString CBrevanderDirectories::GetAppDirectory() {
  MString path = ExecutablePath();
  const unsigned short* last = vbu::wtext::FindLast(path, kPathSeparator);
  if (!last) return MString(u"Error"_u16);
  return MString(static_cast<const unsigned short*>(path), static_cast<int>(last - path) + 1);
}

MString CBrevanderDirectories::GetAppProfile() {
  MString profile = ProfileBeside();
  MString folder = AppFolder(vp::UserBase::kConfig, false);
  if (folder == GetAppDirectory()) return profile;
  const unsigned short* name = static_cast<const unsigned short*>(profile) + GetAppDirectory().GetLength();
  return folder + MString(name);
}

MString CBrevanderDirectories::GetProjectTemplateDirectory() {
  return MadeBelow(AppFolder(vp::UserBase::kData, true), u"Project Templates"_u16);
}

MString CBrevanderDirectories::GetTempDirectory() {
  return MadeBelow(AppFolder(vp::UserBase::kCache, true), u"Temp"_u16);
}

MString CBrevanderDirectories::GetSupportDataDirectory() {
  return MadeBelow(AppFolder(vp::UserBase::kData, true), u"Data"_u16);
}

MString CBrevanderDirectories::GetTemplateDirectory() {
  return MadeBelow(AppFolder(vp::UserBase::kData, true), u"/My Scenarios/Templates"_u16);
}

MString CBrevanderDirectories::GetDocumentationDirectory() {
  return GetAppDirectory() + MString(u"Documentation/"_u16);
}

MString CBrevanderDirectories::GetDvdPlayerDirectory() {
  if (!CVersionControl::IsVantoroRunning()) return MString();
  return AddDirectorySeparator(GetAppDirectory(), true, 1) + MString(u"EmbeddedDVDPlayer"_u16);
}

MString CBrevanderDirectories::GetDvdPlayerRelativeFsListFilePath() {
  if (!CVersionControl::IsVantoroRunning()) return MString();
  return AddDirectorySeparator(GetDvdPlayerDirectory(), true, 1) + MString(u"dvdplayer_rel_fslist.lst"_u16);
}

MString CBrevanderDirectories::GetScenarioDirectory() {
  MString fallback = InHome(u"/My Scenarios/"_u16);
  MString path = CBrevanderProfile::GetProfileStringW(kSection, u"Scenario Directory"_u16, fallback);
  // A key left empty gives the default, unmade.
  if (path.GetLength() == 0) return fallback;
  Make(path);
  return path;
}

MString CBrevanderDirectories::GetScriptDirectory() {
  MString fallback = InHome(u"/My Scenarios/Script/"_u16);
  MString path = CBrevanderProfile::GetProfileStringW(kSection, u"Script Directory"_u16, fallback);
  Make(path);
  return path;
}

void CBrevanderDirectories::SetScenarioDirectory(const unsigned short* path) {
  CBrevanderProfile::WriteProfileStringW(kSection, u"Scenario Directory"_u16, path);
}

void CBrevanderDirectories::SetScriptDirectory(const unsigned short* path) {
  CBrevanderProfile::WriteProfileStringW(kSection, u"Script Directory"_u16, path);
}

MString CBrevanderDirectories::GetTempDataDirectory(const unsigned short* path) {
  // No file, no cache: nothing is made in the current folder.
  if (!path || path[0] == 0) return MString();
  return MadeBelow(GetBody(path), u" Cache"_u16);
}

MString CBrevanderDirectories::GetSubtitleTextDirectory(const unsigned short* path) {
  return CacheBelow(GetTempDataDirectory(path), u"Subtitle Files"_u16);
}

MString CBrevanderDirectories::GetEncodedDataDirectory(const unsigned short* path) {
  return CacheBelow(GetTempDataDirectory(path), u"Encoded Files"_u16);
}

MString CBrevanderDirectories::GetEncodedJacketDataDirectory(const unsigned short* path) {
  return CacheBelow(GetEncodedDataDirectory(path), u"Jacket Files"_u16);
}

// The forms with the platform's unqualified argument read it only.
MString CBrevanderDirectories::GetTempDataDirectory(unsigned short* path) {
  return GetTempDataDirectory(static_cast<const unsigned short*>(path));
}

MString CBrevanderDirectories::GetSubtitleTextDirectory(unsigned short* path) {
  return GetSubtitleTextDirectory(static_cast<const unsigned short*>(path));
}

MString CBrevanderDirectories::GetEncodedDataDirectory(unsigned short* path) {
  return GetEncodedDataDirectory(static_cast<const unsigned short*>(path));
}

MString CBrevanderDirectories::GetEncodedJacketDataDirectory(unsigned short* path) {
  return GetEncodedJacketDataDirectory(static_cast<const unsigned short*>(path));
}

MString CBrevanderDirectories::GetDefaultBackgroundImageFile(resolution_t resolution) {
  return ByResolution(resolution, u"bg_ntsc.mps"_u16, u"bg_pal.mps"_u16);
}

MString CBrevanderDirectories::GetPlaceHolderWarningMpegFile(resolution_t resolution) {
  return ByResolution(resolution, u"w_ph_ntsc.mps"_u16, u"w_ph_pal.mps"_u16);
}

MString CBrevanderDirectories::GetMissingVobWarningMpegFile(resolution_t resolution) {
  return ByResolution(resolution, u"w_vob_ntsc.mps"_u16, u"w_vob_pal.mps"_u16);
}

MString CBrevanderDirectories::GetPlaceHolderWarningVobFile(resolution_t resolution) {
  return ByResolution(resolution, u"w_ph_ntsc.vob"_u16, u"w_ph_pal.vob"_u16);
}

MString CBrevanderDirectories::GetMissingVobWarningVobFile(resolution_t resolution) {
  return ByResolution(resolution, u"w_vob_ntsc.vob"_u16, u"w_vob_pal.vob"_u16);
}

MString CBrevanderDirectories::GetDefaultSubPicBackgroundNTSCVideo() { return Support(u"defaultStill_NTSC.mps"_u16); }

MString CBrevanderDirectories::GetDefaultSubPicBackgroundPALVideo() { return Support(u"defaultStill_PAL.mps"_u16); }

MString CBrevanderDirectories::GetDirectory(const unsigned short* path) {
  MString drive, directory, name, extension;
  SplitPath(path, drive, directory, name, extension);
  return drive + directory;
}

MString CBrevanderDirectories::GetBody(const unsigned short* path) {
  MString drive, directory, name, extension;
  SplitPath(path, drive, directory, name, extension);
  return drive + directory + name;
}

// The class constants have their one definition here, so that a host linking
// the library as a DLL reaches them like any other member.
constexpr const unsigned short* CBrevanderDirectories::kNoPath;
