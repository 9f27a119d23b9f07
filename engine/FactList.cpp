#include "engine/FactList.h"

#include <algorithm>

#include "engine/InferenceEngine.h"

namespace tavo {

TFacts::TFacts(TInferenceEngine* Engine, TModule* Module) : FModule(Module), FEngine(Engine) {
  CreateCache();
}

TFacts::~TFacts() = default;

namespace {

// The hash of a fuzzy fact's template and of the values of its slots that
// are not fuzzy: facts equal but for their fuzzy values share it.
int32_t CrispHash(TFact& Fact) {
  const IFactTemplate& Template = Fact.GetTemplate();
  const ISlotLayout& Layout = Template->GetLayout();
  String Text;
  for (int I = 0; I < Layout->Count(); ++I)
    if (!Layout->GetSlot(I)->IsFuzzy())
      if (const ITavoValue& Value = Fact.GetValueAt(I)) Value->AppendText(Text);
  return int32_t(uint32_t(Template->GetHashCode()) * 31u + uint32_t(CalculateHash(Text, 1)));
}

}  // namespace

bool TFacts::IsForeign(const IFact& Fact) const {
  return Fact->GetTemplate() && Fact->GetTemplate()->GetModule().Get() != FModule;
}

void TFacts::CreateCache() {
  FCache = std::make_unique<TMekDictionary<int32_t, IFact>>(std::max(FItems.Count(), 101));
  FFuzzyCache = std::make_unique<TMekDictionary<int32_t, std::vector<IFact>>>();
  FCollisions.clear();
  for (const IFact& Fact : FItems) CacheAdd(Fact);
}

void TFacts::SetCacheHashCodes(bool Value) {
  if (Value == FCacheHashCodes) return;
  FCacheHashCodes = Value;
  if (FCache) {
    FCache.reset();
    FFuzzyCache.reset();
    FCollisions.clear();
  } else {
    CreateCache();
  }
}

void TFacts::CacheAdd(const IFact& Fact) {
  if (!FCacheHashCodes) return;
  if (Fact->GetTemplate() && Fact->GetTemplate()->IsFuzzy()) {
    int32_t Hash = CrispHash(*Fact);
    Fact->SetListedHash(Hash);
    if (std::vector<IFact>* Same = FFuzzyCache->Find(Hash))
      Same->push_back(Fact);
    else
      FFuzzyCache->Add(Hash, {Fact});
  } else {
    int32_t Hash = Fact.Get() == FKnownFact ? FKnownHash : Fact->GetHashCode();
    FKnownFact = nullptr;
    // Kept with the fact: it leaves the cache under the hash it entered by.
    Fact->SetListedHash(Hash);
    // A fact whose hash is taken by another waits beside the cache, so that
    // a collision never makes a different fact a duplicate.
    if (const IFact* Cached = FCache->Find(Hash); Cached && *Cached != Fact)
      FCollisions.push_back(Fact);
    else
      FCache->AddOrSetValue(Hash, Fact);
  }
}

void TFacts::CacheRemove(const IFact& Fact) {
  if (!FCacheHashCodes) return;
  if (Fact->GetTemplate() && Fact->GetTemplate()->IsFuzzy()) {
    if (std::vector<IFact>* Same = FFuzzyCache->Find(Fact->GetListedHash())) {
      std::erase(*Same, Fact);
      if (Same->empty()) FFuzzyCache->Remove(Fact->GetListedHash());
    }
    return;
  }
  int32_t Hash = Fact->GetListedHash();
  // Only this very fact's entry goes; a fact waiting under the same hash
  // takes its place, so that every hash of the overflow stays in the cache.
  if (const IFact* Cached = FCache->Find(Hash); Cached && *Cached == Fact) {
    FCache->Remove(Hash);
    for (size_t I = 0; I < FCollisions.size(); ++I)
      if (FCollisions[I]->GetListedHash() == Hash) {
        FCache->AddOrSetValue(Hash, FCollisions[I]);
        FCollisions.erase(FCollisions.begin() + std::ptrdiff_t(I));
        break;
      }
  } else {
    for (size_t I = 0; I < FCollisions.size(); ++I)
      if (FCollisions[I] == Fact) {
        FCollisions.erase(FCollisions.begin() + std::ptrdiff_t(I));
        break;
      }
  }
}

int TFacts::Add(const IFact& Fact) {
  if (FUpdating || !FEngine) {
    int Index = FItems.Add(Fact);
    CacheAdd(Fact);
    return Index;
  }
  if (FPreserveIDs && Fact->GetID() != -1 && FindFact(Fact->GetID()) == -1) {
    int Remembered = FEngine->GetFactIdCounter();
    FEngine->SetFactIdCounter(Fact->GetID());
    FEngine->Assert(Fact, false);
    FMaxID = std::max(FMaxID, Fact->GetID());
    FEngine->SetFactIdCounter(std::max(FMaxID + 1, Remembered));
  } else {
    FEngine->Assert(Fact, false);
    FMaxID = std::max(FMaxID, Fact->GetID());
  }
  return Count() - 1;
}

void TFacts::Insert(int Index, const IFact& Fact) {
  if (FUpdating || !FEngine) {
    FItems.Insert(Index, Fact);
    CacheAdd(Fact);
    return;
  }
  FEngine->Assert(Fact, false);
  int Landed = FItems.IndexOf(Fact.Get());
  if (Landed < 0) return;  // refused as a duplicate
  FItems.Delete(Landed);
  FItems.Insert(std::min(Index, Count()), Fact);
}

void TFacts::Delete(int Index) {
  if (!FUpdating && FEngine) {
    FEngine->RetractFact(Index);
    return;
  }
  IFact Fact = FItems.Get(Index);
  CacheRemove(Fact);
  FItems.Delete(Index);
}

int TFacts::Remove(const IFact& Fact) {
  if (!Fact) return -1;
  int Index = IndexOf(Fact);
  if (Index < 0) return -1;
  Delete(Index);
  return Index;
}

void TFacts::Clear() {
  if (FCacheHashCodes) {
    FCache->Clear();
    FFuzzyCache->Clear();
    FCollisions.clear();
  }
  FItems.Clear();
  FMaxID = 0;
  if (FEngine) FEngine->RetractFacts();
}

void TFacts::Clear(TConstructScope Scope) {
  for (int I = Count() - 1; I >= 0; --I) {
    const IFact& Fact = FItems.Get(I);
    if (IsForeign(Fact) == (Scope == csImported)) {
      if (FEngine)
        FEngine->RemoveFactFromModule(I, IFact(Fact), nullptr);
      else
        Delete(I);
    }
  }
}

int TFacts::BinarySearch(int Id) const {
  int Low = 0, High = Count() - 1;
  while (Low <= High) {
    int Middle = (Low + High) / 2;
    int MiddleId = FItems.Get(Middle)->GetID();
    if (MiddleId == Id) return Middle;
    if (MiddleId < Id)
      Low = Middle + 1;
    else
      High = Middle - 1;
  }
  return -1;
}

int TFacts::FindFact(int Id) const {
  if (Count() >= 5) return BinarySearch(Id);
  for (int I = 0; I < Count(); ++I)
    if (FItems.Get(I)->GetID() == Id) return I;
  return -1;
}

int TFacts::IndexOf(const IFact& Fact) const {
  if (Count() >= 5 && Fact->GetID() != -1) {
    int Index = BinarySearch(Fact->GetID());
    return Index >= 0 && FItems.Get(Index) == Fact ? Index : FItems.IndexOf(Fact.Get());
  }
  return FItems.IndexOf(Fact.Get());
}

int TFacts::FindFact(const IFact& Fact) const {
  bool Hashed = !FPreserveIDs && FCacheHashCodes && !(Fact->GetTemplate() && Fact->GetTemplate()->IsFuzzy());
  return FindFact(Fact, Hashed ? Fact->GetHashCode() : 0);
}

int TFacts::FindFact(const IFact& Fact, int32_t Hash) const {
  if (!FPreserveIDs && FCacheHashCodes) {
    if (Fact->GetTemplate() && Fact->GetTemplate()->IsFuzzy()) {
      if (const std::vector<IFact>* Same = FFuzzyCache->Find(CrispHash(*Fact)))
        for (const IFact& Entry : *Same)
          if (Fact->Equals(Entry.Get())) return IndexOf(Entry);
      return -1;
    }
    const IFact* Cached = FCache->Find(Hash);
    if (!Cached) return -1;
    if ((*Cached)->Equals(Fact.Get())) return IndexOf(*Cached);
    for (const IFact& Waiting : FCollisions)
      if (Waiting->GetListedHash() == Hash && Waiting->Equals(Fact.Get())) return IndexOf(Waiting);
    return -1;
  }
  for (int I = 0; I < Count(); ++I)
    if (FItems.Get(I)->Equals(Fact.Get())) return I;
  return -1;
}

IFact TFacts::GetFactByID(int Id) const {
  int Index = FindFact(Id);
  return Index >= 0 ? FItems.Get(Index) : IFact();
}

void TFacts::SortByID() {
  std::vector<IFact> Sorted(FItems.begin(), FItems.end());
  std::stable_sort(Sorted.begin(), Sorted.end(),
                   [](const IFact& A, const IFact& B) { return A->GetID() < B->GetID(); });
  FItems.Clear();
  for (IFact& Fact : Sorted) FItems.Add(std::move(Fact));
}

int TFacts::GetImportCount() const {
  int Result = 0;
  for (const IFact& Fact : FItems) Result += IsForeign(Fact) ? 1 : 0;
  return Result;
}

String TFacts::JoinFacts(bool WithIDs) const {
  String Result;
  for (const IFact& Fact : FItems) {
    if (!Result.empty()) Result += u"\r\n";
    Result += WithIDs ? Fact->GetToIDString() : Fact->ToString();
  }
  return Result;
}

void TFacts::Assign(const TPersistent* Source) {
  if (auto* Facts = dynamic_cast<const TFacts*>(Source)) {
    CopyFrom(*Facts, false);
    return;
  }
  TPersistent::Assign(Source);
}

void TFacts::AssignLocal(const TFacts& Source) { CopyFrom(Source, true); }

void TFacts::AssignTo(TPersistent* Dest) const {
  if (auto* Facts = dynamic_cast<TFacts*>(Dest)) {
    Facts->CopyFrom(*this, false);
    return;
  }
  TPersistent::AssignTo(Dest);
}

void TFacts::CopyFrom(const TFacts& Source, bool LocalsOnly) {
  if (&Source == this) return;
  // Taken first: the source may share facts with this list.
  std::vector<IFact> Facts;
  for (const IFact& Fact : Source.FItems)
    if (!LocalsOnly || !Source.IsForeign(Fact)) Facts.push_back(Fact);
  if (!FEngine) {
    Clear();
    for (const IFact& Fact : Facts) {
      FItems.Add(Fact);
      CacheAdd(Fact);
    }
    return;
  }
  // The facts enter this list's module, which is current meanwhile.
  TModuleScope Scope(*FEngine, FModule);
  Clear();
  for (const IFact& Fact : Facts) {
    // Read again, so that the copy has this engine's template.
    IFact Copy = FEngine->ParseFact(Fact->ToString());
    ResolveFact(*FEngine->GetContext(), Copy);
    Copy->SetID(Fact->GetID());
    Add(Copy);
  }
}

String TFacts::LocalsToString(bool WithIDs) const {
  String Result;
  for (const IFact& Fact : FItems)
    if (!IsForeign(Fact))
      Result += IndentString + (WithIDs ? Fact->GetToIDString() : Fact->ToString()) + u"\r\n";
  return Result;
}

}  // namespace tavo
