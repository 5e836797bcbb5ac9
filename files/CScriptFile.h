// CScriptFile.h: a plain file with a small text scanner, for the parsers of
// host script languages. It knows lines, white space (blank, tab, CR, LF),
// comments ("//" or "#" where the scanner stops; "//" tokens), bare words,
// words up to chosen stoppers and parenthesised lists. Two ways of reading
// one file, kept apart by a parser: the character scanner (GetOneChar and
// what builds on it) and the token scanner (GetToken). The end of the file
// shows as -1.
//
// The file given to OpenForParse is a working file: the destructor DELETES
// it from disk, whether parsing went well or not. Parse a copy made for the
// purpose, never the user's own file.
//
//   class CMyScript : public CScriptFile {
//    public:
//     // "key=value" lines: the keys, one by one.
//     bool NextKey(MString* key) { return SkipWhiteSpaceAndChar(0) == 1 && GetString(key, '=') == 1; }
//   };
//   // First the working copy, since the parser deletes the file it parses.
//   MFileUniv original, copy;
//   char bytes[4096];
//   if (original.FOpen(u"/media/menu.txt"_u16, MFile::file_read_binary) == 0 &&
//       copy.FOpen(u"/tmp/menu.txt.parse"_u16, MFile::file_create_binary) == 0) {
//     for (int n; (n = original.FRead(bytes, sizeof bytes)) > 0;) copy.FWrite(bytes, n);
//     copy.FClose();
//   }
//   CMyScript script;  // deletes /tmp/menu.txt.parse when it goes; /media/menu.txt stays
//   if (script.OpenForParse(u"/tmp/menu.txt.parse"_u16)) {
//     MString key;
//     while (script.NextKey(&key)) std::printf("%s\n", UStringUtils::TtoA(key));
//   }
#pragma once

#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/text/MString.h>

class MStringList;

class VBU_API CScriptFile : public MFileUniv {
 public:
  // Longest word of GetString and GetString2, and of a list item.
  static constexpr int kMaxWord = 2047;
  static constexpr int kMaxListItem = 9999;
  // Longest line in bytes; a longer one goes on as the next line.
  static constexpr int kMaxLineBytes = 65535;

  CScriptFile();
  // Removes the working file, if there is one, and closes.
  ~CScriptFile() override;
  CScriptFile(const CScriptFile&) = delete;
  CScriptFile& operator=(const CScriptFile&) = delete;

  // Opens `path` to read as text and makes it the working file, which the
  // destructor deletes: 1, or 0 (the path stays the working file). A file
  // parsed before is closed, and its working file removed, first.
  int OpenForParse(const unsigned short* path);
  // Steps over white space, `extra` characters and comments: 1, standing on
  // the first other character, or -1 at the end.
  int SkipWhiteSpaceAndChar(unsigned short extra);
  // Reports "syntax error: <text> near line <n>" and the line, as an error to window 2.
  void PrintSyntaxError(const unsigned short* text);
  // Writes the text in the system's code page, no line end added: 1, or 0
  // with the failure printed to standard output.
  int WriteString2File(MString* text);
  // The same for each string in order; stops at the first failure. 1 or 0.
  int WriteStringList2File(MStringList* list);
  // The number of the current line (1-based; 0 before the first).
  int GetCurrentLineNum() const { return mLineNumber; }
  const unsigned short* GetCurrentLine() const { return mCurrentLine; }

 protected:
  // Moves to the next character, reading the next line at a line's end: 1 or -1.
  int GetOneChar();
  // Reads the next line, whatever is left of this one: 1 or -1.
  int SkipOneLine();
  // Collects a word from the current character up to white space or
  // `stop` (at most kMaxWord characters); the scanner stands on the
  // character that ended it. 1, or -1 at the end (`word` untouched).
  int GetString(MString* word, unsigned short stop);
  // The same, with every character of `stops` a stopper.
  int GetString2(MString* word, const MString& stops);
  // Steps over white space (not comments) to one of `chars`: 1 with it in
  // `*found`; 0 with "Syntax error" reported for any other; -1 at the end.
  int StopUntilChars(const MString& chars, unsigned short* found);
  // The next token between `delimiters` (a set that may change from call
  // to call), reading lines as needed; a token that starts with "//" ends
  // its line. `rest` is emptied. 1 or -1. The position is this object's.
  int GetToken(MString* token, const unsigned short* delimiters, MString* rest);
  // Reads "( item, item item )" over any lines: 1 (also when the file ends
  // between items), or 0 when it ends before the list or inside an item.
  int GetListMember(MStringList* list);

 private:
  // Reads the next line into mCurrentLine and stands on its first character: 1 or -1.
  int ReadLine();
  // Collects a word up to a character for which `stops` is true.
  template <typename Stops>
  int Collect(MString* word, int limit, Stops stops);

  MString mWorkingPath;
  const unsigned short* mCursor;
  MString mCurrentLine;
  MString mTokenLine;
  int mLineNumber;
  unsigned short* mTokenPosition;  // where GetToken goes on in mTokenLine
};
