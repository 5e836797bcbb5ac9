// Broadcasters, listeners, notifiers and responders. Links, order of
// delivery and deaths in random runs are in BusModelTest.
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/messaging/LNotifier.h>
#include <VantoroBasicUtils/messaging/LResponder.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using Log = std::vector<std::pair<int, long>>;

// Records what it hears, with its own tag.
class Recorder : public LListener {
 public:
  Recorder(Log* log, int tag) : mLog(log), mTag(tag) {}
  bool ListenToMessage(long message, void* param) override {
    mLog->push_back({mTag, message});
    lastParam = param;
    return true;
  }
  void* lastParam = nullptr;

 private:
  Log* mLog;
  int mTag;
};

}  // namespace

TEST(LBroadcaster, FlagsSuspendDeliveryButNotTheLinks) {
  Log log;
  Recorder quiet(&log, 1), loud(&log, 2);
  auto* b = new LBroadcaster;
  b->AddListener(&quiet);
  b->AddListener(&loud);
  quiet.StopListening();
  b->BroadcastMessage(1, nullptr);
  b->StopBroadcasting();
  b->BroadcastMessage(2, nullptr);
  EXPECT_FALSE(b->IsBroadcasting());
  b->StartBroadcasting();
  b->BroadcastMessage(3, nullptr);
  delete b;  // the dying message names the broadcaster, and reaches the listening one only
  EXPECT_EQ(log, (Log{{2, 1}, {2, 3}, {2, kMsgBroadcasterDying}}));
  EXPECT_EQ(loud.lastParam, b);
  log.clear();
  {
    LBroadcaster silent;
    silent.AddListener(&loud);
    silent.StopBroadcasting();
  }  // no dying message, and the link is gone all the same (ASan checks)
  EXPECT_TRUE(log.empty());
}

TEST(LBroadcaster, CopiesStartWithoutListeners) {
  Log log;
  Recorder r(&log, 1), own(&log, 2);
  LBroadcaster source, assigned;
  source.AddListener(&r);
  source.StopBroadcasting();
  LBroadcaster copy(source);
  EXPECT_FALSE(copy.IsBroadcasting());
  assigned.AddListener(&own);
  assigned = source;
  for (LBroadcaster* b : {&copy, &assigned}) {
    b->StartBroadcasting();
    b->BroadcastMessage(2, nullptr);  // the assigned one keeps its own listener only
  }
  Recorder copied(r);  // a copied listener is attached to nothing
  source.StartBroadcasting();
  source.BroadcastMessage(3, nullptr);
  EXPECT_EQ(log, (Log{{2, 2}, {1, 3}}));
}

namespace {

class Watcher : public LResponder {
 public:
  bool Respond(long id, LNotifier* notifier, long arg1, long arg2) override {
    seen.push_back({id, notifier, arg1, arg2});
    return true;
  }
  std::vector<NotifyRecord> seen;
};

// Both responder and notifier: relays what it hears.
class Relay : public LNotifier, public LResponder {
 public:
  bool Respond(long id, LNotifier* notifier, long arg1, long arg2) override {
    PassNotify(id, notifier, arg1, arg2);
    return true;
  }
};

}  // namespace

TEST(LNotifier, NotifiesWithARecordAndRelaysUnchanged) {
  LNotifier n;
  n.Notify(1, 2, 3);  // no responder ever: nothing
  Watcher w, far;
  Log log;
  Recorder plain(&log, 1);
  Relay relay;
  n.AddResponder(&w);
  n.AddListener(&plain);
  n.AddResponder(&relay);
  relay.AddResponder(&far);
  n.Notify(7130, 5, 6);
  const unsigned short text[] = {'h', 'i', 0};
  n.Notify(7200, text);
  ASSERT_EQ(w.seen.size(), 2u);
  auto is = [](const NotifyRecord& r, long id, LNotifier* from, long arg1, long arg2) {
    return r.id == id && r.notifier == from && r.arg1 == arg1 && r.arg2 == arg2;
  };
  EXPECT_TRUE(is(w.seen[0], 7130, &n, 5, 6));
  EXPECT_TRUE(is(w.seen[1], 7200, &n, 0, static_cast<long>(reinterpret_cast<intptr_t>(text))));
  EXPECT_TRUE(is(far.seen[0], 7130, &n, 5, 6));  // the first sender, not the relay
  EXPECT_EQ(log, (Log{{1, kMsgNotify}, {1, kMsgNotify}}));  // a plain listener gets the record as param

  n.StopBroadcasting();
  n.Notify(1, 0, 0);
  LNotifier copy(n);  // no responders in a copy
  copy.StartBroadcasting();
  copy.Notify(1, 0, 0);
  EXPECT_EQ(w.seen.size(), 2u);
  n = copy;  // assignment changes nothing, the broadcasting flag included
  EXPECT_FALSE(n.IsBroadcasting());

  EXPECT_FALSE(w.ListenToMessage(5, nullptr));
  EXPECT_FALSE(w.ListenToMessage(kMsgNotify, nullptr));  // no record: nothing to take apart
  w.PassNotify(1, nullptr, 2, 3);  // not a broadcaster: nothing, no report
  EXPECT_EQ(w.seen.size(), 2u);
}
