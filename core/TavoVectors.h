// Containers of values: the multifield vector.
#pragma once

#include <vector>

#include "core/TavoValue.h"

namespace tavo {

// The multifield of the rule language: an ordered list of values, 0-based.
class TValueVector : public TCloneableObject {
  TAVO_CLASS(TValueVector, TCloneableObject)
 public:
  using TItems = std::vector<ITavoValue>;

  int GetValueCount() const { return int(FItems.size()); }
  const ITavoValue& Get(int Index) const { return FItems[CheckIndex(Index)]; }
  void Put(int Index, ITavoValue Value) { FItems[CheckIndex(Index)] = std::move(Value); }
  int Add(ITavoValue Value);
  void Insert(int Index, ITavoValue Value);
  void Delete(int Index);
  // Removes the first item that is this very object; its former index or -1.
  int Remove(const ITavoValue& Value);
  // Index of this very object, or -1.
  int IndexOf(const ITavoValue& Value) const;
  const ITavoValue& First() const { return Get(0); }
  const ITavoValue& Last() const { return Get(GetValueCount() - 1); }
  void Clear() { FItems.clear(); }
  // Adds the other vector's items by reference.
  void Append(const IValueVector& Other);
  void Reserve(int Count) { FItems.reserve(size_t(Count)); }

  // Member by member, in order, by the values' strict Equals.
  bool Equals(const IValueVector& Other) const { return EqualItems(Other.Get()); }
  bool Equals(const TCloneableObject* Other) const override;
  // The items' texts, each followed by a blank.
  String ToString() const override;
  // The wrapping sum of the items' hashes: the order does not count.
  int32_t GetHashCode() const override;

  // Vectors copy only through interfaces: the copy holds clones of the items.
  void Assign(const ICloneableObject& Source) override;
  void Assign(const TPersistent* Source) override;
  ICloneableObject Clone() const override;
  IValueVector CloneVector() const;

  TItems::const_iterator begin() const { return FItems.begin(); }
  TItems::const_iterator end() const { return FItems.end(); }

 private:
  size_t CheckIndex(int Index) const;
  bool EqualItems(const TValueVector* Other) const;
  void CopyFrom(const TValueVector* Vector);

  TItems FItems;
};

}  // namespace tavo
