// Long random runs of changes and walks on an array with several iterators
// attached, each result checked against a plain model: a vector for the
// array, and two numbers per iterator moved by the iterator's rules.
// Beside the rules, every notified change is checked for what users rely
// on: an iterator standing on an item is still on that same item after it.
#include <VantoroBasicUtils/containers/LArrayIterator.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <set>

#include "support/ArrayProbe.h"
#include "support/IteratorModel.h"

namespace {

class Harness {
 public:
  Harness(uint32_t seed, bool keepSorted)
      : mRng(seed), mKeepSorted(keepSorted), mArray(std::make_unique<LArray>(4, nullptr, keepSorted)) {}

  void Run(int steps) {
    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step));
      switch (Pick(14)) {
        case 0: case 1: case 2: Insert(); break;
        case 3: case 4: Remove(Pick(4), PickIndex()); break;
        case 5: RemoveCurrentFromAWalk(); break;
        case 6: Assign(); break;
        case 7: if (!mKeepSorted) SwapOrMove(); break;
        case 8: if (!mKeepSorted) { mArray->Sort(); std::sort(mItems.begin(), mItems.end()); } break;
        case 9: case 10: StepIterator(); break;
        case 11: ResetIterator(); break;
        case 12: MakeOrDropIterator(); break;
        case 13: ToggleLock(); break;
      }
      Check();
    }
    KillArray();
  }

 private:
  // ---- the array's changes

  void Insert() {
    unsigned long count = 1 + Pick(3);
    long index = PickIndex();
    int32_t value = FreshValue();
    auto before = Positions();
    long got = mArray->InsertItemsAt(count, index, &value, 0);
    long expect = mLocks > 0 ? kBadIndex : mKeepSorted ? SortedPlace(value) : std::clamp<long>(index, 1, Count() + 1);
    ASSERT_EQ(got, expect);
    if (expect == kBadIndex) return;
    ModelInsert(count, expect, value);
    CheckStillOnTheirItems(before);
  }

  void Remove(unsigned long count, long index) {
    auto before = Positions();
    mArray->RemoveItemsAt(count, index);
    index = InRange(index);
    if (mLocks > 0 || count == 0 || !index) return;
    ModelRemove(std::min<unsigned long>(count, Count() - index + 1), index);
    CheckStillOnTheirItems(before);
  }

  // A walk that removes the item it stands on: the usual way a listener
  // leaves a list while it is being called.
  void RemoveCurrentFromAWalk() {
    if (mIterators.empty()) return;
    size_t k = Pick(mIterators.size());
    int32_t item;
    bool got = mIterators[k]->Next(&item);
    mModels[k].Next(Count());
    if (got) Remove(1, mIterators[k]->GetCurrentIndex());
  }

  void Assign() {
    unsigned long count = 1 + Pick(3);
    long index = PickIndex();
    int32_t value = FreshValue();
    mArray->AssignItemsAt(count, index, &value, 0);
    if (!(index = InRange(index))) return;
    if (!mKeepSorted) {  // iterators are not told
      std::fill(mItems.begin() + (index - 1), mItems.begin() + std::min<long>(index + count - 1, Count()), value);
    } else if (mLocks == 0) {  // kept sorted: a removal, then a sorted insertion of `count` copies
      ModelRemove(std::min<unsigned long>(count, Count() - index + 1), index);
      ModelInsert(count, SortedPlace(value), value);
    }
  }

  void SwapOrMove() {
    long a = PickIndex(), b = PickIndex();
    bool swap = Pick(2);
    if (swap) mArray->SwapItems(a, b); else mArray->MoveItem(a, b);
    a = InRange(a), b = InRange(b);
    if (!a || !b) return;
    auto at = [&](long i) { return mItems.begin() + (i - 1); };
    if (swap) {
      std::swap(*at(a), *at(b));
    } else if (a < b) {
      std::rotate(at(a), at(a + 1), at(b + 1));
    } else if (a > b) {
      std::rotate(at(b), at(a), at(a + 1));
    }
  }

  void ToggleLock() {
    if (mLocks > 0 && Pick(2)) {
      mArray->Unlock(), --mLocks;
    } else if (mLocks < 2) {
      mArray->Lock(), ++mLocks;
    }
  }

  // ---- iterators

  void StepIterator() {
    if (mIterators.empty()) return;
    size_t k = Pick(mIterators.size());
    int32_t item = 0, current = 0;
    bool forward = Pick(3) != 0;
    bool got = forward ? mIterators[k]->Next(&item) : mIterators[k]->Previous(&item);
    auto expect = ItemAt(forward ? mModels[k].Next(Count()) : mModels[k].Previous(Count()));
    ASSERT_EQ(got ? std::optional(item) : std::nullopt, expect) << (forward ? " Next" : " Previous");
    ASSERT_EQ(mIterators[k]->Current(&current), got);
  }

  void ResetIterator() {
    if (mIterators.empty()) return;
    size_t k = Pick(mIterators.size());
    long position = PickPosition();
    mIterators[k]->ResetTo(position);
    mModels[k].Reset(position, Count());
  }

  void MakeOrDropIterator() {
    if (mIterators.size() < 4 && (mIterators.empty() || Pick(2))) {
      long position = PickPosition();
      mIterators.push_back(std::make_unique<LArrayIterator>(*mArray, position));
      mModels.emplace_back().Reset(position, Count());
    } else {
      size_t k = Pick(mIterators.size());
      mIterators.erase(mIterators.begin() + k);
      mModels.erase(mModels.begin() + k);
    }
  }

  void KillArray() {
    for (; mLocks > 0; --mLocks) mArray->Unlock();
    mArray.reset();
    for (auto& it : mIterators) {
      int32_t item;
      EXPECT_FALSE(it->Next(&item) || it->Previous(&item) || it->Current(&item));
      it->ResetTo(1);
      EXPECT_EQ(it->GetCurrentIndex(), IteratorModel::kDead);
    }
    mIterators.clear();  // dead iterators leave the freed array alone
  }

  // ---- the model

  long Count() const { return static_cast<long>(mItems.size()); }

  // The index an operation on one item uses, or 0 where it does nothing.
  long InRange(long index) const {
    index = index == kLastIndex ? Count() : index;
    return index >= 1 && index <= Count() ? index : 0;
  }

  long SortedPlace(int32_t value) const {
    return std::lower_bound(mItems.begin(), mItems.end(), value) - mItems.begin() + 1;
  }

  std::optional<int32_t> ItemAt(int index) const {
    return index < 1 || index > Count() ? std::nullopt : std::optional(mItems[index - 1]);
  }

  void ModelInsert(unsigned long n, long index, int32_t value) {
    mItems.insert(mItems.begin() + (index - 1), n, value);
    for (auto& m : mModels) m.Inserted(n, index, Count());
  }

  void ModelRemove(unsigned long n, long index) {
    mItems.erase(mItems.begin() + (index - 1), mItems.begin() + (index - 1 + n));
    for (auto& m : mModels) m.Removed(n, index, Count());
  }

  // ---- checks

  // For each iterator on an item: the item it stands on.
  std::vector<std::optional<int32_t>> Positions() const {
    std::vector<std::optional<int32_t>> out;
    for (auto& m : mModels) out.push_back(ItemAt(m.cur));
    return out;
  }

  void CheckStillOnTheirItems(const std::vector<std::optional<int32_t>>& before) const {
    for (size_t k = 0; k < mModels.size(); ++k) {
      if (before[k] && mModels[k].cur > 0) {
        ASSERT_EQ(ItemAt(mModels[k].cur), before[k]) << " iterator " << k << " left its item";
      }
    }
  }

  void Check() const {
    ASSERT_EQ(ItemsOf(*mArray), mItems);
    for (size_t k = 0; k < mIterators.size(); ++k) {
      ASSERT_EQ(mIterators[k]->GetCurrentIndex(), mModels[k].cur) << " iterator " << k;
    }
  }

  // ---- randomness

  unsigned long Pick(unsigned long n) { return n == 0 ? 0 : std::uniform_int_distribution<unsigned long>(0, n - 1)(mRng); }

  long PickPosition() { return static_cast<long>(Pick(Count() + 4)) - 2; }
  long PickIndex() { return Pick(10) == 0 ? kLastIndex : static_cast<long>(Pick(Count() + 5)) - 2; }

  // Values never seen before, so that a sorted array has one place for them.
  int32_t FreshValue() {
    for (;;) {
      if (int32_t v = static_cast<int32_t>(Pick(1000000)); mUsed.insert(v).second) return v;
    }
  }

  std::mt19937 mRng;
  bool mKeepSorted;
  std::unique_ptr<LArray> mArray;
  std::vector<int32_t> mItems;
  std::vector<std::unique_ptr<LArrayIterator>> mIterators;
  std::vector<IteratorModel> mModels;
  std::set<int32_t> mUsed;
  int mLocks = 0;
};

}  // namespace

TEST(LArrayIteratorModel, RandomChangesAndWalks) {
  for (bool keepSorted : {false, true}) {
    for (uint32_t seed = 1; seed <= 40 && !HasFailure(); ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed) + (keepSorted ? ", kept sorted" : ""));
      Harness(seed, keepSorted).Run(3000);
    }
  }
}
