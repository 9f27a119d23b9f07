// Replaces the global operator new and delete of a benchmark program to
// count live heap bytes and allocations, so that what an object or a call
// costs can be read off. Include it in one source file of a program only.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace heapcounter {

inline std::atomic<int64_t> LiveBytes{0};
inline std::atomic<int64_t> Allocations{0};

}  // namespace heapcounter

void* operator new(std::size_t Size) {
  void* P = std::malloc(Size + 16);
  if (!P) throw std::bad_alloc();
  *static_cast<std::size_t*>(P) = Size;
  heapcounter::LiveBytes += int64_t(Size);
  ++heapcounter::Allocations;
  return static_cast<char*>(P) + 16;
}
void operator delete(void* P) noexcept {
  if (!P) return;
  char* Block = static_cast<char*>(P) - 16;
  heapcounter::LiveBytes -= int64_t(*reinterpret_cast<std::size_t*>(Block));
  std::free(Block);
}
void operator delete(void* P, std::size_t) noexcept { operator delete(P); }
