// CBrevanderProfile.h: the application's settings, kept in one text file
// (an ".ini" beside the executable, or in the user's settings folder for an
// installed program: see CBrevanderDirectories::GetAppProfile).
// Every setting the library knows has a number in brevander_profile_t; the
// class knows its section, key, form and default. At start-up SetAppProfile
// writes every setting that is missing, with its default, so that the file
// always shows the whole set. Nothing is cached: each call reads or writes
// the file, so a hand edit counts at the next read.
//
//   CBrevanderProfile::SetAppProfile();                                  // once, at start-up
//   int bitrate = CBrevanderProfile::GetProfileIntW(kProfileAudioBitrate, 128);
//   int r, g, b;
//   CBrevanderProfile::GetProfileInt3(kProfileColorPalette1, 0, 0, 255, r, g, b);
//   CBrevanderProfile::WriteProfileStringW(kProfileDefaultLanguage, u"French"_u16);
//   MString font = CBrevanderProfile::GetProfileStringW(kProfileSubtitleFont, u"Arial"_u16);
//
// The file, as the desktop platform's private-profile calls read it: names
// match without regard to case and the blanks around them; a value loses its
// outer blanks and one pair of quotes; "key=" is an empty text; of two equal
// keys the first counts. A write keeps every other line byte for byte, and
// never leaves a half-written file behind. Several processes may share the
// file: each write holds a lock of the system's on it from its read to its
// replacement, so none is lost. Writes give true when the file holds the
// value afterwards; false for a setting of another form (or of none), a
// name the file cannot hold (a line break; a key with "=" or that begins
// with ";" or "["), a file made read-only, or a failure of the disk.
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

// The numbered settings. Forms: integer ("Bitrate=8000000"), triple
// ("1=0, 0, 255"), quadruple ("Display Color=0, 1, 2, 3") and text.
enum brevander_profile_t {
  kProfileOpenRecent = 1,
  kProfileZoom = 2,
  kProfileResolution = 11,
  kProfileDropType = 12,
  kProfileStillBitrate = 21,
  kProfileStillEncodeType = 31,
  kProfileStillSize = 32,
  kProfileStillAspectRatio = 33,
  kProfileStillProgressiveSeq = 34,
  kProfileAudioEncodeType = 41,
  kProfileAudioBitrate = 42,
  kProfileSubpictureIntervalNTSC = 45,
  kProfileSubpictureIntervalPAL = 46,
  kProfileSubtitleSize = 51,
  kProfileSubtitleStyle = 52,
  kProfileSubtitleAlignment = 53,
  kProfileSubtitleLocation = 54,
  kProfileSubtitleRender = 55,
  kProfileSubtitleColor = 56,
  kProfileSubtitleContrast = 57,
  kProfileConversionColorE2 = 61,
  kProfileConversionColorE1 = 63,
  kProfileConversionColorP = 65,
  kProfileConversionColorBg = 67,
  kProfileDisplayColor = 71,
  kProfileDisplayContrast = 72,
  kProfileActionColor = 73,
  kProfileActionContrast = 74,
  kProfileSelectionColor = 75,
  kProfileSelectionContrast = 76,
  kProfileColorPalette1 = 81,
  kProfileColorPalette2 = 82,
  kProfileColorPalette3 = 83,
  kProfileColorPalette4 = 84,
  kProfileColorPalette5 = 85,
  kProfileColorPalette6 = 86,
  kProfileColorPalette7 = 87,
  kProfileColorPalette8 = 88,
  kProfileColorPalette9 = 89,
  kProfileColorPalette10 = 90,
  kProfileColorPalette11 = 91,
  kProfileColorPalette12 = 92,
  kProfileColorPalette13 = 93,
  kProfileColorPalette14 = 94,
  kProfileColorPalette15 = 95,
  kProfileColorPalette16 = 96,
  kProfileLanguages1 = 101,
  kProfileLanguages2 = 102,
  kProfileLanguages3 = 103,
  kProfileLanguages4 = 104,
  kProfileLanguages5 = 105,
  kProfileLanguages6 = 106,
  kProfileLanguages7 = 107,
  kProfileLanguages8 = 108,
  kProfileDefaultLanguage = 109,
  kProfileSubtitleFont = 111,
  kProfileSubtitleDuration = 112,
  kProfileAudioLanguage1 = 121,
  kProfileAudioLanguage2 = 122,
  kProfileAudioLanguage3 = 123,
  kProfileAudioLanguage4 = 124,
  kProfileAudioLanguage5 = 125,
  kProfileAudioLanguage6 = 126,
  kProfileAudioLanguage7 = 127,
  kProfileAudioLanguage8 = 128,
  kProfileSubpictureLanguage1 = 130,
  kProfileSubpictureLanguage2 = 131,
  kProfileSubpictureLanguage3 = 132,
  kProfileSubpictureLanguage4 = 133,
  kProfileSubpictureLanguage5 = 134,
  kProfileSubpictureLanguage6 = 135,
  kProfileSubpictureLanguage7 = 136,
  kProfileSubpictureLanguage8 = 137,
  kProfileSubpictureLanguage9 = 138,
  kProfileSubpictureLanguage10 = 139,
  kProfileSubpictureLanguage11 = 140,
  kProfileSubpictureLanguage12 = 141,
  kProfileSubpictureLanguage13 = 142,
  kProfileSubpictureLanguage14 = 143,
  kProfileSubpictureLanguage15 = 144,
  kProfileSubpictureLanguage16 = 145,
  kProfileSubpictureLanguage17 = 146,
  kProfileSubpictureLanguage18 = 147,
  kProfileSubpictureLanguage19 = 148,
  kProfileSubpictureLanguage20 = 149,
  kProfileSubpictureLanguage21 = 150,
  kProfileSubpictureLanguage22 = 151,
  kProfileSubpictureLanguage23 = 152,
  kProfileSubpictureLanguage24 = 153,
  kProfileSubpictureLanguage25 = 154,
  kProfileSubpictureLanguage26 = 155,
  kProfileSubpictureLanguage27 = 156,
  kProfileSubpictureLanguage28 = 157,
  kProfileSubpictureLanguage29 = 158,
  kProfileSubpictureLanguage30 = 159,
  kProfileSubpictureLanguage31 = 160,
  kProfileSubpictureLanguage32 = 161,
  kProfileSimulationAudioLanguage = 170,
  kProfileSimulationSubpictureLanguage = 171,
  kProfileExplorerViewStyle = 201,
  kProfileVideoFilter = 202,
  kProfileAudioFilter = 203,
  kProfileImageFilter = 204,
  kProfileUrl1 = 211,
  kProfileUrl2 = 212,
  kProfileUrl3 = 213,
  kProfileUrl4 = 214,
  kProfileUrl5 = 215,
  kProfileUrl6 = 216,
  kProfileUrl7 = 217,
  kProfileUrl8 = 218,
  kProfileVantoro1 = 231,
  kProfileVantoro2 = 232,
  kProfileVantoro3 = 233,
  kProfileVantoroName = 234,
  kProfileDdpDslMultiple16Fix = 301,
  kProfileUseClassicDeviceEngine = 302,
  kProfileSimulationDecodeFrame = 401,
};

