#include "messaging/CMessageConsole.h"

#include <cstdio>
#include <string>

#include "messaging/CMessageAction.h"

namespace {

const unsigned short kError[] = {'E', 'r', 'r', 'o', 'r', '\t', 0};
const unsigned short kWarning[] = {'W', 'a', 'r', 'n', 'i', 'n', 'g', '\t', 0};
const unsigned short kInfo[] = {'I', 'n', 'f', 'o', '\t', 0};
const unsigned short kEmpty[] = {0};

// UTF-8 of a terminated UTF-16 text; a lone surrogate becomes U+FFFD.
std::string ToUtf8(const unsigned short* text) {
  std::string out;
  if (!text) return out;
  for (const unsigned short* p = text; *p; ++p) {
    uint32_t c = *p;
    if (c >= 0xD800 && c <= 0xDBFF && p[1] >= 0xDC00 && p[1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (p[1] - 0xDC00);
      ++p;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = 0xFFFD;
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
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
  if (withLabel) line += ToUtf8(label) + '\t';
  line += ToUtf8(text);
  if (withLineEnd) line += '\n';
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fflush(stdout);
}
