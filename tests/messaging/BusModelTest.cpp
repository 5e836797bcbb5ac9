// Random runs of adds, removals, broadcasts, flag changes and deaths of both
// ends, also from inside ListenToMessage, checked against a model of the
// links and of who hears what, in which order. Under AddressSanitizer the
// same runs show any link left dangling by a death.
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/messaging/LListener.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/IteratorModel.h"

namespace {

constexpr int kBroadcasters = 3, kListeners = 6;
constexpr long kProbe = 1000;

// The changes a run or a listener makes, on the real objects or on the model.
enum Op { kNone, kAdd, kRemove, kKillListener, kKillBroadcaster, kStopListening };
struct Reaction {
  Op op = kNone;
  int broadcaster = 0, listener = 0;
};
using Log = std::vector<std::pair<long, int>>;  // message, listener

class World;

class TestListener : public LListener {
 public:
  TestListener(World& world, int id) : mWorld(world), mId(id) {}
  bool ListenToMessage(long message, void* param) override;
  Reaction reaction;  // done once, on hearing the probe

 private:
  World& mWorld;
  int mId;
};

class World {
 public:
  explicit World(uint32_t seed) : mRng(seed) {}
  ~World() {
    for (int b = 0; b < kBroadcasters; ++b) Real(kKillBroadcaster, b, 0);
    for (int l = 0; l < kListeners; ++l) Real(kKillListener, 0, l);
  }

  void Real(Op op, int b, int l) {
    LBroadcaster* broadcaster = mBroadcasters[b];
    TestListener* listener = mListeners[l];
    if (op == kAdd && broadcaster && listener) broadcaster->AddListener(listener);
    if (op == kRemove && broadcaster && listener) broadcaster->RemoveListener(listener);
    if (op == kKillListener) mListeners[l] = nullptr, delete listener;  // unlinked before it dies
    if (op == kKillBroadcaster) mBroadcasters[b] = nullptr, delete broadcaster;
    if (op == kStopListening && listener) listener->StopListening();
  }

  void Run(int steps) {
    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      int b = Pick(kBroadcasters), l = Pick(kListeners);
      switch (Pick(10)) {
        case 0: case 1: Both(kAdd, b, l); break;
        case 2: Both(kRemove, b, l); break;
        case 3: case 4: case 5: Broadcast(b); break;
        case 6: Flags(b, l); break;
        case 7: Both(kKillListener, b, l); break;
        case 8: Both(kKillBroadcaster, b, l); break;
        case 9: Revive(); break;
      }
      Check();
    }
  }

  Log log;

 private:
  struct ModelBroadcaster {
    bool alive = false, broadcasting = true;
    bool everHadList = false;    // the real one makes its list on the first add
    std::vector<int> listeners;  // in order of adding
  };

  void Both(Op op, int b, int l) { Real(op, b, l), Model(op, b, l); }

  void Flags(int b, int l) {
    if (mBroadcasters[b] && Pick(4) == 0) {
      mModel[b].broadcasting = Pick(2);
      mModel[b].broadcasting ? mBroadcasters[b]->StartBroadcasting() : mBroadcasters[b]->StopBroadcasting();
    }
    if (mListeners[l] && Pick(3) == 0) {
      mListening[l] = Pick(3) != 0;
      mListening[l] ? mListeners[l]->StartListening() : mListeners[l]->StopListening();
    }
  }

  void Revive() {
    for (int b = 0; b < kBroadcasters; ++b) {
      if (mBroadcasters[b]) continue;
      mBroadcasters[b] = new LBroadcaster;
      mModel[b] = ModelBroadcaster{};
      mModel[b].alive = true;
    }
    for (int l = 0; l < kListeners; ++l) {
      if (!mListeners[l]) mListeners[l] = new TestListener(*this, l), mListening[l] = mListenerAlive[l] = true;
    }
  }

  // A broadcast with reactions, real and modelled.
  void Broadcast(int b) {
    if (!mBroadcasters[b]) return;
    for (int l = 0; l < kListeners; ++l) {
      Reaction r;
      if (Pick(3) == 0) r = {static_cast<Op>(1 + Pick(5)), Pick(kBroadcasters), Pick(2) ? l : Pick(kListeners)};
      if (mListeners[l]) mListeners[l]->reaction = mReactions[l] = r;
    }
    log.clear();
    mExpected.clear();
    mBroadcasters[b]->BroadcastMessage(kProbe, nullptr);
    ModelBroadcast(b);
    for (auto* l : mListeners) {
      if (l) l->reaction = Reaction{};
    }
    ASSERT_EQ(log, mExpected);
  }

