// A plain model of an array iterator's position: the index it stands on (or
// a state) and the index it goes to next, moved by the iterator's rules.
// Tests drive it beside a real iterator, and beside walks that rest on one.
#pragma once

struct IteratorModel {
  static constexpr int kBefore = 0, kAtEnd = -2, kRemoved = -4, kDead = -6;
  int cur = kBefore;
  int next = 1;

  void CalcNext(long count) { next = cur == kAtEnd || cur + 1 > count ? kAtEnd : cur + 1; }

  void Reset(long position, long count) {
    cur = position == -1 || position > count ? kAtEnd : position <= 0 ? kBefore : static_cast<int>(position);
    CalcNext(count);
  }

  // Steps; the index reached, or a value outside 1..count.
  int Next(long count) {
    cur = next;
    CalcNext(count);
    return cur;
  }

  int Previous(long count) {
    const int last = static_cast<int>(count);
    cur = cur == kRemoved ? (next == kAtEnd ? last : next - 1) : cur == kAtEnd ? last : cur > 0 ? cur - 1 : cur;
    CalcNext(count);
    return cur;
  }

  // `count` is the array's count after the change.
  void Inserted(unsigned long n, long index, long count) {
    if (cur == kRemoved) {
      if (index <= next) next += static_cast<int>(n);
      return;
    }
    if (index <= cur) cur += static_cast<int>(n);
    CalcNext(count);
  }

  void Removed(unsigned long n, long index, long count) {
    if (index > cur) return;
    if (index + static_cast<long>(n) > cur) {  // its own item went: it remembers where the next one is
      next = index > count ? kAtEnd : static_cast<int>(index);
      cur = kRemoved;
    } else {
      cur -= static_cast<int>(n);
      CalcNext(count);
    }
  }
};
