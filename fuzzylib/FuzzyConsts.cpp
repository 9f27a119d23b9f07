// The look-ups over the words of fuzzy expressions and settings.
#include "fuzzylib/FuzzyConsts.h"

namespace tavo {

namespace {

// The index of Text in Names, or -1.
template <size_t N>
int IndexOfName(const char16_t* const (&Names)[N], StringView Text) {
  for (size_t I = 0; I < N; ++I)
    if (SameText(Names[I], Text)) return int(I);
  return -1;
}

const TFuzzyHedgeEntry* FindHedge(StringView Text) {
  for (const TFuzzyHedgeEntry& Entry : FuzzyHedgeTable)
    if (SameText(Entry.Name, Text)) return &Entry;
  return nullptr;
}

const char16_t* HedgeName(bool TakesNumber, int Hedge) {
  for (const TFuzzyHedgeEntry& Entry : FuzzyHedgeTable)
    if (Entry.TakesNumber == TakesNumber && Entry.Hedge == Hedge) return Entry.Name;
  return u"";
}

}  // namespace

String JoinFuzzyNames(const char16_t* const* Names, size_t Count) {
  String Result;
  for (size_t I = 0; I < Count; ++I) {
    if (I > 0) Result += I + 1 == Count ? u", or " : u", ";
    Result += Names[I];
  }
  return Result;
}

String FuzzyHedgeName(TFuzzyHedge Hedge) { return HedgeName(false, Hedge); }
String BaseFuzzyHedgeName(TBaseFuzzyHedge Hedge) { return HedgeName(true, Hedge); }

bool IsFuzzyHedge(StringView Text, TFuzzyHedge& Hedge) {
  const TFuzzyHedgeEntry* Entry = FindHedge(Text);
  if (!Entry || Entry->TakesNumber) return false;
  Hedge = TFuzzyHedge(Entry->Hedge);
  return true;
}

bool IsFuzzyHedgeOperator(StringView Text, TBaseFuzzyHedge& Hedge) {
  const TFuzzyHedgeEntry* Entry = FindHedge(Text);
  if (!Entry || !Entry->TakesNumber) return false;
  Hedge = TBaseFuzzyHedge(Entry->Hedge);
  return true;
}

bool IsFuzzyKeyword(StringView Text, bool& Union, TFuzzyOperation& Operation) {
  for (const bool IsUnion : {false, true}) {
    const StringView Word = IsUnion ? SFuzzyOrKeyword : SFuzzyAndKeyword;
    if (Text.size() < Word.size() || !SameText(Text.substr(0, Word.size()), Word)) continue;
    TFuzzyOperation Found = foZadeh;
    if (Text.size() > Word.size()) {
      if (Text[Word.size()] != u'-' || !IsFuzzyOperation(Text.substr(Word.size() + 1), Found)) continue;
    }
    Union = IsUnion;
    Operation = Found;
    return true;
  }
  return false;
}

bool IsFuzzyOperation(StringView Text, TFuzzyOperation& Operation) {
  const int Index = IndexOfName(FuzzyOperationNames, Text);
  if (Index < 0) return false;
  Operation = TFuzzyOperation(Index);
  return true;
}

bool IsFuzzyInference(StringView Text, TFuzzyInferenceMethod& Method) {
  const int Index = IndexOfName(FuzzyInferenceNames, Text);
  if (Index < 0) return false;
  Method = TFuzzyInferenceMethod(Index);
  return true;
}

bool IsFuzzyCorrelation(StringView Text, TFuzzyCorrelationMethod& Method) {
  const int Index = IndexOfName(FuzzyCorrelationNames, Text);
  if (Index < 0) return false;
  Method = TFuzzyCorrelationMethod(Index);
  return true;
}

int FuzzyPrecedence(StringView Text) {
  if (const TFuzzyHedgeEntry* Entry = FindHedge(Text))
    return Entry->TakesNumber ? FuzzyHedgeOperatorPrecedence : FuzzyHedgePrecedence;
  bool Union;
  TFuzzyOperation Operation;
  if (IsFuzzyKeyword(Text, Union, Operation)) return Union ? FuzzyUnionPrecedence : FuzzyIntersectionPrecedence;
  return 0;
}

String FuzzyKeyword(bool Union, TFuzzyOperation Operation) {
  String Result = Union ? SFuzzyOrKeyword : SFuzzyAndKeyword;
  if (Operation != foZadeh) {
    Result += u'-';
    Result += FuzzyOperationNames[Operation];
  }
  return Result;
}

}  // namespace tavo
