#include "knowledge/TavoRule.h"

#include <memory>

#include "core/TavoEvaluator.h"
#include "core/TavoVectors.h"
#include "knowledge/TavoFacts.h"

namespace tavo {

namespace {

const String STestPattern = u"test";

using TSubstitutions = std::vector<std::pair<String, String>>;

// A clone of the call whose variables of the list carry their new names,
// through nested calls.
IFunCall SubstFunCall(const IFunCall& Call, const TSubstitutions& Names) {
  IFunCall Result = Call->CloneCall();
  for (int I = 0; I < Result->GetArgumentCount(); ++I) {
    const ITavoValue& Argument = Result->GetArgument(I);
    if (IsVariable(Argument)) {
      String Name = Argument->GetAsString();
      for (const auto& [Old, New] : Names)
        if (Old == Name) {
          Result->SetArgument(I, Make<TTavoValue>(New, Argument->GetDType()));
          break;
        }
    } else if (Argument && Argument->GetDType() == dtFunCall) {
      Result->SetArgument(I, Make<TTavoValue>(SubstFunCall(Argument->GetAsFunCall(), Names)));
    }
  }
  return Result;
}

}  // namespace

// TRulePatternList

int TRulePatternList::Add(TTavoPattern* Pattern) {
  Insert(Count(), Pattern);
  return Count() - 1;
}

void TRulePatternList::Insert(int Index, TTavoPattern* Pattern) {
  FItems.emplace(FItems.begin() + Index, Pattern);
  FRule->BeginUpdate();
  try {
    FRule->AddPattern(Pattern);
  } catch (...) {
    // The pattern stays in the list; the caller drops the rule.
    FRule->EndUpdate();
    throw;
  }
  FRule->EndUpdate();
}

void TRulePatternList::Delete(int Index) {
  FItems.erase(FItems.begin() + Index);
  FRule->Change(nullptr);
}

void TRulePatternList::Clear() {
  if (FItems.empty()) return;
  FItems.clear();
  FRule->Change(nullptr);
}

int TRulePatternList::IndexOf(const IFactTemplate& Template) const {
  for (size_t I = 0; I < FItems.size(); ++I)
    if (FItems[I]->GetFactTemplate() == Template) return int(I);
  return -1;
}

// TRuleActionList

int TRuleActionList::Add(const IFunCall& Action) {
  FItems.push_back(Action);
  FRule->Change(nullptr);
  return Count() - 1;
}

void TRuleActionList::Delete(int Index) {
  FItems.erase(FItems.begin() + Index);
  FRule->Change(nullptr);
}

void TRuleActionList::Clear() {
  if (FItems.empty()) return;
  FItems.clear();
  FRule->Change(nullptr);
}

// TRule

TRule::TRule(TComponent* Owner) : TComponent(Owner), FSalienceValue(Make<TTavoValue>(0, dtInteger)) {
  FEngine = Owner;
  FRuleEngine = dynamic_cast<IRuleEngine*>(Owner);
  FID = FRuleEngine ? FRuleEngine->NewRuleId() : 0;
  FRuleName = u"Rule_" + IntToStr(FID);
}

TRule::TRule(TComponent* Owner, const String& Name, const String& Module) : TRule(Owner) {
  FRuleName = Name;
  FModule = Module;
}

TRule::~TRule() {
  Destroying();
  // The network and the rule list hear of this rule while it is one.
  if (FRuleEngine) FRuleEngine->RemoveRuleFromList(this);
  NotifyFreeing();
  FRuleEngine = nullptr;
}

IRuleEngine* TRule::Engine() const {
  if (!FRuleEngine) throw ETavoException(SUnknownEngine);
  return FRuleEngine;
}

String TRule::GenerateSymbol(const String& Prefix) { return Engine()->GenerateSymbol(Prefix); }

IModule TRule::FocusModule() {
  if (!FRuleEngine) return nullptr;
  return FRuleEngine->FocusRuleModule(FModule.empty() ? StringView(SMainModuleName) : StringView(FModule));
}

void TRule::RestoreModule(const IModule& Module) {
  if (Module && FRuleEngine) FRuleEngine->RestoreModule(Module);
}

void TRule::SetRuleName(const String& Value) {
  for (char16_t C : Value)
    if (String(u" '\"#()[]?:$&;<>").find(C) != String::npos)
      throw ETavoException(Format(SUnexpectedCharacters, Value, String(1, C)));
  if (Value == FRuleName) return;
  String Old = FRuleName;
  FRuleName = Value;
  if (FRuleEngine && !GetComponentState().Contains(csLoading)) {
    IModule Back = FocusModule();
    try {
      if (FRuleEngine->HoldsRuleName(this, Old) && !FRuleEngine->HoldsRuleName(this, Value))
        FRuleEngine->RenameRule(this, Old, Value);
    } catch (...) {
      RestoreModule(Back);
      throw;
    }
    RestoreModule(Back);
  }
}

void TRule::SetEngine(TComponent* Engine) {
  if (Engine == FEngine) return;
  if (FRuleEngine) {
    IModule Back = FocusModule();
    FRuleEngine->RemoveRuleFromList(this);
    RestoreModule(Back);
  }
  FEngine = Engine;
  FRuleEngine = dynamic_cast<IRuleEngine*>(Engine);
  if (FRuleEngine) {
    FID = FRuleEngine->NewRuleId();
    IModule Back = FocusModule();
    FRuleEngine->AddRuleToList(this);
    RestoreModule(Back);
  }
}

void TRule::SetModule(const String& Value) {
  if (Value == FModule) return;
  // Only a rule in a list moves between lists.
  if (!FRuleEngine || !FRuleEngine->HoldsRule(this)) {
    FModule = Value;
    return;
  }
  // Out of the old module's list, into the new one's.
  IModule Back = FocusModule();
  FRuleEngine->RemoveRuleFromList(this);
  RestoreModule(Back);
  FModule = Value;
  Back = FocusModule();
  FRuleEngine->AddRuleToList(this);
  RestoreModule(Back);
}

void TRule::SetEnabled(bool Value) {
  if (Value == FEnabled) return;
  FEnabled = Value;
  Change(this);
}

int TRule::IndexOfBinding(StringView Name) const {
  for (size_t I = 0; I < FBindings.size(); ++I)
    if (FBindings[I]->GetName() == Name) return int(I);
  return -1;
}

TBinding* TRule::GetBindingByName(StringView Name) const {
  int Index = IndexOfBinding(Name);
  return Index < 0 ? nullptr : FBindings[size_t(Index)].get();
}

TBinding* TRule::AddBinding(const String& Name, int FactIndex, const String& Slot, int SubIndex) {
  auto Binding = std::make_unique<TBinding>(Name, FactIndex, Slot, SubIndex);
  for (auto& Held : FBindings)
    if (Held->Equals(Binding.get())) return Held.get();
  FBindings.push_back(std::move(Binding));
  ++FBindingsVersion;
  return FBindings.back().get();
}

void TRule::SetSalience(const ITavoValue& Value) {
  FSalienceValue = Value ? Value : Make<TTavoValue>(0, dtInteger);
  EvaluateSalience();
}

void TRule::SetSalienceInteger(int Value) {
  if (Value == FSalience && FSalienceValue && FSalienceValue->GetDType() == dtInteger) return;
  FSalience = Value;
  FSalienceValue = Make<TTavoValue>(Value, dtInteger);
  Change(this);
}

int TRule::EvaluateSalience() {
  if (!FRuleEngine || !FRuleEngine->GetContext()) return FSalience;
  // A number needs no scope: the common case costs nothing per activation.
  if (FSalienceValue && FSalienceValue->GetDType() == dtInteger) return FSalience = FSalienceValue->GetAsInteger();
  std::unique_ptr<TTavoContext> Child(FRuleEngine->GetContext()->Push());
  ITavoValue Value;
  EvaluateInto(FSalienceValue, Child.get(), Value);
  Child->Pop();
  // The expression stays and the rule is not compiled again: salience is
  // evaluated before each placement on the agenda, which must not rebuild
  // the network under the token on its way. Only writing a number through
  // SetSalienceInteger counts as a change of the rule.
  FSalience = Value ? int(Value->GetAsInteger()) : 0;
  return FSalience;
}

void TRule::Change(TObject* /*Sender*/) {
  if (FUpdateCount >= 1) return;
  if (FRuleEngine) FRuleEngine->RuleChange(this);
  if (OnChange) OnChange(this);
}

void TRule::EndUpdate() {
  if (FUpdateCount > 0 && --FUpdateCount == 0) Change(this);
}

void TRule::AddPattern(TTavoPattern* Pattern) {
  IRuleEngine* RuleEngine = Engine();
  Pattern->SetOwner(this);
  int Index = -1;
  for (int I = 0; I < FPatterns.Count(); ++I)
    if (FPatterns.Get(I) == Pattern) Index = I;
  const IFactTemplate& Template = Pattern->GetFactTemplate();
  bool BackChained = Template && Template->IsBackwardChaining();
  if (FPatterns.Count() == 1 &&
      (Pattern->GetNegatedCount() > 0 || Pattern->GetName() == STestPattern || BackChained))
    if (TTavoPattern* Initial = RuleEngine->GetInitialFactPattern()) {
      FPatterns.Insert(0, Initial->Clone(this));
      Index = 1;
    }
  // A test takes no place in a token.
  int TokenIndex = Index;
  for (int I = 0; I < Index; ++I)
    if (FPatterns.Get(I)->GetName() == STestPattern) --TokenIndex;
  Pattern->BeginUpdate();
  try {
    if (Pattern->GetName().starts_with(SBackChainPrefix) && Pattern->GetBoundName().empty())
      Pattern->SetBoundName(RuleEngine->GenerateSymbol(SFactPrefix));
    if (!Pattern->GetBoundName().empty())
      AddBinding(Pattern->GetBoundName(), TokenIndex, SPatternBinding, NoSubIndex);
    TSubstitutions Private;
    for (int S = 0; S < Pattern->GetSlotCount(); ++S)
      for (int T = 0; T < Pattern->GetSlotTestCount(S); ++T) {
        TTavoPatternMatchTest* Test = Pattern->GetSlotTest(S, T);
        const ITavoValue& Value = Test->GetSlotValue();
        if (!IsVariable(Value)) continue;
        String Name = Value->GetAsString();
        if (GetBindingByName(Name)) continue;
        if (Pattern->IsNegated() && Name.starts_with(SBlankPrefix)) {
          // A blank variable of a negation is its own, not the rule's.
          String Renamed = u"_" + IntToStr(FPatterns.Count()) + u"_" + Name;
          Test->SetSlotValue(Make<TTavoValue>(Renamed, Value->GetDType()));
          Private.emplace_back(Name, Renamed);
          Name = Renamed;
        } else if (Test->GetSlotTestType() == sttNotEquals) {
          throw ETavoException(Format(SNegatedVariable, Name));
        }
        AddBinding(Name, TokenIndex, Pattern->GetSlotName(S), Test->GetMultiSlotSubIndex());
      }
    if (!Private.empty())
      for (int S = 0; S < Pattern->GetSlotCount(); ++S)
        for (int T = 0; T < Pattern->GetSlotTestCount(S); ++T) {
          TTavoPatternMatchTest* Test = Pattern->GetSlotTest(S, T);
          const ITavoValue& Value = Test->GetSlotValue();
          if (Value && Value->GetDType() == dtFunCall)
            Test->SetSlotValue(Make<TTavoValue>(SubstFunCall(Value->GetAsFunCall(), Private)));
        }
    Pattern->FixTests();
  } catch (...) {
    Pattern->EndUpdate();
    throw;
  }
  Pattern->EndUpdate();
  if (Pattern->GetName().starts_with(SBackChainPrefix)) {
    // The goal's companion: no fact like the goal may exist yet, so that
    // the rule's own firing can make the goal go away.
    auto* Companion = new TTavoPattern(this, *Pattern);
    Companion->SetName(Pattern->GetName().substr(StringView(SBackChainPrefix).size()));
    Companion->SetNegatedCount(1);
    Companion->SetBoundName(String());
    for (int S = 0; S < Companion->GetSlotCount(); ++S)
      for (int T = 0; T < Companion->GetSlotTestCount(S); ++T) {
        TTavoPatternMatchTest* Test = Companion->GetSlotTest(S, T);
        const ITavoValue& Value = Test->GetSlotValue();
        if (IsVariable(Value) && Value->GetAsString().starts_with(SBlankPrefix))
          Test->SetSlotValue(Make<TTavoValue>(RuleEngine->GenerateSymbol(SBlankPrefix), Value->GetDType()));
      }
    FPatterns.Insert(Index + 1, Companion);
  }
}

bool TRule::BindingValue(const TBinding& Binding, TContextToken* Token, const IFact* Null, ITavoValue& Value) const {
  int Index = Binding.GetFactIndex();
  if (!Token || Index < 0 || Index >= Token->GetCount()) return false;
  TContextFact* Fact = Token->GetContextFact(Index);
  // A place of a negation holds the null fact, and binds nothing.
  if (!Fact || (Null && Fact == Null->Get())) return false;
  if (Binding.IsPatternBinding()) {
    Value = Make<TTavoValue>(Fact->GetID(), dtFactId);
  } else {
    Value = ReadSlot(*Fact, Binding);
    if (Binding.GetSubIndex() != NoSubIndex && Value && Value->GetDType() == dtList)
      Value = Value->GetAsList()->Get(Binding.GetSubIndex());
  }
  return true;
}

const ITavoValue& TRule::RuleNameValue() {
  if (!FRuleNameValue || FRuleNameValue->GetAsString() != FRuleName)
    FRuleNameValue = Make<TTavoValue>(FRuleName, dtString);
  return FRuleNameValue;
}

void TRule::Prepare(TContextToken* Token, TTavoContext* Context) {
  const IFact* Null = FRuleEngine ? &FRuleEngine->GetNullFact() : nullptr;
  for (auto& Binding : FBindings) {
    if (Binding->GetSlotIndex() == SLocalBinding) continue;
    ITavoValue Value;
    if (!BindingValue(*Binding, Token, Null, Value)) continue;
    Binding->SetValue(Value);
    Context->AddLocalBinding(Binding->GetName(), Value);
  }
  Context->AddLocalBinding(SRuleBinding, RuleNameValue());
}

const TFrameLayout& TRule::FrameLayout() {
  if (FFrameVersion != FBindingsVersion) {
    FFrameLayout.Clear();
    FFramePositions.assign(FBindings.size(), -1);
    FFrameComplete = true;
    for (size_t I = 0; I < FBindings.size(); ++I)
      if (FBindings[I]->GetSlotIndex() != SLocalBinding) {
        FFramePositions[I] = FFrameLayout.Add(FBindings[I]->GetName());
        FFrameComplete = FFrameComplete && FFramePositions[I] >= 0;
      }
    FRuleNamePosition = FFrameLayout.Add(SRuleBinding);
    // A frame too large for its names binds them by name instead.
    FFrameComplete = FFrameComplete && FRuleNamePosition >= 0;
    FFrameVersion = FBindingsVersion;
  }
  return FFrameLayout;
}

void TRule::Fire(TContextToken* Token) {
  IRuleEngine* RuleEngine = Engine();
  TTavoContext* Global = RuleEngine->GetContext();
  // The firing's scope lives on the stack, its variables in a frame by
  // position: a firing allocates no scope and no binding.
  TTavoContext Child(Global, Global->GetEngine());
  Child.OpenFrame(FrameLayout());
  Child.ClearReturnValue();
  if (FFrameComplete) {
    const IFact* Null = FRuleEngine ? &FRuleEngine->GetNullFact() : nullptr;
    for (size_t I = 0; I < FBindings.size(); ++I) {
      int Position = FFramePositions[I];
      if (Position < 0) continue;
      ITavoValue Value;
      if (!BindingValue(*FBindings[I], Token, Null, Value)) continue;
      FBindings[I]->SetValue(Value);
      Child.GetFrameBinding(Position).SetValue(std::move(Value));
    }
    Child.GetFrameBinding(FRuleNamePosition).SetValue(RuleNameValue());
  } else {
    Prepare(Token, &Child);
  }
  FHasFired = true;
  if (OnFire) OnFire(this, &Child);
  // Results of actions are dropped; an exception passes out.
  ITavoValue Result;
  for (int I = 0; I < FActions.Count() && !Child.GetReturning(); ++I) FActions.Get(I)->Execute(&Child, Result);
  if (Child.GetReturning()) {
    if (Child.GetReturnValue().Get() == FCPopFocus.Get()) RuleEngine->PopFocusModule();
    Child.ClearReturnValue();
  }
  Child.Pop();
}

void TRule::SetPatterns(const TRulePatternList& Patterns) {
  BeginUpdate();
  try {
    FBindings.clear();
    ++FBindingsVersion;
    FPatterns.Clear();
    for (int I = 0; I < Patterns.Count(); ++I) {
      // A goal's companion comes back by itself.
      if (I > 0 && Patterns.Get(I - 1)->GetName().starts_with(SBackChainPrefix)) continue;
      FPatterns.Add(Patterns.Get(I)->Clone(this));
    }
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TRule::Assign(const TPersistent* Source) {
  auto* Rule = dynamic_cast<const TRule*>(Source);
  if (!Rule) {
    TComponent::Assign(Source);
    return;
  }
  if (Rule == this) return;
  if (Rule->FEngine != FEngine) throw ETavoException(SUnknownEngine);
  BeginUpdate();
  try {
    SetRuleName(Rule->FRuleName);
    FAutoFocus = Rule->FAutoFocus;
    FEnabled = Rule->FEnabled;
    FComment = Rule->FComment;
    FOneShot = Rule->FOneShot;
    SetPatterns(Rule->FPatterns);
    FActions.Clear();
    for (int I = 0; I < Rule->FActions.Count(); ++I) FActions.Add(Rule->FActions.Get(I)->CloneCall());
    FSalienceValue = Rule->FSalienceValue ? Rule->FSalienceValue->CloneValue() : Make<TTavoValue>(0, dtInteger);
    FSalience = Rule->FSalience;
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

String TRule::ToString() const {
  // Without an engine there is no printer for the patterns' fillers and
  // calls; the name stands for the rule.
  if (FRuleEngine)
    if (String Text = FRuleEngine->GetReasoner()->PrettyPrint(*this); !Text.empty()) return Text;
  return FRuleName;
}

}  // namespace tavo
