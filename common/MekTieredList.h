// An ordered list of counted references that reads any index in constant
// time and deletes or inserts anywhere by moving a few hundred entries, not
// half the list: the entries live in blocks of a fixed size, each a ring,
// all full but the last. Deleting at an index closes the gap within its
// block, and then each later block hands its first entry to the block
// before it, which for a ring is one move and a turn of its head.
#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "MekExceptions.h"
#include "MekFormat.h"
#include "MekObjects.h"

namespace tavo {

template <class T>
class TTieredList {
 public:
  using TItem = TRef<T>;

  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = TItem;
    using difference_type = std::ptrdiff_t;
    using pointer = const TItem*;
    using reference = const TItem&;

    const_iterator(const TTieredList* List, size_t Index) : FList(List), FIndex(Index) {}
    reference operator*() const { return FList->At(FIndex); }
    pointer operator->() const { return &FList->At(FIndex); }
    const_iterator& operator++() {
      ++FIndex;
      return *this;
    }
    const_iterator operator++(int) { return const_iterator(FList, FIndex++); }
    bool operator==(const const_iterator& Other) const { return FIndex == Other.FIndex; }
    bool operator!=(const const_iterator& Other) const { return FIndex != Other.FIndex; }

   private:
    const TTieredList* FList;
    size_t FIndex;
  };

  int Count() const { return int(FCount); }
  const TItem& Get(int Index) const { return At(CheckIndex(Index)); }
  void Put(int Index, TItem Item) { At(CheckIndex(Index)) = std::move(Item); }
  int Add(TItem Item) {
    if (FCount == FBlocks.size() * BlockSize) FBlocks.push_back(std::make_unique<TBlock>());
    At(FCount++) = std::move(Item);
    return Count() - 1;
  }
  void Insert(int Index, TItem Item) {
    if (Index < 0 || Index > Count()) throw EMekException(Format(SListIndexError, Index));
    if (FCount == FBlocks.size() * BlockSize) FBlocks.push_back(std::make_unique<TBlock>());
    const size_t Target = size_t(Index) >> Shift;
    // Each block from the last back to the target's takes the last entry
    // of the block before it in at its front.
    for (size_t B = (FCount >> Shift); B > Target; --B) {
      TBlock& Block = *FBlocks[B];
      TBlock& Before = *FBlocks[B - 1];
      Block.Head = (Block.Head - 1) & Mask;
      Block.Items[Block.Head] = std::move(Before.Items[(Before.Head + Mask) & Mask]);
    }
    // Within the target block the entries from Index on move one up; its
    // last entry, if it was full, has gone to the next block already.
    TBlock& Block = *FBlocks[Target];
    const size_t Offset = size_t(Index) & Mask;
    const size_t Used = std::min(FCount - (Target << Shift), BlockSize - 1);
    for (size_t I = Used; I > Offset; --I) Block.Slot(I) = std::move(Block.Slot(I - 1));
    Block.Slot(Offset) = std::move(Item);
    ++FCount;
  }
  void Delete(int Index) {
    const size_t Position = CheckIndex(Index);
    const size_t Target = Position >> Shift;
    TBlock& Block = *FBlocks[Target];
    const size_t Used = std::min(FCount - (Target << Shift), BlockSize);
    for (size_t I = Position & Mask; I + 1 < Used; ++I) Block.Slot(I) = std::move(Block.Slot(I + 1));
    // The gap is now the target block's last slot: each later block gives
    // its first entry to the block before it.
    const size_t Last = (FCount - 1) >> Shift;
    TItem* Gap = &Block.Slot(Used - 1);
    for (size_t B = Target + 1; B <= Last; ++B) {
      TBlock& Next = *FBlocks[B];
      *Gap = std::move(Next.Items[Next.Head]);
      Next.Head = (Next.Head + 1) & Mask;
      Gap = &Next.Slot(Mask);
    }
    Gap->Reset();
    --FCount;
    if (FBlocks.size() > (FCount + Mask) >> Shift) FBlocks.pop_back();
  }
  // Index of this very object, or -1.
  int IndexOf(const T* Item) const {
    for (size_t I = 0; I < FCount; ++I)
      if (At(I).Get() == Item) return int(I);
    return -1;
  }
  // Removes the first entry of this very object; its former index or -1.
  int Remove(const T* Item) {
    int Index = IndexOf(Item);
    if (Index >= 0) Delete(Index);
    return Index;
  }
  void Clear() {
    FBlocks.clear();
    FCount = 0;
  }

  const_iterator begin() const { return const_iterator(this, 0); }
  const_iterator end() const { return const_iterator(this, FCount); }

 private:
  static constexpr size_t Shift = 8;
  static constexpr size_t BlockSize = size_t(1) << Shift;
  static constexpr size_t Mask = BlockSize - 1;
  struct TBlock {
    size_t Head = 0;
    std::array<TItem, BlockSize> Items;
    TItem& Slot(size_t Offset) { return Items[(Head + Offset) & Mask]; }
  };

  TItem& At(size_t Index) const { return FBlocks[Index >> Shift]->Slot(Index & Mask); }
  size_t CheckIndex(int Index) const {
    if (Index < 0 || Index >= Count()) throw EMekException(Format(SListIndexError, Index));
    return size_t(Index);
  }

  std::vector<std::unique_ptr<TBlock>> FBlocks;
  size_t FCount = 0;
};

}  // namespace tavo
