// A bit set over an enumeration, as the engine's sets of flags and types.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace tavo {

template <class E>
class TSet {
 public:
  constexpr TSet() = default;
  constexpr TSet(std::initializer_list<E> Members) {
    for (E Member : Members) FBits |= Bit(Member);
  }

  static constexpr TSet FromBits(uint64_t Bits) {
    TSet Result;
    Result.FBits = Bits;
    return Result;
  }
  // Every enumerator from First to Last, both included.
  static constexpr TSet Range(E First, E Last) {
    TSet Result;
    for (int I = int(First); I <= int(Last); ++I) Result.FBits |= Bit(E(I));
    return Result;
  }

  constexpr bool Contains(E Member) const { return (FBits & Bit(Member)) != 0; }
  constexpr bool Empty() const { return FBits == 0; }
  constexpr uint64_t Bits() const { return FBits; }
  constexpr int Count() const { return __builtin_popcountll(FBits); }

  constexpr TSet& Include(E Member) {
    FBits |= Bit(Member);
    return *this;
  }
  constexpr TSet& Exclude(E Member) {
    FBits &= ~Bit(Member);
    return *this;
  }

  friend constexpr TSet operator+(TSet A, TSet B) { return FromBits(A.FBits | B.FBits); }
  friend constexpr TSet operator-(TSet A, TSet B) { return FromBits(A.FBits & ~B.FBits); }
  friend constexpr TSet operator*(TSet A, TSet B) { return FromBits(A.FBits & B.FBits); }
  friend constexpr bool operator==(TSet A, TSet B) { return A.FBits == B.FBits; }
  // True when every member of A is in B.
  friend constexpr bool operator<=(TSet A, TSet B) { return (A.FBits & ~B.FBits) == 0; }

  // Calls Action with each member in ordinal order.
  template <class F>
  constexpr void ForEach(F&& Action) const {
    for (uint64_t Rest = FBits; Rest != 0; Rest &= Rest - 1) Action(E(__builtin_ctzll(Rest)));
  }

 private:
  static constexpr uint64_t Bit(E Member) {
    return int(Member) >= 0 && int(Member) < 64 ? uint64_t(1) << int(Member) : 0;
  }
  uint64_t FBits = 0;
};

}  // namespace tavo
