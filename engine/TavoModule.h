// Modules: partitions of an expert system's knowledge, and their lists.
#pragma once

#include <memory>

#include "common/MekInterfaceList.h"
#include "common/MekStringList.h"
#include "core/TavoInterfaces.h"

namespace tavo {

class TInferenceEngine;
class TTavoDefinedTypes;
class TFactTemplates;
class TFacts;
class TFactSets;
class TActivationAgenda;
class TReteNetwork;
class TRules;
class TTavoPattern;

// The pending facts of a module: "+" to assert, "-" to retract, with the fact.
using TFactsPending = TStringList<IFact>;

// The export list of a module, or one of its imports: for defined types
// and for fact templates each, nothing, all, or the names listed. A name
// listed makes the mode custom; emptying the list of a custom mode makes it
// none; none or all set anew empty the list.
class TModuleImportExport : public TCloneableObject {
  TAVO_CLASS(TModuleImportExport, TCloneableObject)
 public:
  // Module: the name of the module imported from; empty for an export list.
  explicit TModuleImportExport(TModule* Owner = nullptr, const String& Module = String())
      : FModule(Module), FOwnerModule(Owner) {}

  using TCloneableObject::Assign;
  // Copies the modes and the names; the module and the owner stay.
  void Assign(const TPersistent* Source) override;

  TSharedConstructs GetDefinedTypesShared() const { return FDefinedTypesShared; }
  void SetDefinedTypesShared(TSharedConstructs Value);
  TSharedConstructs GetFactTemplatesShared() const { return FFactTemplatesShared; }
  void SetFactTemplatesShared(TSharedConstructs Value);
  const TStringList<int>& GetDefinedTypes() const { return FDefinedTypes; }
  const TStringList<int>& GetFactTemplates() const { return FFactTemplates; }
  void AddDefinedType(const String& Name);
  void AddFactTemplate(const String& Name);
  void ClearDefinedTypes();
  void ClearFactTemplates();
  const String& GetModule() const { return FModule; }
  TModule* GetOwnerModule() const { return FOwnerModule; }
  // Whether the list, as an export list, shares the defined type or the
  // template of that name.
  bool ExportsDefinedType(StringView Name) const;
  bool ExportsFactTemplate(StringView Name) const;

  // As an import: brings what the source module exports and this import
  // asks for into the owner's collections, with the source's facts of the
  // imported templates. SNoSuchModule when the source is unknown.
  void ImportConstructs();
  // As an import: the constructs it brought in forget the owner.
  void Release();

 private:
  TSharedConstructs FDefinedTypesShared = mieNone;
  TSharedConstructs FFactTemplatesShared = mieNone;
  TStringList<int> FDefinedTypes;
  TStringList<int> FFactTemplates;
  String FModule;
  TModule* FOwnerModule;
};

// A module. It owns its own collections; the engine mirrors the current
// module's in its own fields, and FocusModule makes this module current.
class TModule : public TCloneableObject {
  TAVO_CLASS(TModule, TCloneableObject)
 public:
  explicit TModule(TInferenceEngine* Engine = nullptr, bool IsMain = false);
  ~TModule() override;

  bool IsMain() const { return FIsMain; }
  const String& GetName() const { return FName; }
  // The main module is named "MAIN" and no other module may be; a name may
  // not hold blanks nor any of '"#()[]?:$&;<>. A new name goes through the
  // engine's RenameModule.
  void SetName(const String& Value);
  const String& GetComment() const { return FComment; }
  void SetComment(const String& Value) { FComment = Value; }
  TInferenceEngine* GetExpertSystem() const { return FEngine; }
  // The module as rule-language text: its defmodule, then its types,
  // templates, rules, fact sets, and its facts as one assert call. All
  // adds the constructs it imported; Comments the comment lines.
  String GetExpertSystem(bool Comments, bool All, bool WithFacts = true) const;
  const IModuleExport& GetExportItems() const { return FExportItems; }
  int GetImportCount() const { return FImportModules.Count(); }
  const IModuleImport& GetImport(int Index) const { return FImportModules.Get(Index); }
  // The import from the module of that name, or null.
  IModuleImport FindImport(StringView Module) const;
  int IndexOfImport(StringView Module) const;
  void AddImport(const IModuleImport& Import) { FImportModules.Add(Import); }
  void DeleteImport(int Index) { FImportModules.Delete(Index); }
  void RemoveImport(const IModuleImport& Import) { FImportModules.Remove(Import.Get()); }
  void ClearImports() { FImportModules.Clear(); }
  // Runs each import in order, with this module current meanwhile.
  void ImportConstructs();
  // Copies name, comment, export list and imports; no knowledge.
  void AssignModuleDefinition(const TModule& Source);
  // Called by the engine when it goes away.
  void DetachEngine() { FEngine = nullptr; }

