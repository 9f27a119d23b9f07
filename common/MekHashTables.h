// Keyed collections: TMekDictionary, an open-addressing hash table with
// linear probing; TMekHashTable with change notification and index access;
// TMekStringHashTable with string keys, and a variant that owns objects.
//
// Lookups are templates over the key argument, so a string table is searched
// with a StringView or a literal without making a String.
#pragma once

#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "MekExceptions.h"
#include "MekFormat.h"
#include "MekObjects.h"
#include "MekStringList.h"
#include "MekStrings.h"

namespace tavo {

inline constexpr char16_t SDuplicateItem[] = u"Duplicate item";
inline constexpr char16_t SItemNotFound[] = u"Item not found";
inline constexpr char16_t STableEmpty[] = u"Table is empty";
inline constexpr char16_t SArgumentOutOfRange[] = u"Argument out of range";

enum TCollectionNotification { cnAdded, cnRemoved, cnExtracted };

// Spreads the bits of an integer over the low bits that buckets use.
inline int32_t MixHash(uint64_t X) {
  X ^= X >> 33;
  X *= 0xFF51AFD7ED558CCDull;
  X ^= X >> 33;
  return int32_t(uint32_t(X));
}

// Equality and hash of a key: ==, and the key's GetHashCode or std::hash.
template <class K>
struct TMekDefaultComparer {
  static bool Equals(const K& A, const K& B) { return A == B; }
  static int32_t GetHashCode(const K& Key) {
    if constexpr (requires { Key.GetHashCode(); })
      return int32_t(Key.GetHashCode());
    else
      return MixHash(std::hash<K>{}(Key));
  }
};

template <class K>
requires std::is_integral_v<K> || std::is_enum_v<K>
struct TMekDefaultComparer<K> {
  static bool Equals(K A, K B) { return A == B; }
  static int32_t GetHashCode(K Key) { return MixHash(uint64_t(Key)); }
};

template <class T>
struct TMekDefaultComparer<T*> {
  static bool Equals(const volatile void* A, const volatile void* B) { return A == B; }
  static int32_t GetHashCode(const volatile void* Key) { return MixHash(uintptr_t(Key)); }
};

// Exact comparison of code units. Lookups convert their argument to
// TLookupKey once, so a literal is measured once and not per probe.
template <>
struct TMekDefaultComparer<String> {
  using TLookupKey = StringView;
  static bool Equals(StringView A, StringView B) {
    return A.size() == B.size() &&
           std::memcmp(A.data(), B.data(), A.size() * sizeof(char16_t)) == 0;
  }
  static int32_t GetHashCode(StringView Key) { return CalculateHash(Key); }
};

// Comparison without regard to case, as SameText folds it.
struct TMekTextComparer {
  using TLookupKey = StringView;
  static bool Equals(StringView A, StringView B) { return SameText(A, B); }
  // The hash of the upper-cased text, folded in a stack buffer.
  static int32_t GetHashCode(StringView Key);
};

template <class K, class V>
struct TMekHashItem {
  // -1 marks an empty entry; a key's hash is never negative.
  int32_t HashCode = -1;
  K Key{};
  V Value{};
};

template <class K, class V, class TComparer = TMekDefaultComparer<K>>
class TMekDictionary : public TPersistent {
  TAVO_CLASS(TMekDictionary, TPersistent)
 public:
  using TItem = TMekHashItem<K, V>;

  // Runs over the occupied entries in bucket order.
  class TIterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = TItem;
    using difference_type = std::ptrdiff_t;
    using pointer = const TItem*;
    using reference = const TItem&;

    TIterator() = default;
    TIterator(const TItem* Current, const TItem* End) : FCurrent(Current), FEnd(End) { Skip(); }
    reference operator*() const { return *FCurrent; }
    pointer operator->() const { return FCurrent; }
    TIterator& operator++() {
      ++FCurrent;
      Skip();
      return *this;
    }
    TIterator operator++(int) {
      TIterator Old = *this;
      ++*this;
      return Old;
    }
    friend bool operator==(const TIterator& A, const TIterator& B) {
      return A.FCurrent == B.FCurrent;
    }

   private:
    void Skip() {
      while (FCurrent != FEnd && FCurrent->HashCode == -1) ++FCurrent;
    }
    const TItem* FCurrent = nullptr;
    const TItem* FEnd = nullptr;
  };

  TMekDictionary() = default;
  explicit TMekDictionary(int32_t Capacity) { Resize(Capacity); }
  TMekDictionary(const TMekDictionary&) = delete;
  TMekDictionary& operator=(const TMekDictionary&) = delete;

