// A per-thread free list of memory blocks of one size, kept to a bound:
// small objects made by the million (values, tokens) come and go without
// the general allocator. The address sanitizer sees every block come and go
// instead.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "common/MekSanitizer.h"

namespace tavo {

template <size_t BlockSize, int MaxBlocks>
class TBlockCache {
 public:
  static void* Allocate(size_t Size) {
#if !defined(TAVO_ADDRESS_SANITIZER)
    if (Size == BlockSize && !Gone && Cache.Free) {
      --Cache.Count;
      return std::exchange(Cache.Free, Cache.Free->Next);
    }
#endif
    return ::operator new(Size);
  }

  static void Release(void* Block, size_t Size) noexcept {
#if !defined(TAVO_ADDRESS_SANITIZER)
    if (Size == BlockSize && !Gone && Cache.Count < MaxBlocks) {
      Cache.Free = new (Block) TFreeBlock{Cache.Free};
      ++Cache.Count;
      return;
    }
#else
    (void)Size;
#endif
    ::operator delete(Block);
  }

 private:
  static_assert(BlockSize >= sizeof(void*));
  struct TFreeBlock {
    TFreeBlock* Next;
  };
  struct TCache {
    TFreeBlock* Free = nullptr;
    int Count = 0;
    ~TCache() {
      Gone = true;
      while (Free) ::operator delete(std::exchange(Free, Free->Next));
      Count = 0;
    }
  };
  // Set once the thread's cache is gone, while the thread still frees
  // blocks.
  static inline thread_local bool Gone = false;
  static inline thread_local TCache Cache;
};

}  // namespace tavo
