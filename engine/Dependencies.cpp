// What rests on a construct when it goes or is redefined. Facts, fact sets
// and rules rest on templates; templates rest on defined types. Dependants
// are written out as text, taken out, the construct is swapped, and the
// text is read again against the new definition.
#include "engine/InferenceEngine.h"

namespace tavo {

namespace {

bool OnTemplate(const IFact& Fact, const IFactTemplate& Template) {
  return Fact && Fact->GetTemplate().Get() == Template.Get();
}

bool PatternOnTemplate(const TRule& Rule, const IFactTemplate& Template) {
  for (int I = 0; I < Rule.GetPatternCount(); ++I)
    if (Rule.GetPattern(I)->GetFactTemplate().Get() == Template.Get()) return true;
  return false;
}

// The first word of a fact's text: its template's name.
String HeadOf(const String& Text) {
  size_t Start = Text.find(u'(');
  if (Start == String::npos) return String();
  size_t End = Start + 1;
  while (End < Text.size() && Text[End] > u' ' && Text[End] != u'(' && Text[End] != u')') ++End;
  return Text.substr(Start + 1, End - Start - 1);
}

bool OfType(const IFactSlot& Slot, const ITavoDefinedType& Type) {
  const ITavoDefinedType& SlotType = Slot->GetExtendedTypeInfo();
  return SlotType && (SlotType.Get() == Type.Get() || SlotType->GetName() == Type->GetName());
}

bool UsesType(const IFactTemplate& Template, const ITavoDefinedType& Type) {
  const TStringList<int>& Names = Template->GetSlotNames();
  for (int I = 0; I < Names.Count(); ++I)
    if (OfType(Template->GetSlot(Names.Get(I)), Type)) return true;
  return false;
}

}  // namespace

bool TInferenceEngine::IsDependent(const ITavoValue& Value, const IFactTemplate& Template) {
  if (!Value) return false;
  switch (Value->GetDType()) {
    case dtFunCall:
      return IsDependent(Value->GetAsFunCall(), Template);
    case dtFact:
      return OnTemplate(Value->GetAsFact(), Template);
    case dtList:
      if (IValueVector List = Value->GetAsList())
        for (int I = 0; I < List->GetValueCount(); ++I)
          if (IsDependent(List->Get(I), Template)) return true;
      return false;
    default:
      return false;
  }
}

bool TInferenceEngine::IsDependent(const IFunCall& Call, const IFactTemplate& Template) {
  if (!Call) return false;
  for (int I = 0; I < Call->GetArgumentCount(); ++I)
    if (IsDependent(Call->GetArgument(I), Template)) return true;
  return false;
}

bool TInferenceEngine::IsDependent(const TRule& Rule, const IFactTemplate& Template) {
  if (PatternOnTemplate(Rule, Template)) return true;
  TRuleActionList& Actions = const_cast<TRule&>(Rule).GetActions();
  for (int I = 0; I < Actions.Count(); ++I)
    if (IsDependent(Actions.Get(I), Template)) return true;
  return false;
}

void TInferenceEngine::RemovePendingFacts(const IFactTemplate& Template) {
  for (int I = FFactsPending->Count() - 1; I >= 0; --I)
    if (OnTemplate(FFactsPending->GetData(I), Template)) FFactsPending->Delete(I);
}

void TInferenceEngine::RemoveFactsOf(const IFactTemplate& Template, TDependants* List) {
  // Kept in the order they stand, taken out from the last.
  std::vector<int> Indexes;
  for (int I = 0; I < FFacts->Count(); ++I)
    if (OnTemplate(FFacts->Get(I), Template)) Indexes.push_back(I);
  if (List)
    for (int Index : Indexes) List->push_back({FFacts->Get(Index)->ToString(), FFacts->Get(Index)});
  for (auto It = Indexes.rbegin(); It != Indexes.rend(); ++It) FFacts->Delete(*It);
}

void TInferenceEngine::ForgetFactSetFacts(const IFactTemplate& Template, bool Removed) {
  for (TFactSet* Set : *FFactSets)
    for (int I = 0; I < Set->Count(); ++I) {
      IFact Parsed = Set->GetParsedFact(I);
      if (Parsed ? !OnTemplate(Parsed, Template) : HeadOf(Set->GetText(I)) != Template->GetTemplateName()) continue;
      // A redefined template reads the entry again when it is next
      // asserted; a removed one leaves an empty entry that asserts nothing.
      if (Removed)
        Set->ClearFact(I);
      else
        Set->SetFact(I, nullptr);
    }
}

void TInferenceEngine::RemoveRules(const std::vector<TRule*>& Rules) {
  for (TRule* Rule : Rules)
    if (FRules->Remove(Rule->GetRuleName(), Rule)) RemoveRule(Rule);
}

// Templates.

void TInferenceEngine::RemoveDependencies(const IModule& Module, const IFactTemplate& Template) {
  RemoveTemplateFrom(Module, Template, true);
}

void TInferenceEngine::RemoveTemplateFrom(const IModule& Module, const IFactTemplate& Template, bool FromTable) {
  TModuleScope Scope(*this, Module.Get());
  RemovePendingFacts(Template);
  RemoveFactsOf(Template, nullptr);
  ForgetFactSetFacts(Template, true);
  // Only rules that match on the template go; one that merely asserts a
  // fact of it stays.
  std::vector<TRule*> Rules;
  for (int I = 0; I < FRules->Count(); ++I)
    if (PatternOnTemplate(*FRules->Get(I), Template)) Rules.push_back(FRules->Get(I));
  RemoveRules(Rules);
  if (FromTable && FFactTemplates->Find(Template->GetTemplateName()) &&
      *FFactTemplates->Find(Template->GetTemplateName()) == Template) {
    // Out of the table without coming back here.
    FFactTemplates->SetEngine(nullptr);
    try {
      FFactTemplates->RemoveConstruct(Template->GetTemplateName());
    } catch (...) {
      FFactTemplates->SetEngine(this);
      throw;
    }
    FFactTemplates->SetEngine(this);
  }
}

void TInferenceEngine::RemoveDependencies(const IFactTemplate& Template) { RemoveTemplateDependants(Template, nullptr); }

void TInferenceEngine::RemoveTemplateDependants(const IFactTemplate& Template, TModule* Removing) {
  std::vector<IModule> Modules;
  for (int I = 0; I < Template->GetImportModuleCount(); ++I) Modules.push_back(Template->GetImportModule(I));
  // The module whose own table is taking the template out keeps it there
  // for the table to finish.
  for (const IModule& Module : Modules) RemoveTemplateFrom(Module, Template, Module.Get() != Removing);
}

void TInferenceEngine::RemoveDependencies(const IFactTemplate& Template, TDependants& List) {
  RemovePendingFacts(Template);
  RemoveFactsOf(Template, &List);
  ForgetFactSetFacts(Template, false);
  // Rules that assert a fact of the template in an action are read again
  // too: their facts are read by the template.
  std::vector<TRule*> Rules;
  for (int I = 0; I < FRules->Count(); ++I)
    if (IsDependent(*FRules->Get(I), Template)) {
      Rules.push_back(FRules->Get(I));
      List.push_back({FRules->Get(I)->ToString(), nullptr});
    }
  RemoveRules(Rules);
}

void TInferenceEngine::RemoveDependencies() {
  for (const IFactTemplate& Template : FFactTemplates->InOrder()) {
    if (Template->GetModule() != FCurrentModule) {
      RemoveTemplateFrom(FCurrentModule, Template, false);
      continue;
    }
    // The module's own template: its dependants here, then the modules
    // that imported it lose it with theirs.
    RemoveTemplateFrom(FCurrentModule, Template, false);
    std::vector<IModule> Importers;
    for (int I = 0; I < Template->GetImportModuleCount(); ++I)
      if (Template->GetImportModule(I) != FCurrentModule) Importers.push_back(Template->GetImportModule(I));
    for (const IModule& Module : Importers) RemoveTemplateFrom(Module, Template, true);
  }
}

void TInferenceEngine::ReplaceTemplate(const IFactTemplate& Old, const IFactTemplate& New) {
  if (Old->GetTemplateName() != New->GetTemplateName()) {
    // Another name: what rested on the old template goes, here and in
    // every module that shared it.
    RemoveTemplateFrom(FCurrentModule, Old, false);
    RemoveTemplateDependants(Old, nullptr);
    return;
  }
  TDependants List;
  RemoveDependencies(Old, List);
  // Every other module that shares the template takes the new one, and
  // rebuilds its own dependants meanwhile.
  while (Old->GetImportModuleCount() > 0) {
    const IModule Module = Old->GetImportModule(0);
    const int Before = Old->GetImportModuleCount();
    {
      TModuleScope Scope(*this, Module.Get());
      FFactTemplates->Replace(Old, New);
    }
    // A module that would not let go ends the walk rather than loop.
    if (Old->GetImportModuleCount() >= Before) Old->RemoveImportModule(Module);
  }
  // The reserved template of the initial fact keeps the rules' initial
  // pattern on the template that now stands.
  if (FInitialFactPattern && FInitialFactPattern->GetFactTemplate().Get() == Old.Get()) {
    FCurrentModule->RenewInitialFactPattern(New);
    FCurrentModule->ImportEngine();
  } else if (FNullFact && FNullFact->GetTemplate().Get() == Old.Get()) {
    FNullFact = New->NewFact();
    FCurrentModule->ImportEngine();
  }
  // Fact-set entries are read against the new template now, so that a
  // reset does not meet one that no longer reads: such an entry is
  // emptied, as if its template had gone.
  for (TFactSet* Set : *FFactSets)
    for (int I = 0; I < Set->Count(); ++I)
      if (!Set->GetParsedFact(I) && HeadOf(Set->GetText(I)) == New->GetTemplateName()) try {
          Set->GetFact(I);
        } catch (const EMekException&) {
          Set->ClearFact(I);
        }
  UpdateDependencies(List);
}

void TInferenceEngine::UpdateDependencies(TDependants& List) {
  for (const auto& [Text, Fact] : List) {
    if (Fact)
      UpdateDependentFact(Fact, ParseFact(Text));
    else
      Parse(Text);
  }
}

void TInferenceEngine::UpdateDependentFact(const IFact& /*Old*/, const IFact& New) {
  ResolveFact(*FGlobalContext, New);
  Assert(New, false);
}

// Defined types.

void TInferenceEngine::RemoveDependencies(const IModule& Module, const ITavoDefinedType& Type) {
  TModuleScope Scope(*this, Module.Get());
  for (const IFactTemplate& Template : FFactTemplates->InOrder(true))
    if (UsesType(Template, Type)) RemoveDependencies(Template);
}

void TInferenceEngine::RemoveDependencies(const ITavoDefinedType& Type) {
  std::vector<IModule> Modules;
  for (int I = 0; I < Type->GetImportModuleCount(); ++I) Modules.push_back(Type->GetImportModule(I));
  for (const IModule& Module : Modules) RemoveDependencies(Module, Type);
}

void TInferenceEngine::RemoveTypeDependencies() {
  for (const ITavoDefinedType& Type : FDefinedTypes->InOrder()) RemoveDependencies(FCurrentModule, Type);
}

void TInferenceEngine::ReplaceDefinedType(const ITavoDefinedType& Old, const ITavoDefinedType& New) {
  if (Old->GetName() != New->GetName()) {
    RemoveDependencies(Old);
    return;
  }
  ReplaceTypesInFactTemplates(Old, New);
  while (Old->GetImportModuleCount() > 0) {
    const IModule Module = Old->GetImportModule(0);
    const int Before = Old->GetImportModuleCount();
    {
      TModuleScope Scope(*this, Module.Get());
      FDefinedTypes->Replace(Old, New);
    }
    if (Old->GetImportModuleCount() >= Before) Old->RemoveImportModule(Module);
  }
}

void TInferenceEngine::ReplaceTypesInFactTemplates(const ITavoDefinedType& Old, const ITavoDefinedType& New) {
  for (const IFactTemplate& Template : FFactTemplates->InOrder(true)) {
    if (!UsesType(Template, Old)) continue;
    // A copy with the new type on those slots takes the template's place,
    // and its facts and rules are rebuilt on it.
    IFactTemplate Copy = Template->Clone(Template->GetAOwner());
    const TStringList<int>& Names = Copy->GetSlotNames();
    for (int I = 0; I < Names.Count(); ++I)
      if (const IFactSlot& Slot = Copy->GetSlot(Names.Get(I)); OfType(Slot, Old)) Slot->SetExtendedTypeInfo(New);
    FFactTemplates->Replace(Template, Copy);
  }
}

}  // namespace tavo
