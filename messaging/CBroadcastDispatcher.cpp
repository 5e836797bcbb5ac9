#include "messaging/CBroadcastDispatcher.h"

#include "messaging/LBroadcaster.h"
#include "messaging/LListener.h"

CBroadcastDispatcher* CBroadcastDispatcher::sBroadcastDispatcher = nullptr;

CBroadcastDispatcher::CBroadcastDispatcher() { sBroadcastDispatcher = this; }

CBroadcastDispatcher::~CBroadcastDispatcher() {
  if (sBroadcastDispatcher == this) sBroadcastDispatcher = nullptr;
}

intptr_t CBroadcastDispatcher::WindowProc(unsigned int message, uintptr_t wParam, intptr_t lParam) {
  auto* broadcaster = reinterpret_cast<LBroadcaster*>(wParam);
  auto* listener = reinterpret_cast<LListener*>(lParam);
  switch (message) {
    case WM_ADDLISTENER:
      if (broadcaster) broadcaster->AddListenerSelf(listener);
      break;
    case WM_REMOVELISTENER:
      if (broadcaster) broadcaster->RemoveListenerSelf(listener);
      break;
    case WM_BROADCASTMESSAGE:
      if (auto* request = reinterpret_cast<BroadcastRequest*>(lParam); request && request->broadcaster) {
        request->broadcaster->BroadcastMessageSelf(request->message, request->param);
      }
      break;
    default:
      break;
  }
  return 0;
}

StBroadcasterSetup::StBroadcasterSetup() : mDispatcher(new CBroadcastDispatcher) {}

StBroadcasterSetup::~StBroadcasterSetup() { delete mDispatcher; }
