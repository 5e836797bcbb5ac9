#include "containers/Handle.h"

#include <cstring>
#include <new>

#include "platform/internal/Memory.h"

Handle::Handle() : mSize(0), mAllocSize(0), mPtr(nullptr) {}

Handle::Handle(unsigned long size) : mSize(0), mAllocSize(0), mPtr(nullptr) {
  if (size > kMaxSize) throw std::bad_alloc();
  uint32_t alloc = static_cast<uint32_t>(GetAllocSize(size));
  mPtr = static_cast<char*>(::operator new(alloc));
  mSize = static_cast<uint32_t>(size);
  mAllocSize = alloc;
}

Handle::~Handle() {
  if (mPtr) {
    ::operator delete(mPtr);
    mPtr = nullptr;
    mSize = 0;
    mAllocSize = 0;
  }
}

unsigned long Handle::GetAllocSize(unsigned long size) {
  if (size > kMaxSize) return 0;  // where ((n >> 8) + 1) << 8 wraps 32 bits
  return ((size >> 8) + 1) << 8;
}

void Handle::Resize(unsigned long size) {
  // Sizes that the 32-bit rounding cannot hold are refused before anything
  // changes, instead of wrapping to a released block and losing the contents.
  if (size > kMaxSize) throw std::bad_alloc();
  uint32_t alloc = static_cast<uint32_t>(GetAllocSize(size));
  if (alloc != mAllocSize) {
    // The new block comes first, so a failure leaves the old one intact.
    char* block = static_cast<char*>(::operator new(alloc));
    if (mPtr) {
      std::memcpy(block, mPtr, mSize < alloc ? mSize : alloc);
      ::operator delete(mPtr);
    }
    mPtr = block;
    mAllocSize = alloc;
  }
  mSize = static_cast<uint32_t>(size);
}

char* Handle::Lock() { return mPtr; }

void Handle::Unlock() {}

// ---- scope guards

StHandleBlock::StHandleBlock(long size, bool, bool)
    : mHandle(size < 0 ? nullptr : new (std::nothrow) Handle(static_cast<unsigned long>(size))) {}

StHandleBlock::~StHandleBlock() { delete mHandle; }

StHandleBlock& StHandleBlock::operator=(const StHandleBlock& other) {
  mHandle = other.mHandle;
  return *this;
}

StPointerBlock::StPointerBlock(long size, bool)
    : mPtr(size <= 0 ? nullptr
                     : static_cast<char*>(vbu::platform::AllocZeroedBlock(static_cast<std::size_t>(size)))) {}

StPointerBlock::~StPointerBlock() { vbu::platform::FreeBlock(mPtr); }

StPointerBlock& StPointerBlock::operator=(const StPointerBlock& other) {
  mPtr = other.mPtr;
  return *this;
}

// The class constants have their one definition here, so that a host linking
// the library as a DLL reaches them like any other member.
constexpr unsigned long Handle::kMaxSize;
