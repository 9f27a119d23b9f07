#include "MekHashTables.h"

#include <algorithm>

namespace tavo {

int32_t TMekTextComparer::GetHashCode(StringView Key) {
  // Long keys are hashed in chunks, each seeded with the hash so far; a key
  // of one chunk hashes like its upper-case copy.
  constexpr size_t Chunk = 64;
  char16_t Buffer[Chunk];
  int32_t Hash = 0;
  size_t Start = 0;
  do {
    const size_t Length = std::min(Chunk, Key.size() - Start);
    for (size_t I = 0; I < Length; ++I) Buffer[I] = UpCaseChar(Key[Start + I]);
    Hash = CalculateHash(StringView(Buffer, Length), Hash);
    Start += Length;
  } while (Start < Key.size());
  return Hash;
}

}  // namespace tavo