  int32_t Count() const { return FCount; }
  int32_t GetCapacity() const { return FLength; }
  int32_t GetGrowThreshold() const { return FGrowThreshold; }
  // The smallest power of two from 4 that holds Capacity, 0 for 0. It is
  // doubled further while Count would be above the grow threshold, so that
  // the table always keeps empty entries to end a probe.
  void SetCapacity(int32_t Capacity) { Resize(Capacity); }

  virtual void Add(const K& Key, const V& Value) {
    if (FCount >= FGrowThreshold) Grow();
    const int32_t HashCode = Hash(Key);
    const int32_t Index = GetBucketIndex(LookupKey(Key), HashCode);
    if (Index >= 0) throw EMekException(SDuplicateItem);
    InsertAt(~Index, HashCode, Key, Value);
  }
  virtual void AddOrSetValue(const K& Key, const V& Value) {
    if (FCount >= FGrowThreshold) Grow();
    const int32_t HashCode = Hash(Key);
    const int32_t Index = GetBucketIndex(LookupKey(Key), HashCode);
    if (Index >= 0)
      ReplaceAt(Index, Value);
    else
      InsertAt(~Index, HashCode, Key, Value);
  }
  // Old gets the value the key had, or V{}.
  void Put(const K& Key, const V& Value, V& Old) {
    TryGetValue(Key, Old);
    AddOrSetValue(Key, Value);
  }
  // False, and nothing else, when the key is absent.
  virtual bool Remove(const K& Key) {
    const int32_t Index = IndexOfKey(Key);
    if (Index < 0) return false;
    RemoveAt(Index, cnRemoved);
    return true;
  }
  // Takes the entry out and gives its value, reported as extracted rather
  // than removed.
  virtual bool TryExtract(const K& Key, V& Value) {
    const int32_t Index = IndexOfKey(Key);
    if (Index < 0) {
      Value = V{};
      return false;
    }
    Value = RemoveAt(Index, cnExtracted);
    return true;
  }
  virtual void SetItem(const K& Key, const V& Value) {
    const int32_t Index = IndexOfKey(Key);
    if (Index < 0) throw EMekException(SItemNotFound);
    ReplaceAt(Index, Value);
  }
  virtual void Clear() { ClearItems(); }

  template <class Q>
  const V& GetItem(const Q& Key) const {
    const V* Value = Find(Key);
    if (!Value) throw EMekException(SItemNotFound);
    return *Value;
  }
  // False clears Value.
  template <class Q>
  bool TryGetValue(const Q& Key, V& Value) const {
    if (const V* Found = Find(Key)) {
      Value = *Found;
      return true;
    }
    Value = V{};
    return false;
  }
  template <class Q>
  bool ContainsKey(const Q& Key) const {
    return IndexOfKey(Key) >= 0;
  }
  // The stored value, or null.
  template <class Q>
  V* Find(const Q& Key) {
    const int32_t Index = IndexOfKey(Key);
    return Index >= 0 ? &FItems[Index].Value : nullptr;
  }
  template <class Q>
  const V* Find(const Q& Key) const {
    return const_cast<TMekDictionary*>(this)->Find(Key);
  }

  // The position of Key's entry, or a negative number: a caller that looks
  // a key up, changes its value and perhaps removes it probes the table once.
  // A position holds until the table next changes.
  template <class Q>
  int32_t Locate(const Q& Key) const {
    return IndexOfKey(Key);
  }
  V& ValueAt(int32_t Index) { return FItems[Index].Value; }
  // The value of Key, entered as V{} when absent (Added tells which), by
  // one probe unless the table must grow first. The reference holds until
  // the table next changes.
  V& FindOrAdd(const K& Key, bool& Added) {
    const int32_t HashCode = Hash(Key);
    int32_t Index = GetBucketIndex(LookupKey(Key), HashCode);
    Added = Index < 0;
    if (Added) {
      if (FCount >= FGrowThreshold) {
        Grow();
        Index = GetBucketIndex(LookupKey(Key), HashCode);
      }
      InsertAt(~Index, HashCode, Key, V{});
      Index = ~Index;
    }
    return FItems[Index].Value;
  }
  void RemoveLocated(int32_t Index) { RemoveAt(Index, cnRemoved); }

  TIterator begin() const { return TIterator(FItems.get(), FItems.get() + FLength); }
  TIterator end() const {
    const TItem* End = FItems.get() + FLength;
    return TIterator(End, End);
  }

