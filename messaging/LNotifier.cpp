#include "messaging/LNotifier.h"

#include <cstdint>

#include "messaging/LResponder.h"

// ---- LNotifier

LNotifier::LNotifier() = default;

LNotifier::LNotifier(const LNotifier& other) : LBroadcaster(other) {}

LNotifier& LNotifier::operator=(const LNotifier&) { return *this; }

LNotifier::~LNotifier() = default;

void LNotifier::Notify(long id, long arg1, long arg2) {
  if (!HasListenerList() || !IsBroadcasting()) return;
  NotifyRecord record{id, this, arg1, arg2};
  BroadcastMessage(kMsgNotify, &record);
}

void LNotifier::Notify(long id, const unsigned short* text) {
  Notify(id, 0, static_cast<long>(reinterpret_cast<intptr_t>(text)));
}

void LNotifier::AddResponder(LResponder* responder) { AddListener(responder); }

// ---- LResponder

LResponder::LResponder() = default;

LResponder::LResponder(const LResponder& other) : LListener(other) {}

LResponder& LResponder::operator=(const LResponder& other) {
  LListener::operator=(other);
  return *this;
}

LResponder::~LResponder() = default;

bool LResponder::ListenToMessage(long message, void* param) {
  if (message != kMsgNotify || !param) return false;
  const NotifyRecord* record = static_cast<const NotifyRecord*>(param);
  return Respond(record->id, record->notifier, record->arg1, record->arg2);
}

bool LResponder::Respond(long, LNotifier*, long, long) { return false; }

void LResponder::PassNotify(long id, LNotifier* notifier, long arg1, long arg2) {
  LBroadcaster* relay = dynamic_cast<LBroadcaster*>(this);
  if (!relay) return;
  NotifyRecord record{id, notifier, arg1, arg2};
  relay->BroadcastMessage(kMsgNotify, &record);
}
