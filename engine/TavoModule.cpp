#include "engine/TavoModule.h"

#include "core/TavoHelperFunctions.h"
#include "engine/EngineCollections.h"
#include "engine/FactList.h"
#include "engine/InferenceEngine.h"

namespace tavo {

namespace {

bool Shares(TSharedConstructs Mode, const TStringList<int>& Names, StringView Name) {
  return Mode == mieAll || (Mode == mieCustom && Names.IndexOf(Name) >= 0);
}

bool SharesAny(TSharedConstructs Mode, const TStringList<int>& Names) {
  return Mode == mieAll || (Mode == mieCustom && Names.Count() > 0);
}

const String& NameOf(const TTavoDefinedType& Type) { return Type.GetName(); }
const String& NameOf(const TFactTemplate& Template) { return Template.GetTemplateName(); }

// Visits each construct of the source's table that an import takes: one
// whose home is the source, which the source exports, and which the import
// asks for, all of them or by name. A name the source does not export is
// passed over without a word.
template <class TTable, class TVisit>
void ForEachImported(const TTable* Source, const TModule* SourceModule, TSharedConstructs ExportMode,
                     const TStringList<int>& Exported, TSharedConstructs ImportMode, const TStringList<int>& Asked,
                     TVisit Visit) {
  if (!Source || !SharesAny(ExportMode, Exported)) return;
  if (ImportMode == mieAll) {
    for (const auto& Construct : Source->InOrder(true))
      if (Shares(ExportMode, Exported, NameOf(*Construct))) Visit(Construct);
  } else if (ImportMode == mieCustom) {
    for (int I = 0; I < Asked.Count(); ++I) {
      const String& Name = Asked.Get(I);
      typename TTable::TItemRef Construct;
      if (Shares(ExportMode, Exported, Name) && Source->TryGetValue(Name, Construct) &&
          Construct->GetModule().Get() == SourceModule)
        Visit(Construct);
    }
  }
}

}  // namespace

void TavoAddReference(const TModule* Module) noexcept { Module->AddReference(); }
void TavoReleaseReference(const TModule* Module) noexcept { Module->ReleaseReference(); }

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

void TModuleImportExport::Assign(const TPersistent* Source) {
  const auto* Other = dynamic_cast<const TModuleImportExport*>(Source);
  if (!Other) {
    TCloneableObject::Assign(Source);
    return;
  }
  FDefinedTypesShared = Other->FDefinedTypesShared;
  FFactTemplatesShared = Other->FFactTemplatesShared;
  FDefinedTypes.Assign(&Other->FDefinedTypes);
  FFactTemplates.Assign(&Other->FFactTemplates);
}

bool TModuleImportExport::ExportsDefinedType(StringView Name) const {
  return Shares(FDefinedTypesShared, FDefinedTypes, Name);
}

bool TModuleImportExport::ExportsFactTemplate(StringView Name) const {
  return Shares(FFactTemplatesShared, FFactTemplates, Name);
}

void TModuleImportExport::ImportConstructs() {
  TInferenceEngine* Engine = FOwnerModule ? FOwnerModule->GetExpertSystem() : nullptr;
  if (!Engine) return;
  const IModule& Source = Engine->GetModules().GetModule(FModule);
  IModule Remembered = Engine->GetCurrentModule();
  if (Remembered.Get() != FOwnerModule) FOwnerModule->FocusModule();
  struct TBack {
    IModule Module;
    TModule* Owner;
    ~TBack() {
      if (Module && Module.Get() != Owner) Module->FocusModule();
    }
  } Back{Remembered, FOwnerModule};
  const TModuleImportExport& Export = *Source->GetExportItems();
  ForEachImported(Source->GetDefinedTypes(), Source.Get(), Export.FDefinedTypesShared, Export.FDefinedTypes,
                  FDefinedTypesShared, FDefinedTypes, [&](const ITavoDefinedType& Type) {
                    Engine->GetDefinedTypes()->AddOrSetValue(Type->GetName(), Type);
                  });
  ForEachImported(Source->GetFactTemplates(), Source.Get(), Export.FFactTemplatesShared, Export.FFactTemplates,
                  FFactTemplatesShared, FFactTemplates, [&](const IFactTemplate& Template) {
                    const String& Name = Template->GetTemplateName();
                    // The null fact's template marks a module's own negations
                    // and is never shared.
                    if (Name == SNullFact) return;
                    TFactTemplates* Own = Engine->GetFactTemplates();
                    if (Name == SInitialFactPattern) {
                      // The importer's own implied initial-fact template gives
                      // way, whatever the duplicate policy, and its rules
                      // without patterns then match the initial fact that a
                      // reset asserts in the source: the importer is new and
                      // nothing of it uses the old template yet.
                      IFactTemplate Old;
                      if (Own->TryGetValue(Name, Old) && Old != Template && Old->GetModule().Get() == FOwnerModule)
                        Own->RemoveConstruct(Name);
                      Own->AddOrSetValue(Name, Template);
                      FOwnerModule->RenewInitialFactPattern(Template);
                      return;
                    }
                    Own->AddOrSetValue(Name, Template);
                  });
  if (FFactTemplatesShared == mieNone) return;
  // The source's facts of the templates now shared enter the owner with
  // their ids, and reach its network.
  if (TFacts* Facts = Source->GetFacts()) {
    std::vector<IFact> Shared;
    for (const IFact& Fact : *Facts) {
      const IFactTemplate& Template = Fact->GetTemplate();
      if (Template && Template->GetModule() == Source &&
          Template->IndexOfImportModule(IModule(FOwnerModule)) >= 0)
        Shared.push_back(Fact);
    }
    for (const IFact& Fact : Shared) Engine->AddFactToModule(Fact, nullptr);
  }
}

void TModuleImportExport::Release() {
  TInferenceEngine* Engine = FOwnerModule ? FOwnerModule->GetExpertSystem() : nullptr;
  if (!Engine) return;
  int Index = Engine->GetModules().IndexOf(FModule);
  if (Index < 0) return;
  const IModule& Source = Engine->GetModules().Get(Index);
  const TModuleImportExport& Export = *Source->GetExportItems();
  const IModule Owner(FOwnerModule);
  ForEachImported(Source->GetDefinedTypes(), Source.Get(), Export.FDefinedTypesShared, Export.FDefinedTypes,
                  FDefinedTypesShared, FDefinedTypes,
                  [&](const ITavoDefinedType& Type) { Type->RemoveImportModule(Owner); });
  ForEachImported(Source->GetFactTemplates(), Source.Get(), Export.FFactTemplatesShared, Export.FFactTemplates,
                  FFactTemplatesShared, FFactTemplates,
                  [&](const IFactTemplate& Template) { Template->RemoveImportModule(Owner); });
}

// TModule

TModule::TModule(TInferenceEngine* Engine, bool IsMain) : FIsMain(IsMain), FEngine(Engine) {
  // Named at once, not only when it is prepared: a second main module then
  // replaces the first by its name as it is added.
  if (FIsMain) FName = SMainModuleName;
  FExportItems = Make<TModuleImportExport>(this);
  if (FEngine) FEngine->FKnownModules.push_back(this);
}

IModuleImport TModule::FindImport(StringView Module) const {
  const int Index = IndexOfImport(Module);
  return Index >= 0 ? FImportModules.Get(Index) : IModuleImport();
}

int TModule::IndexOfImport(StringView Module) const {
  for (int I = 0; I < FImportModules.Count(); ++I)
    if (FImportModules.Get(I)->GetModule() == Module) return I;
  return -1;
}

void TModule::ImportConstructs() {
  if (!FEngine) return;
  // Each import focuses this module and goes back to whatever was current.
  for (const IModuleImport& Import : FImportModules) Import->ImportConstructs();
}

namespace {

const char16_t SStarLine[] = u"\r\n; *************************\r\n";

// A section of saved text: its heading under a line of stars when comments
// are on, then the text.
String Section(bool Comments, const char16_t* Heading, const String& Text) {
  return Comments ? SStarLine + String(Heading) + u"\r\n\r\n" + Text : Text;
}

}  // namespace

String TModule::GetExpertSystem(bool Comments, bool All, bool WithFacts) const {
  const int FactCount = !WithFacts ? 0 : All ? FFacts->Count() : FFacts->GetLocalsCount();
  String Result;
  if (Comments) {
    Result += SStarLine;
    Result += u"; Module:                     " + FName + u"\r\n";
    Result += u"; Number of Defined Types:    " +
              IntToStr(All ? FDefinedTypes->Count() : FDefinedTypes->GetLocalsCount()) + u"\r\n";
    Result += u"; Number of Fact Templates:   " +
              IntToStr(All ? FFactTemplates->Count() : FFactTemplates->GetLocalsCount()) + u"\r\n";
    Result += u"; Number of Rules:            " + IntToStr(FRules->Count()) + u"\r\n";
    Result += u"; Number of Fact Sets:        " + IntToStr(FFactSets->Count()) + u"\r\n";
    Result += u"; Number of Facts:            " + IntToStr(FactCount) + u"\r\n";
    Result += u"\r\n";
  }
  if (FEngine) Result += FEngine->PrettyPrint(IModule(const_cast<TModule*>(this)));
  Result += u"\r\n";
  if (FDefinedTypes->Count() > 0)
    Result += Section(Comments, u"; Defined Types ", All ? FDefinedTypes->ToString() : FDefinedTypes->LocalsToString());
  if (FFactTemplates->Count() > 0)
    Result += Section(Comments, u"; Fact Templates ",
                      All ? FFactTemplates->ToString() : FFactTemplates->LocalsToString());
  if (FRules->Count() > 0) Result += Section(Comments, u"; Rules ", FRules->ToString());
  if (FFactSets->Count() > 0) Result += Section(Comments, u"; Fact Sets ", FFactSets->ToString() + u"\r\n");
  if (FactCount > 0) {
    // One call asserts them all when the text is read back.
    const String Facts = All ? FFacts->ToString() : FFacts->LocalsToString(false);
    if (!Facts.empty()) Result += Section(Comments, u"; Facts ", u"(assert\r\n" + Facts + u")\r\n");
  }
  return Result;
}

void TModule::AssignModuleDefinition(const TModule& Source) {
  FName = Source.FName;
  FComment = Source.FComment;
  FExportItems->Assign(Source.FExportItems.Get());
  FImportModules.Clear();
  for (const IModuleImport& Import : Source.FImportModules) {
    IModuleImport Copy = Make<TModuleImportExport>(this, Import->GetModule());
    Copy->Assign(Import.Get());
    FImportModules.Add(Copy);
  }
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
  // What this module imported forgets it first, while the sources can
  // still be found by name.
  for (const IModuleImport& Import : FImportModules) Import->Release();
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

// Whether an edit of the list goes through the engine instead.
bool TModules::RoutedToEngine(const TModule* Module) const {
  return FEnforceImportOrder && FEngine && !FEngine->IsDestroying() && FEngine->FIsModuleOp.Get() != Module;
}

int TModules::Add(const IModule& Module) {
  if (RoutedToEngine(Module.Get())) return FEngine->AddModule(Module);
  return TInterfaceList<TModule>::Add(Module);
}

void TModules::Insert(int Index, const IModule& Module) {
  if (RoutedToEngine(Module.Get())) {
    FEngine->AddModule(Module);
    return;
  }
  TInterfaceList<TModule>::Insert(Index, Module);
}

void TModules::Delete(int Index) {
  if (RoutedToEngine(Get(Index).Get())) {
    FEngine->RemoveModule(IModule(Get(Index)));
    return;
  }
  TInterfaceList<TModule>::Delete(Index);
}

int TModules::Remove(const IModule& Module) {
  if (RoutedToEngine(Module.Get())) {
    int Index = IndexOf(Module);
    if (Index >= 0) FEngine->RemoveModule(Module);
    return Index;
  }
  return TInterfaceList<TModule>::Remove(Module.Get());
}

void TModules::Clear() {
  if (RoutedToEngine(nullptr)) {
    // From the last, so that no module outlives one it imports from.
    while (Count() > 0) FEngine->RemoveModule(IModule(Get(Count() - 1)));
    return;
  }
  TInterfaceList<TModule>::Clear();
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