 protected:
  // Each key and value that enters or leaves the table, after the table is
  // consistent again. A replaced value leaves as removed.
  virtual void KeyNotify(const K&, TCollectionNotification) {}
  virtual void ValueNotify(const V&, TCollectionNotification) {}

  // Releases all entries, leaves an empty array and then reports each key
  // and value as removed.
  void ClearItems() {
    std::unique_ptr<TItem[]> Old = std::move(FItems);
    const int32_t Length = std::exchange(FLength, 0);
    FCount = 0;
    FGrowThreshold = 0;
    ++FVersion;
    for (int32_t I = 0; I < Length; ++I) {
      if (Old[I].HashCode == -1) continue;
      KeyNotify(Old[I].Key, cnRemoved);
      ValueNotify(Old[I].Value, cnRemoved);
    }
  }

  // Changes whenever entries are added, removed or moved.
  uint32_t GetVersion() const { return FVersion; }
  const TItem* GetItemArray() const { return FItems.get(); }

 private:
  template <class Q>
  static decltype(auto) LookupKey(const Q& Key) {
    if constexpr (requires { typename TComparer::TLookupKey; })
      return typename TComparer::TLookupKey(Key);
    else
      return (Key);
  }

  template <class Q>
  static int32_t Hash(const Q& Key) {
    return int32_t(((uint32_t(TComparer::GetHashCode(Key)) & 0x7FFFFFFFu) + 1) & 0x7FFFFFFFu);
  }

  // The entry holding Key, or the complement of the empty entry that ends
  // its probe run; INT32_MIN with no array.
  template <class Q>
  int32_t GetBucketIndex(const Q& Key, int32_t HashCode) const {
    if (FLength == 0) return INT32_MIN;
    const TItem* const Items = FItems.get();
    const TItem* const End = Items + FLength;
    const TItem* Item = Items + (HashCode & (FLength - 1));
    for (;;) {
      const int32_t H = Item->HashCode;
      if (H == -1) return ~int32_t(Item - Items);
      if (H == HashCode && TComparer::Equals(Item->Key, Key)) return int32_t(Item - Items);
      if (++Item == End) Item = Items;
    }
  }

  template <class Q>
  int32_t IndexOfKey(const Q& Key) const {
    if (FCount == 0) return -1;
    const auto& Lookup = LookupKey(Key);
    return GetBucketIndex(Lookup, Hash(Lookup));
  }

  void InsertAt(int32_t Index, int32_t HashCode, const K& Key, const V& Value) {
    TItem& Item = FItems[Index];
    Item.Key = Key;
    Item.Value = Value;
    Item.HashCode = HashCode;
    ++FCount;
    ++FVersion;
    KeyNotify(Item.Key, cnAdded);
    ValueNotify(Item.Value, cnAdded);
  }

  void ReplaceAt(int32_t Index, const V& Value) {
    V Old = std::exchange(FItems[Index].Value, Value);
    ValueNotify(Old, cnRemoved);
    ValueNotify(FItems[Index].Value, cnAdded);
  }

  // Empties the entry and closes the gap: each following entry of the run
  // whose home bucket is not in the circular range (gap, entry] moves into
  // the gap, so no probe run is ever broken.
  V RemoveAt(int32_t Index, TCollectionNotification Action) {
    TItem* Items = FItems.get();
    const int32_t Mask = FLength - 1;
    K Key = std::move(Items[Index].Key);
    V Value = std::move(Items[Index].Value);
    int32_t Gap = Index;
    for (int32_t I = (Index + 1) & Mask; Items[I].HashCode != -1; I = (I + 1) & Mask) {
      const int32_t Home = Items[I].HashCode & Mask;
      const bool Stays = Gap <= I ? Gap < Home && Home <= I : Gap < Home || Home <= I;
      if (Stays) continue;
      Items[Gap] = std::move(Items[I]);
      Gap = I;
    }
    Items[Gap].HashCode = -1;
    Items[Gap].Key = K{};
    Items[Gap].Value = V{};
    --FCount;
    ++FVersion;
    KeyNotify(Key, Action);
    ValueNotify(Value, Action);
    return Value;
  }

  void Resize(int32_t Capacity) {
    if (Capacity < FCount) throw EMekException(SArgumentOutOfRange);
    if (Capacity == 0) {
      Rehash(0);
      return;
    }
    if (Capacity > (1 << 30)) throw EMekException(SArgumentOutOfRange);
    int32_t Length = 4;
    while (Length < Capacity) Length <<= 1;
    while (Length / 2 + Length / 4 < FCount) Length <<= 1;
    Rehash(Length);
  }

