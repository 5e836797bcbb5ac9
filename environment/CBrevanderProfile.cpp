#include "environment/CBrevanderProfile.h"

#include <string>

#include "environment/CBrevanderDirectories.h"
#include "platform/internal/Environment.h"
#include "platform/internal/SettingsFile.h"
#include "platform/internal/WideText.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

namespace {

const char16_t* C16(const unsigned short* text) { return reinterpret_cast<const char16_t*>(text); }

enum class Form { kInt, kTriple, kQuad, kText };

// A setting or a numbered family of them: values first..last; a family's
// key is `key` followed by its place, counted from 1.
struct Entry {
  int first;
  int last;
  Form form;
  const char16_t* section;
  const char16_t* key;
};

constexpr Entry kEntries[] = {
    {1, 1, Form::kInt, u"Preference", u"Open Recent"},
    {2, 2, Form::kInt, u"Preference", u"Zoom"},
    {11, 11, Form::kInt, u"Settings", u"Resolution"},
    {12, 12, Form::kInt, u"Settings", u"Drop Type"},
    {21, 21, Form::kInt, u"Still", u"Bitrate"},
    {31, 31, Form::kInt, u"Still", u"Encode Type"},
    {32, 32, Form::kInt, u"Still", u"Size"},
    {33, 33, Form::kInt, u"Still", u"Aspectratio"},
    {34, 34, Form::kInt, u"Still", u"ProgressiveSeq"},
    {41, 41, Form::kInt, u"Audio", u"Encode Type"},
    {42, 42, Form::kInt, u"Audio", u"Bitrate"},
    {45, 45, Form::kInt, u"Subpicture", u"IntervalDefNTSC"},
    {46, 46, Form::kInt, u"Subpicture", u"IntervalDefPAL"},
    {51, 51, Form::kInt, u"Subtitle", u"Size"},
    {52, 52, Form::kInt, u"Subtitle", u"Style"},
    {53, 53, Form::kInt, u"Subtitle", u"Alignment"},
    {54, 54, Form::kInt, u"Subtitle", u"Location"},
    {55, 55, Form::kInt, u"Subtitle", u"Render"},
    {201, 201, Form::kInt, u"Explorer", u"View Style"},
    {231, 231, Form::kInt, u"Vantoro", u"1"},
    {232, 232, Form::kInt, u"Vantoro", u"2"},
    {233, 233, Form::kInt, u"Vantoro", u"3"},
    {401, 401, Form::kInt, u"Simulation", u"Decode frame"},

    {61, 61, Form::kTriple, u"Color", u"Conversion Color E2"},
    {63, 63, Form::kTriple, u"Color", u"Conversion Color E1"},
    {65, 65, Form::kTriple, u"Color", u"Conversion Color P"},
    {67, 67, Form::kTriple, u"Color", u"Conversion Color Bg"},
    {81, 96, Form::kTriple, u"ColorPalette", u""},

    {56, 56, Form::kQuad, u"Subtitle", u"Color"},
    {57, 57, Form::kQuad, u"Subtitle", u"Contrast"},
    {71, 71, Form::kQuad, u"Color", u"Display Color"},
    {72, 72, Form::kQuad, u"Color", u"Display Contrast"},
    {73, 73, Form::kQuad, u"Color", u"Action Color"},
    {74, 74, Form::kQuad, u"Color", u"Action Contrast"},
    {75, 75, Form::kQuad, u"Color", u"Selection Color"},
    {76, 76, Form::kQuad, u"Color", u"Selection Contrast"},

    {101, 108, Form::kText, u"Languages", u"Languages "},
    {109, 109, Form::kText, u"Languages", u"Default Language"},
    {111, 111, Form::kText, u"Subtitle", u"Font"},
    {112, 112, Form::kText, u"Subtitle", u"Duration"},
    {121, 128, Form::kText, u"Languages", u"Audio Language "},
    {130, 161, Form::kText, u"Languages", u"Subpicture Language "},
    {170, 170, Form::kText, u"Languages", u"Simulation Audio Language"},
    {171, 171, Form::kText, u"Languages", u"Simulation Subpicture Language"},
    {202, 202, Form::kText, u"Explorer", u"Video Filter"},
    {203, 203, Form::kText, u"Explorer", u"Audio Filter"},
    {204, 204, Form::kText, u"Explorer", u"Image Filter"},
    {211, 218, Form::kText, u"Explorer", u"Url "},
    {234, 234, Form::kText, u"Vantoro", u"Vantoro Name"},
    {301, 301, Form::kText, u"Layout Editor", u"DdpDslMultiple16Fix"},
    {302, 302, Form::kText, u"Layout Editor", u"UseClassicDeviceEngine"},
};

// The section and key of setting `id` of form `form`; false if it has none.
bool Find(brevander_profile_t id, Form form, const char16_t** section, std::u16string* key) {
  for (const Entry& entry : kEntries) {
    if (entry.form != form || id < entry.first || id > entry.last) continue;
    *section = entry.section;
    *key = entry.key;
    if (entry.first != entry.last) {
      for (char c : std::to_string(id - entry.first + 1)) key->push_back(static_cast<char16_t>(c));
    }
    return true;
  }
  return false;
}

std::u16string File() { return vp::GetSettingsFile(); }

MString Decimals(const int* values, int count) {
  MString text;
  for (int i = 0; i < count; ++i) {
    unsigned short number[16];
    vbu::wtext::FormatDecimal(values[i], number, 16);
    if (i > 0) text += u", "_u16;
    text += number;
  }
  return text;
}

// The numbers of a stored triple or quadruple into `out`; see GetProfileInt3.
void ReadNumbers(brevander_profile_t id, Form form, const int* defaults, int** out, int count) {
  int values[4];
  for (int i = 0; i < count; ++i) values[i] = defaults[i];
  const char16_t* section;
  std::u16string key;
  std::u16string text;
  if (Find(id, form, &section, &key) && vp::ReadSetting(File().c_str(), section, key.c_str(), &text) &&
      text != u"default") {
    unsigned short* position = nullptr;
    MString copy(vbu::ToUnits(text.c_str()));
    unsigned short* token = vbu::wtext::Tokenize(copy, u" ,"_u16, &position);
    for (int i = 0; i < count && token; ++i) {
      values[i] = vbu::wtext::ToInt(token);
      token = vbu::wtext::Tokenize(nullptr, u" ,"_u16, &position);
    }
  }
  for (int i = 0; i < count; ++i) *out[i] = values[i];
}

bool Write(const char16_t* section, const char16_t* key, const char16_t* value) {
  return vp::WriteSetting(File().c_str(), section, key, value) == 0;
}

bool WriteNumbers(brevander_profile_t id, Form form, const int* values, int count) {
  const char16_t* section;
  std::u16string key;
  if (!Find(id, form, &section, &key)) return false;
  MString text = Decimals(values, count);
  return Write(section, key.c_str(), C16(text));
}

}  // namespace

