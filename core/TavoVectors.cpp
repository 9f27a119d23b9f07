#include "core/TavoVectors.h"

namespace tavo {

void TValueVector::Append(const IValueVector& Other) {
  if (!Other) return;
  // Count first: Other may be this vector.
  int Count = Other->GetValueCount();
  FItems.Reserve(FItems.Count() + Count);
  for (int I = 0; I < Count; ++I) FItems.Add(Other->FItems.Get(I));
}

bool TValueVector::EqualItems(const TValueVector* Other) const {
  if (!Other) return false;
  if (Other == this) return true;
  int Count = FItems.Count();
  if (Other->FItems.Count() != Count) return false;
  for (int I = 0; I < Count; ++I) {
    const ITavoValue& Mine = FItems.Get(I);
    const ITavoValue& Theirs = Other->FItems.Get(I);
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
  TInterfaceList<TTavoValue> Items;
  Items.Reserve(Vector->FItems.Count());
  for (const ITavoValue& Item : Vector->FItems) Items.Add(Item ? Item->CloneValue() : nullptr);
  FItems = std::move(Items);
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
