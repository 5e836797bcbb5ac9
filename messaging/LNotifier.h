// LNotifier.h: a broadcaster of notifications: small fixed records that say
// what happened and who says so, all under one message number.
//
//   class Clip : public LNotifier {
//    public:
//     void Trim() { Notify(7130, 0, 0); }
//   };
//   class Watcher : public LResponder {
//     bool Respond(long id, LNotifier* who, long, long) override { return id == 7130; }
//   };
//   Clip clip;  Watcher watcher;
//   clip.AddResponder(&watcher);
//   clip.Trim();                            // watcher.Respond(7130, &clip, 0, 0)
#pragma once

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/messaging/LBroadcaster.h>

class LNotifier;
class LResponder;

// The message of every notification; its param is a NotifyRecord*.
constexpr long kMsgNotify = 99999;

// What a notification carries. It lives on the sender's stack for the call.
struct NotifyRecord {
  long id;              // what happened; the notifying class numbers it
  LNotifier* notifier;  // the object that first notified
  long arg1;
  long arg2;            // may carry a text pointer: see LNotifier::Notify
};

// A broadcaster whose messages are notifications. LBroadcaster is a virtual
// base, so a class that inherits it by two roads has one broadcaster.
class VBU_API LNotifier : public virtual LBroadcaster {
 public:
  LNotifier();
  // A copy has no responders.
  LNotifier(const LNotifier& other);
  // Changes nothing, the broadcasting flag included.
  LNotifier& operator=(const LNotifier& other);
  ~LNotifier() override;

  // Sends kMsgNotify with {id, this, arg1, arg2}; nothing when no one ever
  // listened or broadcasting is stopped.
  void Notify(long id, long arg1, long arg2);
  // Notify(id, 0, text): the text's address travels in arg2, uncopied.
  void Notify(long id, const unsigned short* text);
  // Adds `responder` as a listener.
  void AddResponder(LResponder* responder);
};
