// The settings file: its lines parsed and changed here; the system file
// (linux/SettingsFile.inc) locks it, reads it whole and replaces it.
#include "platform/internal/SettingsFile.h"

#include <cstring>
#include <functional>
#include <mutex>
#include <vector>

#include "platform/internal/CodePage.h"
#include "platform/internal/Errors.h"
#include "platform/internal/PathBytes.h"
#include "platform/internal/SysCalls.h"
#include "platform/internal/SystemText.h"
#include "platform/internal/WideText.h"

namespace vbu::platform::os {

// Opens the file at `path` and waits for its lock: shared (`exclusive`
// false, reading) or exclusive (read, change and write); `create` makes a
// missing file (then `*created`). The lock holds the file that has the name
// when it is taken. 0 with `*fd`, or the error code: kErrorNoFile for a
// missing file, EACCES for a file made read-only when `exclusive`.
uint32_t OpenLocked(const char* path, bool exclusive, bool create, int* fd, bool* created);
// The whole file of a descriptor from OpenLocked into `*bytes`.
uint32_t ReadLocked(int fd, std::string* bytes);
// Replaces the file `path`, open and locked as `fd`, with `bytes`, so that a
// failure at any point leaves the old file whole (a folder that takes no
// new file: the file is rewritten in place).
uint32_t ReplaceLocked(const char* path, int fd, const std::string& bytes);
// Releases the lock and the descriptor.
void CloseLocked(int fd);
// Removes the file that `path` names in the end (where a link points).
void Remove(const char* path);

}  // namespace vbu::platform::os

#if defined(__linux__)
#include "linux/SettingsFile.inc"
#elif defined(_WIN32)
#include "windows/SettingsFile.inc"
#else
#error "The platform layer has no SettingsFile files for this system yet."
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
  // Every search stays inside the line, so that a read is linear in the file.
  if (text[p] == '[') {
    std::size_t close = line.textEnd;
    while (close > p + 1 && text[close - 1] != ']') --close;
    line.kind = Line::kSection;
    line.nameBegin = p + 1;
    line.nameEnd = close > p + 1 ? close - 1 : line.textEnd;
  } else {
    const void* found = std::memchr(text.data() + p, '=', line.textEnd - p);
    if (!found) {
      line.kind = Line::kOther;
      return line;
    }
    std::size_t equals = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
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

// The name of the application's file. It is made at the first use and never
// destroyed: a host object that dies after the library's own objects, at
// exit, may still read or write a setting.
struct SettingsName {
  std::mutex guard;
  std::u16string path;
};

SettingsName& Name() {
  static SettingsName* const name = new SettingsName;
  return *name;
}

// Names that a line of the file can hold: no line breaks anywhere, and no
// key with "=" or that starts as a comment or a section header does.
bool CanHold(const char16_t* section, const char16_t* key, const char16_t* value) {
  if (!section || HasLineBreak(section) || HasLineBreak(key) || HasLineBreak(value)) return false;
  if (!key) return true;
  std::u16string name = Trimmed(key);
  return name.find(u'=') == std::u16string::npos && (name.empty() || (name[0] != u';' && name[0] != u'['));
}

// A file saved as UTF-16LE with a byte-order mark (an editor's "Unicode")
// is read as the same text in the system's bytes, and written back in its
// own form.
constexpr char kUtf16Mark[] = "\xFF\xFE";

bool IsUtf16(const std::string& raw) { return raw.size() >= 2 && raw.compare(0, 2, kUtf16Mark) == 0; }

uint32_t FromUtf16(const std::string& raw, std::string* text) {
  std::vector<unsigned short> units((raw.size() - 2) / 2);
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<unsigned short>(static_cast<unsigned char>(raw[2 + 2 * i]) |
                                           static_cast<unsigned char>(raw[3 + 2 * i]) << 8);
  }
  uint32_t error = 0;
  text->assign(units.size() * 3, '\0');
  long n = units.empty()
               ? 0
               : UnitsToBytes(units.data(), units.size(), text->data(), text->size(), CodePage::kSystem, &error);
  text->resize(n > 0 ? static_cast<std::size_t>(n) : 0);
  return n < 0 ? (error ? error : kErrorInvalidArgument) : 0;
}

