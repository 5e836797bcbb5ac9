// LComparator.h: the objects through which an LArray orders and searches its
// items. A comparison result counts by its sign only.
//
//   struct Person { char name[32]; int age; };
//   class ByAge : public LComparator {
//     long Compare(const void* a, const void* b, unsigned long, unsigned long) const override {
//       return static_cast<const Person*>(a)->age - static_cast<const Person*>(b)->age;
//     }
//   };
//   LArray people(sizeof(Person), new ByAge, true);     // sorted; the array owns the comparator
//   Person someone{"Ann", 41};  people.InsertItemsAt(1, kLastIndex, &someone, 0);
//   long i = people.FetchIndexOf(&someone);              // 1
#pragma once

#include <cstdint>
#include <cstring>

#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/containers/UMemUtils.h>

// Compares items as raw bytes (unsigned, then by size). Subclasses override
// Compare for another order, and CompareToKey to support search by key.
class VBU_API LComparator {
 public:
  LComparator() = default;
  virtual ~LComparator();

  // <0 if `a` comes first, 0 if equal, >0 if `a` comes after `b`. Defined
  // here, as LLongComparator's are, so that sorts and searches that know the
  // comparator's exact type can inline it.
  virtual long Compare(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const {
    return BlockCompare(a, b, sizeA, sizeB);
  }
  // True if Compare gives 0.
  virtual bool IsEqualTo(const void* a, const void* b, unsigned long sizeA, unsigned long sizeB) const;
  // How `item` stands against `key`; the base class knows no keys and gives 1.
  virtual long CompareToKey(const void* item, unsigned long size, const void* key) const;
  // True if CompareToKey gives 0.
  virtual bool IsEqualToKey(const void* item, unsigned long size, const void* key) const;
};

// Compares 32-bit words by their wrapping 32-bit difference; sizes are not
// read. Values further apart than 2^31 - 1 can compare with the wrong sign.
class VBU_API LLongComparator : public LComparator {
 public:
  ~LLongComparator() override;
  long Compare(const void* a, const void* b, unsigned long, unsigned long) const override {
    return static_cast<int32_t>(Word(a) - Word(b));
  }
  bool IsEqualTo(const void* a, const void* b, unsigned long, unsigned long) const override {
    return Word(a) == Word(b);
  }

 private:
  static uint32_t Word(const void* p) {
    uint32_t w;
    std::memcpy(&w, p, 4);
    return w;
  }
};
