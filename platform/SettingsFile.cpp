// The settings file: its lines parsed and changed here; the system file
// (linux/SettingsFile.inc) reads it whole and replaces it.
#include "platform/internal/SettingsFile.h"

#include <mutex>
#include <vector>

#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"
#include "platform/internal/SystemText.h"
#include "platform/internal/WideText.h"

namespace vbu::platform::os {

// The whole file at `path` into `*bytes`: 0, or the error code.
uint32_t ReadWholeFile(const char* path, std::string* bytes);
// Replaces the file at `path` with `bytes`, so that a failure at any point
// leaves the old file whole: 0, or the error code.
uint32_t ReplaceFile(const char* path, const std::string& bytes);

}  // namespace vbu::platform::os

#if defined(__linux__)
#include "linux/SettingsFile.inc"
#else
#error "The platform layer has no settings file for this system yet."
#endif

namespace vbu::platform {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// One line of the file, as offsets into its text.
struct Line {
  enum Kind { kBlank, kComment, kOther, kSection, kKey };
  std::size_t begin = 0;       // first byte
  std::size_t textEnd = 0;     // before its line end
  std::size_t end = 0;         // after its line end (CR LF or LF; none on an unended last line)
  Kind kind = kBlank;          // kOther: a line that is none of the rest (no "=")
  std::size_t nameBegin = 0, nameEnd = 0;    // section or key name, trimmed
  std::size_t valueStart = 0;                // after "=" and the blanks behind it
  std::size_t valueBegin = 0, valueEnd = 0;  // the value, trimmed and unquoted
};

Line ParseLine(const std::string& text, std::size_t begin) {
  Line line;
  line.begin = begin;
  std::size_t feed = text.find('\n', begin);
  line.end = feed == std::string::npos ? text.size() : feed + 1;
  line.textEnd = feed == std::string::npos ? text.size() : feed;
  if (line.textEnd > begin && text[line.textEnd - 1] == '\r') --line.textEnd;

  std::size_t p = begin;
  while (p < line.textEnd && IsBlank(text[p])) ++p;
  if (p == line.textEnd) return line;
  if (text[p] == ';') {
    line.kind = Line::kComment;
    return line;
  }
  if (text[p] == '[') {
    std::size_t close = text.rfind(']', line.textEnd - 1);
    std::size_t nameEnd = close != std::string::npos && close > p ? close : line.textEnd;
    line.kind = Line::kSection;
    line.nameBegin = p + 1;
    line.nameEnd = nameEnd;
  } else {
    std::size_t equals = text.find('=', p);
    if (equals == std::string::npos || equals >= line.textEnd) {
      line.kind = Line::kOther;
      return line;
    }
    line.kind = Line::kKey;
    line.nameBegin = p;
    line.nameEnd = equals;
    std::size_t v = equals + 1;
    while (v < line.textEnd && IsBlank(text[v])) ++v;
    line.valueStart = line.valueBegin = v;
    line.valueEnd = line.textEnd;
  }
  // Names lose the blanks around them.
  while (line.nameBegin < line.nameEnd && IsBlank(text[line.nameBegin])) ++line.nameBegin;
  while (line.nameEnd > line.nameBegin && IsBlank(text[line.nameEnd - 1])) --line.nameEnd;
  if (line.kind == Line::kKey) {
    while (line.valueEnd > line.valueBegin && IsBlank(text[line.valueEnd - 1])) --line.valueEnd;
    // Then one pair of matching quotes.
    if (line.valueEnd - line.valueBegin >= 2) {
      char first = text[line.valueBegin];
      if ((first == '"' || first == '\'') && text[line.valueEnd - 1] == first) {
        ++line.valueBegin;
        --line.valueEnd;
      }
    }
  }
  return line;
}

std::vector<Line> ParseLines(const std::string& text) {
  std::vector<Line> lines;
  // A byte-order mark belongs to no line's text; it stays where it is.
  std::size_t p = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
  if (p == 3) {
    Line line = ParseLine(text, 3);
    line.begin = 0;
    lines.push_back(line);
    p = line.end;
  }
  while (p < text.size()) {
    lines.push_back(ParseLine(text, p));
    p = lines.back().end;
  }
  return lines;
}

// A caller's name without the blanks and tabs around it.
std::u16string Trimmed(const char16_t* name) {
  std::u16string text(name);
  std::size_t first = text.find_first_not_of(u" \t");
  if (first == std::u16string::npos) return {};
  return text.substr(first, text.find_last_not_of(u" \t") - first + 1);
}

// The conversions below note a failure in `*error` (0 until one fails): a
// name that cannot be read must not pass for another name, nor a value for
// an empty one, or a write would add a second key or section.
bool NameIs(const std::string& text, const Line& line, const std::u16string& name, uint32_t* error) {
  std::u16string own = FromSystemBytes(text.data() + line.nameBegin, line.nameEnd - line.nameBegin, error);
  return *error == 0 && wtext::CompareNoCase(AsUnits(own.c_str()), AsUnits(name.c_str())) == 0;
}

std::u16string ValueOf(const std::string& text, const Line& line, uint32_t* error) {
  return FromSystemBytes(text.data() + line.valueBegin, line.valueEnd - line.valueBegin, error);
}

// The lines of the first section named `section`: [*first, *last) with the
// header at *first; false when there is none (or a name could not be read).
bool FindSection(const std::string& text, const std::vector<Line>& lines, const std::u16string& section,
                 std::size_t* first, std::size_t* last, uint32_t* error) {
  for (std::size_t i = 0; i < lines.size() && *error == 0; ++i) {
    if (lines[i].kind != Line::kSection || !NameIs(text, lines[i], section, error)) continue;
    std::size_t j = i + 1;
    while (j < lines.size() && lines[j].kind != Line::kSection) ++j;
    *first = i;
    *last = j;
    return true;
  }
  return false;
}

// The first line of [first, last) that holds `key`, or `last`.
std::size_t FindKey(const std::string& text, const std::vector<Line>& lines, std::size_t first, std::size_t last,
                    const std::u16string& key, uint32_t* error) {
  for (std::size_t i = first; i < last && *error == 0; ++i) {
    if (lines[i].kind == Line::kKey && NameIs(text, lines[i], key, error)) return i;
  }
  return last;
}

bool HasLineBreak(const char16_t* text) {
  for (; text && *text; ++text) {
    if (*text == u'\r' || *text == u'\n') return true;
  }
  return false;
}

// Where a line is to follow `line`: at its end, which gets a line end first
// if it has none. An unended last line may stop at a CR of its own, which
// then needs only the LF (another CR would become part of its value).
std::size_t EndLine(std::string* text, const Line& line) {
  if (line.end > line.begin && (*text)[line.end - 1] == '\n') return line.end;
  const char* ending = line.end > line.textEnd ? "\n" : "\r\n";
  text->insert(line.end, ending);
  return line.end + std::char_traits<char>::length(ending);
}

std::mutex& WriteGuard() {
  // Writes of the process read, change and replace the file one at a time.
  static std::mutex guard;
  return guard;
}

std::mutex& NameGuard() {
  static std::mutex guard;
  return guard;
}

std::u16string& SettingsFileName() {
  static std::u16string name;
  return name;
}

}  // namespace

