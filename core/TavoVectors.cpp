#include "core/TavoVectors.h"

namespace tavo {

size_t TValueVector::CheckIndex(int Index) const {
  if (Index < 0 || Index >= GetValueCount())
    throw EMekException(Format(SListIndexError, Index));
  return size_t(Index);
}

int TValueVector::Add(ITavoValue Value) {
  FItems.push_back(std::move(Value));
  return GetValueCount() - 1;
}

void TValueVector::Insert(int Index, ITavoValue Value) {
  if (Index < 0 || Index > GetValueCount()) throw EMekException(Format(SListIndexError, Index));
  FItems.insert(FItems.begin() + Index, std::move(Value));
}

void TValueVector::Delete(int Index) { FItems.erase(FItems.begin() + ptrdiff_t(CheckIndex(Index))); }

int TValueVector::Remove(const ITavoValue& Value) {
  int Index = IndexOf(Value);
  if (Index >= 0) Delete(Index);
  return Index;
}

int TValueVector::IndexOf(const ITavoValue& Value) const {
  for (size_t I = 0; I < FItems.size(); ++I)
    if (FItems[I] == Value) return int(I);
  return -1;
}

void TValueVector::Append(const IValueVector& Other) {
  if (!Other) return;
  // Copy first: Other may be this vector.
  TItems Items = Other->FItems;
  FItems.insert(FItems.end(), Items.begin(), Items.end());
}

bool TValueVector::EqualItems(const TValueVector* Other) const {
  if (!Other) return false;
  if (Other == this) return true;
  if (Other->FItems.size() != FItems.size()) return false;
  for (size_t I = 0; I < FItems.size(); ++I) {
    const ITavoValue& Mine = FItems[I];
    const ITavoValue& Theirs = Other->FItems[I];
    if (Theirs) {
      if (!Mine || !Mine->Equals(Theirs)) return false;
    } else if (Mine) {
      return false;
    }
  }
  return true;
}

bool TValueVector::Equals(const TCloneableObject* Other) const {
  return EqualItems(dynamic_cast<const TValueVector*>(Other));
}

String TValueVector::ToString() const {
  String Result;
  for (const ITavoValue& Item : FItems) {
    if (Item) Result += Item->GetToString();
    Result += u' ';
  }
  return Result;
}

int32_t TValueVector::GetHashCode() const {
  uint32_t Sum = 0;
  for (const ITavoValue& Item : FItems)
    if (Item) Sum += uint32_t(Item->GetHashCode());
  return int32_t(Sum);
}

void TValueVector::Assign(const ICloneableObject& Source) {
  const TValueVector* Vector = dynamic_cast<const TValueVector*>(Source.Get());
  if (!Vector) throw EMekException(SIntfCastError);
  CopyFrom(Vector);
}

void TValueVector::CopyFrom(const TValueVector* Vector) {
  if (Vector == this) return;
  TItems Items;
  Items.reserve(Vector->FItems.size());
  for (const ITavoValue& Item : Vector->FItems) Items.push_back(Item ? Item->CloneValue() : nullptr);
  FItems.swap(Items);
  FTag = Vector->FTag;
}

void TValueVector::Assign(const TPersistent* Source) { AssignError(Source); }

ICloneableObject TValueVector::Clone() const { return CloneVector(); }

IValueVector TValueVector::CloneVector() const {
  IValueVector Result = Make<TValueVector>();
  Result->CopyFrom(this);
  return Result;
}

}  // namespace tavo
