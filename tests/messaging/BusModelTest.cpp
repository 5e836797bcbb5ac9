// Random runs of adds, removals, broadcasts, flag changes and deaths of both
// ends, also from inside ListenToMessage, checked against a model of the
// links and of who hears what, in which order. Under AddressSanitizer the
// same runs show any link left dangling by a death.
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/messaging/LListener.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/IteratorModel.h"

namespace {

constexpr int kBroadcasters = 3;
constexpr int kListeners = 6;
constexpr long kProbe = 1000;

class World;

// What a listener does when it hears the probe message, once.
struct Reaction {
  enum Kind { kNone, kRemoveSelf, kRemoveOther, kDestroySelf, kDestroyOther, kDestroyBroadcaster, kAddOther, kStopListening };
  Kind kind = kNone;
  int broadcaster = 0;  // for remove, add, destroy broadcaster
  int listener = 0;     // the other listener
};

class TestListener : public LListener {
 public:
  TestListener(World& world, int id) : mWorld(world), mId(id) {}
  bool ListenToMessage(long message, void* param) override;
  Reaction reaction;

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
    for (auto*& b : mBroadcasters) DestroyBroadcaster(b);
    for (auto*& l : mListeners) {
      delete l;
      l = nullptr;
    }
  }

  // ---- the real objects, as reactions and the run drive them

  void Log(long message, int listener) { mLog.push_back({message, listener}); }

  void RemoveListener(int b, int l) {
    if (mBroadcasters[b] && mListeners[l]) mBroadcasters[b]->RemoveListener(mListeners[l]);
  }
  void AddListener(int b, int l) {
    if (mBroadcasters[b] && mListeners[l]) mBroadcasters[b]->AddListener(mListeners[l]);
  }
  void KillListener(int l) {
    TestListener* doomed = mListeners[l];
    mListeners[l] = nullptr;
    delete doomed;
  }
  void KillBroadcaster(int b) { DestroyBroadcaster(mBroadcasters[b]); }

  int IdOf(const LBroadcaster* b) const {
    for (int i = 0; i < kBroadcasters; ++i) {
      if (mBroadcasters[i] == b) return i;
    }
    return -1;
  }

