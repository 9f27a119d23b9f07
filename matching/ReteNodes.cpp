#include "matching/ReteNodes.h"

#include <algorithm>

#include "core/TavoEvaluator.h"
#include "core/TavoVectors.h"
#include "knowledge/TavoFactTemplate.h"
#include "knowledge/TavoRule.h"
#include "matching/ActivationAgenda.h"
#include "matching/ReteNetwork.h"

namespace tavo {

namespace {

constexpr const char16_t* CallTypeNames[] = {u"ctLeft", u"ctRight", u"ctSingle", u"ctActivate"};

constexpr const char16_t* PatternMatchTestNames[] = {u"pmtUnknown",
                                                     u"pmtTestClassType",
                                                     u"pmtTestEqual",
                                                     u"pmtTestNotEqual",
                                                     u"pmtTestSlotValueEqual",
                                                     u"pmtTestSlotValueNotEqual",
                                                     u"pmtTestMultiSlotEqual",
                                                     u"pmtTestMultiSlotNotEqual",
                                                     u"pmtTestMultiSlotLength",
                                                     u"pmtTestMultiSlotMultiField",
                                                     u"pmtFailTest"};

// A node's context holds the token and fact under test while a call of a
// test runs, and lets go of them however the call ends.
class TTestScope {
 public:
  TTestScope(TTavoContext* Context, TContextToken* Token, TContextFact* Fact) : FContext(Context) {
    Context->SetToken(IContextToken(Token));
    Context->SetFact(IContextFact(Fact));
  }
  ~TTestScope() {
    FContext->SetToken(nullptr);
    FContext->SetFact(nullptr);
  }
  TTestScope(const TTestScope&) = delete;
  TTestScope& operator=(const TTestScope&) = delete;

