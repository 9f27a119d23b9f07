// The fact base of a module: facts in ascending id order, with a cache of
// hash codes for the duplicate test.
#pragma once

#include <memory>
#include <vector>

#include "common/MekHashTables.h"
#include "common/MekTieredList.h"
#include "knowledge/TavoFacts.h"

namespace tavo {

class TInferenceEngine;

class TFacts : public TPersistent {
  TAVO_CLASS(TFacts, TPersistent)
 public:
  TFacts(TInferenceEngine* Engine, TModule* Module);
  ~TFacts() override;

  TInferenceEngine* GetEngine() const { return FEngine; }
  void SetEngine(TInferenceEngine* Value) { FEngine = Value; }
  TModule* GetModule() const { return FModule; }
  int Count() const { return FItems.Count(); }
  const IFact& Get(int Index) const { return FItems.Get(Index); }
  auto begin() const { return FItems.begin(); }
  auto end() const { return FItems.end(); }

  // Set while the engine itself changes the list. Without it, and with an
  // engine, changes from a host go through the engine's Assert and Retract.
  bool GetUpdating() const { return FUpdating; }
  void SetUpdating(bool Value) { FUpdating = Value; }

  // Gives the index of the new last entry.
  int Add(const IFact& Fact);
  void Insert(int Index, const IFact& Fact);
  void Delete(int Index);
  // The fact's former index, or -1.
  int Remove(const IFact& Fact);
  // Empties the list; an engine retracts all at once, not fact by fact.
  void Clear();
  // Takes the imported, or the module's own, facts out of this module only.
  void Clear(TConstructScope Scope);

  // Binary search over the ids from five facts on, a scan below that.
  int FindFact(int Id) const;
  // The index of a fact equal in value, the duplicate test: equal hash codes
  // count as equal facts while the cache is on.
  int FindFact(const IFact& Fact) const;
  int IndexOf(const IFact& Fact) const;
  IFact GetFactByID(int Id) const;
  void SortByID();

  // Loaded facts keep their ids; fresh ids continue above all of them.
  bool GetPreserveIDs() const { return FPreserveIDs; }
  void SetPreserveIDs(bool Value) { FPreserveIDs = Value; }
  // The hash of the fact that comes next to Add, computed already by the
  // duplicate test, so that an assertion hashes its fact once.
  void SetKnownHash(const TFact* Fact, int32_t Hash) {
    FKnownFact = Fact;
    FKnownHash = Hash;
  }
  // The duplicate test with the fact's hash at hand.
  int FindFact(const IFact& Fact, int32_t Hash) const;
  bool GetCacheHashCodes() const { return FCacheHashCodes; }
  void SetCacheHashCodes(bool Value);

  int GetImportCount() const;
  int GetLocalsCount() const { return Count() - GetImportCount(); }
  // The facts' texts with CR LF between them.
  String ToString() const override { return JoinFacts(false); }
  String GetToIDString() const { return JoinFacts(true); }
  String LocalsToString(bool WithIDs) const;
  // From another list: this one is emptied, and each of the source's facts
  // is read again by this list's engine in its module and added, keeping
  // its id while PreserveIDs holds. Without an engine the facts themselves
  // are taken. AssignLocal takes only the source's own facts; AssignTo
  // copies this list into another.
  void Assign(const TPersistent* Source) override;
  void AssignLocal(const TFacts& Source);
  void AssignTo(TPersistent* Dest) const override;

 private:
  void CopyFrom(const TFacts& Source, bool LocalsOnly);
  bool IsForeign(const IFact& Fact) const;
  void CacheAdd(const IFact& Fact);
  void CacheRemove(const IFact& Fact);
  void CreateCache();
  int BinarySearch(int Id) const;
  String JoinFacts(bool WithIDs) const;

  // Retracting anywhere in a large fact base moves a few hundred entries.
  TTieredList<TFact> FItems;
  bool FUpdating = false;
  bool FPreserveIDs = false;
  int FMaxID = 0;
  bool FCacheHashCodes = true;
  const TFact* FKnownFact = nullptr;
  int32_t FKnownHash = 0;
  std::unique_ptr<TMekDictionary<int32_t, IFact>> FCache;
  // Facts of fuzzy templates by the hash of their slots that are not
  // fuzzy, which equal facts share whatever their fuzzy values.
  std::unique_ptr<TMekDictionary<int32_t, std::vector<IFact>>> FFuzzyCache;
  // Facts whose hash another fact of the cache holds; rare, so a plain list.
  std::vector<IFact> FCollisions;
  TModule* FModule;
  TInferenceEngine* FEngine;
};

}  // namespace tavo