  void ModelBroadcast(int b) {
    if (!mModel[b].alive || !mModel[b].everHadList || !mModel[b].broadcasting) return;
    IteratorModel walk;
    walk.Reset(0, Count(b));
    mWalks.push_back({b, &walk});
    for (int index; mModel[b].alive && (index = walk.Next(Count(b))) >= 1 && index <= Count(b);) {
      int l = mModel[b].listeners[index - 1];
      if (!mListening[l]) continue;
      mExpected.push_back({kProbe, l});
      Reaction r = std::exchange(mReactions[l], Reaction{});
      Model(r.op, r.broadcaster, r.listener);
    }
    mWalks.pop_back();
  }

  // The model's changes, telling open walks of the list.
  long Count(int b) const { return static_cast<long>(mModel[b].listeners.size()); }

  void Model(Op op, int b, int l) {
    ModelBroadcaster& mb = mModel[b];
    auto& list = mb.listeners;
    auto found = std::find(list.begin(), list.end(), l);
    if (op == kAdd && mb.alive && mListenerAlive[l]) {
      mb.everHadList = true;
      if (found != list.end()) return;
      list.push_back(l);
      for (auto& w : mWalks) {
        if (w.first == b) w.second->Inserted(1, Count(b), Count(b));
      }
    } else if (op == kRemove && mb.alive && found != list.end()) {
      long index = found - list.begin() + 1;
      list.erase(found);
      for (auto& w : mWalks) {
        if (w.first == b) w.second->Removed(1, index, Count(b));
      }
    } else if (op == kKillListener) {
      // Only one list is walked at a time, so the order in which the
      // listener leaves its broadcasters does not show.
      for (int other = 0; other < kBroadcasters; ++other) Model(kRemove, other, l);
      mListenerAlive[l] = false;
    } else if (op == kKillBroadcaster && mb.alive) {
      for (int each : list) {  // its dying message, if it broadcasts; nobody reacts to it
        if (mb.everHadList && mb.broadcasting && mListening[each]) mExpected.push_back({kMsgBroadcasterDying, each});
      }
      mb.alive = false;
      list.clear();
    } else if (op == kStopListening) {
      mListening[l] = false;
    }
  }

  // Who hears each broadcaster now, in which order: a quiet probe with every
  // flag raised for the moment.
  void Check() {
    for (int b = 0; b < kBroadcasters; ++b) {
      ASSERT_EQ(mBroadcasters[b] != nullptr, mModel[b].alive) << "broadcaster " << b;
      if (!mBroadcasters[b]) continue;
      log.clear();
      mBroadcasters[b]->StartBroadcasting();
      for (auto* l : mListeners) {
        if (l) l->StartListening();
      }
      mBroadcasters[b]->BroadcastMessage(kProbe + 1, nullptr);
      Log expect;
      for (int l : mModel[b].listeners) expect.push_back({kProbe + 1, l});
      ASSERT_EQ(log, expect) << "listeners of broadcaster " << b;
      if (!mModel[b].broadcasting) mBroadcasters[b]->StopBroadcasting();
      for (int l = 0; l < kListeners; ++l) {
        if (mListeners[l] && !mListening[l]) mListeners[l]->StopListening();
      }
    }
    for (int l = 0; l < kListeners; ++l) ASSERT_EQ(mListeners[l] != nullptr, mListenerAlive[l]);
  }

  int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(mRng); }

  std::mt19937 mRng;
  LBroadcaster* mBroadcasters[kBroadcasters] = {};
  TestListener* mListeners[kListeners] = {};
  ModelBroadcaster mModel[kBroadcasters];
  bool mListening[kListeners] = {}, mListenerAlive[kListeners] = {};
  Reaction mReactions[kListeners];
  std::vector<std::pair<int, IteratorModel*>> mWalks;  // broadcaster, walk
  Log mExpected;
};

bool TestListener::ListenToMessage(long message, void*) {
  World& world = mWorld;  // this listener may die in the reaction: nothing of it is touched after
  world.log.push_back({message, mId});
  if (message == kProbe) {
    Reaction r = std::exchange(reaction, Reaction{});
    world.Real(r.op, r.broadcaster, r.listener);
  }
  return true;
}

}  // namespace

TEST(BusModel, LinksNeverDangleAndDeliveryFollowsTheModel) {
  for (uint32_t seed = 1; seed <= 60 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    World(seed).Run(1500);
  }
}
