#include "engine/EngineCollections.h"

#include <algorithm>

#include "engine/InferenceEngine.h"

namespace tavo {

namespace {

// What Print gives with the module qualifiers of Engine's printers off:
// text copied into another module names its constructs bare.
template <class F>
String BareText(TInferenceEngine* Engine, F&& Print) {
  if (!Engine) return Print();
  const bool Former = Engine->GetPrintModuleQualifiers();
  Engine->SetPrintModuleQualifiers(false);
  try {
    String Text = Print();
    Engine->SetPrintModuleQualifiers(Former);
    return Text;
  } catch (...) {
    Engine->SetPrintModuleQualifiers(Former);
    throw;
  }
}

}  // namespace

namespace {

const String& NameOf(const TFactTemplate& Template) { return Template.GetTemplateName(); }
const String& NameOf(const TTavoDefinedType& Type) { return Type.GetName(); }

}  // namespace

// TConstructTable

template <class T>
void TConstructTable<T>::Store(const String& Key, const TItemRef& Value) {
  TInherited::DoAdd(Key, Value);
  FOrder.push_back(Key);
  Value->AddImportModule(IModule(FModule));
  if (IsForeign(*Value)) ++FImportCount;
}

template <class T>
void TConstructTable<T>::Unstore(const String& Key, const TItemRef& Value) {
  TInherited::DoRemove(Key);
  auto It = std::find(FOrder.begin(), FOrder.end(), Key);
  if (It != FOrder.end()) FOrder.erase(It);
  Value->RemoveImportModule(IModule(FModule));
  if (IsForeign(*Value)) --FImportCount;
}

template <class T>
void TConstructTable<T>::DoAdd(const String& Key, const TItemRef& Value) {
  if (this->ContainsKey(Key)) {
    DoSetValue(Key, Value);
    return;
  }
  Prepare(*Value);
  Store(Key, Value);
  Added(Value);
}

template <class T>
void TConstructTable<T>::DoSetValue(const String& Key, const TItemRef& Value) {
  TItemRef Old;
  if (!this->TryGetValue(Key, Old)) {
    DoAdd(Key, Value);
    return;
  }
  if (Old == Value) return;
  Prepare(*Value);
  switch (FEngine ? FEngine->GetDuplicateConstructs() : dcOverwrite) {
    case dcOverwrite:
      Replace(Old, Value);
      break;
    case dcIgnore:
      break;
    case dcError:
      throw ETavoException(Format(DuplicateMessage(), Key));
  }
}

template <class T>
bool TConstructTable<T>::DoRemove(const String& Key) {
  return bool(RemoveConstruct(Key));
}

template <class T>
typename TConstructTable<T>::TItemRef TConstructTable<T>::Replace(const TItemRef& Old, const TItemRef& New) {
  TItemRef Keep = Old;
  Prepare(*New);
  // The old construct is not removed but replaced: Replaced, not Removing,
  // tells the engine, which moves what rested on it to the new one.
  if (Keep) Unstore(NameOf(*Keep), Keep);
  Store(NameOf(*New), New);
  if (Keep) Replaced(Keep, New);
  return New;
}

template <class T>
void TConstructTable<T>::Rekey(const String& OldName, const String& NewName) {
  TItemRef Construct;
  if (!this->TryGetValue(OldName, Construct)) return;
  TInherited::DoRemove(OldName);
  TInherited::DoAdd(NewName, Construct);
  std::replace(FOrder.begin(), FOrder.end(), OldName, NewName);
}

template <class T>
typename TConstructTable<T>::TItemRef TConstructTable<T>::RemoveConstruct(const String& Name) {
  TItemRef Construct;
  if (!this->TryGetValue(Name, Construct)) return nullptr;
  Removing(Construct);
  Unstore(Name, Construct);
  return Construct;
}

template <class T>
void TConstructTable<T>::Clear() {
  if (this->Count() == 0) return;
  Cleared(true);
  for (const auto& Item : *this) Item.Value->RemoveImportModule(IModule(FModule));
  TInherited::Clear();
  FOrder.clear();
  FImportCount = 0;
  Cleared(false);
}

template <class T>
void TConstructTable<T>::Clear(TConstructScope Scope) {
  std::vector<String> Names;
  for (const auto& Item : *this)
    if (IsForeign(*Item.Value) == (Scope == csImported)) Names.push_back(Item.Key);
  for (const String& Name : Names) {
    TItemRef Construct = this->GetItem(Name);
    Unstore(Name, Construct);
  }
}

template <class T>
std::vector<typename TConstructTable<T>::TItemRef> TConstructTable<T>::InOrder(bool LocalsOnly) const {
  std::vector<TItemRef> Result;
  Result.reserve(FOrder.size());
  for (const String& Name : FOrder) {
    const TItemRef& Construct = this->GetItem(Name);
    if (!LocalsOnly || !IsForeign(*Construct)) Result.push_back(Construct);
  }
  return Result;
}

template <class T>
String TConstructTable<T>::ToString() const {
  String Result;
  for (const TItemRef& Construct : InOrder()) {
    if (!Result.empty()) Result += u"\r\n";
    Result += Construct->ToString();
  }
  return Result;
}

template <class T>
String TConstructTable<T>::LocalsToString() const {
  String Result;
  for (const TItemRef& Construct : InOrder(true)) {
    if (!Result.empty()) Result += u"\r\n";
    Result += Construct->ToString();
  }
  return Result;
}

template <class T>
void TConstructTable<T>::Assign(const TPersistent* Source) {
  if (auto* Table = dynamic_cast<const TConstructTable<T>*>(Source)) {
    CopyFrom(*Table, false);
    return;
  }
  TInherited::Assign(Source);
}

template <class T>
void TConstructTable<T>::AssignLocal(const TConstructTable& Source) {
  CopyFrom(Source, true);
}

template <class T>
void TConstructTable<T>::CopyFrom(const TConstructTable& Source, bool LocalsOnly) {
  if (&Source == this) return;
  if (!FEngine) throw ETavoException(SUnknownEngine);
  const String Text = BareText(Source.FEngine, [&] {
    String Result;
    for (const TItemRef& Construct : Source.InOrder(LocalsOnly)) Result += Construct->ToString() + u"\r\n";
    return Result;
  });
  if (LocalsOnly)
    Clear(csLocal);
  else
    Clear();
  FEngine->ParseInModule(FModule, Text);
}

template class TConstructTable<TTavoDefinedType>;
template class TConstructTable<TFactTemplate>;

// TTavoDefinedTypes

void TTavoDefinedTypes::Prepare(TTavoDefinedType& Type) {
  if (FEngine && Type.GetReasoner() != FEngine) Type.SetReasoner(FEngine);
  if (const IFuzzyVariable& Variable = Type.GetFuzzyType(); Variable && FEngine) {
    Variable->SetFuzzyEqualsThreshold(FEngine->GetFuzzyEqualsThreshold());
    if (FEngine->GetFuzzyAutoTerms()) FEngine->AddDefaultFuzzyTerms(*Variable);
  }
  if (!Type.GetModule()) Type.SetModule(IModule(FModule));
}

void TTavoDefinedTypes::Added(const ITavoDefinedType& Type) {
  if (FEngine) FEngine->AddDefinedType(Type);
}

void TTavoDefinedTypes::Removing(const ITavoDefinedType& Type) {
  if (!FEngine) return;
  // The templates that use the type go with it, with what rests on them.
  FEngine->RemoveDependencies(IModule(FModule), Type);
  FEngine->RemoveDefinedType(Type);
}

void TTavoDefinedTypes::Replaced(const ITavoDefinedType& Old, const ITavoDefinedType& New) {
  if (!FEngine) return;
  // Hosts hear of the old type's going, as they always did.
  FEngine->RemoveDefinedType(Old);
  TModuleScope Scope(*FEngine, FModule);
  FEngine->ReplaceDefinedType(Old, New);
}

void TTavoDefinedTypes::Cleared(bool BeforeEmptying) {
  if (!FEngine) return;
  if (BeforeEmptying) {
    TModuleScope Scope(*FEngine, FModule);
    FEngine->RemoveTypeDependencies();
  } else {
    FEngine->ClearDefinedTypes();
  }
}

ITavoDefinedType TTavoDefinedTypes::FindUnsharedType(const IFactTemplate& Template) const {
  const TStringList<int>& Names = Template->GetSlotNames();
  for (int I = 0; I < Names.Count(); ++I) {
    const ITavoDefinedType& Type = Template->GetSlot(Names.Get(I))->GetExtendedTypeInfo();
    if (Type && !ContainsKey(Type->GetName())) return Type;
  }
  return nullptr;
}

// TFactTemplates

void TFactTemplates::Prepare(TFactTemplate& Template) {
  if (Template.GetSlotCount() == 0) Template.AddMultiSlot(SDefaultSlotName, FCNilList->CloneValue());
  if (FEngine && FEngine->GetModules().Count() > 1) {
    if (ITavoDefinedType Type = FEngine->GetDefinedTypes()->FindUnsharedType(IFactTemplate(&Template)))
      throw ETavoException(Format(SUnsharedFactTemplateType, Template.GetTemplateName(), Type->GetName()));
  }
  if (!Template.GetModule()) Template.SetModule(IModule(FModule));
}

void TFactTemplates::Added(const IFactTemplate& Template) {
  if (FEngine) FEngine->AddFactTemplate(Template);
}

void TFactTemplates::Removing(const IFactTemplate& Template) {
  if (!FEngine) return;
  // Its facts, fact-set entries and rules go, in every module that holds it.
  FEngine->RemoveTemplateDependants(Template, FModule);
  FEngine->RemoveFactTemplate(Template);
}

void TFactTemplates::Replaced(const IFactTemplate& Old, const IFactTemplate& New) {
  if (!FEngine) return;
  // Hosts hear of the old template's going, as they always did.
  FEngine->RemoveFactTemplate(Old);
  TModuleScope Scope(*FEngine, FModule);
  FEngine->ReplaceTemplate(Old, New);
}

void TFactTemplates::Cleared(bool BeforeEmptying) {
  if (!FEngine) return;
  if (BeforeEmptying) {
    TModuleScope Scope(*FEngine, FModule);
    FEngine->RemoveDependencies();
  } else {
    FEngine->ClearFactTemplates();
  }
}

// TUserFunctions

namespace {

bool IsInterpreted(const IUserFunction& Function) {
  return dynamic_cast<TInterpretedFunction*>(Function.Get()) != nullptr;
}

}  // namespace

TUserFunctions::~TUserFunctions() {
  FEngine = nullptr;
  Clear();
}

void TUserFunctions::CheckName(const String& Key, const IUserFunction& Function) const {
  if (Key != Function->GetFunctionName())
    throw ETavoException(Format(SWrongFunctionName, Key, Function->GetFunctionName()));
}

void TUserFunctions::DoAdd(const String& Key, const IUserFunction& Function) {
  if (ContainsKey(Key)) {
    DoSetValue(Key, Function);
    return;
  }
  CheckName(Key, Function);
  TInherited::DoAdd(Key, Function);
  if (IsInterpreted(Function)) {
    ++FNumInterpreted;
    FInterpretedNames.push_back(Key);
  }
  if (FEngine) {
    Function->AddReasoner(FEngine);
    FEngine->FunctionAdded(Function);
  }
}

void TUserFunctions::DoSetValue(const String& Key, const IUserFunction& Function) {
  IUserFunction Old;
  if (!TryGetValue(Key, Old)) {
    DoAdd(Key, Function);
    return;
  }
  CheckName(Key, Function);
  if (Old == Function) return;
  switch (FEngine ? FEngine->GetDuplicateConstructs() : dcOverwrite) {
    case dcOverwrite:
      RemoveFunction(Key);
      DoAdd(Key, Function);
      break;
    case dcIgnore:
      break;
    case dcError:
      throw ETavoException(Format(SDuplicateFunctionNames, Key));
  }
}

bool TUserFunctions::DoRemove(const String& Key) { return bool(RemoveFunction(Key)); }

IUserFunction TUserFunctions::ExtractFunction(const String& Name) {
  IUserFunction Function;
  if (!TryGetValue(Name, Function)) return nullptr;
  TInherited::DoRemove(Name);
  if (IsInterpreted(Function)) {
    --FNumInterpreted;
    FInterpretedNames.erase(std::find(FInterpretedNames.begin(), FInterpretedNames.end(), Name));
  }
  if (FEngine) FEngine->FunctionRemoved(Function);
  return Function;
}

IUserFunction TUserFunctions::RemoveFunction(const String& Name) {
  IUserFunction Function = ExtractFunction(Name);
  // A deffunction that calls itself holds itself through its body: it lets
  // go as it leaves, and a call of it that lives on binds anew by name.
  if (auto* Interpreted = dynamic_cast<TInterpretedFunction*>(Function.Get())) Interpreted->UnbindCalls();
  // The function forgets the engine; its notice finds the name gone.
  if (Function && FEngine) Function->DeleteReasoner(FEngine);
  return Function;
}

void TUserFunctions::Clear() {
  std::vector<IUserFunction> Functions;
  for (const auto& Item : *this) Functions.push_back(Item.Value);
  // Deffunctions that call themselves, or each other, hold one another
  // through their bodies; they let go as they leave the engine.
  for (const IUserFunction& Function : Functions)
    if (auto* Interpreted = dynamic_cast<TInterpretedFunction*>(Function.Get())) Interpreted->UnbindCalls();
  TInherited::Clear();
  FNumInterpreted = 0;
  FInterpretedNames.clear();
  if (FEngine)
    for (const IUserFunction& Function : Functions) Function->DeleteReasoner(FEngine);
}

void TUserFunctions::Assign(const TPersistent* Source) {
  auto* Functions = dynamic_cast<const TUserFunctions*>(Source);
  if (!Functions) {
    TInherited::Assign(Source);
    return;
  }
  if (Functions == this) return;
  for (const auto& Item : *Functions)
    if (!IsInterpreted(Item.Value)) AddOrSetValue(Item.Key, Item.Value);
  AssignInterpretedFunctions(*Functions);
}

void TUserFunctions::AssignInterpretedFunctions(const TUserFunctions& Source) {
  if (&Source == this) return;
  if (!FEngine) throw ETavoException(SUnknownEngine);
  // Calls find their functions by name when they run, so the bodies read
  // in definition order resolve among themselves.
  FEngine->Parse(Source.ToString());
}

String TUserFunctions::ToString() const {
  String Result;
  for (const String& Name : FInterpretedNames) {
    IUserFunction Function;
    if (TryGetValue(Name, Function))
      Result += (FEngine ? FEngine->PrettyPrint(Function) : Function->GetFunctionName()) + u"\r\n";
  }
  return Result;
}

String TUserFunctions::GetNamesToString() const {
  String Result;
  for (const auto& Item : *this) Result += Item.Key + u"\r\n";
  return Result;
}

// TGlobalVariables

void TGlobalVariables::DoAdd(const String& Key, const ITavoValue& Value) {
  TEngineVariables::DoAdd(Key, Value);
  if (FEngine) FEngine->ResetGlobalVariable(Key, Value);
}

void TGlobalVariables::DoSetValue(const String& Key, const ITavoValue& Value) {
  TEngineVariables::DoSetValue(Key, Value);
  if (FEngine) FEngine->ResetGlobalVariable(Key, Value);
}

// TIOStreams

void TIOStreams::SetFreeStream(bool Value) {
  FFreeStream = Value;
  SetOwnsObjects(Value);
}

void TIOStreams::AddStream(const String& Name, TGTextStream* Stream) {
  TGTextStream* Present = nullptr;
  if (TryGetValue(Name, Present)) {
    if (Present == Stream) return;
    switch (FEngine ? FEngine->GetDuplicateConstructs() : dcOverwrite) {
      case dcOverwrite:
        Remove(Name);
        break;
      case dcIgnore:
        delete Stream;
        return;
      case dcError:
        delete Stream;
        throw ETavoException(Format(SDuplicateStreamNames, Name));
    }
  }
  Add(Name, Stream);
}

void TIOStreams::RemoveStream(const String& Name) {
  if (!ContainsKey(Name)) throw ETavoException(Format(SInvalidStreamName, Name));
  Remove(Name);
}

void TIOStreams::Clear() {
  bool Owned = GetOwnsObjects();
  SetOwnsObjects(true);
  TInherited::Clear();
  SetOwnsObjects(Owned);
}

void TIOStreams::Assign(const TPersistent* Source) {
  if (dynamic_cast<const TIOStreams*>(Source)) return;
  TInherited::Assign(Source);
}

// TFactSets

TFactSets::~TFactSets() { Clear(); }

int TFactSets::Add(TFactSet* FactSet) {
  if (!FactSet) return -1;
  if (int Index = IndexOf(FactSet); Index >= 0) return Index;
  // Every earlier set of the name that is still in force is let go, not
  // only the first one found: the first may have been let go already by a
  // definition before, which would leave that one's facts in every reset.
  if (FEngine)
    for (TFactSet* Old : FItems)
      if (Old->GetEngine() && Old->GetFactSetName() == FactSet->GetFactSetName()) Old->ForgetEngine();
  FItems.push_back(FactSet);
  if (FEngine && FactSet->GetEngine() != FEngine) FactSet->SetEngineNoParse(FEngine);
  return Count() - 1;
}

void TFactSets::Remove(TFactSet* FactSet) {
  int Index = IndexOf(FactSet);
  if (Index < 0) return;
  FItems.erase(FItems.begin() + Index);
  if (FEngine) FactSet->ForgetEngine();
}

int TFactSets::IndexOf(const TFactSet* FactSet) const {
  for (size_t I = 0; I < FItems.size(); ++I)
    if (FItems[I] == FactSet) return int(I);
  return -1;
}

int TFactSets::IndexOf(StringView Name) const {
  for (size_t I = 0; I < FItems.size(); ++I)
    if (FItems[I]->GetFactSetName() == Name) return int(I);
  return -1;
}

void TFactSets::Clear() {
  // Each set leaves the list before it goes, so that it does not come back.
  while (!FItems.empty()) {
    TFactSet* FactSet = FItems.back();
    FItems.pop_back();
    FactSet->ForgetEngine();
    delete FactSet;
  }
}

void TFactSets::Assign(const TFactSets& Source) {
  if (&Source == this) return;
  if (!FEngine) throw ETavoException(SUnknownEngine);
  const String Text = BareText(Source.FEngine, [&] { return Source.ToString(); });
  Clear();
  FEngine->ParseInModule(FModule, Text);
}

String TFactSets::ToString() const {
  String Result;
  for (const TFactSet* FactSet : FItems) {
    if (!Result.empty()) Result += u"\r\n";
    Result += FactSet->ToString();
  }
  return Result;
}

}  // namespace tavo