 private:
  TTavoContext* FContext;
};

bool IsCall(const ITavoValue& Value) { return Value && Value->GetDType() == dtFunCall; }
bool IsFuzzy(const ITavoValue& Value) { return Value && Value->GetDType() == dtFuzzy; }

// Item Index of a list value, or null when the value holds no such item.
const ITavoValue* ListItem(const ITavoValue& Value, int Index) {
  if (!Value || Value->GetDType() != dtList || Index < 0) return nullptr;
  const IValueVector& List = Value->GetAsList();
  if (Index >= List->GetValueCount()) return nullptr;
  return &List->Get(Index);
}

}  // namespace

String GetCallTypeName(TCallType Type) {
  if (Type < ctLeft || Type > ctActivate) return IntToStr(int(Type));
  return CallTypeNames[Type];
}

String GetPatternMatchTestName(TPatternMatchTest Test) {
  if (Test < pmtUnknown || Test > pmtFailTest) return IntToStr(int(Test));
  return PatternMatchTestNames[Test];
}

// TNodeArg

const ITavoValue* TNodeArg::Find(TFact& Fact) const {
  const void* Layout = Fact.GetSlotLayout();
  if (Layout != FLayoutSeen || !Layout) {
    FPosition = Fact.GetSlotPosition(FName);
    FLayoutSeen = Layout;
  }
  if (FPosition < 0) return nullptr;
  return &Fact.GetValueAt(FPosition);
}

String TNodeArg::ToString() const { return FIsName ? FName : IntToStr(FNumber); }

// TReteEdge

TReteNode* TReteEdge::FromNode() const { return static_cast<TReteNode*>(TGGraphEdge::FromNode()); }
TReteNode* TReteEdge::ToNode() const { return static_cast<TReteNode*>(TGGraphEdge::ToNode()); }

// TReteNode

TReteNode::TReteNode() = default;

TReteNode::~TReteNode() {
  if (TReteNetwork* Network = Rete()) Network->NodeGoing(this);
}

TReteNetwork* TReteNode::Rete() const { return static_cast<TReteNetwork*>(GetGraph()); }

void TReteNode::MakeContext(TTavoContext* Global) {
  FContext.reset(Global ? Global->Push() : new TTavoContext());
}

void TReteNode::Evaluate(const IFunCall& FunCall, const IReteToken& /*Token*/, const IFact& /*Fact*/,
                         ITavoValue& Result) {
  Result = Make<TTavoValue>(FunCall);
}

TGGraphEdge* TReteNode::NewEdge(TGGraphNode* From, TGGraphNode* To) { return new TReteEdge(From, To); }

void TReteNode::AddingEdgeFrom(TGGraphEdge* /*Edge*/) {
  if (GetInDegree() == 0)
    if (TReteNetwork* Network = Rete()) Network->RemoveRoot(this);
}

void TReteNode::RemovingEdgeFrom(TGGraphEdge* /*Edge*/) {
  if (GetInDegree() == 0)
    if (TReteNetwork* Network = Rete()) Network->AddRoot(this);
}

void TReteNode::CallChildren(const IReteToken& Token) {
  // By index: a successor may be added while a token is on its way.
  const auto& Out = Edges();
  for (size_t I = 0; I < Out.size(); ++I) {
    auto* Edge = static_cast<TReteEdge*>(Out[I]);
    Edge->ToNode()->CallNode(Token, Edge->GetCallType());
  }
}

String TReteNode::ToString() const {
  return GetName() + u" In/Out#: " + IntToStr(GetInDegree()) + u"/" + IntToStr(GetOutDegree()) + u" RuleUse: " +
         IntToStr(FRuleUseCount);
}

// TPatternMatchNode

void TPatternMatchNode::SetValue(const ITavoValue& Value) {
  FValue = Value;
  FClassName = (Value && Value->GetDType() != dtFunCall && Value->GetDType() != dtList) ? Value->GetAsString()
                                                                                        : String();
}

bool TPatternMatchNode::ClassTypePasses(const TFact& Fact) const {
  for (TFactTemplate* Template = Fact.GetTemplate().Get(); Template; Template = Template->GetParent().Get())
    if (Template->GetTemplateName() == FClassName) return true;
  return false;
}

bool TPatternMatchNode::CallPasses(const IReteToken& Token) {
  TTestScope Scope(GetContext(), Token.Get(), Token->GetFact().Get());
  ITavoValue Scratch;
  return !tavo::Evaluate(FValue, GetContext(), Scratch)->Equals(FCFalse);
}

void TPatternMatchNode::CallMultiField(const IReteToken& Token, TFact& Fact) {
  const ITavoValue* Slot = FArguments[0].Find(Fact);
  if (!Slot) return;
  if (*Slot == FCNil || (*Slot && (*Slot)->Equals(FCNil))) {
    TReteNode::CallChildren(Token);
    return;
  }
  if (!*Slot || (*Slot)->GetDType() != dtList) return;
  IValueVector Items = (*Slot)->GetAsList();
  int N = Items->GetValueCount();
  int S = FArguments[1].GetNumber();
  int Position = Fact.GetSlotPosition(FArguments[0].GetName());
  // Longest span first: the variable takes B items at position S.
  for (int I = 0; I <= N - S; ++I) {
    int B = N - (S + 1 + I) + 1;
    IValueVector Spanned = Make<TValueVector>();
    Spanned->Reserve(N - B + 1);
    for (int J = 0; J < S; ++J) Spanned->Add(Items->Get(J));
    IValueVector Span = Make<TValueVector>();
    for (int J = S; J < S + B; ++J) Span->Add(Items->Get(J));
    Spanned->Add(Make<TTavoValue>(Span));
    for (int J = S + B; J < N; ++J) Spanned->Add(Items->Get(J));
    IFact Clone = Fact.CloneFact();
    Clone->SetValueAt(Position, Make<TTavoValue>(Spanned));
    TReteNode::CallChildren(Make<TTavoToken>(Token->GetTag(), Clone));
  }
}

bool TPatternMatchNode::CallNode(const IReteToken& Token, TCallType /*CallType*/) {
  if (Token->GetTag() == taClear) {
    TReteNode::CallChildren(Token);
    return true;
  }
  TFact& Fact = *Token->GetFact();
  bool Result = false;
  switch (FPatternMatchTest) {
    case pmtTestClassType:
      Result = ClassTypePasses(Fact);
      break;
    case pmtTestEqual:
    case pmtTestNotEqual:
      if (!IsCall(FValue)) {
        const ITavoValue* Slot = FArguments[0].Find(Fact);
        if (!Slot) return false;
        return CallChildren(Token, FValue, FPatternMatchTest == pmtTestNotEqual, *Slot);
      }
      Result = CallPasses(Token);
      if (FPatternMatchTest == pmtTestNotEqual) Result = !Result;
      break;
    case pmtTestSlotValueEqual:
    case pmtTestSlotValueNotEqual: {
      const ITavoValue* First = FArguments[0].Find(Fact);
      const ITavoValue* Second = FArguments[1].Find(Fact);
      if (!First || !Second) return false;
      // An item beyond the list fails the test.
      if (FArguments[2].GetNumber() != NoSubIndex) First = ListItem(*First, FArguments[2].GetNumber());
      if (FArguments[3].GetNumber() != NoSubIndex) Second = ListItem(*Second, FArguments[3].GetNumber());
      if (!First || !Second) return false;
      return CallChildren(Token, *Second, FPatternMatchTest == pmtTestSlotValueNotEqual, *First);
    }
    case pmtTestMultiSlotEqual:
    case pmtTestMultiSlotNotEqual: {
      const ITavoValue* Slot = FArguments[0].Find(Fact);
      if (!Slot) return false;
      const ITavoValue* Item = ListItem(*Slot, FArguments[1].GetNumber());
      if (!Item) return false;
      if (!IsCall(FValue)) return CallChildren(Token, FValue, FPatternMatchTest == pmtTestMultiSlotNotEqual, *Item);
      Result = CallPasses(Token);
      if (FPatternMatchTest == pmtTestMultiSlotNotEqual) Result = !Result;
      break;
    }
    case pmtTestMultiSlotLength: {
      const ITavoValue* Slot = FArguments[0].Find(Fact);
      if (!Slot || !*Slot) return false;
      // An empty multislot may hold nil: it has no items.
      int Count = (*Slot)->GetDType() == dtList ? (*Slot)->GetAsList()->GetValueCount() : (*Slot)->Equals(FCNil) ? 0 : -1;
      Result = Count == FArguments[1].GetNumber();
      break;
    }
    case pmtTestMultiSlotMultiField:
      CallMultiField(Token, Fact);
      return true;
    case pmtUnknown:
    case pmtFailTest:
      break;
  }
  if (Result) TReteNode::CallChildren(Token);
  return Result;
}

bool TPatternMatchNode::CallChildren(const IReteToken& Token, const ITavoValue& Value, bool Negate,
                                     const ITavoValue& SlotValue) {
  bool Result = SlotValue ? SlotValue->Equals(Value) : !Value;
  if (Negate) Result = !Result;
  if (!Result) return false;
  if (!IsFuzzy(Value) && !IsFuzzy(SlotValue)) {
    TReteNode::CallChildren(Token);
    return true;
  }
  float Strength = IsFuzzy(Value) ? Rete()->FuzzyMatch(Value, SlotValue) : Rete()->FuzzyMatch(SlotValue, Value);
  if (Token->GetStrength() <= Strength) {
    TReteNode::CallChildren(Token);
  } else if (Strength >= Rete()->GetMinActivationStrength()) {
    IReteToken Weaker = Make<TTavoToken>(Token);
    Weaker->SetStrength(Strength);
    TReteNode::CallChildren(Weaker);
  }
  return true;
}

bool TPatternMatchNode::Equals(TPatternMatchTest Test, const TNodeArgsArray& Args) const {
  if (Test != FPatternMatchTest || Args.size() != FArguments.size()) return false;
  for (size_t I = 0; I < Args.size(); ++I)
    if (!Args[I].SameValue(FArguments[I])) return false;
  return true;
}

bool TPatternMatchNode::Equals(TPatternMatchTest Test, const ITavoValue& Value, const TNodeArgsArray& Args) const {
  if (Test != FPatternMatchTest) return false;
  if (bool(Value) != bool(FValue)) return false;
  if (Value) {
    if (Args.size() != FArguments.size()) return false;
    if (IsFuzzy(Value) || IsFuzzy(FValue)) {
      // Two fuzzy constraints share a node only when they are the same set:
      // a full match somewhere (hot against very hot both reach 1 at the
      // top) would give one rule the other's strengths.
      if (!IsFuzzy(Value) || !IsFuzzy(FValue) ||
          !Value->GetAsFuzzy()->SamePoints(*FValue->GetAsFuzzy(), 1e-9))
        return false;
    } else if (!Value->Equals(FValue)) {
      return false;
    }
  }
  return Equals(Test, Args);
}

String TPatternMatchNode::ToString() const {
  String Result = TReteNode::ToString();
  if (FValue) Result += u" Value: " + FValue->ToString();
  Result += u" Test: " + GetPatternMatchTestName(FPatternMatchTest);
  if (!FArguments.empty()) {
    Result += u" Args: (";
    for (size_t I = 0; I < FArguments.size(); ++I) {
      if (I > 0) Result += u", ";
      Result += FArguments[I].ToString();
    }
    Result += u")";
  }
  return Result;
}

// TTestNode

TTestNode::~TTestNode() = default;

void TTestNode::AddTest(TSlotTestType Type, const String& /*SlotName*/, int SubIndex, const ITavoValue& Value) {
  auto Test = std::make_unique<TTavoPatternMatchTest>(nullptr);
  Test->SetSlotTestType(Type);
  Test->SetMultiSlotSubIndex(SubIndex);
  Test->SetSlotValue(Value);
  FJoinTests.push_back(nullptr);
  FTests.push_back(std::move(Test));
}

void TTestNode::ClearTests() {
  FTests.clear();
  FJoinTests.clear();
}

void TTestNode::DeleteTest(int Index) {
  FTests.erase(FTests.begin() + Index);
  FJoinTests.erase(FJoinTests.begin() + Index);
}

bool TTestNode::Equals(const TTestNode* Node) const {
  if (!Node || &Node->ClassType() != &ClassType() || Node->FTests.size() != FTests.size()) return false;
  for (size_t I = 0; I < FTests.size(); ++I) {
    // A call is never equal to another, so nodes with calls are not shared.
    if (!FJoinTests[I]) return false;
    bool Found = false;
    for (size_t J = 0; J < Node->FTests.size() && !Found; ++J)
      Found = Node->FJoinTests[J] && FJoinTests[I]->Equals(Node->FJoinTests[J]);
    if (!Found) return false;
  }
  return true;
}

bool TTestNode::RunTests(int Count) {
  TTavoContext* Context = GetContext();
  for (int I = 0; I < Count; ++I)
    if (!FTests[size_t(I)]->PerformTest(Context)) return false;
  return true;
}

bool TTestNode::CallNode(const IReteToken& Token, TCallType /*CallType*/) {
  if (Token->GetTag() != taClear) {
    TTestScope Scope(GetContext(), Token.Get(), nullptr);
    if (!RunTests(int(FTests.size()))) return false;
  }
  CallChildren(Token);
  return true;
}

String TTestNode::ToString() const {
  String Result = TReteNode::ToString() + u" NumTests: " + IntToStr(int(FTests.size()));
  for (auto& Test : FTests) Result += u" (" + Test->ToString() + u")";
  return Result;
}

// TJoinNode

TJoinNode::~TJoinNode() = default;

void TJoinNode::SetPattern(TTavoPattern* Pattern) {
  if (Pattern && !(Pattern->GetFactTemplate() && Pattern->GetFactTemplate()->IsBackwardChaining()))
    throw ETavoException(SInvalidBackchainPattern);
  FPattern = Pattern;
}

void TJoinNode::AddTest(TSlotTestType Type, int TokenIndex, const String& LeftName, const String& RightName) {
  auto Test = std::make_unique<TTavoJoinTest>(Type, TokenIndex, LeftName, RightName);
  FJoinTests.push_back(Test.get());
  FTests.push_back(std::move(Test));
}

void TJoinNode::AddTest(TSlotTestType Type, int TokenIndex, const String& LeftName, int LeftSubIndex,
                        const String& RightName, int RightSubIndex) {
  if (LeftSubIndex == -1 && RightSubIndex == -1) {
    AddTest(Type, TokenIndex, LeftName, RightName);
    return;
  }
  auto Test = std::make_unique<TTavoJoinTest>(Type, TokenIndex, LeftName, LeftSubIndex, RightName, RightSubIndex);
  FJoinTests.push_back(Test.get());
  FTests.push_back(std::move(Test));
}

void TJoinNode::PrepareShortCut() {
  auto Find = [this](TJoinTestType Kind) -> int {
    for (size_t I = 0; I < FTests.size(); ++I)
      if (FJoinTests[I] && FJoinTests[I]->GetJoinTestType() == Kind && FJoinTests[I]->GetSlotTestType() == sttEquals)
        return int(I);
    return -1;
  };
  int Index = Find(tstSlot);
  if (Index < 0) Index = Find(tstMultiSlot);
  if (Index >= 0) {
    TTavoJoinTest* Key = FJoinTests[size_t(Index)];
    FRightFactIndex = Key->GetRightIndex();
    FLeftFactIndex = Key->GetLeftIndex();
    FTokenIndex = Key->GetTokenIndex();
    if (Key->GetJoinTestType() == tstMultiSlot) {
      FRightSubIndex = Key->GetRightSubIndex();
      FLeftSubIndex = Key->GetLeftSubIndex();
    }
    FShortCut = true;
    FKeyIsSlot = Key->GetJoinTestType() == tstSlot;
    if (Index != 0) {
      std::swap(FTests[0], FTests[size_t(Index)]);
      std::swap(FJoinTests[0], FJoinTests[size_t(Index)]);
    }
    FLeftKey = TBindingInfo(FTokenIndex, FLeftFactIndex, FLeftSubIndex);
    FRightKey = TBindingInfo(0, FRightFactIndex, FRightSubIndex);
    FLeftMatch.clear();
    FRightMatch.clear();
    for (size_t I = 1; I < FTests.size(); ++I) {
      TTavoJoinTest* Test = FJoinTests[I];
      if (!Test || Test->GetJoinTestType() != tstSlot || Test->GetSlotTestType() != sttEquals) continue;
      FLeftMatch.emplace_back(Test->GetTokenIndex(), Test->GetLeftIndex());
      FRightMatch.emplace_back(0, Test->GetRightIndex());
    }
  }
  FNeedsContext = std::find(FJoinTests.begin(), FJoinTests.end(), nullptr) != FJoinTests.end();
  if (!(FLeftMemory && FRightMemory && FLeftMemory->GetEmpty() && FRightMemory->GetEmpty())) ClearMemory();
  FLeftMemory->SetMatchSlots(FLeftMatch);
  FRightMemory->SetMatchSlots(FRightMatch);
}

void TJoinNode::AddGuard(const ITavoValue& Call, bool Negated) { FGuards.push_back(TGuard{Call, Negated}); }

bool TJoinNode::GuardRefuses(const IReteToken& Token) {
  TTestScope Scope(GetContext(), Token.Get(), nullptr);
  for (const TGuard& Guard : FGuards) {
    bool Truth;
    try {
      if (!EvaluateTruth(Guard.Call, GetContext(), Truth)) continue;
    } catch (const std::exception&) {
      // The test element raises it in its turn, where the rule meets it.
      continue;
    }
    if (Truth == Guard.Negated) return true;
  }
  return false;
}

void TJoinNode::ClearMemory() {
  if (FLeftMemory)
    FLeftMemory->Clear();
  else
    FLeftMemory = std::make_unique<TTavoTokenTree>(FHashKey, FTokenIndex, FLeftSubIndex, FLeftFactIndex,
                                                   FLeftFactIndex.empty());
  if (FRightMemory)
    FRightMemory->Clear();
  else
    FRightMemory = std::make_unique<TTavoTokenTree>(FHashKey, 0, FRightSubIndex, FRightFactIndex, false);
  FLeftMemory->SetMatchSlots(FLeftMatch);
  FRightMemory->SetMatchSlots(FRightMatch);
}

bool TJoinNode::Equals(const TTestNode* Node) const {
  if (FNegatedPattern) return false;
  auto* Join = dynamic_cast<const TJoinNode*>(Node);
  if (!Join || Join->FNegatedPattern) return false;
  return TTestNode::Equals(Node);
}

void TJoinNode::AskForBackChain(const IReteToken& Token) {
  if (!FPattern || FMatches != 0 || !FRule || FPattern->GetName().starts_with(SBackChainPrefix)) return;
  TReteNetwork* Network = Rete();
  IReteEngine* Engine = Network ? Network->GetEngine() : nullptr;
  if (!Engine) return;
  IFactTemplate Template = Engine->CreateFactTemplate(SBackChainPrefix + FPattern->GetName());
  IFact Goal = Template->NewFact();
  for (int S = 0; S < FPattern->GetSlotCount(); ++S) {
    const String& SlotName = FPattern->GetSlotName(S);
    const IFactSlot& Slot = Template->GetSlot(SlotName);
    const bool Multi = Slot && Slot->IsMulti();
    ITavoValue Value = Multi ? FCNilList : FCNil;
    IValueVector List;
    for (int T = 0; T < FPattern->GetSlotTestCount(S); ++T) {
      TTavoPatternMatchTest* Test = FPattern->GetSlotTest(S, T);
      if (Test->GetSlotTestType() == sttNotEquals) continue;
      ITavoValue Found;
      const ITavoValue& Tested = Test->GetSlotValue();
      if (!IsVariable(Tested)) {
        Found = Tested;
      } else if (TBinding* Binding = FRule->GetBindingByName(Tested->GetAsString());
                 Binding && Token->GetCount() > Binding->GetFactIndex()) {
        TFact* Fact = Token->GetFacts(Binding->GetFactIndex());
        if (Binding->IsPatternBinding())
          Found = Make<TTavoValue>(IFact(Fact));
        else
          Found = Fact->GetValue(Binding->GetSlotIndex());
      } else {
        // Bound by this pattern or a later one: the goal cannot know it.
        continue;
      }
      if (!Multi) {
        Value = Found;
        break;
      }
      if (!List) {
        List = Make<TValueVector>();
        Value = Make<TTavoValue>(List);
      }
      const int Index = Test->GetMultiSlotSubIndex();
      if (Index >= 0 && List->GetValueCount() >= Index + 1)
        List->Put(Index, Found);
      else
        List->Add(Found);
    }
    if (List)
      for (int I = 0; I < List->GetValueCount(); ++I)
        if (!List->Get(I)) List->Put(I, FCNil);
    Goal->SetValue(SlotName, Value);
  }
  Engine->AddPendingFact(Goal, true);
}

bool TJoinNode::PairPasses(const TTavoToken& Left, TFact& Right, bool KeyEqual) {
  // The key's equality is the first test; a memory may know it holds.
  const size_t First = KeyEqual && FKeyIsSlot ? 1 : 0;
  if (!FNeedsContext) {
    for (size_t I = First; I < FJoinTests.size(); ++I)
      if (!FJoinTests[I]->Test(Left, Right)) return false;
    return true;
  }
  TTestScope Scope(GetContext(), const_cast<TTavoToken*>(&Left), &Right);
  for (size_t I = First; I < FTests.size(); ++I)
    if (!(FJoinTests[I] ? FJoinTests[I]->Test(Left, Right) : FTests[I]->PerformTest(GetContext()))) return false;
  return true;
}

IReteToken TJoinNode::Join(const IReteToken& Left, const IFact& Right, float Strength) {
  IReteToken Result = Make<TTavoToken>(Left, Right);
  if (Strength < Result->GetStrength()) Result->SetStrength(Strength);
  return Result;
}

bool TJoinNode::CallNode(const IReteToken& Token, TCallType CallType) {
  FMatches = 0;
  TTokenAction Tag = Token->GetTag();
  if (Tag == taClear) {
    ClearMemory();
    CallChildren(Token);
    return true;
  }
  if (!FLeftMemory || !FRightMemory) ClearMemory();
  // Memories keep the arriving token itself: no node changes a token it
  // has passed on, but a negated join counts its matches on the left token,
  // so its left memory keeps a copy whose count starts from nothing.
  switch (CallType) {
    case ctLeft:
      // A token that a test further down surely refuses never got here;
      // its removal finds nothing either.
      if (!FGuards.empty() && GuardRefuses(Token)) break;
      if (Tag == taRemove) {
        if (IReteToken Held = FLeftMemory->Take(Token)) RunTestsVaryRight(Token, Held);
      } else if (IReteToken Held = FNegatedPattern ? Make<TTavoToken>(Token) : Token; FLeftMemory->Add(Held)) {
        RunTestsVaryRight(Token, Held);
        AskForBackChain(Token);
      }
      break;
    case ctRight:
      if (Tag == taRemove) {
        if (FRightMemory->Remove(Token)) RunTestsVaryLeft(Token);
      } else if (FRightMemory->Add(Token)) {
        RunTestsVaryLeft(Token);
      }
      break;
    default:
      throw ETavoException(Format(SInvalidCallType, GetCallTypeName(CallType)));
  }
  return true;
}

// The key of a token's join test, and whether stored tokens of other keys
// can be passed over by it: a stored token of another key fails the first
// test, which is the key's equality.
bool TJoinNode::ProbeKey(TFact* Fact, const TBindingInfo& Slot, int SubIndex, const TTavoTokenTree& Memory,
                         int32_t& Hash, uint8_t& KeyType) const {
  const ITavoValue& Key = ReadSlot(*Fact, Slot);
  const ITavoValue* Value = SubIndex != -1 ? ListItem(Key, SubIndex) : &Key;
  Hash = (Value && *Value) ? (*Value)->GetHashCode() : 0;
  KeyType = SubIndex == -1 ? TTavoTokenTree::ExactKeyType(Key) : uint8_t(dtNone);
  return Value && *Value && (*Value)->GetDType() != dtFuzzy && !Memory.GetHasFuzzyKeys();
}

void TJoinNode::RunTestsVaryRight(const IReteToken& Token, const IReteToken& Parent) {
  TTokenAction Tag = Token->GetTag();
  bool Adding = Tag == taAdd || Tag == taUpdate;
  // One stored token against the left one; false stops the scan.
  auto Visit = [&](const IReteToken& Right, bool KeyEqual) {
    if (!PairPasses(*Token, *Right->GetFact(), KeyEqual)) return true;
    if (FNegatedPattern) {
      Token->SetNegatedCount(Token->GetNegatedCount() + 1);
      return true;
    }
    IReteToken Joined = Join(Parent, Right->GetFact(), Right->GetStrength());
    if (Joined->GetTag() != Tag) Joined->SetTag(Tag);
    if (Tag != taRemove) ++FMatches;
    CallChildren(Joined);
    return !(FUnique && Adding);
  };
  if (!(FRightMemory->GetEmpty() && FNegatedPattern && Tag == taRemove)) {
    int32_t Hash = 0;
    uint8_t KeyType = dtNone;
    bool ByKey = FShortCut &&
                 ProbeKey(Token->GetFacts(FTokenIndex), FLeftKey, FLeftSubIndex, *FRightMemory, Hash, KeyType);
    FRightMemory->ForEachCandidate(ByKey, Hash, KeyType, *Token, FLeftMatch, Visit);
  }
  if (FNegatedPattern && Token->GetNegatedCount() == 0) {
    ++FMatches;
    IReteToken Passed = Make<TTavoToken>(Parent, Rete()->GetNullFact());
    if (Passed->GetTag() != Tag) Passed->SetTag(Tag);
    CallChildren(Passed);
  } else {
    Token->SetNegatedCount(0);
  }
}

void TJoinNode::RunTestsVaryLeft(const IReteToken& Token) {
  if (!FLeftMemory || FLeftMemory->GetEmpty()) return;
  TTokenAction Tag = Token->GetTag();
  const IFact& Right = Token->GetFact();
  float Strength = Token->GetStrength();
  // One stored left token against the right fact.
  auto Visit = [&](const IReteToken& Left, bool KeyEqual) {
    if (!PairPasses(*Left, *Right, KeyEqual)) return true;
    if (!FNegatedPattern) {
      IReteToken Joined = Join(Left, Right, Strength);
      Joined->SetTag(Tag);
      CallChildren(Joined);
    } else if (Tag == taAdd || Tag == taUpdate) {
      // The left token's match, if it had one, goes.
      IReteToken Blocked = Join(Left, Rete()->GetNullFact(), Strength);
      Blocked->SetTag(taRemove);
      CallChildren(Blocked);
      Left->SetNegatedCount(Left->GetNegatedCount() + 1);
    } else {
      Left->SetNegatedCount(Left->GetNegatedCount() - 1);
      if (Left->GetNegatedCount() == 0) CallChildren(Join(Left, Rete()->GetNullFact(), Strength));
    }
    return true;
  };
  int32_t Hash = 0;
  uint8_t KeyType = dtNone;
  bool ByKey = FShortCut && ProbeKey(Token->GetFacts(0), FRightKey, FRightSubIndex, *FLeftMemory, Hash, KeyType);
  FLeftMemory->ForEachCandidate(ByKey, Hash, KeyType, *Token, FRightMatch, Visit);
}

String TJoinNode::ToString() const {
  String Result = TTestNode::ToString();
  if (FNegatedPattern) Result += u" *NEGATED*";
  Result += u" Left Memory: " + (FLeftMemory ? FLeftMemory->ToString() : String());
  Result += u" Right Memory: " + (FRightMemory ? FRightMemory->ToString() : String());
  return Result;
}

// TPatternMatchTerminalNode

TPatternMatchTerminalNode::~TPatternMatchTerminalNode() { StandDown(); }

bool TPatternMatchTerminalNode::CallNode(const IReteToken& Token, TCallType /*CallType*/) {
  switch (Token->GetTag()) {
    case taClear:
      StandDown();
      break;
    case taAdd:
    case taUpdate:
      AddActivation(Token);
      break;
    case taRemove:
      StandDown(Token);
      break;
  }
  return true;
}

void TPatternMatchTerminalNode::AddActivation(const IReteToken& Token) {
  TTokenAction Tag = Token->GetTag();
  if (Tag == taAdd && FRule) {
    if (FRule->GetOneShot() && FRule->GetHasFired()) return;
    if (!FRule->GetEnabled()) return;
  }
  if (Tag == taUpdate && FInitialized) return;
  auto* Activation = new TActivation(FRule, Token, this, Token->GetStrength());
  Link(Activation);
  if (TReteNetwork* Network = Rete()) Network->Activate(Activation);
}

void TPatternMatchTerminalNode::Link(TActivation* Activation) {
  Activation->FNodePrev = FLast;
  Activation->FNodeNext = nullptr;
  (FLast ? FLast->FNodeNext : FFirst) = Activation;
  FLast = Activation;
  Activation->FNodeSequence = FSequence++;
  Activation->FInNode = true;
  ++FCount;
  if (FIndexed) Index(Activation);
}

void TPatternMatchTerminalNode::Index(TActivation* Activation) {
  uint32_t Chain = Activation->GetToken()->GetChainHash();
  if (TActivation** First = FByChain.Find(Chain)) {
    Activation->FNodeSame = *First;
    *First = Activation;
  } else {
    Activation->FNodeSame = nullptr;
    FByChain.Add(Chain, Activation);
  }
}

void TPatternMatchTerminalNode::Unindex(TActivation* Activation) {
  uint32_t Chain = Activation->GetToken()->GetChainHash();
  TActivation** First = FByChain.Find(Chain);
  if (!First) return;
  if (*First == Activation) {
    if (Activation->FNodeSame)
      *First = Activation->FNodeSame;
    else
      FByChain.Remove(Chain);
  } else {
    for (TActivation* Before = *First; Before->FNodeSame; Before = Before->FNodeSame)
      if (Before->FNodeSame == Activation) {
        Before->FNodeSame = Activation->FNodeSame;
        break;
      }
  }
  Activation->FNodeSame = nullptr;
}

void TPatternMatchTerminalNode::ReplaceActivation(TActivation* Old, TActivation* New) {
  if (!Old->FInNode || Old->GetNode() != this) return;
  if (FIndexed) Unindex(Old);
  New->FNodePrev = Old->FNodePrev;
  New->FNodeNext = Old->FNodeNext;
  (Old->FNodePrev ? Old->FNodePrev->FNodeNext : FFirst) = New;
  (Old->FNodeNext ? Old->FNodeNext->FNodePrev : FLast) = New;
  New->FNodeSequence = Old->FNodeSequence;
  New->FInNode = true;
  Old->FNodePrev = Old->FNodeNext = nullptr;
  Old->FInNode = false;
  if (FIndexed) Index(New);
}

void TPatternMatchTerminalNode::Unlink(TActivation* Activation) {
  (Activation->FNodePrev ? Activation->FNodePrev->FNodeNext : FFirst) = Activation->FNodeNext;
  (Activation->FNodeNext ? Activation->FNodeNext->FNodePrev : FLast) = Activation->FNodePrev;
  Activation->FNodePrev = Activation->FNodeNext = nullptr;
  Activation->FInNode = false;
  --FCount;
  if (!FIndexed) return;
  Unindex(Activation);
  if (FCount == 0) {
    FByChain.Clear();
    FIndexed = false;
  }
}

TActivation* TPatternMatchTerminalNode::GetActivation(int Index) const {
  TActivation* Activation = FFirst;
  while (Activation && Index-- > 0) Activation = Activation->FNodeNext;
  return Activation;
}

void TPatternMatchTerminalNode::Deactivate(int Index) {
  if (TActivation* Activation = GetActivation(Index)) Deactivate(Activation);
}

void TPatternMatchTerminalNode::Deactivate(TActivation* Activation) {
  if (!Activation->FInNode || Activation->GetNode() != this) return;
  Unlink(Activation);
  if (TReteNetwork* Network = Rete())
    Network->Deactivate(Activation);
  else if (!Activation->IsDestroying())
    TReteNetwork::FreeActivation(Activation);
}

void TPatternMatchTerminalNode::RuleFired(TActivation* Activation) {
  if (Activation->FInNode && Activation->GetNode() == this) Unlink(Activation);
  if (TReteNetwork* Network = Rete()) Network->RuleFired(Activation);
}

void TPatternMatchTerminalNode::StandDown() {
  while (FLast) Deactivate(FLast);
}

void TPatternMatchTerminalNode::StandDown(const IReteToken& Token) {
  if (!FFirst) return;
  if (!FIndexed) {
    for (TActivation* Each = FFirst; Each; Each = Each->FNodeNext) Index(Each);
    FIndexed = true;
  }
  TActivation* const* Chain = FByChain.Find(Token->GetChainHash());
  TActivation* First = nullptr;
  for (TActivation* Each = Chain ? *Chain : nullptr; Each; Each = Each->FNodeSame)
    if ((!First || Each->FNodeSequence < First->FNodeSequence) && Each->GetToken()->Equals(Token.Get())) First = Each;
  if (First) Deactivate(First);
}

void TPatternMatchTerminalNode::FastClearActivations() {
  for (TActivation* Activation = FFirst; Activation;) {
    TActivation* Next = Activation->FNodeNext;
    Activation->FNodePrev = Activation->FNodeNext = Activation->FNodeSame = nullptr;
    Activation->FInNode = false;
    Activation->SetNode(nullptr);
    Activation = Next;
  }
  FFirst = FLast = nullptr;
  FCount = 0;
  FByChain.Clear();
  FIndexed = false;
}

String TPatternMatchTerminalNode::ToString() const {
  return TReteNode::ToString() + u" Rule: " + (FRule ? FRule->GetRuleName() : String());
}

}  // namespace tavo
