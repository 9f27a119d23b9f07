// Modules: partitions of an expert system's knowledge, and their lists.
#pragma once

#include "common/MekInterfaceList.h"
#include "core/TavoInterfaces.h"

namespace tavo {

class TInferenceEngine;

// A module. The engine mirrors the current module's objects in its own
// fields; FocusModule makes this module the current one.
class TModule : public TCloneableObject {
  TAVO_CLASS(TModule, TCloneableObject)
 public:
  explicit TModule(TInferenceEngine* Engine = nullptr, bool IsMain = false);

  bool IsMain() const { return FIsMain; }
  const String& GetName() const { return FName; }
  // The main module is named "MAIN" and no other module may be; a name may
  // not hold blanks nor any of '"#()[]?:$&;<>. A new name goes through the
  // engine's RenameModule.
  void SetName(const String& Value);
  const String& GetComment() const { return FComment; }
  void SetComment(const String& Value) { FComment = Value; }
  TInferenceEngine* GetExpertSystem() const { return FEngine; }
  // Called by the engine when it goes away.
  void DetachEngine() { FEngine = nullptr; }

  // Makes the module the engine's current one, mirroring its objects there.
  // Raises no event and prints nothing.
  virtual void FocusModule();
  // Sets up the module's own objects on its engine.
  virtual void Initialize();
  // Frees the module's own objects.
  virtual void Release();

 private:
  String FName;
  String FComment;
  bool FIsMain = false;
  TInferenceEngine* FEngine = nullptr;
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
  int Remove(const IModule& Module) { return TInterfaceList<TModule>::Remove(Module.Get()); }
  // The module of that name, exactly compared; SNoSuchModule when absent.
  const IModule& GetModule(StringView Name) const;
  // The names joined by a blank.
  String ToNamesString() const;
  bool GetEnforceImportOrder() const { return FEnforceImportOrder; }
  TInferenceEngine* GetEngine() const { return FEngine; }

 private:
  TInferenceEngine* FEngine;
  bool FEnforceImportOrder;
};

}  // namespace tavo