namespace tavo {

// TRules

TRules::~TRules() { Clear(); }

TRule* TRules::Find(StringView Name) const {
  TRule* const* Rule = FNames.Find(Name);
  return Rule ? *Rule : nullptr;
}

int TRules::IndexOf(const TRule* Rule) const {
  auto Found = std::find(FItems.begin(), FItems.end(), Rule);
  return Found == FItems.end() ? -1 : int(Found - FItems.begin());
}

void TRules::Add(TRule* Rule) {
  if (!Rule) return;
  const String Name = Rule->GetRuleName();
  TRule* Old = Find(Name);
  if (Old == Rule) return;
  if (Old) {
    switch (FEngine->GetDuplicateConstructs()) {
      case dcIgnore:
        return;
      case dcError:
        throw ETavoException(Format(SDuplicateRuleNames, Name));
      case dcOverwrite:
        Remove(Name, Old);
        FEngine->RemoveRule(Old);
        break;
    }
  }
  // Compiled first: a rule that does not compile is not kept, and leaves
  // no nodes behind.
  TReteNetwork* Network = FModule ? FModule->GetRete() : FEngine->GetRete();
  if (Network) {
    try {
      Network->AddRule(Rule);
    } catch (...) {
      Network->RemoveRule(Rule);
      throw;
    }
  }
  FItems.push_back(Rule);
  FNames.AddOrSetValue(Name, Rule);
  FEngine->PrintCompilation(Rule);
  if (Rule->GetEngine() != FEngine) Rule->SetEngine(FEngine);
  FEngine->AddRule(Rule);
}

bool TRules::Remove(const String& Name, TRule* Rule) {
  if (Find(Name) != Rule || !Rule) return false;
  FNames.Remove(Name);
  FItems.erase(FItems.begin() + IndexOf(Rule));
  return true;
}

void TRules::Rename(TRule* Rule, const String& OldName, const String& NewName) {
  if (Find(OldName) != Rule) return;
  FNames.Remove(OldName);
  FNames.AddOrSetValue(NewName, Rule);
}

void TRules::Clear() {
  // Taken out first: a rule that goes tells the list, which must not hold
  // it any more.
  std::vector<TRule*> Items;
  Items.swap(FItems);
  FNames.Clear();
  for (TRule* Rule : Items) {
    if (FEngine) {
      FEngine->RetireRule(Rule, true);
      continue;
    }
    if (FModule && FModule->GetRete()) FModule->GetRete()->RemoveRule(Rule);
    if (!Rule->GetOwner())
      delete Rule;
    else
      Rule->SetEngine(nullptr);
  }
}

void TRules::Assign(const TRules& Source) {
  if (&Source == this) return;
  if (!FEngine) throw ETavoException(SUnknownEngine);
  const String Text = BareText(Source.FEngine, [&] { return Source.ToString(); });
  Clear();
  FEngine->ParseInModule(FModule, Text);
}

String TRules::ToString() const {
  String Result;
  for (TRule* Rule : FItems) Result += Rule->ToString() + u"\r\n";
  return Result;
}

}  // namespace tavo