  void Run(int steps) {
    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      switch (Pick(10)) {
        case 0: case 1: {
          int b = Pick(kBroadcasters), l = Pick(kListeners);
          AddListener(b, l);
          ModelAdd(b, l);
          break;
        }
        case 2: {
          int b = Pick(kBroadcasters), l = Pick(kListeners);
          RemoveListener(b, l);
          ModelRemove(b, l);
          break;
        }
        case 3: case 4: case 5: Broadcast(Pick(kBroadcasters)); break;
        case 6: {
          int b = Pick(kBroadcasters);
          if (mBroadcasters[b] && Pick(4) == 0) {
            bool on = Pick(2);
            if (on) mBroadcasters[b]->StartBroadcasting(); else mBroadcasters[b]->StopBroadcasting();
            mModel[b].broadcasting = on;
          }
          int l = Pick(kListeners);
          if (mListeners[l] && Pick(3) == 0) {
            bool on = Pick(3) != 0;
            if (on) mListeners[l]->StartListening(); else mListeners[l]->StopListening();
            mListening[l] = on;
          }
          break;
        }
        case 7: {
          int l = Pick(kListeners);
          KillListener(l);
          ModelKillListener(l);
          break;
        }
        case 8: {
          int b = Pick(kBroadcasters);
          KillBroadcaster(b);
          ModelKillBroadcaster(b);
          break;
        }
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

  void DestroyBroadcaster(LBroadcaster*& b) {
    LBroadcaster* doomed = b;
    b = nullptr;
    delete doomed;
  }

  void Revive() {
    for (int b = 0; b < kBroadcasters; ++b) {
      if (!mBroadcasters[b]) {
        mBroadcasters[b] = new LBroadcaster;
        mModel[b] = ModelBroadcaster{};
        mModel[b].alive = true;
      }
    }
    for (int l = 0; l < kListeners; ++l) {
      if (!mListeners[l]) {
        mListeners[l] = new TestListener(*this, l);
        mListening[l] = true;
        mListenerAlive[l] = true;
      }
    }
  }

  // ---- a broadcast with reactions, real and modelled

  void Broadcast(int b) {
    if (!mBroadcasters[b]) return;
    for (int l = 0; l < kListeners; ++l) {
      if (!mListeners[l]) continue;
      Reaction r;
      if (Pick(3) == 0) {
        r.kind = static_cast<Reaction::Kind>(1 + Pick(7));
        r.broadcaster = Pick(kBroadcasters);
        r.listener = Pick(kListeners);
      }
      mListeners[l]->reaction = r;
      mReactions[l] = r;
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
    ModelBroadcaster& mb = mModel[b];
    if (!mb.alive || !mb.everHadList || !mb.broadcasting) return;
    IteratorModel walk;
    walk.Reset(0, Count(b));
    mWalks.push_back({b, &walk});
    for (;;) {
      int index = walk.Next(Count(b));
      if (!mModel[b].alive || index < 1 || index > Count(b)) break;
      int l = mModel[b].listeners[index - 1];
      if (!mListening[l]) continue;
      mExpected.push_back({kProbe, l});
      ModelReact(l);
      if (!mModel[b].alive) break;  // the walk died with its broadcaster
    }
    mWalks.pop_back();
  }

  void ModelReact(int l) {
    Reaction r = mReactions[l];
    mReactions[l] = Reaction{};
    switch (r.kind) {
      case Reaction::kNone: break;
      case Reaction::kRemoveSelf: ModelRemove(r.broadcaster, l); break;
      case Reaction::kRemoveOther: ModelRemove(r.broadcaster, r.listener); break;
      case Reaction::kDestroySelf: ModelKillListener(l); break;
      case Reaction::kDestroyOther: ModelKillListener(r.listener); break;
      case Reaction::kDestroyBroadcaster: ModelKillBroadcaster(r.broadcaster); break;
      case Reaction::kAddOther: ModelAdd(r.broadcaster, r.listener); break;
      case Reaction::kStopListening: mListening[l] = false; break;
    }
  }

  // ---- the model's changes, telling open walks of the list

  long Count(int b) const { return static_cast<long>(mModel[b].listeners.size()); }

  bool ListenerAlive(int l) const { return mListenerAlive[l]; }

  void ModelAdd(int b, int l) {
    if (!mModel[b].alive || !ListenerAlive(l)) return;
    mModel[b].everHadList = true;
    auto& list = mModel[b].listeners;
    if (std::find(list.begin(), list.end(), l) != list.end()) return;
    list.push_back(l);
    for (auto& w : mWalks) {
      if (w.broadcaster == b) w.model->Inserted(1, Count(b), Count(b));
    }
  }

  void ModelRemove(int b, int l) {
    if (!mModel[b].alive || !ListenerAlive(l)) return;
    auto& list = mModel[b].listeners;
    auto found = std::find(list.begin(), list.end(), l);
    if (found == list.end()) return;
    long index = found - list.begin() + 1;
    list.erase(found);
    for (auto& w : mWalks) {
      if (w.broadcaster == b) w.model->Removed(1, index, Count(b));
    }
  }

  void ModelKillListener(int l) {
    if (!ListenerAlive(l)) return;
    // Only one list is walked at a time, so the order in which the listener
    // leaves its broadcasters does not show.
    for (int b = 0; b < kBroadcasters; ++b) ModelRemove(b, l);
    mListenerAlive[l] = false;
  }

  void ModelKillBroadcaster(int b) {
    ModelBroadcaster& mb = mModel[b];
    if (!mb.alive) return;
    if (mb.everHadList && mb.broadcasting) {
      // Its dying message; listeners do not react to it.
      for (int l : std::vector<int>(mb.listeners)) {
        if (mListening[l]) mExpected.push_back({kMsgBroadcasterDying, l});
      }
    }
    mb.alive = false;
    mb.listeners.clear();
  }

  void Check() {
    // Who hears the broadcasters now, in which order: a quiet probe.
    for (int b = 0; b < kBroadcasters; ++b) {
      ASSERT_EQ(mBroadcasters[b] != nullptr, mModel[b].alive) << "broadcaster " << b;
      if (!mBroadcasters[b]) continue;
      mLog.clear();
      std::vector<bool> saved(mListening, mListening + kListeners);
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
        if (mListeners[l] && !saved[l]) mListeners[l]->StopListening();
      }
    }
    for (int l = 0; l < kListeners; ++l) ASSERT_EQ(mListeners[l] != nullptr, mListenerAlive[l]);
  }

  int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(mRng); }

  friend class TestListener;
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
  mWorld.Log(message, mId);
  if (message != kProbe) return true;
  Reaction r = reaction;
  reaction = Reaction{};
  switch (r.kind) {
    case Reaction::kNone: break;
    case Reaction::kRemoveSelf: mWorld.RemoveListener(r.broadcaster, mId); break;
    case Reaction::kRemoveOther: mWorld.RemoveListener(r.broadcaster, r.listener); break;
    case Reaction::kDestroySelf: mWorld.KillListener(mId); return true;  // nothing of this after
    case Reaction::kDestroyOther: mWorld.KillListener(r.listener); break;
    case Reaction::kDestroyBroadcaster: mWorld.KillBroadcaster(r.broadcaster); break;
    case Reaction::kAddOther: mWorld.AddListener(r.broadcaster, r.listener); break;
    case Reaction::kStopListening: StopListening(); break;
  }
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
