// An ordered list of counted references, with checked indices.
#pragma once

#include <vector>

#include "MekExceptions.h"
#include "MekFormat.h"
#include "MekObjects.h"

namespace tavo {

template <class T>
class TInterfaceList {
 public:
  using TItem = TRef<T>;
  using TItems = std::vector<TItem>;

  int Count() const { return int(FItems.size()); }
  const TItem& Get(int Index) const { return FItems[CheckIndex(Index)]; }
  void Put(int Index, TItem Item) { FItems[CheckIndex(Index)] = std::move(Item); }
  const TItem& First() const { return Get(0); }
  const TItem& Last() const { return Get(Count() - 1); }
  int Add(TItem Item) {
    FItems.push_back(std::move(Item));
    return Count() - 1;
  }
  void Insert(int Index, TItem Item) {
    if (Index < 0 || Index > Count()) throw EMekException(Format(SListIndexError, Index));
    FItems.insert(FItems.begin() + Index, std::move(Item));
  }
  void Delete(int Index) { FItems.erase(FItems.begin() + ptrdiff_t(CheckIndex(Index))); }
  // Index of this very object, or -1.
  int IndexOf(const T* Item) const {
    for (size_t I = 0; I < FItems.size(); ++I)
      if (FItems[I].Get() == Item) return int(I);
    return -1;
  }
  // Removes the first entry of this very object; its former index or -1.
  int Remove(const T* Item) {
    int Index = IndexOf(Item);
    if (Index >= 0) Delete(Index);
    return Index;
  }
  void Clear() { FItems.clear(); }
  void Reserve(int Capacity) { FItems.reserve(size_t(Capacity)); }

  typename TItems::const_iterator begin() const { return FItems.begin(); }
  typename TItems::const_iterator end() const { return FItems.end(); }

 protected:
  size_t CheckIndex(int Index) const {
    if (Index < 0 || Index >= Count()) throw EMekException(Format(SListIndexError, Index));
    return size_t(Index);
  }

  TItems FItems;
};

}  // namespace tavo
