// Handle.h: a growable raw block, and the scope guards that own a block for
// the length of a scope.
//
//   Handle h(100);                 // 100 bytes in a 256-byte block
//   h.Resize(300);                 // contents kept; the block may move
//   char* p = h.GetPtr();          // valid until the next Resize that moves it
#pragma once

#include <cstdint>

#include <VantoroBasicUtils/platform/Export.h>

// A growable block of raw bytes. The block is always the next multiple of 256
// strictly above the logical size; its bytes are never cleared. Its address may
// change on any Resize that changes that rounded size. Sizes are 32-bit: a
// size beyond kMaxSize cannot be held, and asking for one throws
// std::bad_alloc, as exhausted memory does, leaving the Handle as it was.
class VBU_API Handle {
 public:
  // The largest logical size that the 32-bit rounding can hold.
  static constexpr unsigned long kMaxSize = 0xFFFFFEFFul;

  // No block; all fields 0.
  Handle();
  // A block for `size` bytes, contents indeterminate.
  explicit Handle(unsigned long size);
  // Frees the block, if any, and zeroes all fields.
  virtual ~Handle();

  // Two Handles never share a block.
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  // The next multiple of 256 strictly above `size`, in 32-bit arithmetic:
  // 0 for sizes above kMaxSize, where that arithmetic wraps.
  static unsigned long GetAllocSize(unsigned long size);
  // The logical size last asked for.
  unsigned long GetSize() const { return mSize; }
  // Sets the logical size; moves the contents to a new block when the rounded
  // size changes (growing or shrinking), keeping as many bytes as fit.
  virtual void Resize(unsigned long size);
  // The block's address. Pins nothing and counts nothing.
  virtual char* Lock();
  // Does nothing.
  virtual void Unlock();
  // The block's address, or null when there is none.
  virtual char* GetPtr() { return mPtr; }

 protected:
  uint32_t mSize;       // logical size in bytes
  uint32_t mAllocSize;  // size of the block at mPtr
  char* mPtr;           // the block, or null
};

// Owns a new Handle of `size` bytes for a scope; null for a negative size. The
// bool arguments are accepted and ignored. Contents are indeterminate.
class VBU_API StHandleBlock {
 public:
  explicit StHandleBlock(long size, bool throwFail = true, bool useTempMem = false);
  ~StHandleBlock();
  StHandleBlock(const StHandleBlock&) = delete;
  // Copies the one field: the caller must see that only one guard frees it.
  StHandleBlock& operator=(const StHandleBlock& other);
  operator Handle*() const { return mHandle; }

 protected:
  Handle* mHandle;
};

// As StHandleBlock. A Handle is never cleared, so neither is this block.
class VBU_API StClearHandleBlock : public StHandleBlock {
 public:
  explicit StClearHandleBlock(long size, bool throwFail = true) : StHandleBlock(size, throwFail) {}
};

// As StHandleBlock.
class VBU_API StTempHandle : public StHandleBlock {
 public:
  explicit StTempHandle(long size, bool throwFail = true) : StHandleBlock(size, throwFail) {}
};

// Owns a zero-filled platform block that stays at one address for the
// guard's life. Null when the platform has no memory, or for a size of 0 or less.
class VBU_API StPointerBlock {
 public:
  explicit StPointerBlock(long size, bool throwFail = true);
  ~StPointerBlock();
  StPointerBlock(const StPointerBlock&) = delete;
  StPointerBlock& operator=(const StPointerBlock& other);
  operator char*() const { return mPtr; }

 protected:
  char* mPtr;
};

// As StPointerBlock: that block is zero-filled already.
class VBU_API StClearPointerBlock : public StPointerBlock {
 public:
  explicit StClearPointerBlock(long size, bool throwFail = true) : StPointerBlock(size, throwFail) {}
};

// Marks a stretch of code that works through a block's address. Does nothing.
class VBU_API StHandleLocker {
 public:
  explicit StHandleLocker(Handle*) {}
  ~StHandleLocker() {}
};

// Inert base of classes that once took part in memory checking.
class VBU_API CMemoryCheck {
 public:
  explicit CMemoryCheck(bool = false) {}
  ~CMemoryCheck() {}
  CMemoryCheck(const CMemoryCheck&) = default;
  CMemoryCheck& operator=(const CMemoryCheck&) { return *this; }
};