void CBrevanderProfile::SetAppProfile() {
  MString path = CBrevanderDirectories::GetAppProfile();
  // The file may stand in the user's settings folder, which may not be there yet.
  vp::MakeFolders(C16(CBrevanderDirectories::GetDirectory(path)));
  SetProfilePath(path);
  InitializeProfileValue();
}

void CBrevanderProfile::SetProfilePath(const unsigned short* path) { vp::SetSettingsFile(C16(path)); }

int CBrevanderProfile::GetProfileIntW(brevander_profile_t id, int defaultValue) {
  const char16_t* section;
  std::u16string key;
  if (!Find(id, Form::kInt, &section, &key)) return 0;
  return vp::ReadSettingInt(File().c_str(), section, key.c_str(), defaultValue);
}

bool CBrevanderProfile::WriteProfileInt(brevander_profile_t id, int value) {
  return WriteNumbers(id, Form::kInt, &value, 1);
}

void CBrevanderProfile::GetProfileInt3(brevander_profile_t id, int defaultA, int defaultB, int defaultC, int& a,
                                       int& b, int& c) {
  const int defaults[] = {defaultA, defaultB, defaultC};
  int* out[] = {&a, &b, &c};
  ReadNumbers(id, Form::kTriple, defaults, out, 3);
}

bool CBrevanderProfile::WriteProfileInt3(brevander_profile_t id, int a, int b, int c) {
  const int values[] = {a, b, c};
  return WriteNumbers(id, Form::kTriple, values, 3);
}

void CBrevanderProfile::GetProfileInt4(brevander_profile_t id, int defaultA, int defaultB, int defaultC,
                                       int defaultD, int& a, int& b, int& c, int& d) {
  const int defaults[] = {defaultA, defaultB, defaultC, defaultD};
  int* out[] = {&a, &b, &c, &d};
  ReadNumbers(id, Form::kQuad, defaults, out, 4);
}

