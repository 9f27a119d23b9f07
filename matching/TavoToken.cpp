#include "matching/TavoToken.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "common/MekBlockCache.h"
#include "core/TavoVectors.h"

namespace tavo {

namespace {

thread_local bool TokenCacheGone = false;
thread_local TBlockCache<sizeof(TTavoToken), 262144> TokenCache(TokenCacheGone);
thread_local bool EntryCacheGone = false;
thread_local TBlockCache<sizeof(TTavoTokenTree::TEntry), 262144> EntryCache(EntryCacheGone);

constexpr const char16_t* TokenActionNames[] = {u"taClear", u"taAdd", u"taRemove", u"taUpdate"};

// Sort codes wrap in 32 bits.
int32_t Shifted(int32_t Code, int32_t Id) { return int32_t(uint32_t(Code) * 8u + uint32_t(Id)); }

uint32_t ChainHash(uint32_t Parent, const IFact& Fact) {
  uint32_t Hash = Parent * 0x9E3779B1u ^ uint32_t(Fact ? Fact->GetID() : -1) * 0x85EBCA77u;
  return Hash ^ (Hash >> 13);
}

// Non-negative, for a key of any value.
uint32_t Magnitude(int32_t Key) { return Key < 0 ? 0u - uint32_t(Key) : uint32_t(Key); }

}  // namespace

String GetTokenActionName(TTokenAction Action) {
  if (Action < taClear || Action > taUpdate) return IntToStr(int(Action));
  return TokenActionNames[Action];
}

// TFreshWalk

namespace {

struct TWalkState {
  const TFact* Fact = nullptr;
  uint32_t Serial = 0;
  int Depth = 0;
};
thread_local TWalkState Walk;

void NextSerial() {
  if (++Walk.Serial == 0) Walk.Serial = 1;
}

}  // namespace

TFreshWalk::TFreshWalk(const TFact* Fact) {
  NextSerial();
  Walk.Fact = Walk.Depth++ == 0 ? Fact : nullptr;
}

TFreshWalk::~TFreshWalk() {
  if (--Walk.Depth == 0) Forget();
}

void TFreshWalk::Forget() {
  Walk.Fact = nullptr;
  NextSerial();
}

// TTavoToken

void* TTavoToken::operator new(size_t Size) {
  return TokenCacheGone ? ::operator new(Size) : TokenCache.Allocate(Size);
}

void TTavoToken::operator delete(void* Block, size_t Size) noexcept {
  if (TokenCacheGone)
    ::operator delete(Block);
  else
    TokenCache.Release(Block, Size);
}

TTavoToken::TTavoToken(TTokenAction Tag, const IFact& Fact)
    : FCount(1),
      FFact(Fact),
      FSortCode(Fact ? Fact->GetID() : 0),
      FChainHash(ChainHash(0, Fact)),
      FWalk(Walk.Fact && Fact.Get() == Walk.Fact ? Walk.Serial : 0),
      FTag(Tag) {}

TTavoToken::TTavoToken(const IReteToken& Parent, const IFact& Fact) : FFact(Fact), FParent(Parent) {
  FSortCode = Shifted(Parent ? Parent->FSortCode : 0, Fact ? Fact->GetID() : 0);
  FChainHash = ChainHash(Parent ? Parent->FChainHash : 0, Fact);
  if (Walk.Fact && (Fact.Get() == Walk.Fact || (Parent && Parent->FWalk == Walk.Serial))) FWalk = Walk.Serial;
  if (Parent) {
    FTag = Parent->FTag;
    FStrength = Parent->FStrength;
    FCount = Parent->FCount + 1;
  } else {
    FCount = 1;
  }
}

TTavoToken::TTavoToken(const IReteToken& Source) {
  if (Source) CopyChain(*Source);
}

void TTavoToken::CopyChain(const TTavoToken& Source) {
  FCount = Source.FCount;
  FFact = Source.FFact;
  FParent = Source.FParent;
  FStrength = Source.FStrength;
  FSortCode = Source.FSortCode;
  FChainHash = Source.FChainHash;
  FWalk = Source.FWalk;
  FTag = Source.FTag;
}

bool TTavoToken::IsFresh() const { return FWalk != 0 && FWalk == Walk.Serial && Walk.Fact; }

void TTavoToken::SetFresh() {
  if (Walk.Fact && FFact.Get() == Walk.Fact) FWalk = Walk.Serial;
}

void TTavoToken::Assign(const TPersistent* Source) {
  auto* Token = dynamic_cast<const TTavoToken*>(Source);
  if (!Token) {
    TTavoTokenPersistent::Assign(Source);
    return;
  }
  CopyChain(*Token);
  FNegatedCount = Token->FNegatedCount;
}

bool TTavoToken::Equals(const TTavoToken* Other) const {
  for (const TTavoToken* Mine = this; Mine != Other;) {
    if (!Other || Mine->FSortCode != Other->FSortCode) return false;
    // One parent and one fact: only the strength can differ, and the fact
    // need not be read.
    if (Mine->FParent == Other->FParent && Mine->FFact == Other->FFact) return Mine->FStrength == Other->FStrength;
    int MineId = Mine->FFact ? Mine->FFact->GetID() : -1;
    int OtherId = Other->FFact ? Other->FFact->GetID() : -1;
    if (MineId != OtherId || Mine->FStrength != Other->FStrength) return false;
    if (!Mine->FParent) return true;
    if (!Other->FParent) return false;
    Mine = Mine->FParent.Get();
    Other = Other->FParent.Get();
  }
  return true;
}

void TTavoToken::SetTag(TTokenAction Value) {
  if (Value != FTag && Value != taClear && !FFact) throw ETavoException(SInvalidTokenAction);
  FTag = Value;
}

String TTavoToken::ToString() const {
  String Result = GetTokenActionName(FTag) + u" cnt=" + IntToStr(FCount) + u" negcnt=" + IntToStr(FNegatedCount);
  for (const TTavoToken* Token = this; Token; Token = Token->FParent.Get())
    if (Token->FFact) Result += u"\r\n" + Token->FFact->ToString();
  return Result;
}

String TTavoToken::GetToFactsString() const {
  String Result;
  for (int I = 0; I < FCount; ++I) {
    TFact* Fact = GetFacts(I);
    if (!Fact) continue;
    if (!Result.empty()) Result += u", ";
    Result += u"f-" + IntToStr(Fact->GetID());
  }
  return Result;
}

// TTavoTokenTree

TTavoTokenTree::TTavoTokenTree(int Hash, int TokenIndex, int SubIndex, const String& FactIndex, bool UseHashCode)
    : FUseHashCode(UseHashCode),
      FSlot(TokenIndex, FactIndex, SubIndex),
      FHash(Hash < 1 ? 1 : Hash),
      FTokenIndex(TokenIndex),
      FBuckets(size_t(FHash)),
      FFilled((size_t(FHash) + 63) / 64),
      FLowIndex(FHash + 1) {
  FIndexed = !KeysChained();
}

int32_t TTavoTokenTree::KeyOf(const TTavoToken& Token, uint8_t* KeyType) const {
  if (KeyType) *KeyType = dtNone;
  if (FUseHashCode) return Token.GetSortCode();
  TFact* Fact = Token.GetFacts(FTokenIndex);
  if (!Fact) return 0;
  if (GetFactIndex().empty()) return Fact->GetID();
  const ITavoValue& Value = ReadSlot(*Fact, FSlot);
  if (FSlot.GetSubIndex() == NoSubIndex) {
    if (KeyType) *KeyType = ExactKeyType(Value);
    return Value ? Value->GetHashCode() : 0;
  }
  // An item beyond the list hashes as nothing.
  if (!Value || Value->GetDType() != dtList) return 0;
  const IValueVector& Items = Value->GetAsList();
  if (FSlot.GetSubIndex() >= Items->GetValueCount()) return 0;
  const ITavoValue& Item = Items->Get(FSlot.GetSubIndex());
  return Item ? Item->GetHashCode() : 0;
}

bool TTavoTokenTree::MatchOf(const TTavoToken& Token, const std::vector<TBindingInfo>& Slots, int32_t& Match) {
  uint32_t Hash = 2166136261u;
  for (const TBindingInfo& Slot : Slots) {
    TFact* Fact = Token.GetFacts(Slot.GetFactIndex());
    if (!Fact) return false;
    const ITavoValue* Value = Fact->PeekValueAt(Slot.GetLayoutSeen(), Slot.GetSlotPosition());
    if (!Value) {
      // A slot the fact lacks fails the join's own test, which says so.
      if (!Fact->GetTemplate() || Fact->GetSlotPosition(Slot.GetSlotIndex()) < 0) return false;
      Value = &ReadSlot(*Fact, Slot);
    }
    if (!*Value || (*Value)->GetDType() == dtFuzzy) return false;
    Hash = (Hash ^ uint32_t((*Value)->GetHashCode())) * 16777619u;
    Hash ^= Hash >> 15;
  }
  Match = int32_t(Hash);
  return true;
}

bool TTavoTokenTree::KeyIsFuzzy(const TTavoToken& Token) const {
  TFact* Fact = Token.GetFacts(FTokenIndex);
  if (!Fact) return false;
  const ITavoValue& Value = ReadSlot(*Fact, FSlot);
  if (Value && Value->GetDType() == dtFuzzy) return true;
  if (FSlot.GetSubIndex() == NoSubIndex || !Value || Value->GetDType() != dtList) return false;
  const IValueVector& Items = Value->GetAsList();
  return FSlot.GetSubIndex() < Items->GetValueCount() && Items->Get(FSlot.GetSubIndex()) &&
         Items->Get(FSlot.GetSubIndex())->GetDType() == dtFuzzy;
}

int TTavoTokenTree::BucketOf(int32_t Key) const { return int(Magnitude(Key) % uint32_t(FHash)); }

TTavoTokenTree::TBucket* TTavoTokenTree::GetTokens(int I) {
  auto& Bucket = FBuckets[size_t(BucketOf(I))];
  if (!Bucket && !FAllowNilBucket) Bucket = std::make_unique<TBucket>();
  return Bucket.get();
}

void* TTavoTokenTree::TEntry::operator new(size_t Size) {
  return EntryCacheGone ? ::operator new(Size) : EntryCache.Allocate(Size);
}

void TTavoTokenTree::TEntry::operator delete(void* Block, size_t Size) noexcept {
  if (EntryCacheGone)
    ::operator delete(Block);
  else
    EntryCache.Release(Block, Size);
}

TTavoTokenTree::~TTavoTokenTree() { FreeEntries(); }

void TTavoTokenTree::FreeEntries() {
  for (auto& Bucket : FBuckets) {
    if (!Bucket) continue;
    for (TEntry* Entry = Bucket->First; Entry;) delete std::exchange(Entry, Entry->Next);
    *Bucket = TBucket();
  }
  std::fill(FFilled.begin(), FFilled.end(), 0);
  FIndex.Clear();
  FChains.Clear();
  FIndexed = !KeysChained();
}

bool TTavoTokenTree::MatchOrNone(const TTavoToken& Token, int32_t& Match) const {
  Match = 0;
  // A match hash that cannot be taken stays 0, alike when the token comes
  // and when it goes.
  if (FMatchSlots.empty() || MatchOf(Token, FMatchSlots, Match)) return true;
  Match = 0;
  return false;
}

TTavoTokenTree::TEntry* TTavoTokenTree::FindEqual(const TTavoToken& Token, int32_t Key, int32_t Match,
                                                  int& Steps) const {
  Steps = 0;
  if (FIndexed) {
    TEntry* const* First = FIndex.Find(Token.GetChainHash());
    for (TEntry* Entry = First ? *First : nullptr; Entry; Entry = Entry->NextSame)
      if (Entry->ChainHash == Token.GetChainHash() && Entry->Token->TTavoToken::Equals(&Token)) return Entry;
    return nullptr;
  }
  // An equal token has the same key and match hash: its chain holds it.
  TEntry* const* First = FChains.Find(ChainKey(Key, Match));
  for (TEntry* Entry = First ? *First : nullptr; Entry; Entry = Entry->ChainNext, ++Steps)
    if (Entry->ChainHash == Token.GetChainHash() && Entry->Token->Equals(&Token)) return Entry;
  return nullptr;
}

void TTavoTokenTree::IndexEntry(TEntry* Entry) {
  uint32_t Hash = Entry->ChainHash;
  if (TEntry** First = FIndex.Find(Hash)) {
    Entry->NextSame = *First;
    *First = Entry;
  } else {
    Entry->NextSame = nullptr;
    FIndex.Add(Hash, Entry);
  }
}

bool TTavoTokenTree::Add(const IReteToken& Token) {
  uint8_t KeyType;
  int32_t Key = KeyOf(*Token, &KeyType);
  int Index = BucketOf(Key);
  auto& Bucket = FBuckets[size_t(Index)];
  if (!Bucket) Bucket = std::make_unique<TBucket>();
  if (Index < FLowIndex) FLowIndex = Index;
  if (Index > FHighIndex) FHighIndex = Index;
  int32_t Match;
  const bool Matched = MatchOrNone(*Token, Match);
  int Steps = 0;
  if (!Token->IsFresh() && FindEqual(*Token, Key, Match, Steps)) return false;
  if (!Matched) FMatchUsable = false;
  auto* Entry = new TEntry{Key, Match, Token->GetChainHash(), KeyType, Token};
  Entry->Prev = Bucket->Last;
  (Bucket->Last ? Bucket->Last->Next : Bucket->First) = Entry;
  Bucket->Last = Entry;
  if (Bucket->Count++ == 0) FFilled[size_t(Index) >> 6] |= uint64_t(1) << (Index & 63);
  if (KeysChained()) {
    bool Added;
    TEntry*& First = FChains.FindOrAdd(ChainKey(Key, Match), Added);
    if (Added) {
      First = Entry;
      Entry->ChainPrev = Entry;
    } else {
      TEntry* Last = First->ChainPrev;
      Entry->ChainPrev = Last;
      Last->ChainNext = Entry;
      First->ChainPrev = Entry;
    }
  }
  if (FIndexed) {
    IndexEntry(Entry);
  } else if (Steps > MaxChainWalk) {
    IndexAll();
  }
  FEmpty = false;
  if (!FUseHashCode && !GetFactIndex().empty() && !FHasFuzzyKeys) FHasFuzzyKeys = KeyIsFuzzy(*Token);
  return true;
}

IReteToken TTavoTokenTree::Take(const IReteToken& Token) {
  const TTavoToken& Sought = *Token;
  const uint32_t Hash = Sought.GetChainHash();
  TEntry* Entry = nullptr;
  // Each table is probed once: the entry found, its place in the table
  // serves to unlink it.
  if (FIndexed) {
    const int32_t Slot = FIndex.Locate(Hash);
    if (Slot < 0) return nullptr;
    TEntry*& First = FIndex.ValueAt(Slot);
    TEntry* Before = nullptr;
    for (Entry = First; Entry; Before = Entry, Entry = Entry->NextSame)
      if (Entry->ChainHash == Hash && Entry->Token->TTavoToken::Equals(&Sought)) break;
    if (!Entry) return nullptr;
    if (Before)
      Before->NextSame = Entry->NextSame;
    else if (Entry->NextSame)
      First = Entry->NextSame;
    else
      FIndex.RemoveLocated(Slot);
  }
  if (KeysChained()) {
    int32_t Slot;
    if (Entry) {
      Slot = FChains.Locate(ChainKey(Entry->Key, Entry->Match));
    } else {
      // An equal token has the same key and match hash: its chain holds it.
      int32_t Match;
      MatchOrNone(Sought, Match);
      Slot = FChains.Locate(ChainKey(KeyOf(Sought), Match));
      if (Slot < 0) return nullptr;
      for (Entry = FChains.ValueAt(Slot); Entry; Entry = Entry->ChainNext)
        if (Entry->ChainHash == Hash && Entry->Token->TTavoToken::Equals(&Sought)) break;
      if (!Entry) return nullptr;
    }
    Unchain(Entry, Slot);
  }
  int Index = BucketOf(Entry->Key);
  TBucket& Bucket = *FBuckets[size_t(Index)];
  (Entry->Prev ? Entry->Prev->Next : Bucket.First) = Entry->Next;
  (Entry->Next ? Entry->Next->Prev : Bucket.Last) = Entry->Prev;
  if (--Bucket.Count == 0) FFilled[size_t(Index) >> 6] &= ~(uint64_t(1) << (Index & 63));
  --FCount;
  IReteToken Held = std::move(Entry->Token);
  delete Entry;
  return Held;
}

void TTavoTokenTree::Unchain(TEntry* Entry, int32_t Slot) {
  TEntry*& First = FChains.ValueAt(Slot);
  if (Entry == First) {
    if (!Entry->ChainNext) {
      FChains.RemoveLocated(Slot);
      return;
    }
    Entry->ChainNext->ChainPrev = Entry->ChainPrev;
    First = Entry->ChainNext;
    return;
  }
  Entry->ChainPrev->ChainNext = Entry->ChainNext;
  (Entry->ChainNext ? Entry->ChainNext->ChainPrev : First->ChainPrev) = Entry->ChainPrev;
}

void TTavoTokenTree::IndexAll() {
  // Tokens of one key are many here: from now on they are found by the
  // hash of their facts.
  for (auto& Held : FBuckets)
    if (Held)
      for (TEntry* Each = Held->First; Each; Each = Each->Next) IndexEntry(Each);
  FIndexed = true;
}

void TTavoTokenTree::Clear() {
  if (FEmpty) return;
  FreeEntries();
  FEmpty = true;
  FMatchUsable = true;
  FHighIndex = -1;
  FLowIndex = FHash + 1;
}

String TTavoTokenTree::ToString() const {
  String Result;
  for (auto& Bucket : FBuckets) {
    if (!Bucket) continue;
    for (TEntry* Entry = Bucket->First; Entry; Entry = Entry->Next) Result += Entry->Token->ToString();
    Result += u"\r\n";
  }
  return Result;
}

String TTavoTokenTree::GetToFactsString() const {
  String Result;
  for (auto& Bucket : FBuckets) {
    if (!Bucket || !Bucket->First) continue;
    for (TEntry* Entry = Bucket->First; Entry; Entry = Entry->Next) Result += Entry->Token->GetToFactsString();
    Result += u"\r\n";
  }
  return Result;
}

}  // namespace tavo
