// CBrevanderDirectories.h: where each kind of thing of the application
// lives. The program's own data stands in folders beside the executable,
// the user's work in "My Scenarios" in the user's home folder (unless the
// settings file says otherwise), and data derived from a document in a
// cache folder beside it. A getter that names a folder to write in makes
// that one folder (one level; its parent must exist), so the path can be
// used at once. Nothing is cached: every call builds its path anew.
//
// An installed program, whose folder its user may not write (and with no
// settings file beside it, which marks a portable install), keeps what it
// writes where desktop programs do: the settings file in
// <config>/<name>/<name>.ini, "Data/" and the templates in <data>/<name>/,
// "Temp/" in <cache>/<name>/. <config>, <data> and <cache> are
// $XDG_CONFIG_HOME, $XDG_DATA_HOME and $XDG_CACHE_HOME when set to absolute
// paths, else ~/.config, ~/.local/share and ~/.cache; <name> is the
// executable's file name without its extension.
//
//   MString data = CBrevanderDirectories::GetSupportDataDirectory();   // "/opt/tool/bin/Data/"
//   MString cache = CBrevanderDirectories::GetEncodedDataDirectory(u"/work/Film.dat"_u16);
//   //   gives "/work/Film Cache/Encoded Files/"
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>
#include <VantoroBasicUtils/time/CTimecode.h>

class VBU_API CBrevanderDirectories {
 public:
  // ---- the executable and the system

  // The user's home folder, without a final separator: the place of the
  // user's documents ("/home/ann"; empty for a user without one).
  static MString GetSystemDrive();
  // The system's library folder, "/usr/lib/".
  static MString GetSystemDirectoryW();
  // GetSystemDirectoryW() + "drivers/".
  static MString GetSystemDriverDirectory();
  // The executable's folder with its final separator; "Error" if its path has no separator.
  static MString GetAppDirectory();
  // The settings file: the executable's path with ".ini" for the extension
  // of its file name (added where the name has none); "Error" if the path
  // has no separator. For an installed program <config>/<name>/<name>.ini
  // (no folder is made here; SetAppProfile makes it).
  static MString GetAppProfile();

  // ---- beside the executable (app = GetAppDirectory(); for an installed
  // program <data>/<name>/, and <cache>/<name>/ for Temp, made with their parents)

  static MString GetProjectTemplateDirectory();   // app + "Project Templates/", made
  static MString GetTempDirectory();              // app + "Temp/", made
  static MString GetSupportDataDirectory();       // app + "Data/", made
  // app + "/My Scenarios/Templates/" (two separators in a row); the last level is made.
  static MString GetTemplateDirectory();
  static MString GetDocumentationDirectory();     // app + "Documentation/", not made
  // With a running Vantoro edition (CVersionControl::IsVantoroRunning):
  // app + "EmbeddedDVDPlayer" (no final separator) and the file list in it;
  // otherwise empty. Nothing is made.
  static MString GetDvdPlayerDirectory();
  static MString GetDvdPlayerRelativeFsListFilePath();

  // ---- the user's folders, from section "BREVANDER" of the settings file

  // Key "Scenario Directory"; missing: GetSystemDrive() + "/My Scenarios/"
  // (empty for a user without a home folder). The folder is made, unless
  // the path is empty or the key is present and empty (then the default
  // comes back, unmade).
  static MString GetScenarioDirectory();
  // Key "Script Directory"; missing: GetSystemDrive() + "/My Scenarios/Script/".
  // The folder read is made and returned, even an empty one.
  static MString GetScriptDirectory();
  // Store `path` as it stands under those keys; nothing is made.
  static void SetScenarioDirectory(const unsigned short* path);
  static void SetScriptDirectory(const unsigned short* path);

  // ---- folders of the data derived from the file `path`, each made with the ones it is built on
  // (`path` is only read; the unqualified forms are the same operations)

  static MString GetTempDataDirectory(const unsigned short* path);           // "/work/Film Cache/"
  static MString GetSubtitleTextDirectory(const unsigned short* path);       // + "Subtitle Files/"
  static MString GetEncodedDataDirectory(const unsigned short* path);        // + "Encoded Files/"
  static MString GetEncodedJacketDataDirectory(const unsigned short* path);  // + "Encoded Files/Jacket Files/"
  static MString GetTempDataDirectory(unsigned short* path);
  static MString GetSubtitleTextDirectory(unsigned short* path);
  static MString GetEncodedDataDirectory(unsigned short* path);
  static MString GetEncodedJacketDataDirectory(unsigned short* path);
  static MString GetTempDataDirectory(decltype(nullptr)) { return GetTempDataDirectory(kNoPath); }
  static MString GetSubtitleTextDirectory(decltype(nullptr)) { return GetSubtitleTextDirectory(kNoPath); }
  static MString GetEncodedDataDirectory(decltype(nullptr)) { return GetEncodedDataDirectory(kNoPath); }
  static MString GetEncodedJacketDataDirectory(decltype(nullptr)) { return GetEncodedJacketDataDirectory(kNoPath); }

  // ---- support files in GetSupportDataDirectory() (which is made); NTSC for 0, PAL for any other

  static MString GetDefaultBackgroundImageFile(resolution_t resolution);   // bg_ntsc.mps, bg_pal.mps
  static MString GetPlaceHolderWarningMpegFile(resolution_t resolution);   // w_ph_ntsc.mps, w_ph_pal.mps
  static MString GetMissingVobWarningMpegFile(resolution_t resolution);    // w_vob_ntsc.mps, w_vob_pal.mps
  static MString GetPlaceHolderWarningVobFile(resolution_t resolution);    // w_ph_ntsc.vob, w_ph_pal.vob
  static MString GetMissingVobWarningVobFile(resolution_t resolution);     // w_vob_ntsc.vob, w_vob_pal.vob
  static MString GetDefaultSubPicBackgroundNTSCVideo();                    // defaultStill_NTSC.mps
  static MString GetDefaultSubPicBackgroundPALVideo();                     // defaultStill_PAL.mps

  // ---- text work on a path, no disk

  // The folder of `path` with its final separator ("" for a bare name).
  static MString GetDirectory(const unsigned short* path);
  // `path` without the extension of its file name.
  static MString GetBody(const unsigned short* path);
 private:
  static constexpr const unsigned short* kNoPath = nullptr;
};
