// Broadcasters, listeners, notifiers and responders.
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/messaging/LNotifier.h>
#include <VantoroBasicUtils/messaging/LResponder.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

// Records what it hears, with its own tag.
class Recorder : public LListener {
 public:
  Recorder(std::vector<std::pair<int, long>>* log, int tag) : mLog(log), mTag(tag) {}
  bool ListenToMessage(long message, void* param) override {
    mLog->push_back({mTag, message});
    lastParam = param;
    return true;
  }
  void* lastParam = nullptr;

 private:
  std::vector<std::pair<int, long>>* mLog;
  int mTag;
};

using Log = std::vector<std::pair<int, long>>;

}  // namespace

TEST(LBroadcaster, DeliversInOrderOfAddingOnceEach) {
  Log log;
  LBroadcaster b;
  Recorder r1(&log, 1), r2(&log, 2), r3(&log, 3);
  b.BroadcastMessage(5, nullptr);  // never had a listener: nothing at all
  b.AddListener(&r1);
  b.AddListener(&r2);
  b.AddListener(&r1);  // a second add changes nothing
  b.AddListener(&r3);
  int payload = 0;
  b.BroadcastMessage(7, &payload);
  EXPECT_EQ(log, (Log{{1, 7}, {2, 7}, {3, 7}}));
  EXPECT_EQ(r2.lastParam, &payload);

  log.clear();
  b.RemoveListener(&r1);
  b.AddListener(&r1);  // a returning listener stands last
  b.BroadcastMessage(8, nullptr);
  EXPECT_EQ(log, (Log{{2, 8}, {3, 8}, {1, 8}}));
}

TEST(LBroadcaster, RemovingWhatIsNotThere) {
  Log log;
  LBroadcaster listless, other;
  Recorder r(&log, 1), stranger(&log, 2);
  listless.RemoveListener(&r);  // no list: nothing at all
  other.AddListener(&r);
  other.RemoveListener(&stranger);
  other.RemoveListener(nullptr);
  other.AddListener(nullptr);
  other.BroadcastMessage(1, nullptr);
  EXPECT_EQ(log, (Log{{1, 1}}));
}

TEST(LBroadcaster, FlagsSuspendDeliveryButNotTheLinks) {
  Log log;
  Recorder quiet(&log, 1), loud(&log, 2);
  {
    LBroadcaster b;
    b.AddListener(&quiet);
    b.AddListener(&loud);
    quiet.StopListening();
    b.BroadcastMessage(1, nullptr);
    b.StopBroadcasting();
    b.BroadcastMessage(2, nullptr);
    EXPECT_FALSE(b.IsBroadcasting());
    b.StartBroadcasting();
    b.BroadcastMessage(3, nullptr);
  }  // the dying message reaches the listening one only
  EXPECT_EQ(log, (Log{{2, 1}, {2, 3}, {2, kMsgBroadcasterDying}}));

  log.clear();
  {
    LBroadcaster silent;
    silent.AddListener(&loud);
    silent.StopBroadcasting();
  }  // no dying message, and the link is gone all the same (ASan checks)
  EXPECT_TRUE(log.empty());
}

TEST(LBroadcaster, DyingMessageNamesTheBroadcaster) {
  Log log;
  Recorder r(&log, 1);
  auto* b = new LBroadcaster;
  b->AddListener(&r);
  delete b;
  ASSERT_EQ(log, (Log{{1, kMsgBroadcasterDying}}));
  EXPECT_EQ(r.lastParam, b);
}

TEST(LListener, DeathLeavesEveryBroadcaster) {
  Log log;
  LBroadcaster b1, b2, b3;
  Recorder stays(&log, 1);
  auto* goes = new Recorder(&log, 2);
  for (LBroadcaster* b : {&b1, &b2, &b3}) {
    b->AddListener(goes);
    b->AddListener(&stays);
  }
  delete goes;
  for (LBroadcaster* b : {&b1, &b2, &b3}) b->BroadcastMessage(4, nullptr);
  EXPECT_EQ(log, (Log{{1, 4}, {1, 4}, {1, 4}}));
}

TEST(LBroadcaster, CopiesStartWithoutListeners) {
  Log log;
  Recorder r(&log, 1);
  LBroadcaster source;
  source.AddListener(&r);
  source.StopBroadcasting();
  LBroadcaster copy(source);
  EXPECT_FALSE(copy.IsBroadcasting());
  copy.StartBroadcasting();
  copy.BroadcastMessage(1, nullptr);
  LBroadcaster assigned;
  Recorder own(&log, 2);
  assigned.AddListener(&own);
  assigned = source;
  assigned.StartBroadcasting();
  assigned.BroadcastMessage(2, nullptr);  // keeps its own listener only
  EXPECT_EQ(log, (Log{{2, 2}}));

  Recorder copied(r);  // a copied listener is attached to nothing
  source.StartBroadcasting();
  log.clear();
  source.BroadcastMessage(3, nullptr);
  EXPECT_EQ(log, (Log{{1, 3}}));
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

TEST(LNotifier, NotifiesWithARecord) {
  LNotifier n;
  n.Notify(1, 2, 3);  // no responder ever: nothing, and no list is made
  Watcher w;
  Log log;
  Recorder plain(&log, 1);
  n.AddResponder(&w);
  n.AddListener(&plain);
  n.Notify(7130, 5, 6);
  ASSERT_EQ(w.seen.size(), 1u);
  EXPECT_EQ(w.seen[0].id, 7130);
  EXPECT_EQ(w.seen[0].notifier, &n);
  EXPECT_EQ(w.seen[0].arg1, 5);
  EXPECT_EQ(w.seen[0].arg2, 6);
  EXPECT_EQ(log, (Log{{1, kMsgNotify}}));  // a plain listener gets the record as param

  const unsigned short text[] = {'h', 'i', 0};
  n.Notify(7200, text);
  EXPECT_EQ(w.seen[1].arg1, 0);
  EXPECT_EQ(reinterpret_cast<const unsigned short*>(static_cast<intptr_t>(w.seen[1].arg2)), text);

  n.StopBroadcasting();
  n.Notify(1, 0, 0);
  EXPECT_EQ(w.seen.size(), 2u);

  LNotifier copy(n);  // no responders in a copy
  copy.StartBroadcasting();
  copy.Notify(1, 0, 0);
  EXPECT_EQ(w.seen.size(), 2u);
  n = copy;  // assignment changes nothing, the broadcasting flag included
  EXPECT_FALSE(n.IsBroadcasting());
}

TEST(LResponder, IgnoresOtherMessagesAndRelaysUnchanged) {
  Watcher w;
  EXPECT_FALSE(w.ListenToMessage(5, nullptr));
  EXPECT_FALSE(w.ListenToMessage(kMsgNotify, nullptr));  // no record: nothing to take apart
  EXPECT_TRUE(w.seen.empty());
  w.PassNotify(1, nullptr, 2, 3);  // not a broadcaster: nothing, no report

  LNotifier first;
  Relay relay;
  Watcher far;
  first.AddResponder(&relay);
  relay.AddResponder(&far);
  first.Notify(42, 1, 2);
  ASSERT_EQ(far.seen.size(), 1u);
  EXPECT_EQ(far.seen[0].notifier, &first);  // the first sender, not the relay
  EXPECT_EQ(far.seen[0].id, 42);
}
