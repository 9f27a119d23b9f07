// A per-thread free list of memory blocks of one size, kept to a bound:
// small objects made by the million (values, tokens) come and go without
// the general allocator. The address sanitizer sees every block come and go
// instead.
//
// A user defines, at namespace scope in its own source file,
//   thread_local bool Gone = false;
//   thread_local TBlockCache<Size, Max> Cache(Gone);
// so that the compiler reaches both directly; the flag outlives the cache
// and tells late frees of the thread to go to the general allocator.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "common/MekSanitizer.h"

namespace tavo {

template <size_t BlockSize, int MaxBlocks>
class TBlockCache {
 public:
  explicit TBlockCache(bool& Gone) : FGone(Gone) {}
  ~TBlockCache() {
    FGone = true;
    while (FFree) ::operator delete(std::exchange(FFree, FFree->Next));
    FCount = 0;
  }
  TBlockCache(const TBlockCache&) = delete;
  TBlockCache& operator=(const TBlockCache&) = delete;

  void* Allocate(size_t Size) {
#if !defined(TAVO_ADDRESS_SANITIZER)
    if (Size == BlockSize && FFree) {
      --FCount;
      void* Block = std::exchange(FFree, FFree->Next);
      // The next block's link is read at the next call: fetch it now.
      if (FFree) __builtin_prefetch(FFree);
      return Block;
    }
#endif
    return ::operator new(Size);
  }

  void Release(void* Block, size_t Size) noexcept {
#if !defined(TAVO_ADDRESS_SANITIZER)
    if (Size == BlockSize && FCount < MaxBlocks) {
      FFree = new (Block) TFreeBlock{FFree};
      ++FCount;
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
  TFreeBlock* FFree = nullptr;
  int FCount = 0;
  bool& FGone;
};

}  // namespace tavo
