#include "messaging/CMessageConsole.h"

#include <cstdio>
#include <string>

#include "messaging/CMessageAction.h"
#include "platform/internal/CodePage.h"
#include "platform/internal/WideText.h"

namespace {

const unsigned short kError[] = {'E', 'r', 'r', 'o', 'r', '\t', 0};
const unsigned short kWarning[] = {'W', 'a', 'r', 'n', 'i', 'n', 'g', '\t', 0};
const unsigned short kInfo[] = {'I', 'n', 'f', 'o', '\t', 0};
const unsigned short kEmpty[] = {0};

// A terminated 16-bit text in the system's code page (UTF-8 here).
std::string ToSystemBytes(const unsigned short* text) {
  if (!text) return std::string();
  std::size_t length = vbu::wtext::Length(text);
  std::string bytes(length * 3, '\0');  // three bytes at most for each unit
  long n = vbu::platform::UnitsToBytes(text, length, bytes.data(), bytes.size(), vbu::platform::CodePage::kSystem);
  bytes.resize(n < 0 ? 0 : static_cast<std::size_t>(n));
  return bytes;
}

}  // namespace

CMessageConsole::CMessageConsole() : mWindowType(0) {
  CMessageAction::GetMessageAction()->AddListener(this);
  SetWindowType(4);
}

CMessageConsole::CMessageConsole(const CMessageConsole& other) : LListener(other), mWindowType(other.mWindowType) {}

CMessageConsole& CMessageConsole::operator=(const CMessageConsole& other) {
  LListener::operator=(other);
  mWindowType = other.mWindowType;
  return *this;
}

CMessageConsole::~CMessageConsole() = default;

bool CMessageConsole::ListenToMessage(long message, void* param) {
  long offset = message - kMsgInteractionBase;
  long window = offset / kMsgInteractionWindowStep;
  long kind = offset % kMsgInteractionWindowStep;
  if (offset < 0 || window > 4) return false;
  const unsigned short* text = param ? static_cast<InteractionRecord*>(param)->text : nullptr;
  switch (kind) {
    case kInteractionError: Message(0, kError, text); return true;
    case kInteractionWarning: Message(1, kWarning, text); return true;
    case kInteractionInform: Message(2, kInfo, text); return true;
    case kInteractionInformWithoutReturn: Message(3, kInfo, text); return true;
    case kInteractionSimpleOutput: Message(4, kEmpty, text); return true;
    case kInteractionReturn: Message(5, kEmpty, text); return true;
    case kInteractionClear: return window == 0;  // nothing to clear on a console
    default: return false;
  }
}

bool CMessageConsole::CheckMessage(long message) {
  long window;
  switch (mWindowType) {
    case 1: window = 0; break;
    case 2: window = 1; break;
    case 4: window = 2; break;
    default: return false;
  }
  long kind = message - kMsgInteractionBase - window * kMsgInteractionWindowStep;
  return kind >= kInteractionError && kind <= kInteractionReturn && kind != kInteractionClear;
}

void CMessageConsole::Message(int severity, const unsigned short* label, const unsigned short* text) {
  bool withLabel, withLineEnd;
  switch (severity) {
    case 0: case 1: case 2: withLabel = withLineEnd = true; break;
    case 3: withLabel = true; withLineEnd = false; break;
    case 4: withLabel = withLineEnd = false; break;
    case 5: withLabel = false; withLineEnd = true; break;
    default: withLabel = withLineEnd = (severity & 0xFF) != 0;
  }
  // One write per message keeps the pieces of a message together.
  std::string line;
  if (withLabel) line += ToSystemBytes(label) + '\t';
  line += ToSystemBytes(text);
  if (withLineEnd) line += '\n';
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fflush(stdout);
}