  void Grow() {
    const int32_t Length = GetCapacity();
    if (Length >= (1 << 30)) throw EMekException(SArgumentOutOfRange);
    Rehash(Length == 0 ? 4 : Length * 2);
  }

  void Rehash(int32_t Length) {
    std::unique_ptr<TItem[]> New;
    if (Length > 0) New = std::make_unique<TItem[]>(size_t(Length));
    std::unique_ptr<TItem[]> Old = std::exchange(FItems, std::move(New));
    const int32_t OldLength = std::exchange(FLength, Length);
    FGrowThreshold = Length / 2 + Length / 4;
    ++FVersion;
    const int32_t Mask = Length - 1;
    for (int32_t J = 0; J < OldLength; ++J) {
      if (Old[J].HashCode == -1) continue;
      int32_t I = Old[J].HashCode & Mask;
      while (FItems[I].HashCode != -1) I = (I + 1) & Mask;
      FItems[I] = std::move(Old[J]);
    }
  }

  std::unique_ptr<TItem[]> FItems;
  int32_t FLength = 0;
  int32_t FCount = 0;
  int32_t FGrowThreshold = 0;
  uint32_t FVersion = 0;
};

// Adds change notification and access by position. The public changes go
// through the DoAdd, DoRemove and DoSetValue hooks, where a derived table
// sets its policy.
//
// OnChange fires after each change while no update is open. Changes inside
// BeginUpdate/EndUpdate fire nothing until the closing EndUpdate, which
// fires once if anything changed.
template <class K, class V, class TComparer = TMekDefaultComparer<K>>
class TMekHashTable : public TMekDictionary<K, V, TComparer> {
  using TInherited = TMekDictionary<K, V, TComparer>;
  TAVO_CLASS(TMekHashTable, TInherited)
 public:
  using typename TInherited::TItem;

  TMekHashTable() = default;
  explicit TMekHashTable(int32_t Capacity) : TInherited(Capacity) {}

  void BeginUpdate() { ++FUpdateCount; }
  void EndUpdate() {
    if (FUpdateCount == 0) return;
    if (--FUpdateCount == 0 && FChangePending) Change();
  }
  int32_t GetUpdateCount() const { return FUpdateCount; }

  void Add(const K& Key, const V& Value) override { DoAdd(Key, Value); }
  void AddOrSetValue(const K& Key, const V& Value) override {
    if (this->ContainsKey(Key))
      DoSetValue(Key, Value);
    else
      DoAdd(Key, Value);
  }
  // Fails on an empty table even for a key that is absent anyway.
  bool Remove(const K& Key) override { return DoRemove(Key); }
  bool TryExtract(const K& Key, V& Value) override {
    if (!TInherited::TryExtract(Key, Value)) return false;
    Change();
    return true;
  }
  void SetItem(const K& Key, const V& Value) override { DoSetValue(Key, Value); }
  // One change for the whole table; none for a table that was empty.
  void Clear() override {
    const bool HadItems = this->Count() > 0;
    BeginUpdate();
    try {
      TInherited::Clear();
      if (HadItems) Change();
    } catch (...) {
      EndUpdate();
      throw;
    }
    EndUpdate();
  }

  // The entry at position Index of the iteration order. A step to the
  // neighbour of the last position asked moves one occupied entry; any
  // other position walks from the start.
  const TItem& GetPairByIndex(int32_t Index) const {
    if (Index < 0 || Index >= this->Count()) throw EMekException(Format(SListIndexError, Index));
    const TItem* Items = this->GetItemArray();
    if (FCursorVersion != this->GetVersion()) FCursorIndex = -1;
    int32_t Entry = FCursorEntry;
    if (FCursorIndex >= 0 && Index == FCursorIndex + 1) {
      do ++Entry;
      while (Items[Entry].HashCode == -1);
    } else if (FCursorIndex >= 0 && Index == FCursorIndex - 1) {
      do --Entry;
      while (Items[Entry].HashCode == -1);
    } else if (FCursorIndex < 0 || Index != FCursorIndex) {
      Entry = -1;
      for (int32_t N = 0; N <= Index; ++N) {
        do ++Entry;
        while (Items[Entry].HashCode == -1);
      }
    }
    FCursorIndex = Index;
    FCursorEntry = Entry;
    FCursorVersion = this->GetVersion();
    return Items[Entry];
  }
  const K& GetKeyByIndex(int32_t Index) const { return GetPairByIndex(Index).Key; }
  const V& GetItemByIndex(int32_t Index) const { return GetPairByIndex(Index).Value; }

  TNotifyEvent OnChange;