  TTavoDefinedTypes* GetDefinedTypes() const { return FDefinedTypes.get(); }
  TFacts* GetFacts() const { return FFacts.get(); }
  TFactTemplates* GetFactTemplates() const { return FFactTemplates.get(); }
  TFactsPending* GetFactsPending() const { return FFactsPending.get(); }
  TFactSets* GetFactSets() const { return FFactSets.get(); }
  TActivationAgenda* GetAgenda() const { return FAgenda.get(); }
  TReteNetwork* GetRete() const { return FRete.get(); }
  TRules* GetRules() const { return FRules.get(); }
  TTavoPattern* GetInitialFactPattern() const { return FInitialFactPattern.get(); }
  // A new pattern on the initial fact's template, after the templates were
  // cleared; null drops it.
  void RenewInitialFactPattern(const IFactTemplate& Template);
  const IFact& GetNullFact() const { return FNullFact; }

  // Makes the module the engine's current one, mirroring its objects there.
  // Raises no event and prints nothing.
  virtual void FocusModule();
  // Makes the module's own objects on its engine, with the implied
  // templates of the null fact and the initial fact.
  virtual void Initialize();
  // Frees the module's own objects, after cutting their links to the engine.
  virtual void Release();
  // Frees and makes anew the module's objects.
  void Prepare();
  // Copies the engine's mirror fields back into the module.
  void ImportEngine();

 private:
  String FName;
  String FComment;
  bool FIsMain = false;
  TInterfaceList<TModuleImportExport> FImportModules;
  IModuleExport FExportItems;
  TInferenceEngine* FEngine = nullptr;
  std::unique_ptr<TTavoDefinedTypes> FDefinedTypes;
  std::unique_ptr<TFacts> FFacts;
  std::unique_ptr<TFactTemplates> FFactTemplates;
  std::unique_ptr<TFactsPending> FFactsPending;
  std::unique_ptr<TFactSets> FFactSets;
  std::unique_ptr<TActivationAgenda> FAgenda;
  std::unique_ptr<TReteNetwork> FRete;
  std::unique_ptr<TRules> FRules;
  std::unique_ptr<TTavoPattern> FInitialFactPattern;
  IFact FNullFact;
};

// A list of modules. The engine keeps two: all modules, with the main module
// at index 0, and the focus stack, with its top at index 0.
class TModules : public TInterfaceList<TModule> {
 public:
  explicit TModules(TInferenceEngine* Engine, bool EnforceImportOrder = false)
      : FEngine(Engine), FEnforceImportOrder(EnforceImportOrder) {}

  using TInterfaceList<TModule>::IndexOf;
  int IndexOf(const IModule& Module) const { return IndexOf(Module.Get()); }
  int IndexOf(StringView Name) const;
  // On the engine's list of all modules these become the engine's
  // AddModule and RemoveModule, so that a host editing the list gets what
  // the engine does; only the module the engine is adding or removing just
  // now goes straight into or out of the list. On the focus stack they are
  // plain list operations. Insert on the list of all modules places as
  // AddModule does: the main module first, any other last.
  int Add(const IModule& Module);
  void Insert(int Index, const IModule& Module);
  void Delete(int Index);
  int Remove(const IModule& Module);
  void Clear();
  // The module of that name, exactly compared; SNoSuchModule when absent.
  const IModule& GetModule(StringView Name) const;
  // The names joined by a blank.
  String ToNamesString() const;
  bool GetEnforceImportOrder() const { return FEnforceImportOrder; }
  TInferenceEngine* GetEngine() const { return FEngine; }

 private:
  bool RoutedToEngine(const TModule* Module) const;

  TInferenceEngine* FEngine;
  bool FEnforceImportOrder;
};

}  // namespace tavo
