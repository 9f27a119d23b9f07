// The base of constructs that belong to one module and can be seen in others.
#pragma once

#include "common/MekInterfaceList.h"
#include "core/TavoInterfaces.h"

namespace tavo {

class TModuleConstruct : public TCloneableObject {
  TAVO_CLASS(TModuleConstruct, TCloneableObject)
 public:
  // The home module.
  const IModule& GetModule() const { return FModule; }
  virtual void SetModule(const IModule& Value) { FModule = Value; }

  // Every module whose collection holds the construct, its home included.
  int GetImportModuleCount() const { return FImportModules.Count(); }
  const IModule& GetImportModule(int Index) const { return FImportModules.Get(Index); }
  // Ignores a null module.
  void AddImportModule(const IModule& Module) {
    if (Module) FImportModules.Add(Module);
  }
  void RemoveImportModule(const IModule& Module) { FImportModules.Remove(Module.Get()); }
  int IndexOfImportModule(const IModule& Module) const { return FImportModules.IndexOf(Module.Get()); }
  bool IsShared() const { return FImportModules.Count() > 0; }

 private:
  TInterfaceList<TModule> FImportModules;
  IModule FModule;
};

}  // namespace tavo