bool CBrevanderProfile::WriteProfileInt4(brevander_profile_t id, int a, int b, int c, int d) {
  const int values[] = {a, b, c, d};
  return WriteNumbers(id, Form::kQuad, values, 4);
}

MString CBrevanderProfile::GetProfileStringW(brevander_profile_t id, unsigned short* defaultValue) {
  return GetProfileStringW(id, static_cast<const unsigned short*>(defaultValue));
}

MString CBrevanderProfile::GetProfileStringW(brevander_profile_t id, const unsigned short* defaultValue) {
  const char16_t* section;
  std::u16string key;
  if (!Find(id, Form::kText, &section, &key)) return MString();
  return GetProfileStringW(vbu::ToUnits(section), vbu::ToUnits(key.c_str()), defaultValue);
}

bool CBrevanderProfile::WriteProfileStringW(brevander_profile_t id, const unsigned short* value) {
  const char16_t* section;
  std::u16string key;
  // The classic device engine's switch is set by hand only.
  if (id == kProfileUseClassicDeviceEngine || !Find(id, Form::kText, &section, &key)) return false;
  return Write(section, key.c_str(), C16(value));
}

int CBrevanderProfile::GetProfileIntW(const unsigned short* section, const unsigned short* key, int defaultValue) {
  return vp::ReadSettingInt(File().c_str(), C16(section), C16(key), defaultValue);
}

bool CBrevanderProfile::WriteProfileInt(const unsigned short* section, const unsigned short* key, int value) {
  if (!key) return false;  // an integer never removes a section
  MString text = Decimals(&value, 1);
  return Write(C16(section), C16(key), C16(text));
}

MString CBrevanderProfile::GetProfileStringW(const unsigned short* section, const unsigned short* key,
                                             unsigned short* defaultValue) {
  return GetProfileStringW(section, key, static_cast<const unsigned short*>(defaultValue));
}

MString CBrevanderProfile::GetProfileStringW(const unsigned short* section, const unsigned short* key,
                                             const unsigned short* defaultValue) {
  std::u16string value;
  if (vp::ReadSetting(File().c_str(), C16(section), C16(key), &value)) return MString(vbu::ToUnits(value.c_str()));
  return defaultValue ? MString(defaultValue) : MString();
}

bool CBrevanderProfile::WriteProfileStringW(const unsigned short* section, const unsigned short* key,
                                            const unsigned short* value) {
  return Write(C16(section), C16(key), C16(value));
}

void CBrevanderProfile::InitializeProfileValue() {
  // One pass under the file's lock, written once: a writer in another
  // process cannot slip in between a read and its write-back.
  vp::EditSettings(File().c_str(), [] { InitializeEach(); });
}

