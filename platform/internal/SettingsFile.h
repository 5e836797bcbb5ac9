// SettingsFile.h: the application's settings file, a text file of
// "[section]" lines and "key=value" lines, read and written as the desktop
// platform's private-profile calls do, so that a file a user edits by hand
// reads as they expect. Internal; never installed.
//
//   vbu::platform::SetSettingsFile(path);
//   std::u16string value;
//   if (vbu::platform::ReadSetting(path, u"Audio", u"Bitrate", &value)) ...
//   vbu::platform::WriteSetting(path, u"Audio", u"Bitrate", u"128");
//
// Reading: names match without regard to case, after blanks and tabs around
// them are dropped; a value loses the blanks and tabs at its ends and then
// one pair of matching quotes; "key=" is an empty value; a line without "="
// is no key; of two equal keys (or sections) the first counts.
//
// Writing keeps every line that the write does not concern byte for byte;
// the lines it writes end in CR LF. A write that changes nothing leaves the
// file alone; any other goes to a new file beside it, which then replaces the
// old one, so that a failure at any point leaves the old file whole (in a
// folder that takes no new file, the file is rewritten in place). A file
// made read-only refuses writes. A file in UTF-16LE with a byte-order mark
// is read and written in that form. Nothing is cached: each call reads the
// file anew.
//
// Processes and threads share the file safely: each read takes a shared
// lock of the system's on it, and each write an exclusive one across its
// read, change and replacement, so no write is lost and no read sees half a
// write.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace vbu::platform {

// The file that the application's profile functions use; empty until set.
void SetSettingsFile(const char16_t* path);
std::u16string GetSettingsFile();

// The value of `key` in `section` of the file at `path`: true with `*value`
// filled when the key is there; false for a missing file, section or key.
bool ReadSetting(const char16_t* path, const char16_t* section, const char16_t* key, std::u16string* value);
// An integer: an optional sign and the leading decimal digits of the value
// ("12abc" is 12, "abc" 0); `defaultValue` when the key is missing or empty.
int ReadSettingInt(const char16_t* path, const char16_t* section, const char16_t* key, int defaultValue);
// Sets `key` in `section` to `value`: a null value removes the key, a null
// key removes the section with all its lines. Gives 0, or the error code of
// the system call that failed (the file then stays as it was);
// kErrorInvalidArgument for a text the file cannot hold: a line break, or
// a key with "=" or that begins with ";" or "[".
uint32_t WriteSetting(const char16_t* path, const char16_t* section, const char16_t* key, const char16_t* value);
// Runs `edit` with the file at `path` locked against every other writer, in
// this process and in others. Reads and writes of `path` on this thread
// meanwhile work on the file's text in memory, which replaces the file once,
// at the end, if it changed. Gives 0, or the error code of the final write
// (or of the opening: `edit` then runs on the file unlocked).
uint32_t EditSettings(const char16_t* path, const std::function<void()>& edit);

// ---- the text work, apart from the file system (used by the calls above)

// The value of `key` in `section` of `text`, as ReadSetting; a name or value
// that cannot be converted reads as a missing key.
bool FindSetting(const std::string& text, const char16_t* section, const char16_t* key, std::u16string* value);
// `text` with the write made, as WriteSetting; false when the write changes
// nothing, or when a text could not be converted (`*error` then holds the
// code of the failure, else 0; `text` is untouched).
bool ApplySetting(std::string* text, const char16_t* section, const char16_t* key, const char16_t* value,
                  uint32_t* error = nullptr);

}  // namespace vbu::platform
