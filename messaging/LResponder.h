// LResponder.h: a listener that takes notifications apart and hands them to
// one typed operation.
//
//   class Watcher : public LResponder {
//     bool Respond(long id, LNotifier* who, long arg1, long arg2) override { return id == kTimecodeChanged; }
//   };
//   Watcher watcher;
//   CTimecode start;
//   start.AddResponder(&watcher);
//   start.SetSecond(10);                    // watcher hears kTimecodeChanged
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/messaging/LListener.h>

class LNotifier;

class VBU_API LResponder : public LListener {
 public:
  LResponder();
  // A copy is attached to nothing.
  LResponder(const LResponder& other);
  LResponder& operator=(const LResponder& other);
  ~LResponder() override;

  // kMsgNotify goes to Respond, whose result it gives; anything else gives false.
  bool ListenToMessage(long message, void* param) override;
  // Receives one notification; the base does nothing and gives false.
  virtual bool Respond(long id, LNotifier* notifier, long arg1, long arg2);
  // Relays a notification unchanged to this object's own listeners, if this
  // object is also a broadcaster; the first notifier stays named.
  virtual void PassNotify(long id, LNotifier* notifier, long arg1, long arg2);
};