 protected:
  virtual void DoAdd(const K& Key, const V& Value) {
    TInherited::Add(Key, Value);
    Change();
  }
  virtual bool DoRemove(const K& Key) {
    if (this->Count() == 0) throw EMekException(STableEmpty);
    if (!TInherited::Remove(Key)) return false;
    Change();
    return true;
  }
  virtual void DoSetValue(const K& Key, const V& Value) {
    TInherited::SetItem(Key, Value);
    Change();
  }
  virtual void Change() {
    FCursorIndex = -1;
    if (FUpdateCount > 0) {
      FChangePending = true;
      return;
    }
    FChangePending = false;
    if (OnChange) OnChange(this);
  }

 private:
  int32_t FUpdateCount = 0;
  bool FChangePending = false;
  // Logical position and entry of the last index access; -1 is invalid.
  mutable int32_t FCursorIndex = -1;
  mutable int32_t FCursorEntry = -1;
  mutable uint32_t FCursorVersion = 0;
};

template <class V, class TComparer = TMekDefaultComparer<String>>
class TMekStringHashTable : public TMekHashTable<String, V, TComparer> {
  using TInherited = TMekHashTable<String, V, TComparer>;
  TAVO_CLASS(TMekStringHashTable, TInherited)
 public:
  using TDictionary = TMekDictionary<String, V, TComparer>;

  TMekStringHashTable() = default;
  explicit TMekStringHashTable(int32_t Capacity) : TInherited(Capacity) {}

  // From a string list: its strings become the keys, with V{} values; a
  // string that repeats (to this table's comparer) is kept once. From a
  // dictionary of the same kind: a copy of its pairs. Either way a single
  // change.
  void Assign(const TPersistent* Source) override {
    if (Source == this) return;
    if (const auto* Strings = dynamic_cast<const TStrings*>(Source)) {
      Update([&] {
        this->Clear();
        for (int I = 0; I < Strings->Count(); ++I) this->AddOrSetValue(Strings->Get(I), V{});
      });
    } else if (const auto* Table = dynamic_cast<const TDictionary*>(Source)) {
      Update([&] {
        this->Clear();
        for (const auto& Item : *Table) this->Add(Item.Key, Item.Value);
      });
    } else {
      TInherited::Assign(Source);
    }
  }
  // Replaces a string list's content by the keys.
  void AssignTo(TPersistent* Dest) const override {
    auto* Strings = dynamic_cast<TStrings*>(Dest);
    if (!Strings) {
      TInherited::AssignTo(Dest);
      return;
    }
    Strings->BeginUpdate();
    try {
      Strings->Clear();
      for (const auto& Item : *this) Strings->Add(Item.Key);
    } catch (...) {
      Strings->EndUpdate();
      throw;
    }
    Strings->EndUpdate();
  }

 protected:
  template <class F>
  void Update(F&& Action) {
    this->BeginUpdate();
    try {
      Action();
    } catch (...) {
      this->EndUpdate();
      throw;
    }
    this->EndUpdate();
  }
};

// A string table of objects, which it frees when they leave by removal,
// replacement or Clear while it owns them. Extract hands one back instead.
template <class T, class TComparer = TMekDefaultComparer<String>>
class TMekStringObjectHashTable : public TMekStringHashTable<T*, TComparer> {
  using TInherited = TMekStringHashTable<T*, TComparer>;
  TAVO_CLASS(TMekStringObjectHashTable, TInherited)
 public:
  TMekStringObjectHashTable() = default;
  explicit TMekStringObjectHashTable(bool AOwnsObjects) : FOwnsObjects(AOwnsObjects) {}
  ~TMekStringObjectHashTable() override { this->ClearItems(); }

  bool GetOwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }

  // The object, now the caller's, or null when the key is absent.
  T* Extract(const String& Key) {
    T* Object = nullptr;
    this->TryExtract(Key, Object);
    return Object;
  }

  // An owning table takes no objects from another table, which would give
  // them two owners.
  void Assign(const TPersistent* Source) override {
    if (FOwnsObjects && Source != this &&
        dynamic_cast<const typename TInherited::TDictionary*>(Source))
      this->AssignError(Source);
    TInherited::Assign(Source);
  }

 protected:
  void ValueNotify(T* const& Value, TCollectionNotification Action) override {
    if (Action == cnRemoved && FOwnsObjects) delete Value;
  }
  // Setting the object a key already has must not free it.
  void DoSetValue(const String& Key, T* const& Value) override {
    if (T* const* Current = this->Find(Key); Current && *Current == Value) return;
    TInherited::DoSetValue(Key, Value);
  }

 private:
  bool FOwnsObjects = true;
};

}  // namespace tavo
