#include "files/CScriptFile.h"

#include <cstdio>
#include <memory>
#include <vector>

#include "messaging/CMessageAction.h"
#include "platform/internal/FileSystem.h"
#include "platform/internal/WideText.h"
#include "text/MStringList.h"

using namespace vbu::literals;
namespace vp = vbu::platform;

namespace {

bool IsWhite(unsigned short c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Writes `text` to standard output in the system's code page.
void PrintToStandardOutput(MString text) {
  std::vector<char> bytes(static_cast<std::size_t>(text.GetLength()) * 3 + 1);
  int count = text.ExportASCII(bytes.data(), static_cast<int>(bytes.size()) - 1, kCharacterSetWindows);
  std::fwrite(bytes.data(), 1, static_cast<std::size_t>(count), stdout);
  std::fflush(stdout);
}

}  // namespace

CScriptFile::CScriptFile() : mCursor(nullptr), mLineNumber(0), mTokenPosition(nullptr) {}

CScriptFile::~CScriptFile() {
  if (mWorkingPath.GetLength() != 0) vp::RemoveFile(mWorkingPath);
}

int CScriptFile::OpenForParse(const unsigned short* path) {
  MString next = path ? MString(path) : MString();
  // A second parse takes the place of the first: its file is closed and,
  // being a working file, removed; the scanner starts afresh.
  FClose();
  if (mWorkingPath.GetLength() != 0 && mWorkingPath != next) vp::RemoveFile(mWorkingPath);
  mCursor = nullptr;
  mTokenPosition = nullptr;
  mLineNumber = 0;
  mCurrentLine = MString();
  mTokenLine = MString();
  mWorkingPath = next;
  MFileSpecWin spec(mWorkingPath);
  if (FOpen(spec, file_read_text) == 0) return 1;
  MString text;
  text.Format(u"Error: cannot open working file %s to read mode.\n"_u16, static_cast<const unsigned short*>(mWorkingPath));
  text.PrintToStdout();
  return 0;
}

int CScriptFile::ReadLine() {
  // FGetts takes at most 2 * count - 1 bytes, each at most one unit.
  std::unique_ptr<unsigned short[]> line(new unsigned short[kMaxLineBytes + 1]);
  if (FGetts(line.get(), (kMaxLineBytes + 1) / 2) != 0) return -1;
  ++mLineNumber;
  mCurrentLine = line.get();
  mCursor = mCurrentLine;
  return 1;
}

int CScriptFile::GetOneChar() {
  if (mCursor && mCursor[0] != 0 && mCursor[1] != 0) {
    ++mCursor;
    return 1;
  }
  return ReadLine();
}

int CScriptFile::SkipOneLine() { return ReadLine(); }

int CScriptFile::SkipWhiteSpaceAndChar(unsigned short extra) {
  if (!mCursor && GetOneChar() == -1) return -1;
  for (;;) {
    while (IsWhite(*mCursor) || (*mCursor == extra && extra != 0) || *mCursor == 0) {
      if (GetOneChar() == -1) return -1;
    }
    if (!((mCursor[0] == '/' && mCursor[1] == '/') || mCursor[0] == '#')) return 1;
    if (SkipOneLine() == -1) return -1;
  }
}

template <typename Stops>
int CScriptFile::Collect(MString* word, int limit, Stops stops) {
  if (!word) return -1;
  if (!mCursor && GetOneChar() == -1) return -1;
  std::vector<unsigned short> collected;
  // A word stops at the limit too: the rest comes as the next word.
  while (*mCursor != 0 && !IsWhite(*mCursor) && !stops(*mCursor) && static_cast<int>(collected.size()) < limit) {
    collected.push_back(*mCursor);
    if (GetOneChar() == -1) return -1;
  }
  collected.push_back(0);
  *word = collected.data();
  return 1;
}

int CScriptFile::GetString(MString* word, unsigned short stop) {
  return Collect(word, kMaxWord, [stop](unsigned short c) { return c == stop; });
}

int CScriptFile::GetString2(MString* word, const MString& stops) {
  const unsigned short* set = stops;
  return Collect(word, kMaxWord, [set](unsigned short c) { return vbu::wtext::Find(set, c) != nullptr; });
}

int CScriptFile::StopUntilChars(const MString& chars, unsigned short* found) {
  if (!mCursor && GetOneChar() == -1) return -1;
  const unsigned short* set = chars;
  auto wanted = [set](unsigned short c) { return c != 0 && vbu::wtext::Find(set, c) != nullptr; };
  if (!wanted(*mCursor)) {
    while (IsWhite(*mCursor) || *mCursor == 0) {
      if (GetOneChar() == -1) return -1;
    }
  }
  if (wanted(*mCursor)) {
    if (found) *found = *mCursor;
    return 1;
  }
  PrintSyntaxError(u"Syntax error"_u16);
  return 0;
}

int CScriptFile::GetToken(MString* token, const unsigned short* delimiters, MString* rest) {
  if (!token || !delimiters) return -1;
  auto isComment = [](const unsigned short* t) { return t[0] == '/' && t[1] == '/'; };
  unsigned short* found = mTokenPosition ? vbu::wtext::Tokenize(nullptr, delimiters, &mTokenPosition) : nullptr;
  while (!found || isComment(found)) {
    if (ReadLine() != 1) return -1;
    mTokenLine = mCurrentLine;
    // The character scanner's place was in the line cut here.
    mCursor = nullptr;
    if (mCurrentLine.GetLength() > 0) mCurrentLine.Cut(0, mCurrentLine.GetLength() - 1);
    found = vbu::wtext::Tokenize(mTokenLine, delimiters, &mTokenPosition);
  }
  *token = found;
  if (rest) *rest = MString();
  return 1;
}

int CScriptFile::GetListMember(MStringList* list) {
  if (!list) return 0;
  list->DeleteAll();
  if (SkipWhiteSpaceAndChar('(') != 1) return 0;
  for (;;) {
    // The file may end between items: that ends the list.
    if (SkipWhiteSpaceAndChar(',') != 1) return 1;
    MString item;
    auto stop = [](unsigned short c) { return c == ',' || c == ')'; };
    if (Collect(&item, kMaxListItem, stop) != 1) return 0;
    if (item.GetLength() == 0) break;
    list->Add(item);
    if (*mCursor == ')') break;
  }
  SkipWhiteSpaceAndChar(')');
  return 1;
}

void CScriptFile::PrintSyntaxError(const unsigned short* text) {
  MString message;
  message.Format(u"syntax error: %s near line %d\n              >>>  %s"_u16, text ? text : u""_u16, mLineNumber,
                 static_cast<const unsigned short*>(mCurrentLine));
  CMessageAction::Error(nullptr, message, 2);
}

int CScriptFile::WriteString2File(MString* text) {
  if (!text) return 0;
  // Whole: a long text is never cut or dropped.
  std::vector<char> bytes(static_cast<std::size_t>(text->GetLength()) * 3 + 1);
  int count = text->ExportASCII(bytes.data(), static_cast<int>(bytes.size()) - 1, kCharacterSetWindows);
  if (FWrite(bytes.data(), count) == count) return 1;
  MString message;
  message.Format(u"Error: write failed(%s)\nCheck your free disk size\n"_u16,
                 static_cast<const unsigned short*>(GetFilePath()));
  PrintToStandardOutput(message);
  return 0;
}

int CScriptFile::WriteStringList2File(MStringList* list) {
  if (!list) return 1;
  for (MString* text = list->GetHead(); text; text = list->GetNext()) {
    if (WriteString2File(text) != 1) return 0;
  }
  return 1;
}

// The class constants have their one definition here, so that a host linking
// the library as a DLL reaches them like any other member.
constexpr int CScriptFile::kMaxWord;
constexpr int CScriptFile::kMaxListItem;
constexpr int CScriptFile::kMaxLineBytes;
