#include "engine/TavoModule.h"

#include "core/TavoHelperFunctions.h"
#include "engine/EngineCollections.h"
#include "engine/FactList.h"
#include "engine/InferenceEngine.h"

namespace tavo {

namespace {
}

void TavoAddReference(const TModule* Module) noexcept { Module->AddReference(); }
void TavoReleaseReference(const TModule* Module) noexcept { Module->ReleaseReference(); }

// TModule

// TModuleImportExport

void TModuleImportExport::SetDefinedTypesShared(TSharedConstructs Value) {
  FDefinedTypesShared = Value;
  if (Value != mieCustom) FDefinedTypes.Clear();
}

void TModuleImportExport::SetFactTemplatesShared(TSharedConstructs Value) {
  FFactTemplatesShared = Value;
  if (Value != mieCustom) FFactTemplates.Clear();
}

void TModuleImportExport::AddDefinedType(const String& Name) {
  FDefinedTypes.Add(Name);
  FDefinedTypesShared = mieCustom;
}

void TModuleImportExport::AddFactTemplate(const String& Name) {
  FFactTemplates.Add(Name);
  FFactTemplatesShared = mieCustom;
}

void TModuleImportExport::ClearDefinedTypes() {
  FDefinedTypes.Clear();
  if (FDefinedTypesShared == mieCustom) FDefinedTypesShared = mieNone;
}

void TModuleImportExport::ClearFactTemplates() {
  FFactTemplates.Clear();
  if (FFactTemplatesShared == mieCustom) FFactTemplatesShared = mieNone;
}

// TModule

TModule::TModule(TInferenceEngine* Engine, bool IsMain) : FIsMain(IsMain), FEngine(Engine) {
  FExportItems = Make<TModuleImportExport>(this);
  if (FEngine) FEngine->FKnownModules.push_back(this);
}

IModuleImport TModule::FindImport(StringView Module) const {
  for (const IModuleImport& Import : FImportModules)
    if (Import->GetModule() == Module) return Import;
  return nullptr;
}

TModule::~TModule() {
  Release();
  if (FEngine) std::erase(FEngine->FKnownModules, this);
}

void TModule::SetName(const String& Value) {
  if (Value == FName) return;
  if (FIsMain != (Value == SMainModuleName)) throw ETavoException(SModuleMAINReserved);
  CheckConstructName(Value);
  // Only a module the engine holds competes for names: a new one replaces
  // its namesake when it is added.
  if (FEngine && FEngine->GetModules().IndexOf(IModule(this)) >= 0) {
    int Index = FEngine->GetModules().IndexOf(Value);
    if (Index >= 0 && FEngine->GetModules().Get(Index).Get() != this)
      throw ETavoException(Format(SDuplicateModuleNames, Value));
  }
  String OldName = FName;
  FName = Value;
  if (FEngine) FEngine->RenameModule(OldName, Value);
}

void TModule::Initialize() {
  if (!FEngine) return;
  FDefinedTypes.reset(static_cast<TTavoDefinedTypes*>(FEngine->CreateTavoObject(otDefinedTypes, this)));
  FFacts.reset(static_cast<TFacts*>(FEngine->CreateTavoObject(otFacts, this)));
  FFactSets.reset(static_cast<TFactSets*>(FEngine->CreateTavoObject(otFactSets, this)));
  FFactTemplates.reset(static_cast<TFactTemplates*>(FEngine->CreateTavoObject(otFactTemplates, this)));
  FFactsPending.reset(static_cast<TFactsPending*>(FEngine->CreateTavoObject(otFactsPending, this)));
  FAgenda.reset(static_cast<TActivationAgenda*>(FEngine->CreateTavoObject(otAgenda, this)));
  FRete.reset(static_cast<TReteNetwork*>(FEngine->CreateTavoObject(otReteNetwork, this)));
  FRules.reset(static_cast<TRules*>(FEngine->CreateTavoObject(otRules, this)));
  IModule Remembered = FEngine->GetCurrentModule();
  FocusModule();
  FNullFact = FEngine->CreateFactTemplate(SNullFact)->NewFact();
  if (FIsMain) FName = SMainModuleName;
  // Every module has the implied template of the initial fact, and the
  // pattern that rules without patterns of their own match on it.
  IFactTemplate Initial = FEngine->CreateFactTemplate(SInitialFactPattern);
  FInitialFactPattern = std::make_unique<TTavoPattern>(nullptr, SInitialFactPattern, Initial);
  FocusModule();
  if (Remembered && Remembered.Get() != this) Remembered->FocusModule();
}

void TModule::Release() {
  // The activations go first: each leaves its terminal node as it is
  // freed, while the network can still tell the engine.
  if (FAgenda) FAgenda->Clear();
  FRules.reset();
  FRete.reset();
  FAgenda.reset();
  FInitialFactPattern.reset();
  // The objects must not call back into the engine while they go.
  if (FDefinedTypes) FDefinedTypes->SetEngine(nullptr);
  if (FFactTemplates) FFactTemplates->SetEngine(nullptr);
  if (FFacts) FFacts->SetEngine(nullptr);
  if (FFactSets) FFactSets->SetEngine(nullptr);
  FNullFact.Reset();
  FFactSets.reset();
  FFacts.reset();
  FFactTemplates.reset();
  FDefinedTypes.reset();
  FFactsPending.reset();
}

void TModule::RenewInitialFactPattern(const IFactTemplate& Template) {
  FInitialFactPattern.reset(Template ? new TTavoPattern(nullptr, SInitialFactPattern, Template) : nullptr);
  if (FEngine && FEngine->FCurrentModule.Get() == this) FEngine->FInitialFactPattern = FInitialFactPattern.get();
}

void TModule::Prepare() {
  if (FFacts) Release();
  Initialize();
}

void TModule::FocusModule() {
  if (!FEngine) return;
  if (!FFacts) Initialize();
  FEngine->FDefinedTypes = FDefinedTypes.get();
  FEngine->FFacts = FFacts.get();
  FEngine->FFactSets = FFactSets.get();
  FEngine->FFactTemplates = FFactTemplates.get();
  FEngine->FFactsPending = FFactsPending.get();
  FEngine->FAgenda = FAgenda.get();
  FEngine->FRete = FRete.get();
  FEngine->FRules = FRules.get();
  FEngine->FInitialFactPattern = FInitialFactPattern.get();
  FEngine->FNullFact = FNullFact;
  FEngine->FCurrentModule = IModule(this);
}

void TModule::ImportEngine() {
  if (!FEngine) return;
  // The engine's fields point at this module's own objects; only the null
  // fact is held by value on both sides.
  FNullFact = FEngine->FNullFact;
}

// TModules

int TModules::IndexOf(StringView Name) const {
  for (int I = 0; I < Count(); ++I)
    if (FItems[size_t(I)]->GetName() == Name) return I;
  return -1;
}

const IModule& TModules::GetModule(StringView Name) const {
  int Index = IndexOf(Name);
  if (Index < 0) throw ETavoException(Format(SNoSuchModule, Name));
  return FItems[size_t(Index)];
}

String TModules::ToNamesString() const {
  String Result;
  for (const IModule& Module : FItems) {
    if (!Result.empty()) Result += u' ';
    Result += Module->GetName();
  }
  return Result;
}

}  // namespace tavo
