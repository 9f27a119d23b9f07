// Tokens, the partial matches of the network, and token trees, the hashed
// memories that hold them on the inputs of a join.
#pragma once

#include <memory>
#include <vector>

#include "common/MekHashTables.h"
#include "core/TavoContext.h"
#include "knowledge/TavoFacts.h"

namespace tavo {

// The assertion of one new fact travelling through a network. Every token
// made on its way that holds the fact is new to every memory, since no
// memory held the fact before: a memory takes such a token without looking
// for an equal one. A walk begun inside another one, or a rule compiled on
// the way, ends that certainty until the outer walk is over.
class TFreshWalk {
 public:
  explicit TFreshWalk(const TFact* Fact);
  ~TFreshWalk();
  TFreshWalk(const TFreshWalk&) = delete;
  TFreshWalk& operator=(const TFreshWalk&) = delete;
  // No token made from now on in the present walk counts as new.
  static void Forget();
};

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

  // A token never leaves the engine that made it, which one thread at a
  // time drives under its lock, and tokens come and go by the million: their
  // counts take no atomic step. These hide the counted base's own.
  void AddReference() const noexcept { AddReferenceConfined(); }
  void ReleaseReference() const noexcept { ReleaseReferenceConfined(); }

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
  // A hash of the chain's fact ids, which unlike the sort code spreads
  // tokens of different facts apart: memories find tokens by it.
  uint32_t GetChainHash() const { return FChainHash; }
  // Whether the token holds the fact of the walk under way, which no memory
  // can hold yet.
  bool IsFresh() const;
  // Marks the token that starts a walk.
  void SetFresh();
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
  // Every field but the negated count.
  void CopyChain(const TTavoToken& Source);

  int FCount = 0;
  int FNegatedCount = 0;
  IFact FFact;
  IReteToken FParent;
  float FStrength = 1.0f;
  int32_t FSortCode = 0;
  uint32_t FChainHash = 0;
  // The walk that made the token holding its fact, or 0.
  uint32_t FWalk = 0;
  TTokenAction FTag = taClear;
};

String GetTokenActionName(TTokenAction Action);

// The memory of one input of a join: tokens in buckets by a hash key,
// which is the sort code, a fact's id or the hash of a slot value.
class TTavoTokenTree : public TPersistent {
  TAVO_CLASS(TTavoTokenTree, TPersistent)
 public:
  // A stored token with its keys, so that a keyed scan passes over tokens
  // of other keys by one comparison. Entries of a bucket are linked in
  // order of insertion; they are chained by a hash of their facts, so that
  // a token is found, refused or removed without a walk of its bucket, and
  // in a tree keyed by a slot also by their key and match hash, so that a
  // keyed scan walks only the tokens it can join.
  struct TEntry {
    int32_t Key;
    // The hash of the further slots that the join compares for equality
    // (see SetMatchSlots); 0 when the tree keeps none.
    int32_t Match;
    // The token's hash of facts, compared before the token is touched.
    uint32_t ChainHash;
    // The type of the key's value where the key is that value itself (see
    // ExactKeyType), else dtNone.
    uint8_t KeyType;
    IReteToken Token;
    TEntry* Prev = nullptr;
    TEntry* Next = nullptr;
    // The next entry of the same hash of facts.
    TEntry* NextSame = nullptr;
    // The entries of the same chain, oldest first, in a tree that
    // KeysChained; the first entry's ChainPrev is the last one.
    TEntry* ChainPrev = nullptr;
    TEntry* ChainNext = nullptr;

    static void* operator new(size_t Size);
    static void operator delete(void* Block, size_t Size) noexcept;
  };
  // One bucket's entries, oldest first.
  struct TBucket {
    TEntry* First = nullptr;
    TEntry* Last = nullptr;
    int Count = 0;
    size_t size() const { return size_t(Count); }
  };

  TTavoTokenTree(int Hash, int TokenIndex, int SubIndex, const String& FactIndex, bool UseHashCode);
  ~TTavoTokenTree() override;
  TTavoTokenTree(const TTavoTokenTree&) = delete;
  TTavoTokenTree& operator=(const TTavoTokenTree&) = delete;

  // Refuses a token equal to one held.
  virtual bool Add(const IReteToken& Token);
  // The first token equal to Token goes.
  virtual bool Remove(const IReteToken& Token) { return Take(Token) != nullptr; }
  // The same, giving the token that was held, or null.
  IReteToken Take(const IReteToken& Token);
  virtual void Clear();
  // The bucket of I; null for one never used while AllowNilBucket holds.
  TBucket* GetTokens(int I);

