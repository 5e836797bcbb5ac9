#include "messaging/CMessageAction.h"

namespace {
const unsigned short kEmptyText[1] = {0};
}  // namespace

std::atomic<long> CMessageAction::sDefaultType{1};

CMessageAction::CMessageAction() = default;

CMessageAction::~CMessageAction() = default;

CMessageAction* CMessageAction::GetMessageAction() { return &sMessageAction; }

void CMessageAction::Error(void* source, const unsigned short* text, long type) {
  sMessageAction._Error(source, text, GetWindowType(type));
}

void CMessageAction::Warning(void* source, const unsigned short* text, long type) {
  sMessageAction._Warning(source, text, GetWindowType(type));
}

void CMessageAction::Inform(void* source, const unsigned short* text, long type) {
  sMessageAction._Inform(source, text, GetWindowType(type));
}

void CMessageAction::InformWithoutReturn(void* source, const unsigned short* text, long type) {
  sMessageAction._InformWithoutReturn(source, text, GetWindowType(type));
}

void CMessageAction::SimpleOutput(void* source, const unsigned short* text, long type) {
  sMessageAction._SimpleOutput(source, text, GetWindowType(type));
}

void CMessageAction::Return(long type) { sMessageAction._Return(GetWindowType(type)); }

void CMessageAction::Clear(long type) { sMessageAction._Clear(GetWindowType(type)); }

void CMessageAction::SetDefault(long type) { sDefaultType.store(type, std::memory_order_relaxed); }

long CMessageAction::GetWindowType(long type) {
  return type != 0 ? type : sDefaultType.load(std::memory_order_relaxed);
}

void CMessageAction::_Error(void* source, const unsigned short* text, long type) {
  Send(kInteractionError, source, text, type);
}

void CMessageAction::_Warning(void* source, const unsigned short* text, long type) {
  Send(kInteractionWarning, source, text, type);
}

void CMessageAction::_Inform(void* source, const unsigned short* text, long type) {
  Send(kInteractionInform, source, text, type);
}

void CMessageAction::_InformWithoutReturn(void* source, const unsigned short* text, long type) {
  Send(kInteractionInformWithoutReturn, source, text, type);
}

void CMessageAction::_SimpleOutput(void* source, const unsigned short* text, long type) {
  Send(kInteractionSimpleOutput, source, text, type);
}

void CMessageAction::_Return(long type) { Send(kInteractionReturn, nullptr, kEmptyText, type); }

void CMessageAction::_Clear(long type) { Send(kInteractionClear, nullptr, nullptr, type); }

void CMessageAction::Send(long kind, void* source, const unsigned short* text, long type) {
  for (long window = 0; window < 6; ++window) {
    if (type & (1L << window)) {
      BroadcastInteraction(kMsgInteractionBase + window * kMsgInteractionWindowStep + kind, source, text);
    }
  }
}

void CMessageAction::BroadcastInteraction(long message, void* source, const unsigned short* text) {
  InteractionRecord record{source, text};
  BroadcastMessage(message, &record);
}
