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
#include <vector>

#include "support/IteratorModel.h"

namespace {

constexpr int kBroadcasters = 3;
constexpr int kListeners = 6;
constexpr long kProbe = 1000;

// The changes a run or a listener makes, on the real objects or on the model.
enum Op { kNone, kAdd, kRemove, kKillListener, kKillBroadcaster, kStopListening };
struct Reaction {
  Op op = kNone;
  int broadcaster = 0, listener = 0;
};

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

struct Delivery {
  long message;
  int listener;
  bool operator==(const Delivery&) const = default;
};

class World {
 public:
  explicit World(uint32_t seed) : mRng(seed) {}

  ~World() {
    for (int b = 0; b < kBroadcasters; ++b) Real(kKillBroadcaster, b, 0);
    for (int l = 0; l < kListeners; ++l) Real(kKillListener, 0, l);
  }

  void Log(long message, int listener) { mLog.push_back({message, listener}); }

  void Real(Op op, int b, int l) {
    LBroadcaster* broadcaster = mBroadcasters[b];
    TestListener* listener = mListeners[l];
    switch (op) {
      case kNone: break;
      case kAdd: if (broadcaster && listener) broadcaster->AddListener(listener); break;
      case kRemove: if (broadcaster && listener) broadcaster->RemoveListener(listener); break;
      case kKillListener: mListeners[l] = nullptr; delete listener; break;  // unlinked before it dies
      case kKillBroadcaster: mBroadcasters[b] = nullptr; delete broadcaster; break;
      case kStopListening: if (listener) listener->StopListening(); break;
    }
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

 private:
  struct ModelBroadcaster {
    bool alive = false;
    bool broadcasting = true;
    bool everHadList = false;    // the real one makes its list on the first add
    std::vector<int> listeners;  // in order of adding
  };

  void Both(Op op, int b, int l) {
    Real(op, b, l);
    Model(op, b, l);
  }

  void Flags(int b, int l) {
    if (mBroadcasters[b] && Pick(4) == 0) {
      bool on = Pick(2);
      if (on) mBroadcasters[b]->StartBroadcasting(); else mBroadcasters[b]->StopBroadcasting();
      mModel[b].broadcasting = on;
    }
    if (mListeners[l] && Pick(3) == 0) {
      bool on = Pick(3) != 0;
      if (on) mListeners[l]->StartListening(); else mListeners[l]->StopListening();
      mListening[l] = on;
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
      if (mListeners[l]) continue;
      mListeners[l] = new TestListener(*this, l);
      mListening[l] = mListenerAlive[l] = true;
    }
  }

  // ---- a broadcast with reactions, real and modelled

  void Broadcast(int b) {
    if (!mBroadcasters[b]) return;
    for (int l = 0; l < kListeners; ++l) {
      if (!mListeners[l]) continue;
      Reaction r;
      if (Pick(3) == 0) r = {static_cast<Op>(1 + Pick(5)), Pick(kBroadcasters), Pick(2) ? l : Pick(kListeners)};
      mListeners[l]->reaction = mReactions[l] = r;
    }
    mLog.clear();
    mExpected.clear();
    mBroadcasters[b]->BroadcastMessage(kProbe, nullptr);
    ModelBroadcast(b);
    for (auto* l : mListeners) {
      if (l) l->reaction = Reaction{};
    }
    ASSERT_EQ(mLog, mExpected);
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
      Reaction r = mReactions[l];
      mReactions[l] = Reaction{};
      Model(r.op, r.broadcaster, r.listener);
    }
    mWalks.pop_back();
  }

  // ---- the model's changes, telling open walks of the list

  long Count(int b) const { return static_cast<long>(mModel[b].listeners.size()); }

  void Model(Op op, int b, int l) {
    ModelBroadcaster& mb = mModel[b];
    auto& list = mb.listeners;
    auto found = std::find(list.begin(), list.end(), l);
    switch (op) {
      case kNone: break;
      case kAdd:
        if (!mb.alive || !mListenerAlive[l]) break;
        mb.everHadList = true;
        if (found != list.end()) break;
        list.push_back(l);
        for (auto& w : mWalks) {
          if (w.broadcaster == b) w.model->Inserted(1, Count(b), Count(b));
        }
        break;
      case kRemove: {
        if (!mb.alive || found == list.end()) break;
        long index = found - list.begin() + 1;
        list.erase(found);
        for (auto& w : mWalks) {
          if (w.broadcaster == b) w.model->Removed(1, index, Count(b));
        }
        break;
      }
      case kKillListener:
        // Only one list is walked at a time, so the order in which the
        // listener leaves its broadcasters does not show.
        for (int other = 0; other < kBroadcasters; ++other) Model(kRemove, other, l);
        mListenerAlive[l] = false;
        break;
      case kKillBroadcaster:
        if (!mb.alive) break;
        if (mb.everHadList && mb.broadcasting) {  // its dying message; nobody reacts to it
          for (int each : list) {
            if (mListening[each]) mExpected.push_back({kMsgBroadcasterDying, each});
          }
        }
        mb.alive = false;
        list.clear();
        break;
      case kStopListening: mListening[l] = false; break;
    }
  }

  void Check() {
    // Who hears the broadcasters now, in which order: a quiet probe with
    // every flag raised for the moment.
    for (int b = 0; b < kBroadcasters; ++b) {
      ASSERT_EQ(mBroadcasters[b] != nullptr, mModel[b].alive) << "broadcaster " << b;
      if (!mBroadcasters[b]) continue;
      mLog.clear();
      bool broadcasting = mBroadcasters[b]->IsBroadcasting();
      mBroadcasters[b]->StartBroadcasting();
      for (auto* l : mListeners) {
        if (l) l->StartListening();
      }
      mBroadcasters[b]->BroadcastMessage(kProbe + 1, nullptr);
      std::vector<Delivery> expect;
      for (int l : mModel[b].listeners) expect.push_back({kProbe + 1, l});
      ASSERT_EQ(mLog, expect) << "listeners of broadcaster " << b;
      if (!broadcasting) mBroadcasters[b]->StopBroadcasting();
      for (int l = 0; l < kListeners; ++l) {
        if (mListeners[l] && !mListening[l]) mListeners[l]->StopListening();
      }
    }
    for (int l = 0; l < kListeners; ++l) ASSERT_EQ(mListeners[l] != nullptr, mListenerAlive[l]);
  }

  int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(mRng); }

  struct Walk {
    int broadcaster;
    IteratorModel* model;
  };

  std::mt19937 mRng;
  LBroadcaster* mBroadcasters[kBroadcasters] = {};
  TestListener* mListeners[kListeners] = {};
  ModelBroadcaster mModel[kBroadcasters];
  bool mListening[kListeners] = {};
  bool mListenerAlive[kListeners] = {};
  Reaction mReactions[kListeners];
  std::vector<Walk> mWalks;
  std::vector<Delivery> mLog, mExpected;
};

bool TestListener::ListenToMessage(long message, void*) {
  World& world = mWorld;  // this listener may die in the reaction: nothing of it is touched after
  world.Log(message, mId);
  if (message != kProbe) return true;
  Reaction r = reaction;
  reaction = Reaction{};
  world.Real(r.op, r.broadcaster, r.listener);
  return true;
}

}  // namespace

TEST(BusModel, LinksNeverDangleAndDeliveryFollowsTheModel) {
  for (uint32_t seed = 1; seed <= 60 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    World world(seed);
    world.Run(1500);
  }
}
