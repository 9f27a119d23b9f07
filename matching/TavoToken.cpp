#include "matching/TavoToken.h"

#include <cstdlib>

#include "common/MekBlockCache.h"
#include "core/TavoVectors.h"

namespace tavo {

namespace {

thread_local bool TokenCacheGone = false;
thread_local TBlockCache<sizeof(TTavoToken), 16384> TokenCache(TokenCacheGone);

constexpr const char16_t* TokenActionNames[] = {u"taClear", u"taAdd", u"taRemove", u"taUpdate"};

// Sort codes wrap in 32 bits.
int32_t Shifted(int32_t Code, int32_t Id) { return int32_t(uint32_t(Code) * 8u + uint32_t(Id)); }

// Non-negative, for a key of any value.
uint32_t Magnitude(int32_t Key) { return Key < 0 ? 0u - uint32_t(Key) : uint32_t(Key); }

}  // namespace

String GetTokenActionName(TTokenAction Action) {
  if (Action < taClear || Action > taUpdate) return IntToStr(int(Action));
  return TokenActionNames[Action];
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
    : FCount(1), FFact(Fact), FSortCode(Fact ? Fact->GetID() : 0), FTag(Tag) {}

TTavoToken::TTavoToken(const IReteToken& Parent, const IFact& Fact) : FFact(Fact), FParent(Parent) {
  FSortCode = Shifted(Parent ? Parent->FSortCode : 0, Fact ? Fact->GetID() : 0);
  if (Parent) {
    FTag = Parent->FTag;
    FStrength = Parent->FStrength;
    FCount = Parent->FCount + 1;
  } else {
    FCount = 1;
  }
}

TTavoToken::TTavoToken(const IReteToken& Source) {
  if (Source) Assign(Source.Get());
  FNegatedCount = 0;
}

void TTavoToken::Assign(const TPersistent* Source) {
  auto* Token = dynamic_cast<const TTavoToken*>(Source);
  if (!Token) {
    TTavoTokenPersistent::Assign(Source);
    return;
  }
  FCount = Token->FCount;
  FNegatedCount = Token->FNegatedCount;
  FFact = Token->FFact;
  FParent = Token->FParent;
  FStrength = Token->FStrength;
  FSortCode = Token->FSortCode;
  FTag = Token->FTag;
}

bool TTavoToken::Equals(const TTavoToken* Other) const {
  for (const TTavoToken* Mine = this; Mine != Other;) {
    if (!Other || Mine->FSortCode != Other->FSortCode) return false;
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
      FLowIndex(FHash + 1) {}

int32_t TTavoTokenTree::KeyOf(const TTavoToken& Token) const {
  if (FUseHashCode) return Token.GetSortCode();
  TFact* Fact = Token.GetFacts(FTokenIndex);
  if (!Fact) return 0;
  if (GetFactIndex().empty()) return Fact->GetID();
  const ITavoValue& Value = ReadSlot(*Fact, FSlot);
  if (FSlot.GetSubIndex() == NoSubIndex) return Value ? Value->GetHashCode() : 0;
  // An item beyond the list hashes as nothing.
  if (!Value || Value->GetDType() != dtList) return 0;
  const IValueVector& Items = Value->GetAsList();
  if (FSlot.GetSubIndex() >= Items->GetValueCount()) return 0;
  const ITavoValue& Item = Items->Get(FSlot.GetSubIndex());
  return Item ? Item->GetHashCode() : 0;
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

bool TTavoTokenTree::Add(const IReteToken& Token) {
  int32_t Key = KeyOf(*Token);
  int Index = BucketOf(Key);
  auto& Bucket = FBuckets[size_t(Index)];
  if (!Bucket) Bucket = std::make_unique<TBucket>();
  if (Index < FLowIndex) FLowIndex = Index;
  if (Index > FHighIndex) FHighIndex = Index;
  for (const TEntry& Held : *Bucket)
    if (Held.SortCode == Token->GetSortCode() && Held.Token->Equals(Token.Get())) return false;
  Bucket->push_back({Key, Token->GetSortCode(), Token});
  FEmpty = false;
  if (!FUseHashCode && !GetFactIndex().empty() && !FHasFuzzyKeys) FHasFuzzyKeys = KeyIsFuzzy(*Token);
  return true;
}

bool TTavoTokenTree::Remove(const IReteToken& Token) {
  int32_t Key = KeyOf(*Token);
  auto& Bucket = FBuckets[size_t(BucketOf(Key))];
  if (!Bucket) return false;
  for (auto Held = Bucket->begin(); Held != Bucket->end(); ++Held)
    if (Held->SortCode == Token->GetSortCode() && Held->Token->Equals(Token.Get())) {
      Bucket->erase(Held);
      --FCount;
      return true;
    }
  return false;
}

void TTavoTokenTree::Clear() {
  if (FEmpty) return;
  for (auto& Bucket : FBuckets)
    if (Bucket) Bucket->clear();
  FEmpty = true;
  FHighIndex = -1;
  FLowIndex = FHash + 1;
}

String TTavoTokenTree::ToString() const {
  String Result;
  for (auto& Bucket : FBuckets) {
    if (!Bucket) continue;
    for (const TEntry& Entry : *Bucket) Result += Entry.Token->ToString();
    Result += u"\r\n";
  }
  return Result;
}

String TTavoTokenTree::GetToFactsString() const {
  String Result;
  for (auto& Bucket : FBuckets) {
    if (!Bucket || Bucket->empty()) continue;
    for (const TEntry& Entry : *Bucket) Result += Entry.Token->GetToFactsString();
    Result += u"\r\n";
  }
  return Result;
}

}  // namespace tavo
