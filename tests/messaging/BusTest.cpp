// Broadcasters, listeners, notifiers and responders. Links, flags, order of
// delivery and deaths in random runs are in BusModelTest; the dying
// message's parameter in StaticObjectsTest.
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
  bool ListenToMessage(long message, void*) override {
    mLog->push_back({mTag, message});
    return true;
  }

 private:
  Log* mLog;
  int mTag;
};

}  // namespace

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
    seen.push_back({id, reinterpret_cast<intptr_t>(notifier), arg1, arg2});
    return true;
  }
  std::vector<std::vector<intptr_t>> seen;  // id, notifier, arg1, arg2
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
  auto from = reinterpret_cast<intptr_t>(&n);
  using Seen = std::vector<std::vector<intptr_t>>;
  EXPECT_EQ(w.seen, (Seen{{7130, from, 5, 6}, {7200, from, 0, reinterpret_cast<intptr_t>(text)}}));
  EXPECT_EQ(far.seen[0], w.seen[0]);  // the first sender, not the relay
  EXPECT_EQ(log, (Log{{1, kMsgNotify}, {1, kMsgNotify}}));  // a plain listener gets the record as param

  n.StopBroadcasting();
  n.Notify(1, 0, 0);
  LNotifier copy(n);  // no responders in a copy
  copy.StartBroadcasting();
  copy.Notify(1, 0, 0);
  n = copy;  // assignment changes nothing, the broadcasting flag included
  EXPECT_FALSE(n.IsBroadcasting());
  EXPECT_FALSE(w.ListenToMessage(5, nullptr));
  EXPECT_FALSE(w.ListenToMessage(kMsgNotify, nullptr));  // no record: nothing to take apart
  w.PassNotify(1, nullptr, 2, 3);  // not a broadcaster: nothing, no report
  EXPECT_EQ(w.seen.size(), 2u);
}
