// Containers of values: the multifield vector.
#pragma once

#include "common/MekInterfaceList.h"
#include "core/TavoValue.h"

namespace tavo {

// The multifield of the rule language: an ordered list of values, 0-based.
class TValueVector : public TCloneableObject {
  TAVO_CLASS(TValueVector, TCloneableObject)
 public:
  int GetValueCount() const { return FItems.Count(); }
  const ITavoValue& Get(int Index) const { return FItems.Get(Index); }
  void Put(int Index, ITavoValue Value) { FItems.Put(Index, std::move(Value)); }
  int Add(ITavoValue Value) { return FItems.Add(std::move(Value)); }
  void Insert(int Index, ITavoValue Value) { FItems.Insert(Index, std::move(Value)); }
  void Delete(int Index) { FItems.Delete(Index); }
  // Removes the first item that is this very object; its former index or -1.
  int Remove(const ITavoValue& Value) { return FItems.Remove(Value.Get()); }
  // Index of this very object, or -1.
  int IndexOf(const ITavoValue& Value) const { return FItems.IndexOf(Value.Get()); }
  const ITavoValue& First() const { return FItems.First(); }
  const ITavoValue& Last() const { return FItems.Last(); }
  void Clear() { FItems.Clear(); }
  // Adds the other vector's items by reference.
  void Append(const IValueVector& Other);
  void Reserve(int Count) { FItems.Reserve(Count); }

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

  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

 private:
  bool EqualItems(const TValueVector* Other) const;
  void CopyFrom(const TValueVector* Vector);

  TInterfaceList<TTavoValue> FItems;
};

}  // namespace tavo