  // The key of a token before it is reduced to a bucket; KeyType, when
  // given, takes the ExactKeyType of a plain slot's value, else dtNone.
  int32_t KeyOf(const TTavoToken& Token, uint8_t* KeyType = nullptr) const;
  // The type of a value whose hash is the value itself, so that two values
  // of that type with equal hashes are equal: integers, fact ids and
  // descriptors. dtNone for any other.
  static uint8_t ExactKeyType(const ITavoValue& Value) {
    if (!Value) return dtNone;
    const TTavoType Type = Value->GetDType();
    return Type == dtInteger || Type == dtFactId || Type == dtDescriptor ? uint8_t(Type) : uint8_t(dtNone);
  }
  // Calls Visit on each entry of that key and match hash, oldest first,
  // until Visit gives false; for a tree that KeysChained.
  template <class TVisit>
  void ForEachOfKey(int32_t Key, int32_t Match, TVisit&& Visit) const {
    TEntry* const* First = FChains.Find(ChainKey(Key, Match));
    // A chain may also hold entries of another key and match whose pair
    // mixes to the same value.
    for (TEntry* Entry = First ? *First : nullptr; Entry; Entry = Entry->ChainNext)
      if (Entry->Key == Key && Entry->Match == Match && !Visit(Entry)) return;
  }
  // Whether entries are chained by key (a tree keyed by a slot value).
  bool KeysChained() const { return !FUseHashCode && !GetFactIndex().empty(); }
  // A key and a match hash mixed into the key of their chain. Pairs that
  // mix alike share a chain: a walk passes over the other pair's entries
  // by their keys, and a search by equality never finds them equal. The
  // table's entries are half the size they would be with both keys whole,
  // and a tree of thousands of tokens holds a chain for nearly each.
  static int32_t ChainKey(int32_t Key, int32_t Match) {
    return int32_t(uint32_t(Key) * 0x9E3779B1u ^ uint32_t(Match));
  }
  // Slots beside the key's whose equality the join also tests, each read
  // from the fact at its fact index: every stored token carries the hash of
  // their values, so that a keyed scan passes over a token that differs in
  // any of them by one comparison, as it does for the key.
  void SetMatchSlots(std::vector<TBindingInfo> Slots) { FMatchSlots = std::move(Slots); }
  bool HasMatchSlots() const { return !FMatchSlots.empty(); }
  // Whether every stored token's match hash could be taken.
  bool GetMatchUsable() const { return FMatchUsable; }
  // The hash of the values of Slots in Token; false when one is missing or
  // fuzzy, since a fuzzy value may equal values of other hashes.
  static bool MatchOf(const TTavoToken& Token, const std::vector<TBindingInfo>& Slots, int32_t& Match);
  // Calls Visit(token, same key) on each stored token that may join
  // Probe, in the bucket's order, until Visit gives false. With ByKey only
  // the tokens of Key are visited, and of the match hash of ProbeSlots in
  // Probe where every stored token has one; without, every token from the
  // lowest bucket up. Same key is true where the stored key is surely the
  // probe's value: both of KeyType (not dtNone) and of equal keys.
  template <class TVisit>
  void ForEachCandidate(bool ByKey, int32_t Key, uint8_t KeyType, const TTavoToken& Probe,
                        const std::vector<TBindingInfo>& ProbeSlots, TVisit&& Visit) const {
    if (!ByKey) {
      for (int B = NextFilled(0); B >= 0; B = NextFilled(B + 1))
        for (TEntry* Entry = BucketAt(B).First; Entry; Entry = Entry->Next)
          if (!Visit(Entry->Token, false)) return;
      return;
    }
    auto Same = [KeyType](const TEntry* Entry) { return KeyType != dtNone && Entry->KeyType == KeyType; };
    int32_t Match = 0;
    const bool ByMatch = HasMatchSlots() && FMatchUsable && MatchOf(Probe, ProbeSlots, Match);
    if (KeysChained() && (ByMatch || !HasMatchSlots())) {
      ForEachOfKey(Key, Match, [&](const TEntry* Entry) { return Visit(Entry->Token, Same(Entry)); });
      return;
    }
    const TBucket* Bucket = FBuckets[size_t(BucketOf(Key))].get();
    for (TEntry* Entry = Bucket ? Bucket->First : nullptr; Entry; Entry = Entry->Next)
      if (Entry->Key == Key && (!ByMatch || Entry->Match == Match) && !Visit(Entry->Token, Same(Entry))) return;
  }
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
  // The first bucket from Index on that holds a token, or -1.
  int NextFilled(int Index) const {
    for (int Word = Index < 0 ? 0 : Index >> 6; size_t(Word) < FFilled.size(); ++Word) {
      uint64_t Bits = FFilled[size_t(Word)];
      if (Word == Index >> 6 && Index > 0) Bits &= ~uint64_t(0) << (Index & 63);
      if (Bits) return Word * 64 + __builtin_ctzll(Bits);
    }
    return -1;
  }
  TBucket& BucketAt(int Index) const { return *FBuckets[size_t(Index)]; }
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
  // The entry stored under an equal token, or null; Steps tells how many
  // entries of a key's chain were passed.
  TEntry* FindEqual(const TTavoToken& Token, int32_t Key, int32_t Match, int& Steps) const;
  // The match hash of a stored token, 0 where it cannot be taken (false).
  bool MatchOrNone(const TTavoToken& Token, int32_t& Match) const;
  void IndexEntry(TEntry* Entry);
  void IndexAll();
  // A tree keyed by a slot finds a token in its key's chain, until a chain
  // proves longer than this; then, and in every other tree, by the index of
  // hashes of facts.
  static constexpr int MaxChainWalk = 8;
  bool FIndexed = true;
  void FreeEntries();

  std::vector<std::unique_ptr<TBucket>> FBuckets;
  // One bit a bucket that holds a token, so that a full scan passes over
  // empty buckets without touching them.
  std::vector<uint64_t> FFilled;
  // Unlinks Entry from its chain, whose first entry FChains holds at Slot.
  void Unchain(TEntry* Entry, int32_t Slot);
  // The first entry of each hash of facts held, while FIndexed.
  TMekDictionary<uint32_t, TEntry*> FIndex;
  // The first entry of each chain, when KeysChained.
  TMekDictionary<int32_t, TEntry*> FChains;
  bool FAllowNilBucket = true;
  bool FEmpty = false;
  int FLowIndex;
  int FHighIndex = -1;
  int FCount = 0;
  bool FHasFuzzyKeys = false;
  std::vector<TBindingInfo> FMatchSlots;
  bool FMatchUsable = true;
};

}  // namespace tavo
