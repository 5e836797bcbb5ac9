// settings: reads and writes the application's settings file, an ".ini"
// beside the executable, named after it (example_settings.ini here).
//
//   example_settings
//
// SetAppProfile, once at start-up, points the library at that file and
// writes every setting it knows that is missing, with its default, so the
// file always shows the whole set. Each read and write goes to the file.
#include <VantoroBasicUtils/VantoroBasicUtils.h>

#include <cstdio>
#include <string>

using namespace vbu::literals;

namespace {

std::string Utf8(MString text) {
  char bytes[1024];
  const int length = text.ExportASCII(bytes, sizeof bytes - 1, kCharacterSetWindows);
  return std::string(bytes, static_cast<std::size_t>(length > 0 ? length : 0));
}

}  // namespace

int main() {
  CBrevanderProfile::SetAppProfile();
  std::printf("settings file: %s\n", Utf8(CBrevanderDirectories::GetAppProfile()).c_str());

  // Settings the library knows, by number: it knows section, key and form.
  const int bitrate = CBrevanderProfile::GetProfileIntW(kProfileAudioBitrate, 128);
  int red = 0, green = 0, blue = 0;
  CBrevanderProfile::GetProfileInt3(kProfileColorPalette1, 0, 0, 255, red, green, blue);
  MString english(u"English"_u16);  // the default, when the key is missing
  const MString language = CBrevanderProfile::GetProfileStringW(kProfileDefaultLanguage, english);
  std::printf("audio bitrate %d kbit/s, palette colour 1 is %d, %d, %d, default language %s\n", bitrate, red,
              green, blue, Utf8(language).c_str());

  // A host's own settings: any section and key.
  const int runs = CBrevanderProfile::GetProfileIntW(u"Example"_u16, u"Runs"_u16, 0);
  CBrevanderProfile::WriteProfileInt(u"Example"_u16, u"Runs"_u16, runs + 1);
  CBrevanderProfile::WriteProfileStringW(u"Example"_u16, u"Last Title"_u16, u"VTS_01_1.VOB"_u16);
  std::printf("this example ran %d time%s before; [Example] Runs is now %d\n", runs, runs == 1 ? "" : "s",
              CBrevanderProfile::GetProfileIntW(u"Example"_u16, u"Runs"_u16, 0));
  return 0;
}