class VBU_API CBrevanderProfile {
 public:
  // Points the profile at GetAppProfile()'s file and writes every missing
  // setting of the start-up list with its default. Call once at start-up,
  // before other threads use the profile.
  static void SetAppProfile();
  // Points the profile at the file `path` (null: none). Until a file is set,
  // reads give their defaults and writes are dropped.
  static void SetProfilePath(const unsigned short* path);

  // ---- numbered settings; a number of another form (or of none) selects nothing

  // The stored integer, or `defaultValue` when the key is missing; 0 for a
  // number outside the integer settings.
  static int GetProfileIntW(brevander_profile_t id, int defaultValue);
  static bool WriteProfileInt(brevander_profile_t id, int value);
  // The numbers of the stored text, separated by any run of blanks and
  // commas; a number that does not parse is 0. A missing key gives the
  // defaults, and so does every place of a text with too few numbers.
  static void GetProfileInt3(brevander_profile_t id, int defaultA, int defaultB, int defaultC, int& a, int& b,
                             int& c);
  // Stores "a, b, c".
  static bool WriteProfileInt3(brevander_profile_t id, int a, int b, int c);
  static void GetProfileInt4(brevander_profile_t id, int defaultA, int defaultB, int defaultC, int defaultD, int& a,
                             int& b, int& c, int& d);
  // Stores "a, b, c, d".
  static bool WriteProfileInt4(brevander_profile_t id, int a, int b, int c, int d);
  // The stored text, or `defaultValue` (null: empty) when the key is
  // missing; empty for a number outside the text settings.
  // The default is only read: a literal serves, and so does null.
  static MString GetProfileStringW(brevander_profile_t id, const unsigned short* defaultValue);
  static MString GetProfileStringW(brevander_profile_t id, unsigned short* defaultValue);
  static MString GetProfileStringW(brevander_profile_t id, decltype(nullptr)) {
    return GetProfileStringW(id, static_cast<const unsigned short*>(nullptr));
  }
  // Stores the text (null removes the key). kProfileUseClassicDeviceEngine
  // is read-only: only a hand edit sets it.
  static bool WriteProfileStringW(brevander_profile_t id, const unsigned short* value);

  // ---- any section and key

  // The stored integer (sign and leading digits: "12abc" is 12, "abc" 0),
  // or `defaultValue` when the key is missing or empty.
  static int GetProfileIntW(const unsigned short* section, const unsigned short* key, int defaultValue);
  static bool WriteProfileInt(const unsigned short* section, const unsigned short* key, int value);
  static MString GetProfileStringW(const unsigned short* section, const unsigned short* key,
                                   const unsigned short* defaultValue);
  static MString GetProfileStringW(const unsigned short* section, const unsigned short* key,
                                   unsigned short* defaultValue);
  static MString GetProfileStringW(const unsigned short* section, const unsigned short* key, decltype(nullptr)) {
    return GetProfileStringW(section, key, static_cast<const unsigned short*>(nullptr));
  }
  // A null `value` removes the key; a null `key` the whole section.
  static bool WriteProfileStringW(const unsigned short* section, const unsigned short* key,
                                  const unsigned short* value);

  // Kept for hosts that read it; the path in use is elsewhere, so it stays empty.
  static MString sProfilePath;

 protected:
  // Reads every setting of the start-up list with its default and writes it
  // back: missing ones come in, present ones stay. One pass, under the
  // file's lock: a writer elsewhere waits for its end.
  static void InitializeProfileValue();

 private:
  static void InitializeEach();
};
