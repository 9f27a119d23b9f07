// Tokens, the partial matches of the network, and token trees, the hashed
// memories that hold them on the inputs of a join.
#pragma once

#include <memory>
#include <vector>

#include "core/TavoContext.h"
#include "knowledge/TavoFacts.h"

namespace tavo {

class TTavoTokenPersistent : public TContextToken {
  TAVO_CLASS(TTavoTokenPersistent, TContextToken)
};

// A chain of facts, newest first: each token holds its last fact and the
// token of the facts before it. Tokens are made for every event and every
// join result, so their blocks come from a cache of the thread.
class TTavoToken : public TTavoTokenPersistent {
  TAVO_CLASS(TTavoToken, TTavoTokenPersistent)
 public:
  TTavoToken() = default;
  // One fact, its id as the sort code.
  TTavoToken(TTokenAction Tag, const IFact& Fact);
  // The parent's facts and Fact (which may be null); tag and strength are
  // the parent's.
  TTavoToken(const IReteToken& Parent, const IFact& Fact);
  // A copy of every field, with no negated matches.
  explicit TTavoToken(const IReteToken& Source);

  static void* operator new(size_t Size);
  static void operator delete(void* Block, size_t Size) noexcept;

  // The host's tag and the general comparison and copy stay reachable
  // beside the token's own.
  using TTavoTokenPersistent::Assign;
  using TTavoTokenPersistent::Equals;
  using TTavoTokenPersistent::SetTag;

  // Sort codes, newest facts' ids, strengths, then the parents; tag and
  // negated count play no part.
  virtual bool Equals(const TTavoToken* Other) const;
  int GetNegatedCount() const { return FNegatedCount; }
  // A negative count counts as 0.
  virtual void SetNegatedCount(int Value) { FNegatedCount = Value < 0 ? 0 : Value; }
  int GetCount() const override { return FCount; }
  TContextFact* GetContextFact(int Index) const override { return GetFacts(Index); }
  const IFact& GetFact() const { return FFact; }
  // The fact at Index of the chain, 0 being the oldest.
  TFact* GetFacts(int Index) const {
    const TTavoToken* Token = this;
    while (Token->FCount - Index >= 2 && Token->FParent) Token = Token->FParent.Get();
    return Token->FFact.Get();
  }
  const IReteToken& GetParent() const { return FParent; }
  int32_t GetSortCode() const { return FSortCode; }
  TTokenAction GetTag() const { return FTag; }
  // Any action but taClear needs a fact of the token's own.
  virtual void SetTag(TTokenAction Value);
  float GetStrength() const { return FStrength; }
  // A negative strength counts as 0; there is no upper bound.
  void SetStrength(float Value) { FStrength = Value < 0 ? 0.0f : Value; }

  String ToString() const override;
  // "f-N" of each fact, oldest first, joined by ", ".
  String GetToFactsString() const;
  void Assign(const TPersistent* Source) override;

 private:
  int FCount = 0;
  int FNegatedCount = 0;
  IFact FFact;
  IReteToken FParent;
  float FStrength = 1.0f;
  int32_t FSortCode = 0;
  TTokenAction FTag = taClear;
};

String GetTokenActionName(TTokenAction Action);

// The memory of one input of a join: tokens in buckets by a hash key,
// which is the sort code, a fact's id or the hash of a slot value.
class TTavoTokenTree : public TPersistent {
  TAVO_CLASS(TTavoTokenTree, TPersistent)
 public:
  // A stored token with its key, so that a keyed scan passes over tokens
  // of other keys by one comparison.
  struct TEntry {
    int32_t Key;
    // The token's own, compared before the token is touched.
    int32_t SortCode;
    IReteToken Token;
  };
  using TBucket = std::vector<TEntry>;

  TTavoTokenTree(int Hash, int TokenIndex, int SubIndex, const String& FactIndex, bool UseHashCode);

  // Refuses a token equal to one held.
  virtual bool Add(const IReteToken& Token);
  // The first token equal to Token goes.
  virtual bool Remove(const IReteToken& Token);
  virtual void Clear();
  // The bucket of I; null for one never used while AllowNilBucket holds.
  TBucket* GetTokens(int I);

  // The key of a token before it is reduced to a bucket.
  int32_t KeyOf(const TTavoToken& Token) const;
  // Whether a key of a fuzzy value was ever stored: such a value may equal
  // values of other keys, so keys alone cannot rule a token out.
  bool GetHasFuzzyKeys() const { return FHasFuzzyKeys; }
  int BucketOf(int32_t Key) const;
  bool KeyIsFuzzy(const TTavoToken& Token) const;

  int GetHash() const { return FHash; }
  int GetTokenIndex() const { return FTokenIndex; }
  int GetSubIndex() const { return FSlot.GetSubIndex(); }
  const String& GetFactIndex() const { return FSlot.GetSlotIndex(); }
  bool GetUseHashCode() const { return FUseHashCode; }
  int GetLowIndex() const { return FLowIndex; }
  int GetHighIndex() const { return FHighIndex; }
  bool GetEmpty() const { return FEmpty; }
  int GetCount() const { return FCount; }
  bool GetAllowNilBucket() const { return FAllowNilBucket; }
  void SetAllowNilBucket(bool Value) { FAllowNilBucket = Value; }

  String ToString() const override;
  virtual String GetToFactsString() const;

 private:
  bool FUseHashCode;
  // The slot of the key, read by position; its fact index is unused.
  TBindingInfo FSlot;
  int FHash;
  int FTokenIndex;
  std::vector<std::unique_ptr<TBucket>> FBuckets;
  bool FAllowNilBucket = true;
  bool FEmpty = false;
  int FLowIndex;
  int FHighIndex = -1;
  int FCount = 0;
  bool FHasFuzzyKeys = false;
};

}  // namespace tavo
