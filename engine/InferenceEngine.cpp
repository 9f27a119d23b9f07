#include "engine/InferenceEngine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <fstream>

namespace tavo {

TInferenceEngine::TInferenceEngine(TComponent* AOwner)
    : TComponent(AOwner), FModules(this, true), FFocusStack(this, false) {
  FVersion = 5.0f;
  FParserMaxErrors = 10;
  FFuzzyEqualsThreshold = 0.01f;
  FIOStreams.reset(static_cast<TIOStreams*>(CreateTavoObject(otIOStreams, nullptr)));
  FResetGlobals = true;
  FGlobalVariables.reset(static_cast<TGlobalVariables*>(CreateTavoObject(otGlobalVariables, nullptr)));
  FStorage.reset(static_cast<TEngineVariables*>(CreateTavoObject(otEngineVariables, nullptr)));
  FUserFunctions.reset(static_cast<TUserFunctions*>(CreateTavoObject(otUserFunctions, nullptr)));
  FGlobalContext = std::make_unique<TTavoContext>(nullptr, this);
  // The main module; Initialize makes its objects current.
  IModule Main = Make<TModule>(this, true);
  AddModule(Main);
  // Pushed directly: no event, no watch line.
  FFocusStack.Insert(0, Main);
  FFuzzyAutoTerms = true;
  FPackages = TavoAllPackages;
  FTypeChecks = {tcStatic};
  AddDefaultPackages();
  // The initial fact, id 0, before any reset.
  IFactTemplate Initial = CreateFactTemplate(SInitialFactPattern);
  IFact InitialFact = Initial->NewFact();
  Initial->FillFactWithDefaults(InitialFact);
  Assert(InitialFact, false);
}

TInferenceEngine::~TInferenceEngine() {
  UnhookEvents();
  Destroying();
  // Retired rules are still the engine's components, and go with them.
  FRetiredRules.clear();
  FParser.reset();
  // Functions held elsewhere forget this engine; then the packages and other
  // owned components go while the engine is still whole.
  if (FUserFunctions) FUserFunctions->Clear();
  DestroyComponents();
  FCurrentModule.Reset();
  FNullFact.Reset();
  FDefinedTypes = nullptr;
  FFacts = nullptr;
  FFactTemplates = nullptr;
  FFactsPending = nullptr;
  FFactSets = nullptr;
  FFocusStack.Clear();
  // From the last: an importer lets go of what it imported while its
  // sources still hold their constructs, so that no construct keeps an
  // importer alive.
  for (int I = FModules.Count() - 1; I >= 0; --I) FModules.Get(I)->Release();
  // A host may still hold a module: it must not call back into a dead engine.
  for (TModule* Module : std::vector<TModule*>(FKnownModules)) Module->DetachEngine();
  FKnownModules.clear();
  FModules.Clear();
}

void TInferenceEngine::UnhookEvents() {
  // The networks' host callbacks go too: teardown withdraws activations.
  for (int I = 0; I < FModules.Count(); ++I)
    if (TReteNetwork* Network = FModules.Get(I)->GetRete()) {
      Network->OnActivation = nullptr;
      Network->OnDeactivation = nullptr;
      Network->OnRuleFired = nullptr;
    }
  OnAddRule = nullptr;
  OnRemoveRule = nullptr;
  OnRuleFired = nullptr;
  OnAddActivation = nullptr;
  OnRemoveActivation = nullptr;
  OnPrintOut = nullptr;
  OnReadLine = nullptr;
  OnReadToken = nullptr;
  OnAddDefaultPackages = nullptr;
  OnStartInference = nullptr;
  OnEndInference = nullptr;
  OnPushFocus = nullptr;
  OnPopFocus = nullptr;
  OnChangeCurrentModule = nullptr;
  OnAddModule = nullptr;
  OnRemoveModule = nullptr;
  OnClear = nullptr;
  OnReset = nullptr;
  OnClearModule = nullptr;
  OnAssertion = nullptr;
  OnRetraction = nullptr;
  OnClearFacts = nullptr;
  OnNewFactTemplate = nullptr;
  OnRemoveFactTemplate = nullptr;
  OnClearFactTemplates = nullptr;
  OnAddDefinedType = nullptr;
  OnRemoveDefinedType = nullptr;
  OnClearDefinedTypes = nullptr;
  OnAddUserFunction = nullptr;
  OnRemoveUserFunction = nullptr;
}

// Functions.

void TInferenceEngine::AddUserFunction(const IUserFunction& Function) {
  if (!Function) throw ETavoException(SInvalidFunctionAdd);
  IUserFunction Present;
  if (FUserFunctions->TryGetValue(Function->GetFunctionName(), Present) && Present == Function) return;
  FUserFunctions->AddOrSetValue(Function->GetFunctionName(), Function);
}

void TInferenceEngine::RemoveUserFunction(const IUserFunction& Function) {
  IUserFunction Present;
  if (FUserFunctions->TryGetValue(Function->GetFunctionName(), Present) && Present == Function)
    FUserFunctions->ExtractFunction(Function->GetFunctionName());
}

bool TInferenceEngine::ContainsUserFunction(StringView Name, IUserFunction& Function) const {
  return FUserFunctions->TryGetValue(Name, Function);
}

IUserFunction TInferenceEngine::GetUserFunction(StringView Name) const {
  IUserFunction Function;
  FUserFunctions->TryGetValue(Name, Function);
  return Function;
}

void TInferenceEngine::SetUserFunction(const String& Name, const IUserFunction& Function) {
  FUserFunctions->AddOrSetValue(Name, Function);
}

void TInferenceEngine::FunctionAdded(const IUserFunction& Function) {
  if (OnAddUserFunction) OnAddUserFunction(this, Function);
}

void TInferenceEngine::FunctionRemoved(const IUserFunction& Function) {
  if (OnRemoveUserFunction) OnRemoveUserFunction(this, Function);
}

TObject* TInferenceEngine::CreateTavoObject(TTavoObjectType Kind, TModule* Module) {
  switch (Kind) {
    case otDefinedTypes:
      return new TTavoDefinedTypes(this, Module);
    case otFactTemplates:
      return new TFactTemplates(this, Module);
    case otFacts: {
      auto* Facts = new TFacts(this, Module);
      Facts->SetCacheHashCodes(!FFactDuplication);
      return Facts;
    }
    case otFactsPending:
      return new TFactsPending();
    case otFactSets:
      return new TFactSets(this, Module);
    case otEngineVariables:
      return new TEngineVariables(this);
    case otGlobalVariables:
      return new TGlobalVariables(this);
    case otUserFunctions:
      return new TUserFunctions(this);
    case otIOStreams:
      return new TIOStreams(this);
    case otAgenda:
      return new TTavoAgenda(Module, this);
    case otRules:
      return new TRules(this, Module);
    case otReteNetwork: {
      auto* Network = new TReteNetwork();
      Network->SetEngine(this);
      Network->SetModule(Module);
      Network->SetMinActivationStrength(FMinActivationStrength);
      return Network;
    }
    default:
      // Rules and module lists arrive with their own classes.
      return nullptr;
  }
}

// Templates and types of the current module.

IFactTemplate TInferenceEngine::CreateFactTemplate(const String& Name) {
  if (IFactTemplate Existing = FindFactTemplate(Name)) return Existing;
  IFactTemplate Template = Make<TFactTemplate>(this, Name);
  Template->SetComment(u"(Implied)");
  FFactTemplates->Add(Name, Template);
  return Template;
}

IFactTemplate TInferenceEngine::FindFactTemplate(StringView Name) const {
  if (!FFactTemplates) return nullptr;
  const IFactTemplate* Template = FFactTemplates->Find(Name);
  return Template ? *Template : IFactTemplate();
}

ITavoDefinedType TInferenceEngine::FindDefinedType(StringView Name) const {
  if (!FDefinedTypes) return nullptr;
  const ITavoDefinedType* Type = FDefinedTypes->Find(Name);
  return Type ? *Type : ITavoDefinedType();
}

TObject* TInferenceEngine::GetGlobalContext() const { return FGlobalContext.get(); }

void TInferenceEngine::ResetGlobalVariable(const String& Name, const ITavoValue& Value) {
  ITavoValue Bound = Value;
  if (Value && Value->GetDType() == dtFunCall) {
    std::unique_ptr<TTavoContext> Child(FGlobalContext->Push());
    Bound = Value->Resolve(Child.get());
  }
  FGlobalContext->AddBinding(Name, Bound);
}

void TInferenceEngine::RenameFactTemplate(const String& OldName, const String& NewName) {
  if (!FFactTemplates || OldName == NewName) return;
  IFactTemplate Template;
  if (!FFactTemplates->TryGetValue(OldName, Template) || Template->GetTemplateName() != NewName) return;
  if (FFactTemplates->ContainsKey(NewName))
    throw ETavoException(Format(SDuplicateTemplateNames, NewName));
  FFactTemplates->Rekey(OldName, NewName);
}

void TInferenceEngine::AddFactTemplate(const IFactTemplate& Template) {
  if (OnNewFactTemplate) OnNewFactTemplate(this, Template);
}

void TInferenceEngine::RemoveFactTemplate(const IFactTemplate& Template) {
  if (OnRemoveFactTemplate) OnRemoveFactTemplate(this, Template);
}

void TInferenceEngine::ClearFactTemplates() {
  if (OnClearFactTemplates) OnClearFactTemplates(this);
}

void TInferenceEngine::AddDefinedType(const ITavoDefinedType& Type) {
  if (OnAddDefinedType) OnAddDefinedType(this, Type);
}

void TInferenceEngine::RemoveDefinedType(const ITavoDefinedType& Type) {
  if (OnRemoveDefinedType) OnRemoveDefinedType(this, Type);
}

void TInferenceEngine::ClearDefinedTypes() {
  if (OnClearDefinedTypes) OnClearDefinedTypes(this);
}

void TInferenceEngine::SetFactDuplication(bool Value) {
  if (Value == FFactDuplication) return;
  FFactDuplication = Value;
  if (FFacts) FFacts->SetCacheHashCodes(!Value);
}

// Facts.

int TInferenceEngine::Assert(const IFact& Fact, bool Unconditional) {
  const IFactTemplate& Template = Fact->GetTemplate();
  if (!Template) throw ETavoException(SNoTemplate);
  if (Template->IsFuzzy()) {
    // A rule's strength shapes what it asserts; an equal fact, equal but
    // for its fuzzy slots, is combined into the new one and goes.
    if (FCurrentAgendaItem) FuzzyCorrelation(Fact, FCurrentAgendaItem->GetStrength());
    if (int Index = FFacts->FindFact(Fact); Index >= 0) {
      IFact Existing = FFacts->Get(Index);
      // The union goes through FuzzyInference, so that a host's
      // OnFuzzyInference may do it instead; an unconditional assert
      // intersects.
      if (Unconditional)
        FuzzyOperation(Fact, Existing, false);
      else
        FuzzyInference(Fact, Existing);
      RetractFact(Index);
    }
  } else if (!FFactDuplication) {
    int32_t Hash = Fact->GetHashCode();
    if (FFacts->FindFact(Fact, Hash) >= 0) return -1;
    FFacts->SetKnownHash(Fact.Get(), Hash);
  }
  int Id = NewFactId();
  Fact->SetID(Id);
  IModule Remembered = FCurrentModule;
  AddFactToModule(Fact, nullptr);
  if (Template->GetImportModuleCount() > 1) {
    bool Visited = false;
    for (int I = 0; I < Template->GetImportModuleCount(); ++I) {
      const IModule& Module = Template->GetImportModule(I);
      if (Module == Remembered) continue;
      AddFactToModule(Fact, Module);
      Visited = true;
    }
    if (Visited && Remembered) Remembered->FocusModule();
  }
  if (Watching(cwFact)) PrintOut(u" ==> " + Fact->GetToIDString() + u"\r\n");
  if (Id != -1) ProcessPendingFacts();
  if (OnAssertion) OnAssertion(this, Fact);
  return Id;
}

void TInferenceEngine::AddFactToModule(const IFact& Fact, const IModule& Module) {
  if (Module) Module->FocusModule();
  FFacts->SetUpdating(true);
  try {
    FFacts->Add(Fact);
  } catch (...) {
    FFacts->SetUpdating(false);
    throw;
  }
  FFacts->SetUpdating(false);
  FRete->ProcessToken(Make<TTavoToken>(taAdd, Fact));
}

void TInferenceEngine::RetractFact(int Index) {
  IFact Fact = FFacts->Get(Index);
  if (OnRetraction) OnRetraction(this, Fact);
  IModule Remembered = FCurrentModule;
  RemoveFactFromModule(Index, Fact, nullptr);
  if (const IFactTemplate& Template = Fact->GetTemplate()) {
    bool Visited = false;
    for (int I = 0; I < Template->GetImportModuleCount(); ++I) {
      const IModule& Module = Template->GetImportModule(I);
      if (Module == Remembered) continue;
      RemoveFactFromModule(-1, Fact, Module);
      Visited = true;
    }
    if (Visited && Remembered) Remembered->FocusModule();
  }
  if (Watching(cwFact)) PrintOut(u" <== " + Fact->GetToIDString() + u"\r\n");
  ProcessPendingFacts();
}

void TInferenceEngine::RemoveFactFromModule(int Index, const IFact& Fact, const IModule& Module) {
  if (Module) {
    Module->FocusModule();
    Index = -1;
  }
  // The network is told before the list changes.
  FRete->ProcessToken(Make<TTavoToken>(taRemove, Fact));
  FFacts->SetUpdating(true);
  try {
    if (Index == -1)
      FFacts->Remove(Fact);
    else
      FFacts->Delete(Index);
  } catch (...) {
    FFacts->SetUpdating(false);
    throw;
  }
  FFacts->SetUpdating(false);
}

void TInferenceEngine::RetractFacts() {
  // A token without a fact carries the clear action.
  FRete->ProcessToken(Make<TTavoToken>());
  if (OnClearFacts) OnClearFacts(this);
}

void TInferenceEngine::BeginFactModify(const IFact& Fact) {
  FModifyingFact = true;
  RetractFact(Fact);
}

int TInferenceEngine::EndFactModify(const IFact& Fact) {
  FModifyingFact = false;
  return Assert(Fact, false);
}

void TInferenceEngine::Retract(const IFact& Fact) {
  int Index = FFacts->FindFact(Fact);
  if (Index >= 0) RetractFact(Index);
}

void TInferenceEngine::Retract(int Id) {
  int Index = FFacts->FindFact(Id);
  if (Index >= 0) RetractFact(Index);
}

void TInferenceEngine::AddPendingFact(const IFact& Fact, bool Assert) {
  FFactsPending->AddObject(Assert ? u"+" : u"-", nullptr, Fact);
}

void TInferenceEngine::ProcessPendingFacts() {
  while (FFactsPending && FFactsPending->Count() > 0) {
    IFact Fact = FFactsPending->GetData(0);
    char16_t Action = FFactsPending->Get(0).empty() ? u' ' : FFactsPending->Get(0)[0];
    FFactsPending->Delete(0);
    if (Action == u'+')
      Assert(Fact, false);
    else if (Action == u'-')
      Retract(Fact);
  }
}


void TInferenceEngine::SetStrategy(TSearchStrategy Value) {
  if (Value == FStrategy) return;
  FStrategy = Value;
  // Every activation comes back sorted under the new strategy, through a
  // temporary agenda that keeps the old order.
  if (FAgenda) {
    std::unique_ptr<TTavoAgenda> Temporary;
    ReorderAgenda(Temporary);
  }
}

// Symbols and the lock.

String TInferenceEngine::GenerateSymbol(const String& Prefix) {
  String Result = Prefix + IntToStr(FSymbolIndex);
  // The index wraps rather than overflows after 2^31 names.
  FSymbolIndex = int(unsigned(FSymbolIndex) + 1u);
  return Result;
}

void TInferenceEngine::SetSymbolIndex(int Value) {
  if (Value > FSymbolIndex)
    FSymbolIndex = Value;
  else
    FSymbolIndex = int(unsigned(FSymbolIndex) + 1u);
}

void TInferenceEngine::Lock() {
  if (!FCriticalSection) FCriticalSection = std::make_unique<std::recursive_mutex>();
  FCriticalSection->lock();
}

void TInferenceEngine::Unlock() {
  if (FCriticalSection) FCriticalSection->unlock();
}

// Modules and focus.

void TInferenceEngine::CheckImportOrder(const TModule& Module, int NewIndex, const TModule* Replaced) const {
  for (int I = 0; I < Module.GetImportCount(); ++I) {
    const String& Name = Module.GetImport(I)->GetModule();
    int Index = -1;
    for (int J = 0, Position = 0; J < FModules.Count(); ++J) {
      const TModule* Other = FModules.Get(J).Get();
      if (Other == Replaced || Other == &Module) continue;
      if (Other->GetName() == Name) Index = Position;
      ++Position;
    }
    if (Index < 0) {
      // Importing the module that is being replaced, or itself, is
      // importing from nothing.
      throw ETavoException(Format(SNoSuchModule, Name));
    }
    // The list then stands in an order in which every module comes after
    // the ones it imports; the main module, first of all, imports nothing.
    if (Index >= NewIndex) throw ETavoException(Format(SInvalidModuleDependency, Module.GetName(), Name));
  }
  // Nor may a module that others import from come back behind them.
  for (int J = 0, Position = 0; J < FModules.Count(); ++J) {
    const TModule* Other = FModules.Get(J).Get();
    if (Other == Replaced || Other == &Module) continue;
    if (Position >= NewIndex) break;
    if (Other->IndexOfImport(Module.GetName()) >= 0)
      throw ETavoException(Format(SInvalidModuleDependency, Other->GetName(), Module.GetName()));
    ++Position;
  }
}

int TInferenceEngine::AddModule(const IModule& Module) {
  int Existing = Module->GetName().empty() ? -1 : FModules.IndexOf(Module->GetName());
  if (Existing >= 0 && FModules.Get(Existing) == Module) return Existing;
  // The import order is checked before anything changes, and the namesake
  // goes only once the new module has made its imports: a refused module
  // leaves the engine as it was.
  IModule Replaced = Existing >= 0 ? FModules.Get(Existing) : IModule();
  const int Others = FModules.Count() - (Replaced ? 1 : 0);
  CheckImportOrder(*Module, Module->IsMain() ? 0 : Others, Replaced.Get());
  IModule Outer = FIsModuleOp;
  FIsModuleOp = Module;
  try {
    if (Module->IsMain())
      FModules.Insert(0, Module);
    else
      FModules.Add(Module);
  } catch (...) {
    FIsModuleOp = Outer;
    throw;
  }
  FIsModuleOp = Outer;
  try {
    Module->Prepare();
    Module->ImportConstructs();
  } catch (...) {
    // An import that cannot be made (a template whose type is not shared,
    // a name the duplicate policy refuses) takes the new module out again.
    IModule Current = FCurrentModule;
    RemoveModule(Module);
    if (Current && Current != Module && FModules.IndexOf(Current) >= 0) SetCurrentModule(Current);
    throw;
  }
  // A second module of a name replaces the first.
  if (Replaced) RemoveModule(Replaced);
  if (OnAddModule) OnAddModule(this, Module);
  return FModules.IndexOf(Module);
}

void TInferenceEngine::RemoveModule(const IModule& Module) {
  if (!Module || Module == FIsModuleOp || FModules.IndexOf(Module) < 0) return;
  IModule Keep = Module;
  if (OnRemoveModule) OnRemoveModule(this, Keep);
  Clear(Keep);
  Keep->Release();
  for (int I = FFocusStack.Count() - 1; I >= 0; --I)
    if (FFocusStack.Get(I) == Keep) FFocusStack.Delete(I);
  IModule Outer = FIsModuleOp;
  FIsModuleOp = Keep;
  FModules.Remove(Keep);
  FIsModuleOp = Outer;
  if (FModules.Count() == 0) {
    FDefinedTypes = nullptr;
    FFacts = nullptr;
    FFactSets = nullptr;
    FFactTemplates = nullptr;
    FFactsPending = nullptr;
    FAgenda = nullptr;
    FRete = nullptr;
    FRules = nullptr;
    FInitialFactPattern = nullptr;
    FNullFact.Reset();
    FCurrentModule.Reset();
  } else {
    SetCurrentModule(FModules.Get(0));
  }
}

// Reset and clear.

void TInferenceEngine::ClearFacts(const IModule& Module) {
  IModule Remembered = FCurrentModule;
  if (Module != Remembered) Module->FocusModule();
  FFacts->Clear();
  if (Remembered && Module != Remembered) Remembered->FocusModule();
}

// Fact sets.

IModule TInferenceEngine::FocusFactSetModule(StringView Module, bool Force) {
  const StringView Name = Module.empty() ? StringView(SMainModuleName) : Module;
  if (!Force && !Module.empty() && FModules.IndexOf(Name) < 0) return nullptr;
  if (FCurrentModule && FCurrentModule->GetName() == Name) return nullptr;
  IModule Previous = FCurrentModule;
  FModules.GetModule(Name)->FocusModule();
  return Previous;
}

void TInferenceEngine::RestoreModule(const IModule& Module) {
  if (Module) Module->FocusModule();
}

void TInferenceEngine::AddFactSet(TFactSet* FactSet) {
  if (FFactSets) FFactSets->Add(FactSet);
}

void TInferenceEngine::RemoveFactSet(TFactSet* FactSet) {
  for (int I = 0; I < FModules.Count(); ++I)
    if (TFactSets* Sets = FModules.Get(I)->GetFactSets()) Sets->Remove(FactSet);
}

bool TInferenceEngine::HoldsFactSet(const TFactSet* FactSet) const {
  return FFactSets && FFactSets->IndexOf(FactSet) >= 0;
}

void TInferenceEngine::Reset(const IModule& Module) {
  IModule Remembered = FCurrentModule;
  if (Module != Remembered) Module->FocusModule();
  for (int I = 0; I < FRules->Count(); ++I) FRules->Get(I)->Reset();
  // A set may leave the list while it resets, so the walk goes over a copy.
  std::vector<TFactSet*> Sets(FFactSets->begin(), FFactSets->end());
  for (TFactSet* FactSet : Sets)
    if (FFactSets->IndexOf(FactSet) >= 0) FactSet->Reset();
  if (Remembered && Module != Remembered) Remembered->FocusModule();
}

void TInferenceEngine::Reset() {
  FFactIdCounter = 0;
  while (PeekFocus()) PopFocus();
  PushFocus(FModules.Get(0));
  for (int I = 0; I < FModules.Count(); ++I) {
    // Goals still waiting (asked while a rule was added, say) belong to
    // the facts that go now; the facts of the reset ask anew for what they
    // need.
    if (TFactsPending* Pending = FModules.Get(I)->GetFactsPending()) Pending->Clear();
    ClearFacts(FModules.Get(I));
  }
  for (int I = 0; I < FModules.Count(); ++I) Reset(FModules.Get(I));
  IModule Remembered;
  if (FModules.Get(0) != FCurrentModule) {
    Remembered = FCurrentModule;
    FModules.Get(0)->FocusModule();
  }
  IFactTemplate Initial = CreateFactTemplate(SInitialFactPattern);
  IFact InitialFact = Initial->NewFact();
  Initial->FillFactWithDefaults(InitialFact);
  Assert(InitialFact, false);
  if (Remembered) Remembered->FocusModule();
  if (FResetGlobals)
    for (const auto& Item : *FGlobalVariables) ResetGlobalVariable(Item.Key, Item.Value);
  if (OnReset) OnReset(this);
}

void TInferenceEngine::Clear(const IModule& Module) {
  FHalt = false;
  IModule Remembered = FCurrentModule;
  if (Module != Remembered) Module->FocusModule();
  FAgenda->Clear();
  FRete->Clear();
  FRules->Clear();
  FFactSets->Clear();
  FFacts->Clear();
  FFactTemplates->Clear();
  FDefinedTypes->Clear();
  FNullFact.Reset();
  FFactsPending->Clear();
  if (!IsDestroying()) {
    // The rules' initial pattern follows the template made anew.
    Module->RenewInitialFactPattern(CreateFactTemplate(SInitialFactPattern));
    FNullFact = CreateFactTemplate(SNullFact)->NewFact();
    Module->ImportEngine();
  }
  if (Remembered && Module != Remembered) Remembered->FocusModule();
  if (OnClearModule) OnClearModule(this, Module);
}

void TInferenceEngine::Clear() {
  FHalt = false;
  FFactIdCounter = 0;
  FRuleIdCounter = 0;
  FFocusStack.Clear();
  for (int I = FModules.Count() - 1; I >= 0; --I)
    if (!FModules.Get(I)->IsMain()) RemoveModule(FModules.Get(I));
  if (FModules.Count() == 0) AddModule(Make<TModule>(this, true));
  PushFocus(FModules.Get(0));
  Clear(FCurrentModule);
  std::vector<String> Interpreted;
  for (const auto& Item : *FUserFunctions)
    if (dynamic_cast<TInterpretedFunction*>(Item.Value.Get())) Interpreted.push_back(Item.Key);
  for (const String& Name : Interpreted) {
    IUserFunction Function = FUserFunctions->RemoveFunction(Name);
    // A deffunction that called itself lets go of itself.
    if (auto* Self = dynamic_cast<TInterpretedFunction*>(Function.Get())) Self->UnbindCalls();
  }
  FStorage->Clear();
  FIOStreams->Clear();
  if (OnClear) OnClear(this);
}

void TInferenceEngine::RenameModule(const String& OldName, const String& NewName) {
  if (OldName == NewName) return;
  int Index = FModules.IndexOf(OldName);
  if (Index < 0) return;
  if (FModules.IndexOf(NewName) >= 0) throw ETavoException(Format(SDuplicateModuleNames, NewName));
  FModules.Get(Index)->SetName(NewName);
}

void TInferenceEngine::RenameDefinedType(const String& OldName, const String& NewName) {
  if (!FDefinedTypes || OldName == NewName) return;
  ITavoDefinedType Type;
  if (!FDefinedTypes->TryGetValue(OldName, Type) || Type->GetName() != NewName) return;
  if (FDefinedTypes->ContainsKey(NewName))
    throw ETavoException(Format(SDuplicateDefTypeNames, NewName));
  FDefinedTypes->Rekey(OldName, NewName);
}

void TInferenceEngine::SetCurrentModule(const IModule& Module) {
  if (Module == FCurrentModule) return;
  FCurrentModule = Module;
  if (Module) Module->FocusModule();
  DoChangeCurrentModule();
}

void TInferenceEngine::DoChangeCurrentModule() {
  if (OnChangeCurrentModule) OnChangeCurrentModule(this);
}

IModule TInferenceEngine::PeekFocus() const {
  return FFocusStack.Count() > 0 ? FFocusStack.Get(0) : IModule();
}

void TInferenceEngine::PushFocus(const IModule& Module) {
  if (FFocusStack.Count() > 0 && FFocusStack.Get(0) == Module) return;
  FFocusStack.Insert(0, Module);
  if (Watching(cwFocus)) {
    if (FFocusStack.Count() == 1)
      PrintOut(u"==> Focus " + Module->GetName() + u"\r\n");
    else
      PrintOut(u"==> Focus " + Module->GetName() + u" from " + FFocusStack.Get(1)->GetName() +
               u"\r\n");
  }
  if (Module == FCurrentModule)
    DoChangeCurrentModule();
  else
    SetCurrentModule(Module);
  if (OnPushFocus) OnPushFocus(this, Module);
}

void TInferenceEngine::PushFocus(StringView Name) {
  int Index = FModules.IndexOf(Name);
  if (Index < 0) throw ETavoException(Format(SNoSuchModule, Name));
  PushFocus(IModule(FModules.Get(Index)));
}

IModule TInferenceEngine::PopFocus() {
  if (FFocusStack.Count() == 0) return IModule();
  IModule Popped = FFocusStack.Get(0);
  FFocusStack.Delete(0);
  if (FFocusStack.Count() > 0)
    SetCurrentModule(FFocusStack.Get(0));
  else
    FHalt = true;
  if (Watching(cwFocus)) {
    // Only the last pop has the other arrow.
    if (FFocusStack.Count() > 0)
      PrintOut(u"==> Focus " + Popped->GetName() + u" to " + FFocusStack.Get(0)->GetName() +
               u"\r\n");
    else
      PrintOut(u"<== Focus " + Popped->GetName() + u"\r\n");
  }
  if (OnPopFocus) OnPopFocus(this, Popped);
  return Popped;
}

void TInferenceEngine::ClearFocusStack() {
  FFocusStack.Clear();
  FHalt = true;
}

// Output.

void TInferenceEngine::PrintOut(const String& OutID, const String& Text) {
  if (OutID.empty() || OutID == u"t") {
    // A capture takes the standard channel away from the handler entirely;
    // without either the text is lost without a word.
    if (FOutputStream)
      WriteStringToStream(*FOutputStream, Text, FOutputEncoding);
    else if (OnPrintOut)
      OnPrintOut(this, OutID, Text);
    return;
  }
  if (TGTextStream* const* Stream = FIOStreams->Find(OutID)) {
    (*Stream)->Put(Text);
    return;
  }
  // No named stream holds this name. Deliberately asymmetric: with a handler
  // nothing happens at all, without one it is an error.
  if (!OnPrintOut) throw ETavoException(Format(SNoSuchFunction, u"printout"));
}

String TInferenceEngine::ReadLine(const String& InID) {
  if (InID != u"t" && !InID.empty())
    if (TGTextStream* const* Stream = FIOStreams->Find(InID)) return (*Stream)->IsEof() ? String() : (*Stream)->GetLine();
  // Any other name reads the standard channel.
  if (FInputStream) {
    // The plain line reader: the tokenizer's own would keep every line as
    // whitespace of the next token, a whole batch file long.
    String Line = FInputStream->TGTextStream::GetLine();
    PrintOut(Line + u"\r\n");
    return Line;
  }
  if (!OnReadLine) throw ETavoException(Format(SNoReadFunctionWarning, u"read"));
  String Text;
  OnReadLine(this, InID, Text);
  return Text;
}

// Capture.

bool TInferenceEngine::StartCapture(std::unique_ptr<std::ostream> Stream, TTextEncoding Encoding) {
  if (!Stream) return false;
  if (FOutputStream) {
    FOutputStream->flush();
    FFormerCaptures.push_back(std::move(FOutputStream));
  }
  FOutputStream = std::move(Stream);
  FOutputEncoding = Encoding;
  WritePreambleToStream(*FOutputStream, Encoding);
  return true;
}

bool TInferenceEngine::StartCapture(const String& FileName, TTextEncoding Encoding) {
  auto File = std::make_unique<std::ofstream>(StringToUtf8(FileName), std::ios::binary | std::ios::trunc);
  if (!*File) return false;
  return StartCapture(std::move(File), Encoding);
}

bool TInferenceEngine::StopCapture() {
  FOutputStream.reset();
  return true;
}

// The run cycle.

void TInferenceEngine::SetMinActivationStrength(float Value) {
  if (Value == FMinActivationStrength) return;
  FMinActivationStrength = Value < 0 ? 0.0f : Value > 1 ? 1.0f : Value;
  if (FRete) FRete->SetMinActivationStrength(FMinActivationStrength);
}

int TInferenceEngine::GetAgendaCount() const { return FAgenda ? FAgenda->Count() : 0; }

// Activations.

void TInferenceEngine::AddActivation(TActivation* Activation) {
  try {
    TRule* Rule = Activation->GetRule();
    if (Rule) Rule->EvaluateSalience();
    TActivationAgenda* Agenda = FAgenda;
    if (TPatternMatchTerminalNode* Node = Activation->GetNode())
      if (TReteNetwork* Network = Node->Rete(); Network && Network->GetModule() && Network->GetModule()->GetAgenda())
        Agenda = Network->GetModule()->GetAgenda();
    int Index = Agenda->Add(Activation);
    if (Watching(cwActivation)) PrintOut(u"==> Activation: " + Activation->ToString() + u"\r\n");
    if (OnAddActivation) OnAddActivation(this, Index, Activation);
    if (PeekFocus() && Rule && Rule->GetAutoFocus()) PushFocus(FCurrentModule);
  } catch (const EAbort&) {
    // A silent abort leaves the activation wherever it had got to.
  }
}

void TInferenceEngine::RemoveActivationAt(int Index, bool Free) {
  TActivation* Activation = FAgenda->GetActivations(Index);
  if (OnRemoveActivation) OnRemoveActivation(this, Index, Activation);
  if (Watching(cwActivation))
    PrintOut(u"<== Activation: " + (Activation->GetRule() ? Activation->GetRule()->GetRuleName() : String()) + u" : " +
             Activation->GetToken()->GetToFactsString() + u"\r\n");
  // By the activation: a handler may have moved its entry.
  if (!FAgenda->ExtractData(Activation)) return;
  if (Free && Activation != FCurrentAgendaItem && FAgenda->GetFreeData()) delete Activation;
}

void TInferenceEngine::RemoveActivation(int Index) {
  if (FAgenda) RemoveActivationAt(Index, true);
}

bool TInferenceEngine::RemoveActivation(TActivation* Activation) {
  // The activation's own module acts; a module already on its way out has
  // no agenda to leave.
  TPatternMatchTerminalNode* Node = Activation->GetNode();
  TReteNetwork* Network = Node ? Node->Rete() : nullptr;
  TModule* Module = Network ? Network->GetModule() : nullptr;
  IModule Remembered;
  if (Network && Network != FRete) {
    if (!Module || !Module->GetAgenda()) return Activation != FCurrentAgendaItem;
    Remembered = FCurrentModule;
    Module->FocusModule();
  }
  try {
    // The network frees what is taken off here, so the entry is extracted.
    if (int Index = FAgenda ? FAgenda->IndexOfData(Activation) : -1; Index >= 0) RemoveActivationAt(Index, false);
  } catch (...) {
    if (Remembered) Remembered->FocusModule();
    throw;
  }
  if (Remembered) Remembered->FocusModule();
  return Activation != FCurrentAgendaItem;
}

void TInferenceEngine::RuleFired(TActivation* Activation) {
  TRule* Rule = Activation->GetRule();
  if (OnRuleFired) OnRuleFired(this, Rule);
  RemoveActivation(Activation);
  // A oneshot rule fires once until reset: the node stops making its
  // activations, and those it made before the firing leave the agenda with
  // the fired one, so that none of them fires later.
  if (Rule && Rule->GetOneShot())
    if (TPatternMatchTerminalNode* Node = Activation->GetNode()) Node->StandDown();
}

// Rules.

void TInferenceEngine::AddRule(TRule* Rule) {
  if (OnAddRule) OnAddRule(this, Rule);
}

void TInferenceEngine::RemoveRule(TRule* Rule) {
  if (OnRemoveRule) OnRemoveRule(this, Rule);
  RetireRule(Rule, false);
}

void TInferenceEngine::RetireRule(TRule* Rule, bool Detach) {
  // A rule that goes while rules fire may be the one firing, whose node
  // the firing still uses, or one whose firing encloses the current one:
  // it leaves the network, and is freed, once no firing is under way.
  // Whatever it is activated by meanwhile leaves the agenda with it.
  if (FCurrentAgendaItem) {
    FRetiredRules.push_back({Rule, Detach});
    return;
  }
  for (int I = 0; I < FModules.Count(); ++I)
    if (TReteNetwork* Network = FModules.Get(I)->GetRete()) Network->RemoveRule(Rule);
  if (Rule->IsDestroying()) return;
  if (Rule->GetOwner() == this)
    delete Rule;
  else if (Detach)
    Rule->SetEngine(nullptr);
}

void TInferenceEngine::FreeRetiredRules() {
  while (!FRetiredRules.empty()) {
    std::vector<std::pair<TRule*, bool>> Rules;
    Rules.swap(FRetiredRules);
    for (const auto& [Rule, Detach] : Rules) RetireRule(Rule, Detach);
  }
}

void TInferenceEngine::RuleChange(TRule* Rule) {
  if (!FRete || !FRules || FRules->Find(Rule->GetRuleName()) != Rule) return;
  FRete->RemoveRule(Rule);
  FRete->AddRule(Rule);
}

void TInferenceEngine::RenameRule(TRule* Rule, const String& OldName, const String& NewName) {
  if (FRules) FRules->Rename(Rule, OldName, NewName);
}

void TInferenceEngine::PrintCompilation(TRule* Rule) {
  if (Watching(cwCompilation)) PrintOut(Rule->GetCompilation() + u"\r\n");
}

void TInferenceEngine::AddRuleToList(TRule* Rule) {
  if (FRules) FRules->Add(Rule);
}

void TInferenceEngine::RemoveRuleFromList(TRule* Rule) {
  for (int I = 0; I < FModules.Count(); ++I) {
    TModule* Module = FModules.Get(I).Get();
    if (Module->GetRules() && Module->GetRules()->Remove(Rule->GetRuleName(), Rule) && Module->GetRete())
      Module->GetRete()->RemoveRule(Rule);
  }
}

bool TInferenceEngine::HoldsRule(const TRule* Rule) const {
  for (int I = 0; I < FModules.Count(); ++I)
    if (TRules* Rules = FModules.Get(I)->GetRules(); Rules && Rules->IndexOf(Rule) >= 0) return true;
  return false;
}

bool TInferenceEngine::HoldsRuleName(const TRule* Rule, StringView Name) const {
  return FRules && FRules->Find(Name) == Rule;
}

std::vector<IFact> TInferenceEngine::GetNetworkFacts(const TReteNetwork* Network) const {
  TModule* Module = Network ? Network->GetModule() : nullptr;
  TFacts* Facts = Module && Module->GetFacts() ? Module->GetFacts() : FFacts;
  std::vector<IFact> Result;
  if (!Facts) return Result;
  Result.reserve(size_t(Facts->Count()));
  for (int I = 0; I < Facts->Count(); ++I) Result.push_back(Facts->Get(I));
  return Result;
}

bool TInferenceEngine::IsGlobalVariableName(StringView Name) const {
  return FGlobalVariables && FGlobalVariables->Find(Name) != nullptr;
}

int TInferenceEngine::GetFactCount() const { return FFacts ? FFacts->Count() : 0; }

double TInferenceEngine::ClockSeconds() const {
  // A monotonic clock: a run's span never goes negative, even across midnight.
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

int TInferenceEngine::Run(int MaxFirings) {
  BeginInference();
  if (IModule Top = PeekFocus(); Top && Top != FCurrentModule) SetCurrentModule(Top);
  // Made by the first reorder; freed on every way out.
  std::unique_ptr<TTavoAgenda> Spare;
  while (!FHalt && PeekFocus() && FStatNumRulesFired < MaxFirings) {
    RunFiringLoop(MaxFirings, Spare);
    if (GetAgendaCount() == 0) PopFocus();
  }
  int Result = FStatNumRulesFired;
  EndInference();
  return Result;
}

void TInferenceEngine::RunFiringLoop(int MaxFirings, std::unique_ptr<TTavoAgenda>& Spare) {
  while (GetAgendaCount() > 0 && !FHalt && FStatNumRulesFired < MaxFirings) {
    Lock();
    try {
      // The lock may have let a host empty the agenda.
      if (GetAgendaCount() > 0) FireActivation();
      if (FEvalSalience == sEveryTime && FAgenda) ReorderAgenda(Spare);
      // An action may have pushed another module's focus: the loop goes on
      // with that module's agenda. An action that emptied the stack
      // (clear-focus-stack) has no top to give: the current module stays
      // where the action left it, and the halt it set ends the run.
      if (IModule Top = PeekFocus(); Top && Top != FCurrentModule) SetCurrentModule(Top);
    } catch (...) {
      Unlock();
      throw;
    }
    Unlock();
  }
}

void TInferenceEngine::FireActivation() {
  // Activation 0 stays on the agenda through its actions, guarded by
  // FCurrentAgendaItem from being freed by them; the fired rule takes it
  // off. A run started by an action guards its own and gives this one back.
  TActivation* Activation = FAgenda->GetActivations(0);
  TActivation* Outer = FCurrentAgendaItem;
  FCurrentAgendaItem = Activation;
  try {
    // The facts are the token's text, as in the agenda and the activation
    // lines: the null fact at a negated position shows there as f--1 too,
    // so that one match reads the same wherever it is shown.
    if (Watching(cwRule))
      PrintOut(Format(u"FIRE %d ", FStatNumRulesFired) +
               (Activation->GetRule() ? Activation->GetRule()->GetRuleName() : String()) + u" " +
               Activation->GetToken()->GetToFactsString() + u"\r\n");
    Activation->Fire();
    if (FWatch.Contains(cwStatistics)) {
      const int Facts = GetFactCount();
      const int Activations = GetAgendaCount();
      FStatMeanFacts += float(Facts);
      FStatMaxFacts = std::max(FStatMaxFacts, Facts);
      FStatMeanActivations += float(Activations);
      FStatMaxActivations = std::max(FStatMaxActivations, Activations);
    }
  } catch (...) {
    // Still on the agenda after a failed action: freeing it withdraws it.
    delete Activation;
    FCurrentAgendaItem = Outer;
    if (!Outer) FreeRetiredRules();
    throw;
  }
  delete Activation;
  FCurrentAgendaItem = Outer;
  if (!Outer) FreeRetiredRules();
  ++FStatNumRulesFired;
}

void TInferenceEngine::ReorderAgenda(std::unique_ptr<TTavoAgenda>& Spare) {
  // The spare has no engine, so it keeps the agenda's order as it takes it.
  if (!Spare) Spare = std::make_unique<TTavoAgenda>();
  const bool FreeData = FAgenda->GetFreeData();
  FAgenda->SetFreeData(false);
  for (TActivation* Activation : *FAgenda) Spare->Add(Activation);
  try {
    SetAgenda(*Spare);
  } catch (...) {
    FAgenda->SetFreeData(FreeData);
    throw;
  }
  FAgenda->SetFreeData(FreeData);
}

void TInferenceEngine::SetAgenda(TActivationAgenda& Source) {
  // Nothing is freed here: the agenda's FreeData is off.
  FAgenda->Clear();
  // Each activation leaves the source as its clone takes its place in the
  // node and goes back through AddActivation: salience evaluated anew,
  // strength 1.0, watch line and event. The activation being fired goes
  // back itself, for the firing code holds it.
  TActivation* Placed = nullptr;
  try {
    while (Source.Count() > 0) {
      TActivation* Original = Source.Extract(0);
      Placed = Original == FCurrentAgendaItem ? Original : Original->CloneIntoNode();
      if (Placed != Original) delete Original;
      AddActivation(Placed);
      Placed = nullptr;
    }
  } catch (...) {
    // A salience that fails to evaluate loses no activation and frees none
    // twice: the rest go back unannounced.
    if (Placed && !FAgenda->Contains(Placed)) FAgenda->Add(Placed);
    while (Source.Count() > 0) FAgenda->Add(Source.Extract(0));
    throw;
  }
}

void TInferenceEngine::BeginInference() {
  if (OnStartInference) OnStartInference(this);
  FStatRunTime = ClockSeconds();
  FStatNumRulesFired = 0;
  FStatMaxFacts = GetFactCount();
  FStatMeanFacts = 0;
  FStatMaxActivations = GetAgendaCount();
  FStatMeanActivations = 0;
  FHalt = false;
  if (FFocusStack.Count() == 0) PushFocus(FModules.Get(0));
}

void TInferenceEngine::EndInference() {
  if (FWatch.Contains(cwStatistics)) {
    FStatRunTime = std::fabs(ClockSeconds() - FStatRunTime);
    if (FStatNumRulesFired > 0) {
      FStatMeanFacts /= float(FStatNumRulesFired);
      FStatMeanActivations /= float(FStatNumRulesFired);
      if (OnPrintOut) PrintStatistics();
    }
  }
  if (OnEndInference) OnEndInference(this, FStatNumRulesFired);
}

void TInferenceEngine::PrintStatistics() {
  PrintOut(Format(u"%d rules fired.     Run time is %.4f seconds\r\n", FStatNumRulesFired,
                  FStatRunTime));
  if (FStatRunTime != 0)
    PrintOut(Format(u"%.4f rules per second\r\n", FStatNumRulesFired / FStatRunTime));
  else
    PrintOut(Format(u"%d rules per second\r\n", FStatNumRulesFired));
  PrintOut(Format(u"%.4f mean number of facts (%d maximum)\r\n", FStatMeanFacts, FStatMaxFacts));
  PrintOut(Format(u"%.4f mean number of activations (%d maximum)\r\n", FStatMeanActivations,
                  FStatMaxActivations));
}

}  // namespace tavo