uint32_t ToUtf16(const std::string& text, std::string* raw) {
  std::vector<unsigned short> units(text.size());
  uint32_t error = 0;
  long n = text.empty()
               ? 0
               : BytesToUnits(text.data(), text.size(), units.data(), units.size(), CodePage::kSystem, &error);
  if (n < 0) return error ? error : kErrorInvalidArgument;
  raw->assign(kUtf16Mark, 2);
  for (long i = 0; i < n; ++i) {
    raw->push_back(static_cast<char>(units[static_cast<std::size_t>(i)] & 0xFF));
    raw->push_back(static_cast<char>(units[static_cast<std::size_t>(i)] >> 8));
  }
  return 0;
}

// The file at a path, opened under its lock, as text to parse.
class LockedSettings {
 public:
  LockedSettings() = default;
  LockedSettings(const LockedSettings&) = delete;
  LockedSettings& operator=(const LockedSettings&) = delete;
  ~LockedSettings() {
    if (mFd >= 0) os::CloseLocked(mFd);
  }

  // 0, or the error code (kErrorNoFile for a missing file that is not to be made).
  uint32_t Open(const char* path, bool exclusive) {
    mPath = path;
    uint32_t error = os::OpenLocked(path, exclusive, exclusive, &mFd, &mCreated);
    std::string raw;
    if (error == 0) error = os::ReadLocked(mFd, &raw);
    if (error != 0) return error;
    mUtf16 = IsUtf16(raw);
    if (!mUtf16) {
      text = std::move(raw);
      return 0;
    }
    return FromUtf16(raw, &text);
  }
  // Replaces the file with `text`, in the file's own form.
  uint32_t Save() {
    if (!mUtf16) return os::ReplaceLocked(mPath.c_str(), mFd, text);
    std::string raw;
    uint32_t error = ToUtf16(text, &raw);
    return error != 0 ? error : os::ReplaceLocked(mPath.c_str(), mFd, raw);
  }
  // A file that Open made, and that is to stay unwritten, goes again.
  void Abandon() {
    if (mCreated) os::Remove(mPath.c_str());
  }

  std::string text;

 private:
  std::string mPath;
  int mFd = -1;
  bool mCreated = false;
  bool mUtf16 = false;
};

// The pass of EditSettings on this thread: its file's text, held in memory.
struct Batch {
  std::u16string path;
  std::string* text;
  bool changed;
};
thread_local Batch* tBatch = nullptr;

Batch* BatchOf(const char16_t* path) { return tBatch && path && tBatch->path == path ? tBatch : nullptr; }

}  // namespace

void SetSettingsFile(const char16_t* path) {
  std::lock_guard<std::mutex> lock(Name().guard);
  Name().path = path ? path : u"";
}

std::u16string GetSettingsFile() {
  std::lock_guard<std::mutex> lock(Name().guard);
  return Name().path;
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
  if (Batch* batch = BatchOf(path)) return FindSetting(*batch->text, section, key, value);
  PathBytes file(path ? AsUnits(path) : nullptr);
  LockedSettings settings;
  if (!file.Ok() || settings.Open(file.Get(), false) != 0) return false;
  return FindSetting(settings.text, section, key, value);
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
  // A name or value that would write lines that read back as something else.
  if (!CanHold(section, key, value)) return kErrorInvalidArgument;
  uint32_t error = 0;
  if (Batch* batch = BatchOf(path)) {
    if (ApplySetting(batch->text, section, key, value, &error)) batch->changed = true;
    return error;
  }
  LockedSettings settings;
  error = settings.Open(file.Get(), true);
  if (error != 0) return error;
  if (!ApplySetting(&settings.text, section, key, value, &error)) {
    settings.Abandon();
    return error;
  }
  return settings.Save();
}

uint32_t EditSettings(const char16_t* path, const std::function<void()>& edit) {
  PathBytes file(path ? AsUnits(path) : nullptr);
  LockedSettings settings;
  uint32_t error = tBatch ? 0 : file.Ok() ? settings.Open(file.Get(), true) : file.Error();
  // Inside another pass, or no file to hold (or one that cannot be opened
  // to write): the pass runs on the file as it is, each write on its own.
  if (tBatch || error != 0) {
    edit();
    return error;
  }
  Batch batch = {path, &settings.text, false};
  struct Scope {
    explicit Scope(Batch* batch) { tBatch = batch; }
    ~Scope() { tBatch = nullptr; }
  } scope(&batch);
  edit();
  if (batch.changed) return settings.Save();
  settings.Abandon();
  return 0;
}

}  // namespace vbu::platform