void SetSettingsFile(const char16_t* path) {
  std::lock_guard<std::mutex> lock(NameGuard());
  SettingsFileName() = path ? path : u"";
}

std::u16string GetSettingsFile() {
  std::lock_guard<std::mutex> lock(NameGuard());
  return SettingsFileName();
}

bool FindSetting(const std::string& text, const char16_t* section, const char16_t* key, std::u16string* value) {
  if (!section || !key) return false;
  std::vector<Line> lines = ParseLines(text);
  std::size_t first = 0, last = 0;  // set whenever the section is found; -O3 cannot see that
  uint32_t error = 0;
  if (!FindSection(text, lines, Trimmed(section), &first, &last, &error)) return false;
  std::size_t at = FindKey(text, lines, first + 1, last, Trimmed(key), &error);
  if (at == last || error != 0) return false;
  std::u16string found = ValueOf(text, lines[at], &error);
  if (error != 0) return false;
  if (value) *value = found;
  return true;
}

bool ApplySetting(std::string* text, const char16_t* section, const char16_t* key, const char16_t* value,
                  uint32_t* failure) {
  uint32_t ignored = 0;
  uint32_t* error = failure ? failure : &ignored;
  *error = 0;
  if (!section) return false;
  // The bytes of what may be written, first: a failure changes nothing.
  const std::string sectionBytes = ToSystemBytes(section, error);
  const std::string keyBytes = ToSystemBytes(key, error);
  const std::string valueBytes = ToSystemBytes(value, error);
  if (*error != 0) return false;
  std::vector<Line> lines = ParseLines(*text);
  std::size_t first = 0, last = 0;  // set whenever the section is found; -O3 cannot see that
  bool found = FindSection(*text, lines, Trimmed(section), &first, &last, error);
  if (*error != 0) return false;
  if (!key) {
    if (!found) return false;
    std::size_t end = last < lines.size() ? lines[last].begin : text->size();
    text->erase(lines[first].begin, end - lines[first].begin);
    return true;
  }
  if (!found) {
    if (!value) return false;
    // A new section goes at the end, right after the last line.
    if (!lines.empty()) EndLine(text, lines.back());
    text->append("[" + sectionBytes + "]\r\n" + keyBytes + "=" + valueBytes + "\r\n");
    return true;
  }
  std::size_t at = FindKey(*text, lines, first + 1, last, Trimmed(key), error);
  if (*error != 0) return false;
  if (at != last) {
    const Line& line = lines[at];
    if (!value) {
      text->erase(line.begin, line.end - line.begin);
      return true;
    }
    if (ValueOf(*text, line, error) == value || *error != 0) return false;
    // The line keeps its spelling of the name, up to where its value starts.
    text->replace(line.valueStart, line.end - line.valueStart, valueBytes + "\r\n");
    return true;
  }
  if (!value) return false;
  // A new key follows the last line of the section that is neither blank nor
  // a comment, so blank lines and comments before the next section stay there.
  std::size_t after = first;
  for (std::size_t i = first + 1; i < last; ++i) {
    if (lines[i].kind == Line::kKey || lines[i].kind == Line::kOther) after = i;
  }
  text->insert(EndLine(text, lines[after]), keyBytes + "=" + valueBytes + "\r\n");
  return true;
}

