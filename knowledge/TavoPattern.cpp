#include "knowledge/TavoPattern.h"

#include "core/TavoEvaluator.h"
#include "knowledge/TavoRule.h"

namespace tavo {

// TTavoSlotTest

void TTavoSlotTest::Assign(const TPersistent* Source) {
  if (auto* Test = dynamic_cast<const TTavoSlotTest*>(Source)) {
    FSlotTestType = Test->FSlotTestType;
    return;
  }
  TPersistent::Assign(Source);
}

bool TTavoSlotTest::Equals(const TTavoSlotTest* Other) const {
  return Other && &Other->ClassType() == &ClassType() && Other->FSlotTestType == FSlotTestType;
}

String TTavoSlotTest::ToString() const { return FSlotTestType == sttEquals ? u"=" : u"<>"; }

// TTavoPatternMatchTest

void TTavoPatternMatchTest::SetSlotValue(const ITavoValue& Value) {
  FSlotValue = Value ? Value->CloneValue() : ITavoValue();
  if (FPattern) FPattern->TestChange(this);
}

void TTavoPatternMatchTest::SetMultiSlotSubIndex(int Value) {
  if (Value == FMultiSlotSubIndex) return;
  FMultiSlotSubIndex = Value;
  if (FPattern) FPattern->TestChange(this);
}

void TTavoPatternMatchTest::SetConjunction(bool Value) {
  if (Value == FConjunction) return;
  FConjunction = Value;
  if (FPattern) FPattern->TestConjunctionChange(this);
}

bool TTavoPatternMatchTest::PerformTest(TTavoContext* Context) {
  ITavoValue Scratch;
  bool IsFalse = Evaluate(FSlotValue, Context, Scratch)->Equals(FCFalse);
  return GetSlotTestType() == sttEquals ? !IsFalse : IsFalse;
}

TTavoSlotTest* TTavoPatternMatchTest::Clone() const {
  auto* Result = new TTavoPatternMatchTest(nullptr);
  Result->Assign(this);
  return Result;
}

void TTavoPatternMatchTest::Assign(const TPersistent* Source) {
  TTavoSlotTest::Assign(Source);
  if (auto* Test = dynamic_cast<const TTavoPatternMatchTest*>(Source)) {
    FSlotValue = Test->FSlotValue ? Test->FSlotValue->CloneValue() : ITavoValue();
    FMultiSlotSubIndex = Test->FMultiSlotSubIndex;
    FConjunction = Test->FConjunction;
  }
}

bool TTavoPatternMatchTest::Equals(const TTavoSlotTest* Other) const {
  if (!TTavoSlotTest::Equals(Other)) return false;
  auto* Test = static_cast<const TTavoPatternMatchTest*>(Other);
  bool SameValue = FSlotValue ? FSlotValue->Equals(Test->FSlotValue) : !Test->FSlotValue;
  return SameValue && FMultiSlotSubIndex == Test->FMultiSlotSubIndex && FConjunction == Test->FConjunction;
}

bool TTavoPatternMatchTest::Equals(bool Negated, bool Conjunction, int SubIndex, const ITavoValue& Value) const {
  return Conjunction == FConjunction && Equals(Negated, SubIndex, Value);
}

bool TTavoPatternMatchTest::Equals(bool Negated, int SubIndex, const ITavoValue& Value) const {
  bool SameValue = FSlotValue ? FSlotValue->Equals(Value) : !Value;
  return (GetSlotTestType() == sttNotEquals) == Negated && SubIndex == FMultiSlotSubIndex && SameValue;
}

String TTavoPatternMatchTest::ToString() const {
  return TTavoSlotTest::ToString() + u" SubIdx: " + IntToStr(FMultiSlotSubIndex) + u" Slot: " +
         (FSlotValue ? FSlotValue->ToString() : String());
}

// TSlotTests

void TSlotTests::Add(TTavoPatternMatchTest* Test) {
  Test->SetPattern(FPattern);
  FItems.emplace_back(Test);
  if (FPattern) FPattern->TestNotification(Test, true);
}

TTavoPatternMatchTest* TSlotTests::Extract(int Index) {
  TTavoPatternMatchTest* Test = FItems[size_t(Index)].release();
  FItems.erase(FItems.begin() + Index);
  if (FPattern) FPattern->TestNotification(Test, false);
  Test->SetPattern(nullptr);
  return Test;
}

void TSlotTests::Delete(int Index) { delete Extract(Index); }

void TSlotTests::Clear() {
  while (!FItems.empty()) Delete(Count() - 1);
}

// TTavoPattern

TTavoPattern::TTavoPattern(TComponent* Owner, const String& Name, const IFactTemplate& Template, int NegatedCount)
    : FFactTemplate(Template), FNegatedCount(NegatedCount), FName(Name), FOwner(Owner) {
  if (Template)
    for (int I = 0; I < Template->GetSlotCount(); ++I) EnsureSlot(Template->GetLayout()->GetSlot(I)->GetName());
}

TTavoPattern::TTavoPattern(TComponent* Owner, const TTavoPattern& Source)
    : TTavoPattern(Owner, Source.FName, Source.FFactTemplate, Source.FNegatedCount) {
  Assign(&Source);
}

TTavoPattern::~TTavoPattern() {
  // The tests go without telling anyone.
  for (auto& Entry : FTests)
    if (Entry.Tests) Entry.Tests->FPattern = nullptr;
}

int TTavoPattern::IndexOfSlotName(StringView Name) const {
  for (size_t I = 0; I < FTests.size(); ++I)
    if (SameText(FTests[I].Name, Name)) return int(I);
  return -1;
}

int TTavoPattern::EnsureSlot(const String& Name) {
  int Index = IndexOfSlotName(Name);
  if (Index >= 0) return Index;
  // Kept in name order, by the text compared without case, so that every
  // network walks the slots alike.
  size_t At = 0;
  while (At < FTests.size() && CompareText(FTests[At].Name, Name) <= 0) ++At;
  TSlotEntry Entry;
  Entry.Name = Name;
  FTests.insert(FTests.begin() + ptrdiff_t(At), std::move(Entry));
  return int(At);
}

int TTavoPattern::GetSlotTestCount(int Index) const {
  const auto& Tests = FTests[size_t(Index)].Tests;
  return Tests ? Tests->Count() : 0;
}

TTavoPatternMatchTest* TTavoPattern::GetSlotTest(int Index, int TestIndex) const {
  return FTests[size_t(Index)].Tests->Get(TestIndex);
}

void TTavoPattern::SetSlotLength(int Index, int Length) {
  if (FTests[size_t(Index)].Length == Length) return;
  FTests[size_t(Index)].Length = Length;
  Change();
}

TTavoPatternMatchTest* TTavoPattern::CreatePatternMatchTest(TTavoPattern* Pattern, TSlotTestType Type, int SubIndex,
                                                            const ITavoValue& Value) {
  auto* Test = new TTavoPatternMatchTest(nullptr);
  Test->SetSlotTestType(Type);
  Test->SetMultiSlotSubIndex(SubIndex);
  Test->SetSlotValue(Value);
  Test->SetPattern(Pattern);
  return Test;
}

void TTavoPattern::AddTest(const String& SlotName, TTavoPatternMatchTest* Test) {
  std::unique_ptr<TTavoPatternMatchTest> Owned(Test);
  if (!FFactTemplate) throw ETavoException(SNoTemplate);
  if (FFactTemplate->IndexOfSlot(SlotName) < 0) throw ETavoException(Format(SInvalidSlotName, SlotName));
  int Index = EnsureSlot(SlotName);
  auto& Tests = FTests[size_t(Index)].Tests;
  if (!Tests) Tests = std::make_unique<TSlotTests>(this);
  Tests->Add(Owned.release());
}

TTavoPatternMatchTest* TTavoPattern::AddTest(const String& SlotName, const ITavoValue& Value, int SubIndex,
                                             bool Conjunction, bool Negated) {
  TTavoPatternMatchTest* Test = CreatePatternMatchTest(nullptr, Negated ? sttNotEquals : sttEquals, SubIndex, Value);
  Test->SetConjunction(Conjunction);
  AddTest(SlotName, Test);
  return Test;
}

void TTavoPattern::TestNotification(TTavoPatternMatchTest* Test, bool Added) {
  int Step = Added ? 1 : -1;
  FNumSlotTests += Step;
  if (!Test->GetConjunction()) FNumORConstraints += Step;
  Change();
}

void TTavoPattern::TestChange(TTavoPatternMatchTest* /*Test*/) { Change(); }

void TTavoPattern::TestConjunctionChange(TTavoPatternMatchTest* Test) {
  FNumORConstraints += Test->GetConjunction() ? -1 : 1;
  Change();
}

void TTavoPattern::Change() {
  if (FUpdateCount > 0) return;
  if (auto* Rule = dynamic_cast<TRule*>(FOwner)) Rule->Change(this);
  if (OnChange) OnChange(this);
}

void TTavoPattern::EndUpdate() {
  if (FUpdateCount > 0 && --FUpdateCount == 0) Change();
}

void TTavoPattern::SetUnique(bool Value) {
  if (Value == FUnique) return;
  FUnique = Value;
  Change();
}

void TTavoPattern::SetExplicit(bool Value) {
  if (Value == FExplicit) return;
  FExplicit = Value;
  Change();
}

void TTavoPattern::SetNegatedCount(int Value) {
  if (Value == FNegatedCount) return;
  FNegatedCount = Value;
  Change();
}

void TTavoPattern::SetBoundName(const String& Value) {
  if (Value == FBoundName) return;
  if (IsNegated() && FName == u"test") throw ETavoException(SInvalidPatternBinding);
  FBoundName = Value;
  Change();
}

void TTavoPattern::SetName(const String& Value) {
  if (Value == FName) return;
  FName = Value;
  Change();
}

void TTavoPattern::SetTests(const TTavoPattern& Source) {
  BeginUpdate();
  for (auto& Entry : FTests)
    if (Entry.Tests) Entry.Tests->Clear();
  FTests.clear();
  for (const auto& Entry : Source.FTests) {
    int Index = EnsureSlot(Entry.Name);
    FTests[size_t(Index)].Length = Entry.Length;
    if (!Entry.Tests) continue;
    for (const auto& Test : Entry.Tests->FItems) {
      auto& Tests = FTests[size_t(Index)].Tests;
      if (!Tests) Tests = std::make_unique<TSlotTests>(this);
      Tests->Add(static_cast<TTavoPatternMatchTest*>(Test->Clone()));
    }
  }
  EndUpdate();
}

void TTavoPattern::Assign(const TPersistent* Source) {
  auto* Pattern = dynamic_cast<const TTavoPattern*>(Source);
  if (!Pattern) {
    TPersistent::Assign(Source);
    return;
  }
  if (Pattern == this) return;
  BeginUpdate();
  FComment = Pattern->FComment;
  FBoundName = Pattern->FBoundName;
  FUnique = Pattern->FUnique;
  FExplicit = Pattern->FExplicit;
  FName = Pattern->FName;
  FFactTemplate = Pattern->FFactTemplate;
  FNegatedCount = Pattern->FNegatedCount;
  SetTests(*Pattern);
  EndUpdate();
}

TTavoPattern* TTavoPattern::Clone(TComponent* Owner) const { return new TTavoPattern(Owner, *this); }

String TTavoPattern::ToString() const {
  // The engine that owns the template prints the pattern; without one a
  // pattern shows its head, its slots and its tests.
  if (FFactTemplate)
    if (IReasoner* Reasoner = FFactTemplate->GetReasoner())
      if (String Text = Reasoner->PrettyPrint(*this); !Text.empty()) return Text;
  String Result = u"(";
  if (!FBoundName.empty()) Result = u"?" + FBoundName + u" <- (";
  Result += FName;
  for (const auto& Entry : FTests) {
    if (!Entry.Tests || Entry.Tests->Count() == 0) continue;
    Result += u" (" + Entry.Name;
    for (const auto& Test : Entry.Tests->FItems) Result += u" " + Test->ToString();
    Result += u")";
  }
  return Result + u")";
}

// Rewriting "|"

IFunCall ConvertToFunCall(IReasoner* Reasoner, const TTavoPatternMatchTest& Test, const ITavoValue& Variable) {
  const ITavoValue& Value = Test.GetSlotValue();
  bool Negated = Test.GetSlotTestType() == sttNotEquals;
  if (Value && Value->GetDType() == dtFunCall) {
    if (!Negated) return Value->GetAsFunCall();
    IFunCall Not = Make<TFunctionCall>(Reasoner, u"not");
    Not->AddArgument(Value);
    return Not;
  }
  IFunCall Call = Make<TFunctionCall>(Reasoner, Negated ? u"neq" : u"eq");
  Call->AddArgument(Value);
  Call->AddArgument(Variable);
  return Call;
}

void TTavoPattern::FixTests() {
  if (FNumORConstraints <= 0) return;
  auto* Rule = dynamic_cast<TRule*>(FOwner);
  IReasoner* Reasoner = Rule ? Rule->GetReasoner() : nullptr;
  BeginUpdate();
  try {
    for (size_t SlotIndex = 0; SlotIndex < FTests.size(); ++SlotIndex) {
      TSlotEntry& Entry = FTests[SlotIndex];
      if (!Entry.Tests || Entry.Tests->Count() == 0) continue;
      auto& Old = Entry.Tests->FItems;
      std::vector<std::unique_ptr<TTavoPatternMatchTest>> New;
      auto Clone = [](const std::unique_ptr<TTavoPatternMatchTest>& Test) {
        return std::unique_ptr<TTavoPatternMatchTest>(static_cast<TTavoPatternMatchTest*>(Test->Clone()));
      };
      size_t J = 0;
      int S = Old[0]->GetMultiSlotSubIndex();
      while (J < Old.size()) {
        size_t RunEnd = J;
        bool HasOr = false;
        while (RunEnd < Old.size() && Old[RunEnd]->GetMultiSlotSubIndex() == S) {
          HasOr = HasOr || !Old[RunEnd]->GetConjunction();
          ++RunEnd;
        }
        if (!HasOr) {
          for (; J < RunEnd; ++J) New.push_back(Clone(Old[J]));
        } else {
          ITavoValue Variable;
          if (Old[J]->GetSlotValue() && Old[J]->GetSlotValue()->GetDType() == dtVariable) {
            Variable = Old[J]->GetSlotValue();
            ++J;
          } else {
            if (!Rule) throw ETavoException(SRuleMissingForPattern);
            String Name = Rule->GenerateSymbol(SBlankPrefix);
            Variable = Make<TTavoValue>(Name, dtVariable);
            Rule->AddBinding(Name, Rule->GetPatternCount() - 1, Entry.Name, S);
          }
          auto Equal = std::make_unique<TTavoPatternMatchTest>(nullptr);
          Equal->SetMultiSlotSubIndex(S);
          Equal->SetSlotValue(Variable);
          New.push_back(std::move(Equal));
          IFunCall Or = Make<TFunctionCall>(Reasoner, u"or");
          while (J < RunEnd) {
            size_t C = 1;
            while (J + C < RunEnd && Old[J + C]->GetConjunction()) ++C;
            if (C == 1) {
              Or->AddArgument(ConvertToFunCall(Reasoner, *Old[J], Variable));
            } else {
              // The run of c tests joined by "&" takes one test more than
              // it counted; this is how the rewriting has always read.
              IFunCall And = Make<TFunctionCall>(Reasoner, u"and");
              for (size_t K = J; K <= J + C && K < RunEnd; ++K)
                And->AddArgument(ConvertToFunCall(Reasoner, *Old[K], Variable));
              Or->AddArgument(And);
            }
            J += C;
          }
          auto Test = std::make_unique<TTavoPatternMatchTest>(nullptr);
          Test->SetMultiSlotSubIndex(S);
          Test->SetSlotValue(Make<TTavoValue>(Or));
          New.push_back(std::move(Test));
        }
        if (J < Old.size()) S = Old[J]->GetMultiSlotSubIndex();
      }
      Entry.Tests->Clear();
      for (auto& Test : New) Entry.Tests->Add(Test.release());
    }
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

}  // namespace tavo