void CBrevanderProfile::InitializeEach() {
  // Each setting is read with its default and written back: a value in the
  // file stays, a missing one comes in. The order is that of a new file.
  struct Int { brevander_profile_t id; int value; };
  static constexpr Int kInts[] = {
      {kProfileVantoro1, 0}, {kProfileVantoro2, 0}, {kProfileVantoro3, 0},
      {kProfileOpenRecent, 0}, {kProfileZoom, 0}, {kProfileExplorerViewStyle, 3},
      {kProfileResolution, 0}, {kProfileDropType, 0}, {kProfileStillBitrate, 8000000},
      {kProfileStillEncodeType, 0}, {kProfileStillSize, 0}, {kProfileStillAspectRatio, 0},
      {kProfileStillProgressiveSeq, 0}, {kProfileAudioEncodeType, 0}, {kProfileAudioBitrate, 128},
      {kProfileSubpictureIntervalNTSC, 60}, {kProfileSubpictureIntervalPAL, 50}, {kProfileSubtitleSize, 24},
      {kProfileSubtitleStyle, 4}, {kProfileSubtitleAlignment, 3}, {kProfileSubtitleLocation, 3},
      {kProfileSubtitleRender, 2}, {kProfileSimulationDecodeFrame, 13},
  };
  for (const Int& setting : kInts) WriteProfileInt(setting.id, GetProfileIntW(setting.id, setting.value));

  struct Numbers { brevander_profile_t id; int values[4]; };
  static constexpr Numbers kTriples[] = {
      {kProfileConversionColorE2, {0, 0, 255}}, {kProfileConversionColorE1, {255, 0, 0}},
      {kProfileConversionColorP, {0, 0, 0}}, {kProfileConversionColorBg, {255, 255, 255}},
  };
  int a, b, c, d;
  for (const Numbers& s : kTriples) {
    GetProfileInt3(s.id, s.values[0], s.values[1], s.values[2], a, b, c);
    WriteProfileInt3(s.id, a, b, c);
  }
  static constexpr Numbers kQuads[] = {
      {kProfileDisplayColor, {0, 1, 2, 3}}, {kProfileDisplayContrast, {15, 15, 15, 0}},
      {kProfileActionColor, {9, 10, 11, 12}}, {kProfileActionContrast, {15, 15, 15, 0}},
      {kProfileSelectionColor, {5, 6, 7, 8}}, {kProfileSelectionContrast, {15, 15, 15, 0}},
  };
  for (const Numbers& s : kQuads) {
    GetProfileInt4(s.id, s.values[0], s.values[1], s.values[2], s.values[3], a, b, c, d);
    WriteProfileInt4(s.id, a, b, c, d);
  }
  // The palette's defaults as 24-bit colours, red in the high byte.
  static constexpr unsigned kPalette[16] = {
      0x0000FF, 0xFF0000, 0x000000, 0xFFFFFF, 0x00FF00, 0xFF00FF, 0xFFFF00, 0x007D7D,
      0x7D7D7D, 0xE1E1E1, 0x7D0000, 0x007D00, 0x00007D, 0xDE00FF, 0xDE7D00, 0x7D007D,
  };
  for (int i = 0; i < 16; ++i) {
    auto id = static_cast<brevander_profile_t>(kProfileColorPalette1 + i);
    unsigned rgb = kPalette[i];
    GetProfileInt3(id, static_cast<int>(rgb >> 16), static_cast<int>((rgb >> 8) & 0xFF), static_cast<int>(rgb & 0xFF),
                   a, b, c);
    WriteProfileInt3(id, a, b, c);
  }

  struct Text { int first; int last; const char16_t* value; };
  static constexpr Text kTexts[] = {
      {kProfileVideoFilter, kProfileVideoFilter, u"*.mpeg;*.mpg;*.mpv;*.avi;*.m2v"},
      {kProfileAudioFilter, kProfileAudioFilter, u"*.ac3;*.aif;*.aiff;*.wav;*.dts;*.mpa"},
      {kProfileImageFilter, kProfileImageFilter,
       u"*.bmp;*.gif;*.jpeg;*.jpg;*.pct;*.pcd;*.pict;*.psd;*.sgi;*.tga;*.tif;*.tiff;*.mps"},
      {kProfileLanguages1, kProfileLanguages1, u"Chinese"},
      {kProfileLanguages2, kProfileLanguages2, u"English"},
      {kProfileLanguages3, kProfileLanguages3, u"French"},
      {kProfileLanguages4, kProfileLanguages4, u"German"},
      {kProfileLanguages5, kProfileLanguages5, u"Italian"},
      {kProfileLanguages6, kProfileLanguages6, u"Japanese"},
      {kProfileLanguages7, kProfileLanguages7, u"Korean"},
      {kProfileLanguages8, kProfileLanguages8, u"Spanish"},
      {kProfileDefaultLanguage, kProfileDefaultLanguage, u"English"},
      {kProfileAudioLanguage1, kProfileAudioLanguage8, u"Not Specified"},
      {kProfileSubpictureLanguage1, kProfileSubpictureLanguage32, u"Not Specified"},
      {kProfileSimulationAudioLanguage, kProfileSimulationAudioLanguage, u"English"},
      {kProfileSimulationSubpictureLanguage, kProfileSimulationSubpictureLanguage, u"English"},
      {kProfileSubtitleFont, kProfileSubtitleFont, u"Times New Roman (Western)"},
      {kProfileSubtitleDuration, kProfileSubtitleDuration, u"00:00:10:00"},
      {kProfileVantoroName, kProfileVantoroName, u"Vantoro"},
      {kProfileDdpDslMultiple16Fix, kProfileDdpDslMultiple16Fix, u"ON"},
  };
  for (const Text& setting : kTexts) {
    for (int id = setting.first; id <= setting.last; ++id) {
      auto number = static_cast<brevander_profile_t>(id);
      MString value = GetProfileStringW(number, vbu::ToUnits(setting.value));
      WriteProfileStringW(number, value);
    }
  }
}
