// String lists: TStrings, the text-and-update base that other collections
// copy to and from, and TStringList<T>, whose items carry a string, an object
// and a data value, kept in order or sorted.
#pragma once

#include <utility>
#include <vector>

#include "MekExceptions.h"
#include "MekFormat.h"
#include "MekObjects.h"
#include "MekStrings.h"

namespace tavo {

inline constexpr char16_t SDuplicateString[] = u"String list does not allow duplicates";
inline constexpr char16_t SSortedListError[] = u"Operation not allowed on sorted list";

enum TDuplicates { dupIgnore, dupAccept, dupError };

// Strings with objects, an update count and text conversion. Assign and
// AssignTo of other collections go through this base, so that they accept a
// string list whatever its data type.
class TStrings : public TPersistent {
  TAVO_CLASS(TStrings, TPersistent)
 public:
  TStrings() = default;
  TStrings(const TStrings&) = delete;
  TStrings& operator=(const TStrings&) = delete;

  virtual int Count() const = 0;
  virtual const String& Get(int Index) const = 0;
  virtual TObject* GetObject(int Index) const = 0;
  virtual int Add(String S) = 0;
  virtual int AddObject(String S, TObject* Object) = 0;
  virtual void Delete(int Index) = 0;
  virtual void Clear() = 0;
  virtual int IndexOf(StringView S) const = 0;

  // OnChanging fires when the first BeginUpdate opens a bracket and OnChange
  // when the last EndUpdate closes it, whether or not anything changed;
  // inside a bracket single changes fire nothing.
  void BeginUpdate();
  void EndUpdate();
  int GetUpdateCount() const { return FUpdateCount; }

  // Each string followed by CR LF.
  String GetText() const;
  // Splits at CR LF, CR or LF; a final line break adds no empty line.
  void SetText(StringView Text);

  TNotifyEvent OnChanging;
  TNotifyEvent OnChange;

 protected:
  virtual void SetUpdateState(bool Updating);
  virtual void Changing();
  virtual void Changed();

 private:
  int FUpdateCount = 0;
};

template <class T>
struct TMekStringItem {
  String FString;
  TObject* FObject = nullptr;
  T FData{};
};

template <class T>
class TStringList : public TStrings {
  TAVO_CLASS(TStringList, TStrings)
 public:
  using TItem = TMekStringItem<T>;

  TStringList() = default;
  explicit TStringList(bool AOwnsObjects) : FOwnsObjects(AOwnsObjects) {}
  ~TStringList() override {
    OnChanging = nullptr;
    OnChange = nullptr;
    ReleaseItems();
  }

  int Count() const final { return int(FList.size()); }
  const String& Get(int Index) const final { return FList[CheckIndex(Index)].FString; }
  void Put(int Index, String S) {
    if (FSorted) throw EMekException(SSortedListError);
    const size_t I = CheckIndex(Index);
    Changing();
    FList[I].FString = std::move(S);
    Changed();
  }
  TObject* GetObject(int Index) const final { return FList[CheckIndex(Index)].FObject; }
  void PutObject(int Index, TObject* Object) {
    const size_t I = CheckIndex(Index);
    Changing();
    FList[I].FObject = Object;
    Changed();
  }
  const T& GetData(int Index) const { return FList[CheckIndex(Index)].FData; }
  void SetData(int Index, T Data) {
    const size_t I = CheckIndex(Index);
    Changing();
    FList[I].FData = std::move(Data);
    Changed();
  }

  int Add(String S) final { return AddObject(std::move(S), nullptr, T{}); }
  int AddObject(String S, TObject* Object) final { return AddObject(std::move(S), Object, T{}); }
  // In a sorted list a string that is already there is, by the duplicates
  // mode, not added (its index is the answer), refused, or inserted before
  // its equals.
  int AddObject(String S, TObject* Object, T Data) {
    int Index = Count();
    if (FSorted && Find(S, Index)) {
      if (FDuplicates == dupIgnore) return Index;
      if (FDuplicates == dupError) throw EMekException(SDuplicateString);
    }
    InsertItem(Index, std::move(S), Object, std::move(Data));
    return Index;
  }
  void Insert(int Index, String S) { InsertObject(Index, std::move(S), nullptr, T{}); }
  void InsertObject(int Index, String S, TObject* Object, T Data = T{}) {
    if (FSorted) throw EMekException(SSortedListError);
    if (Index < 0 || Index > Count()) throw EMekException(Format(SListIndexError, Index));
    InsertItem(Index, std::move(S), Object, std::move(Data));
  }

  // An owned object is freed after its item has left the list.
  void Delete(int Index) final {
    const size_t I = CheckIndex(Index);
    Changing();
    TObject* Object = FOwnsObjects ? FList[I].FObject : nullptr;
    FList.erase(FList.begin() + ptrdiff_t(I));
    delete Object;
    Changed();
  }
  void Clear() final {
    if (FList.empty()) return;
    Changing();
    ReleaseItems();
    Changed();
  }
  void Exchange(int Index1, int Index2) {
    const size_t I = CheckIndex(Index1), J = CheckIndex(Index2);
    Changing();
    std::swap(FList[I], FList[J]);
    Changed();
  }