bool ReadSetting(const char16_t* path, const char16_t* section, const char16_t* key, std::u16string* value) {
  PathBytes file(AsUnits(path));
  std::string text;
  if (!file.Ok() || os::ReadWholeFile(file.Get(), &text) != 0) return false;
  return FindSetting(text, section, key, value);
}

int ReadSettingInt(const char16_t* path, const char16_t* section, const char16_t* key, int defaultValue) {
  std::u16string value;
  if (!ReadSetting(path, section, key, &value) || value.empty()) return defaultValue;
  // The value is trimmed already: a sign and digits, or no number at all.
  if (value[0] != u'+' && value[0] != u'-' && (value[0] < u'0' || value[0] > u'9')) return 0;
  return wtext::ToInt(AsUnits(value.c_str()));
}

uint32_t WriteSetting(const char16_t* path, const char16_t* section, const char16_t* key, const char16_t* value) {
  PathBytes file(path ? AsUnits(path) : nullptr);
  if (!file.Ok()) return file.Error();
  // A line break in a name or value would write lines that read back as something else.
  if (!section || HasLineBreak(section) || HasLineBreak(key) || HasLineBreak(value)) return kErrorInvalidArgument;
  std::lock_guard<std::mutex> lock(WriteGuard());
  std::string text;
  uint32_t error = os::ReadWholeFile(file.Get(), &text);
  if (error == kErrorNoFile) {
    text.clear();
  } else if (error != 0) {
    return error;
  }
  if (!ApplySetting(&text, section, key, value, &error)) return error;
  return os::ReplaceFile(file.Get(), text);
}

}  // namespace vbu::platform
