// The settings reader on an arbitrary .ini: the profile's reads through a
// real file, and the text work of a write, whose result must read back.
#include "FuzzSupport.h"

#include <VantoroBasicUtils/environment/CBrevanderProfile.h>
#include <platform/internal/SettingsFile.h>

namespace {

// A name or value that a write stores and a read gives back unchanged:
// letters, digits and a few marks, nothing trimmed or unquoted.
std::u16string Plain(FuzzedDataProvider& in, std::size_t max, bool value) {
  static const char kName[] = "abcXYZ019_.-";
  static const char kValue[] = "abcXYZ019_.- ,;=[]\"'";
  const char* set = value ? kValue : kName;
  const std::size_t setSize = (value ? sizeof kValue : sizeof kName) - 1;
  std::u16string text;
  std::size_t length = in.ConsumeIntegralInRange<std::size_t>(value ? 0 : 1, max);
  for (std::size_t i = 0; i < length; ++i) text += static_cast<char16_t>(set[in.ConsumeIntegral<uint8_t>() % setSize]);
  if (value) {
    // No blank at either end and no pair of enclosing quotes.
    while (!text.empty() && text.back() == u' ') text.pop_back();
    while (!text.empty() && text.front() == u' ') text.erase(0, 1);
    if (text.size() >= 2 && (text.front() == u'"' || text.front() == u'\'')) text[0] = u'x';
  }
  return text;
}

const unsigned short* Units(const std::u16string& text) { return reinterpret_cast<const unsigned short*>(text.c_str()); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const std::u16string section = Plain(in, 8, false);
  const std::u16string key = Plain(in, 8, false);
  const std::u16string value = Plain(in, 12, true);
  const int numbered = in.ConsumeIntegralInRange(0, 420);
  std::string text = in.ConsumeRemainingBytesAsString();

  // Reads through the profile, from a real file.
  const auto path = vbu::fuzz::ScratchFolder() / "settings.ini";
  vbu::fuzz::WriteFile(path, text.data(), text.size());
  MString file = vbu::fuzz::Text(path.string());
  CBrevanderProfile::SetProfilePath(file);
  auto id = static_cast<brevander_profile_t>(numbered);
  (void)CBrevanderProfile::GetProfileIntW(id, 5);
  int a, b, c, d;
  CBrevanderProfile::GetProfileInt3(id, 1, 2, 3, a, b, c);
  CBrevanderProfile::GetProfileInt4(id, 1, 2, 3, 4, a, b, c, d);
  (void)CBrevanderProfile::GetProfileStringW(id, nullptr);
  (void)CBrevanderProfile::GetProfileIntW(Units(section), Units(key), 7);
  (void)CBrevanderProfile::GetProfileStringW(Units(section), Units(key), nullptr);
  CBrevanderProfile::SetProfilePath(nullptr);

  // A write on the text reads back, and the other lines stay.
  std::string written = text;
  vbu::platform::ApplySetting(&written, section.c_str(), key.c_str(), value.c_str());
  std::u16string got;
  if (text.find('\0') == std::string::npos) {
    // (A NUL in the text ends what a reader of the file sees; no check there.)
    if (!vbu::platform::FindSetting(written, section.c_str(), key.c_str(), &got)) {
      std::fprintf(stderr, "section [%s] key [%s] value [%s]\ntext:\n%s\nwritten:\n%s\n",
                   std::string(section.begin(), section.end()).c_str(), std::string(key.begin(), key.end()).c_str(),
                   std::string(value.begin(), value.end()).c_str(), text.c_str(), written.c_str());
      std::abort();
    }
    VBU_FUZZ_CHECK(got == value);
  }
  // Removal, of the key and of the section, on any text.
  std::string removed = written;
  vbu::platform::ApplySetting(&removed, section.c_str(), key.c_str(), nullptr);
  removed = written;
  vbu::platform::ApplySetting(&removed, section.c_str(), nullptr, nullptr);
  return 0;
}