  int IndexOf(StringView S) const final {
    int Index;
    if (FSorted) return Find(S, Index) ? Index : -1;
    for (size_t I = 0; I < FList.size(); ++I)
      if (CompareStrings(FList[I].FString, S) == 0) return int(I);
    return -1;
  }
  int IndexOfObject(const TObject* Object) const {
    for (size_t I = 0; I < FList.size(); ++I)
      if (FList[I].FObject == Object) return int(I);
    return -1;
  }

  // Binary search of a sorted list. Index is where S is, or where it would
  // be inserted; with duplicates accepted it is the first of the equals.
  bool Find(StringView S, int& Index) const {
    bool Result = false;
    int Low = 0, High = Count() - 1;
    while (Low <= High) {
      const int Middle = (Low + High) >> 1;
      const int C = CompareStrings(FList[size_t(Middle)].FString, S);
      if (C < 0) {
        Low = Middle + 1;
      } else {
        High = Middle - 1;
        if (C == 0) {
          Result = true;
          if (FDuplicates != dupAccept) Low = Middle;
        }
      }
    }
    Index = Low;
    return Result;
  }

  virtual int CompareStrings(StringView A, StringView B) const {
    return FCaseSensitive ? CompareStr(A, B) : CompareText(A, B);
  }

  // Both sort only an unsorted list; a sorted one is in order already.
  void Sort() {
    CustomSort([](const TStringList& List, int I, int J) {
      return List.CompareStrings(List.FList[size_t(I)].FString, List.FList[size_t(J)].FString);
    });
  }
  // Compare(List, Index1, Index2) answers <0, 0 or >0. Not stable.
  template <class F>
  void CustomSort(F&& Compare) {
    if (FSorted || FList.size() < 2) return;
    Changing();
    QuickSort(0, Count() - 1, Compare);
    Changed();
  }

  bool GetSorted() const { return FSorted; }
  void SetSorted(bool Value) {
    if (Value == FSorted) return;
    if (Value) Sort();
    FSorted = Value;
  }
  bool GetCaseSensitive() const { return FCaseSensitive; }
  void SetCaseSensitive(bool Value) {
    if (Value == FCaseSensitive) return;
    FCaseSensitive = Value;
    if (FSorted) {
      FSorted = false;
      SetSorted(true);
    }
  }
  TDuplicates GetDuplicates() const { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) { FDuplicates = Value; }
  bool GetOwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }

  // Copies strings, objects and data from a list of the same kind, strings
  // and objects from any other. This list's own flags stay, so a sorted
  // list sorts what it receives. A list that owns its objects refuses a
  // source with objects, which would then have two owners.
  void Assign(const TPersistent* Source) override {
    if (Source == this) return;
    const auto* Strings = dynamic_cast<const TStrings*>(Source);
    if (!Strings) {
      TStrings::Assign(Source);
      return;
    }
    if (FOwnsObjects)
      for (int I = 0; I < Strings->Count(); ++I)
        if (Strings->GetObject(I)) AssignError(Source);
    const auto* Same = dynamic_cast<const TStringList*>(Source);
    BeginUpdate();
    try {
      Clear();
      for (int I = 0; I < Strings->Count(); ++I)
        AddObject(Strings->Get(I), Strings->GetObject(I),
                  Same ? Same->FList[size_t(I)].FData : T{});
    } catch (...) {
      EndUpdate();
      throw;
    }
    EndUpdate();
  }

 protected:
  void InsertItem(int Index, String S, TObject* Object, T Data) {
    Changing();
    FList.insert(FList.begin() + Index, TItem{std::move(S), Object, std::move(Data)});
    Changed();
  }

 private:
  size_t CheckIndex(int Index) const {
    if (Index < 0 || Index >= Count()) throw EMekException(Format(SListIndexError, Index));
    return size_t(Index);
  }

  // Empties the list first and frees owned objects afterwards, so that a
  // destructor that looks at the list no longer finds its own item.
  void ReleaseItems() {
    std::vector<TObject*> Owned;
    if (FOwnsObjects) {
      Owned.reserve(FList.size());
      for (const TItem& Item : FList)
        if (Item.FObject) Owned.push_back(Item.FObject);
    }
    std::vector<TItem>().swap(FList);
    for (TObject* Object : Owned) delete Object;
  }

  // Hoare partition with bounded scans: a comparison that is not a strict
  // order gives some order, never a walk off the ends.
  template <class F>
  void QuickSort(int Left, int Right, F& Compare) {
    while (Left < Right) {
      int I = Left, J = Right, Pivot = (Left + Right) >> 1;
      do {
        while (I < Right && Compare(*this, I, Pivot) < 0) ++I;
        while (J > Left && Compare(*this, J, Pivot) > 0) --J;
        if (I <= J) {
          if (I != J) {
            std::swap(FList[size_t(I)], FList[size_t(J)]);
            if (Pivot == I)
              Pivot = J;
            else if (Pivot == J)
              Pivot = I;
          }
          ++I;
          --J;
        }
      } while (I <= J);
      // Recursing into the smaller part bounds the depth.
      if (J - Left < Right - I) {
        if (Left < J) QuickSort(Left, J, Compare);
        Left = I;
      } else {
        if (I < Right) QuickSort(I, Right, Compare);
        Right = J;
      }
    }
  }

  std::vector<TItem> FList;
  bool FSorted = false;
  bool FCaseSensitive = false;
  bool FOwnsObjects = false;
  TDuplicates FDuplicates = dupIgnore;
};

}  // namespace tavo
