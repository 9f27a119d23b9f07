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
  if (!Vector) throw ETavoException(SIntfCastError);
  CopyFrom(Vector);
}

void TValueVector::CopyFrom(const TValueVector* Vector) {
  if (Vector == this) return;
  TInterfaceList<TTavoValue> Items;
  Items.Reserve(Vector->FItems.Count());
  for (const ITavoValue& Item : Vector->FItems) Items.Add(Item ? Item->CloneValue() : nullptr);
  FItems = std::move(Items);
  SetTag(Vector->GetTag());
}

void TValueVector::Assign(const TPersistent* Source) { AssignError(Source); }

ICloneableObject TValueVector::Clone() const { return CloneVector(); }

IValueVector TValueVector::CloneVector() const {
  IValueVector Result = Make<TValueVector>();
  Result->CopyFrom(this);
  return Result;
}

// TSingletonsVector

TSingletonsVector::TSingletonsVector(ISingletonsParser* Parser)
    : FXItems(Make<TValueVector>()), FYItems(Make<TValueVector>()), FParser(Parser) {}

int TSingletonsVector::Add(ITavoValue X, ITavoValue Y) {
  int Index = FXItems->Add(std::move(X));
  FYItems->Add(std::move(Y));
  return Index;
}

void TSingletonsVector::Insert(int Index, ITavoValue X, ITavoValue Y) {
  FXItems->Insert(Index, std::move(X));
  FYItems->Insert(Index, std::move(Y));
}

void TSingletonsVector::Delete(int Index) {
  FXItems->Delete(Index);
  FYItems->Delete(Index);
}

void TSingletonsVector::Clear() {
  FXItems->Clear();
  FYItems->Clear();
}

void TSingletonsVector::Append(const ISingletonsVector& Other) {
  if (!Other) return;
  int Count = Other->GetCount();
  for (int I = 0; I < Count; ++I) Add(Other->GetXValues(I), Other->GetYValues(I));
}

bool TSingletonsVector::EqualPairs(const TSingletonsVector* Other) const {
  if (!Other) return false;
  if (Other == this) return true;
  // Each side compares as a multifield does, X first.
  return FXItems->Equals(Other->FXItems) && FYItems->Equals(Other->FYItems);
}

bool TSingletonsVector::Equals(const TCloneableObject* Other) const {
  return EqualPairs(dynamic_cast<const TSingletonsVector*>(Other));
}

String TSingletonsVector::ToString() const {
  if (FParser) return FParser->PrettyPrint(ISingletonsVector(const_cast<TSingletonsVector*>(this)));
  String Result;
  for (int I = 0; I < GetCount(); ++I) {
    const ITavoValue& X = GetXValues(I);
    const ITavoValue& Y = GetYValues(I);
    Result += u'(';
    if (X) Result += X->GetToString();
    Result += u' ';
    if (Y) Result += Y->GetToString();
    Result += u") ";
  }
  return Result;
}

int32_t TSingletonsVector::GetHashCode() const {
  return int32_t(uint32_t(FXItems->GetHashCode()) + uint32_t(FYItems->GetHashCode()));
}

void TSingletonsVector::CopyPairs(const TSingletonsVector* Source) {
  if (Source == this) return;
  Clear();
  for (int I = 0; I < Source->GetCount(); ++I) {
    const ITavoValue& X = Source->GetXValues(I);
    const ITavoValue& Y = Source->GetYValues(I);
    Add(X ? X->CloneValue() : nullptr, Y ? Y->CloneValue() : nullptr);
  }
  SetTag(Source->GetTag());
}

void TSingletonsVector::Assign(const ICloneableObject& Source) {
  auto* Vector = dynamic_cast<const TSingletonsVector*>(Source.Get());
  if (!Vector) throw ETavoException(SIntfCastError);
  CopyPairs(Vector);
  FParser = Vector->FParser;
}

void TSingletonsVector::Assign(const TPersistent* Source) {
  if (auto* Vector = dynamic_cast<const TSingletonsVector*>(Source)) {
    CopyPairs(Vector);
    return;
  }
  TCloneableObject::Assign(Source);
}

ICloneableObject TSingletonsVector::Clone() const {
  ISingletonsVector Result = Make<TSingletonsVector>(FParser);
  Result->Assign(static_cast<const TPersistent*>(this));
  return Result;
}

// TValueHashTable

void TValueHashTable::Assign(const TPersistent* Source) {
  if (Source == this) return;
  if (auto* Table = dynamic_cast<const TValueHashTable*>(Source)) {
    BeginUpdate();
    try {
      Clear();
      for (const auto& Item : *Table) AddOrSetValue(Item.Key, Item.Value ? Item.Value->CloneValue() : nullptr);
    } catch (...) {
      EndUpdate();
      throw;
    }
    EndUpdate();
  }
  TMekStringHashTable<ITavoValue>::Assign(Source);
}

String TValueHashTable::ToString() const {
  String Result;
  for (const auto& Item : *this) {
    Result += Item.Key;
    Result += u" = ";
    if (Item.Value) Result += Item.Value->GetToString();
    Result += u"\r\n";
  }
  return Result;
}

}  // namespace tavo
