// CScriptFile: the character and token scanners on an arbitrary file, in an
// order of calls drawn from the input (the calls a host's parser makes).
#include "FuzzSupport.h"

#include <VantoroBasicUtils/files/CScriptFile.h>
#include <VantoroBasicUtils/text/MStringList.h>

using namespace vbu::literals;

namespace {

// Reaches the scanner's protected primitives as a host's parser does.
class Scanner : public CScriptFile {
 public:
  using CScriptFile::GetListMember;
  using CScriptFile::GetOneChar;
  using CScriptFile::GetString;
  using CScriptFile::GetString2;
  using CScriptFile::GetToken;
  using CScriptFile::SkipOneLine;
  using CScriptFile::StopUntilChars;
};

const unsigned short kStops[] = {'=', ',', ';', '(', ')', '"', '#', '/', ' ', '\t'};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  // The calls first (a few bytes), the file after them.
  std::vector<uint8_t> calls = in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange<std::size_t>(0, 48));
  std::string file = in.ConsumeRemainingBytesAsString();
  const auto path = vbu::fuzz::ScratchFolder() / "script.txt";
  vbu::fuzz::WriteFile(path, file.data(), file.size());

  Scanner script;
  if (script.OpenForParse(vbu::fuzz::Text(path.string())) != 1) return 0;
  MString word;
  MString rest;
  MStringList list;
  const MString stops(u"=,;()"_u16);
  const unsigned short delimiters[] = {' ', '\t', ',', '=', 0};
  // Each call is repeated until the end: a call that never reaches it
  // (one that stands still) is bounded by the steps.
  int steps = 0;
  for (uint8_t call : calls) {
    const unsigned short stop = kStops[(call >> 4) % (sizeof kStops / sizeof kStops[0])];
    int result = 1;
    for (int again = 0; again < 64 && result != -1 && ++steps < 4096; ++again) {
      switch (call & 0x0F) {
        case 0: result = script.GetOneChar(); break;
        case 1: result = script.SkipOneLine(); break;
        case 2: result = script.SkipWhiteSpaceAndChar(stop); break;
        case 3: result = script.GetString(&word, stop); break;
        case 4: result = script.GetString2(&word, stops); break;
        case 5: {
          unsigned short found = 0;
          result = script.StopUntilChars(stops, &found);
          break;
        }
        case 6: result = script.GetToken(&word, delimiters, &rest); break;
        case 7: result = script.GetListMember(&list) == 1 ? 1 : -1; break;
        default:
          (void)script.GetCurrentLineNum();
          (void)MString(script.GetCurrentLine()).GetLength();
          result = -1;
      }
      VBU_FUZZ_CHECK(word.GetLength() <= CScriptFile::kMaxListItem);
    }
  }
  return 0;
}
