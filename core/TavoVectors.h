// Containers of values: the multifield vector, the literal points of a fuzzy
// value, and a table of named values.
#pragma once

#include "common/MekHashTables.h"
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

// The literal form of a fuzzy set: (X, Y) pairs of values that may still be
// variables or calls, turned into a set by resolving the value holding it.
// The two sides always have the same length.
class TSingletonsVector : public TCloneableObject {
  TAVO_CLASS(TSingletonsVector, TCloneableObject)
 public:
  explicit TSingletonsVector(ISingletonsParser* Parser = nullptr);

  int GetCount() const { return FXItems->GetValueCount(); }
  const ITavoValue& GetXValues(int Index) const { return FXItems->Get(Index); }
  const ITavoValue& GetYValues(int Index) const { return FYItems->Get(Index); }
  // Replace one side only.
  void SetXValues(int Index, ITavoValue Value) { FXItems->Put(Index, std::move(Value)); }
  void SetYValues(int Index, ITavoValue Value) { FYItems->Put(Index, std::move(Value)); }
  // Adds a pair; gives its index.
  int Add(ITavoValue X, ITavoValue Y);
  void Insert(int Index, ITavoValue X, ITavoValue Y);
  void Delete(int Index);
  void Clear();
  // Index of this very value object on one side, or -1.
  int IndexOfX(const ITavoValue& Value) const { return FXItems->IndexOf(Value); }
  int IndexOfY(const ITavoValue& Value) const { return FYItems->IndexOf(Value); }
  // Adds the other's pairs, sharing the value objects.
  void Append(const ISingletonsVector& Other);
  ISingletonsParser* GetParser() const { return FParser; }
  void SetParser(ISingletonsParser* Value) { FParser = Value; }

  bool Equals(const ISingletonsVector& Other) const { return EqualPairs(Other.Get()); }
  bool Equals(const TCloneableObject* Other) const override;
  // The parser's form, or "(X Y) " for each pair without one.
  String ToString() const override;
  int32_t GetHashCode() const override;

  // Both copy roads clone the pairs and take the tag. The interface road
  // also takes the parser; the persistent road keeps this vector's own.
  void Assign(const ICloneableObject& Source) override;
  void Assign(const TPersistent* Source) override;
  ICloneableObject Clone() const override;

 private:
  bool EqualPairs(const TSingletonsVector* Other) const;
  void CopyPairs(const TSingletonsVector* Source);

  IValueVector FXItems;
  IValueVector FYItems;
  ISingletonsParser* FParser;
};

// Named values, as the store and the globals keep them.
class TValueHashTable : public TMekStringHashTable<ITavoValue> {
  TAVO_CLASS(TValueHashTable, TMekStringHashTable<ITavoValue>)
 public:
  // From another value table the result shares the source's value objects:
  // the clones taken first are replaced by the plain copy of the pairs.
  void Assign(const TPersistent* Source) override;
  // "key = value" lines in the table's order, each ended by CR LF.
  String ToString() const override;
};

}  // namespace tavo
